#pragma once
// ADSI's IIS web service object: "activeds.dll" loaded at run time, ADsGetObject found in it by
// name, and the IISWebService interface MinGW-w64 declares (iiisext.h).

#include "platform/adsi.h"

namespace webrig::win32 {

class Win32Adsi final : public platform::Adsi {
  public:
    uint32_t LoadActiveDs(qm::wstring_view dllPath,
                          std::unique_ptr<platform::ActiveDs>& library) override;
};

}  // namespace webrig::win32
