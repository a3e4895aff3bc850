#include "host/operation_recording.h"

#include <array>

#include "support/com_exception.h"

namespace webrig::host {

std::shared_ptr<platform::IOperationRecorder> ObtainOperationRecorder(
    platform::HostObjects& hostObjects, void* operations) {
    std::shared_ptr<platform::IHostOperationSource> source;
    qm::hresult hr = hostObjects.OperationSourceFrom(operations, source);
    if (qm::failed(hr)) {
        throw qm::com_exception(hr, u"the host's operation source is not available");
    }
    std::shared_ptr<platform::IOperationRecorder> recorder;
    hr = source->GetOperationRecorder(kGeneralOperationType, recorder);
    if (qm::failed(hr)) {
        throw qm::com_exception(hr, u"the host gave no operation recorder");
    }
    return recorder;
}

void RecordItemCreated(platform::IOperationRecorder* recorder, bool suppressEvents,
                       const qm::wstring& eventName, const qm::wstring& itemName) {
    if (recorder == nullptr || suppressEvents) {
        return;
    }
    const std::array<qm::wstring, 2> record{eventName, itemName};
    const qm::hresult hr = recorder->RecordOperation(record);
    if (qm::failed(hr)) {
        throw qm::com_exception(hr, u"the host did not take the item-created record");
    }
}

}  // namespace webrig::host
