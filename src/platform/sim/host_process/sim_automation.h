#pragma once
// BSTRs laid out as OLE Automation lays them out, so that code reading the length prefix or
// relying on the terminating NUL behaves as on Windows.

#include <cstddef>

#include "platform/automation.h"

namespace webrig::sim {

class SimAutomation final : public platform::Automation {
  public:
    using Allocate = void* (*)(size_t);

    // `allocate` stands for malloc; tests pass one that fails.
    explicit SimAutomation(Allocate allocate = nullptr) noexcept;

    platform::Bstr SysAllocStringLen(qm::wstring_view text) override;
    void SysFreeString(platform::Bstr text) override;
    uint32_t SysStringLen(platform::Bstr text) override;
    qm::hresult ChangeTypeToText(const platform::Variant& value, qm::wstring& text) override;

  private:
    Allocate m_allocate;
};

}  // namespace webrig::sim
