#pragma once
// The host engine's objects that QMIISComponentInstall receives. On Windows they are COM objects
// reached through a VARIANT; a Linux host implements these interfaces directly and passes a
// pointer to its IHostOperationSource as the `operations` argument.

#include <memory>
#include <span>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::platform {

// Receives the records of what an installation did, so that the host can undo it later.
class IOperationRecorder {
  public:
    virtual ~IOperationRecorder() = default;
    // One record: a list of texts (webrig sends the event name and the item name).
    virtual qm::hresult RecordOperation(std::span<const qm::wstring> record) = 0;
};

class IHostOperationSource {
  public:
    virtual ~IHostOperationSource() = default;
    // The recorder for one type of operation ("OPTYPE_GENERAL").
    virtual qm::hresult GetOperationRecorder(qm::wstring_view operationType,
                                             std::shared_ptr<IOperationRecorder>& recorder) = 0;
};

class HostObjects {
  public:
    virtual ~HostObjects() = default;
    // Reads the operation source out of the `operations` argument of QMIISComponentInstall.
    // Fails with the HRESULT of the failed step (hr::pointer for a null argument).
    virtual qm::hresult OperationSourceFrom(void* operations,
                                            std::shared_ptr<IHostOperationSource>& source) = 0;
};

}  // namespace webrig::platform
