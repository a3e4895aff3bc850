#pragma once
// A Linux host hands webrig its objects directly: the `operations` argument is a pointer to the
// host's IHostOperationSource, which the host keeps alive for the call.

#include "platform/host_objects.h"

namespace webrig::sim {

class SimHostObjects final : public platform::HostObjects {
  public:
    qm::hresult OperationSourceFrom(
        void* operations, std::shared_ptr<platform::IHostOperationSource>& source) override;
};

}  // namespace webrig::sim
