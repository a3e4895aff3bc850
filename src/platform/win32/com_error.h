#pragma once
// What a failed COM call leaves behind: its HRESULT and, when the object set one, the thread's
// error information (IErrorInfo) with its description and source.

#include "support/com_exception.h"
#include "support/result_codes.h"

namespace webrig::win32 {

struct ComErrorInfo {
    qm::wstring description;
    qm::wstring source;
};

// Takes the thread's error information (GetErrorInfo clears it); empty texts when there is none.
ComErrorInfo TakeErrorInfo();

// The library's COM error for `error`, carrying the thread's error information.
qm::com_exception ComError(qm::hresult error);

}  // namespace webrig::win32
