#include "platform/win32/com_error.h"

#include "platform/win32/com_values.h"

namespace webrig::win32 {

ComErrorInfo TakeErrorInfo() {
    ComErrorInfo info;
    ComPtr<IErrorInfo> error;
    if (::GetErrorInfo(0, error.receive()) != S_OK || !error) {
        return info;
    }
    ScopedBstr description;
    if (SUCCEEDED(error->GetDescription(description.receive()))) {
        info.description = description.Text();
    }
    ScopedBstr source;
    if (SUCCEEDED(error->GetSource(source.receive()))) {
        info.source = source.Text();
    }
    return info;
}

qm::com_exception ComError(qm::hresult error) {
    ComErrorInfo info = TakeErrorInfo();
    return qm::com_exception(error, std::move(info.description), std::move(info.source));
}

}  // namespace webrig::win32
