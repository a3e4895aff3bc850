#pragma once
// Owners of the COM values this layer hands to Windows (BSTR, VARIANT, interface pointers), and
// the conversions between a VARIANT and the seam's Variant.

#include <utility>

#include "platform/automation.h"
#include "platform/win32/windows_api.h"
#include "support/result_codes.h"

namespace webrig::win32 {

// A BSTR freed when its owner goes.
class ScopedBstr {
  public:
    ScopedBstr() noexcept = default;
    // Copies `text`; get() stays null when memory cannot be had (check with Failed()).
    explicit ScopedBstr(qm::wstring_view text) noexcept;
    ~ScopedBstr() { ::SysFreeString(m_text); }
    ScopedBstr(const ScopedBstr&) = delete;
    ScopedBstr& operator=(const ScopedBstr&) = delete;

    BSTR get() const noexcept { return m_text; }
    // For out parameters; frees a string held before.
    BSTR* receive() noexcept {
        ::SysFreeString(m_text);
        m_text = nullptr;
        return &m_text;
    }
    // Hands the string to the caller, who frees it.
    BSTR release() noexcept { return std::exchange(m_text, nullptr); }
    // The text of the string; a null BSTR is the empty text.
    qm::wstring Text() const;
    bool Failed() const noexcept { return m_text == nullptr && m_wanted; }

  private:
    BSTR m_text = nullptr;
    bool m_wanted = false;
};

// A VARIANT cleared when its owner goes.
class ScopedVariant {
  public:
    ScopedVariant() noexcept { ::VariantInit(&m_value); }
    ~ScopedVariant() { ::VariantClear(&m_value); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;

    VARIANT& get() noexcept { return m_value; }
    const VARIANT& get() const noexcept { return m_value; }

  private:
    VARIANT m_value;
};

// A counted reference to a COM interface.
template <class Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    // Takes over a reference the caller owns.
    static ComPtr Adopt(Interface* pointer) noexcept {
        ComPtr held;
        held.m_pointer = pointer;
        return held;
    }
    ~ComPtr() { reset(); }
    ComPtr(const ComPtr& other) noexcept : m_pointer(other.m_pointer) {
        if (m_pointer != nullptr) {
            m_pointer->AddRef();
        }
    }
    ComPtr(ComPtr&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_pointer, other.m_pointer);
        return *this;
    }

    Interface* get() const noexcept { return m_pointer; }
    Interface* operator->() const noexcept { return m_pointer; }
    explicit operator bool() const noexcept { return m_pointer != nullptr; }
    // For out parameters; releases a reference held before.
    Interface** receive() noexcept {
        reset();
        return &m_pointer;
    }
    void reset() noexcept {
        if (m_pointer != nullptr) {
            std::exchange(m_pointer, nullptr)->Release();
        }
    }

  private:
    Interface* m_pointer = nullptr;
};

// The VARIANT of a seam value (VT_EMPTY, VT_BOOL, VT_I4, VT_UI4, VT_I8, VT_UI8 or VT_BSTR).
// E_OUTOFMEMORY when a string cannot be allocated.
qm::hresult ToVariant(const platform::Variant& value, VARIANT& out);

// The seam value of a VARIANT: the kinds above as they are, smaller integers widened, VT_NULL
// as empty, anything else as the text VariantChangeType makes of it (its failure returned).
qm::hresult FromVariant(const VARIANT& value, platform::Variant& out);

}  // namespace webrig::win32
