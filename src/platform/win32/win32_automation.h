#pragma once
// OLE Automation's own BSTR functions and VariantChangeType, so that strings cross to the host
// engine in the allocator it frees them with.

#include "platform/automation.h"

namespace webrig::win32 {

class Win32Automation final : public platform::Automation {
  public:
    platform::Bstr SysAllocStringLen(qm::wstring_view text) override;
    void SysFreeString(platform::Bstr text) override;
    uint32_t SysStringLen(platform::Bstr text) override;
    qm::hresult ChangeTypeToText(const platform::Variant& value, qm::wstring& text) override;
};

}  // namespace webrig::win32
