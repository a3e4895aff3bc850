#pragma once
// The installer engine's COM objects: the operation source that QMIISComponentInstall receives
// as the dispatch pointer of a VARIANT, and the operation recorder it hands out.
//
// Their interfaces are known only by identifier and vtable slot: the source
// ({4F224BFE-A12F-49C2-9D77-B076C604645F}, an IDispatch) takes the operation type in slot 14 and
// returns the recorder; the recorder takes one record, a SAFEARRAY of VARIANT, in slot 11.

#include "platform/host_objects.h"

namespace webrig::win32 {

class Win32HostObjects final : public platform::HostObjects {
  public:
    // `operations` is the VARIANT* of the export; its dispatch pointer is read whatever its type
    // field says.
    qm::hresult OperationSourceFrom(
        void* operations, std::shared_ptr<platform::IHostOperationSource>& source) override;
};

}  // namespace webrig::win32
