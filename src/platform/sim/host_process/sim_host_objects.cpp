#include "platform/sim/host_process/sim_host_objects.h"

namespace webrig::sim {

qm::hresult SimHostObjects::OperationSourceFrom(
    void* operations, std::shared_ptr<platform::IHostOperationSource>& source) {
    source.reset();
    if (operations == nullptr) {
        return qm::hr::pointer;
    }
    // The host owns the object: the shared_ptr must never delete it.
    source = std::shared_ptr<platform::IHostOperationSource>(
        static_cast<platform::IHostOperationSource*>(operations),
        [](platform::IHostOperationSource*) {});
    return qm::hr::ok;
}

}  // namespace webrig::sim
