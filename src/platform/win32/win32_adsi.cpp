#include "platform/win32/win32_adsi.h"

#include <string>

#include "platform/win32/com_values.h"
#include "platform/win32/windows_api.h"
// After <windows.h>, which they need.
#include <iads.h>
#include <iiisext.h>

namespace webrig::win32 {
namespace {

// IID_IISWebService, which MinGW-w64 defines in no library.
constexpr IID kIisWebService = {
    0xEE46D40C, 0x1B38, 0x4A02, {0x89, 0x8D, 0x35, 0x8E, 0x74, 0xDF, 0xC9, 0xD2}};

using AdsGetObjectFunction = HRESULT(WINAPI*)(LPCWSTR, REFIID, void**);

// A module loaded once, freed when the last user goes: the web service object keeps
// "activeds.dll" loaded for as long as it lives, even past the library object.
class LoadedModule {
  public:
    explicit LoadedModule(HMODULE module) noexcept : m_module(module) {}
    ~LoadedModule() { ::FreeLibrary(m_module); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;
    HMODULE get() const noexcept { return m_module; }

  private:
    HMODULE m_module;
};

VARIANT Boolean(bool value) noexcept {
    VARIANT variant;
    ::VariantInit(&variant);
    variant.vt = VT_BOOL;
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return variant;
}

class Win32WebService final : public platform::IisWebService {
  public:
    Win32WebService(std::shared_ptr<LoadedModule> module, ComPtr<IISWebService> service)
        : m_module(std::move(module)), m_service(std::move(service)) {}

    qm::hresult AddExtensionFile(qm::wstring_view file, bool allowed, qm::wstring_view groupId,
                                 bool canDelete, qm::wstring_view description) override {
        const ScopedBstr fileText(file);
        const ScopedBstr groupText(groupId);
        const ScopedBstr descriptionText(description);
        if (fileText.Failed() || groupText.Failed() || descriptionText.Failed()) {
            return qm::hr::out_of_memory;
        }
        return m_service->AddExtensionFile(fileText.get(), Boolean(allowed), groupText.get(),
                                           Boolean(canDelete), descriptionText.get());
    }

    qm::hresult DeleteExtensionFileRecord(qm::wstring_view file) override {
        const ScopedBstr fileText(file);
        if (fileText.Failed()) {
            return qm::hr::out_of_memory;
        }
        return m_service->DeleteExtensionFileRecord(fileText.get());
    }

    qm::hresult SetInfo() override { return m_service->SetInfo(); }

  private:
    // Declared first: the interface is released before the library goes.
    std::shared_ptr<LoadedModule> m_module;
    ComPtr<IISWebService> m_service;
};

class Win32ActiveDs final : public platform::ActiveDs {
  public:
    Win32ActiveDs(std::shared_ptr<LoadedModule> module, AdsGetObjectFunction getObject)
        : m_module(std::move(module)), m_getObject(getObject) {}

    qm::hresult GetWebService(qm::wstring_view path,
                              std::unique_ptr<platform::IisWebService>& object) override {
        object.reset();
        const std::wstring name(reinterpret_cast<const wchar_t*>(path.data()), path.size());
        ComPtr<IISWebService> service;
        const HRESULT hr =
            m_getObject(name.c_str(), kIisWebService, reinterpret_cast<void**>(service.receive()));
        if (SUCCEEDED(hr) && service) {
            object = std::make_unique<Win32WebService>(m_module, std::move(service));
        }
        return hr;
    }

  private:
    std::shared_ptr<LoadedModule> m_module;
    AdsGetObjectFunction m_getObject;
};

}  // namespace

uint32_t Win32Adsi::LoadActiveDs(qm::wstring_view dllPath,
                                 std::unique_ptr<platform::ActiveDs>& library) {
    library.reset();
    const std::wstring path(reinterpret_cast<const wchar_t*>(dllPath.data()), dllPath.size());
    const HMODULE module = ::LoadLibraryW(path.c_str());
    if (module == nullptr) {
        return ::GetLastError();
    }
    auto loaded = std::make_shared<LoadedModule>(module);
    const auto getObject = reinterpret_cast<AdsGetObjectFunction>(
        reinterpret_cast<void*>(::GetProcAddress(module, "ADsGetObject")));
    if (getObject == nullptr) {
        return ::GetLastError();
    }
    library = std::make_unique<Win32ActiveDs>(std::move(loaded), getObject);
    return 0;
}

}  // namespace webrig::win32
