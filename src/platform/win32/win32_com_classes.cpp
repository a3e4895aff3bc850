#include "platform/win32/win32_com_classes.h"

#include "platform/win32/com_values.h"

namespace webrig::win32 {
namespace {

// The IIS 6 admin base class (CLSID_MSAdminBase_W).
constexpr CLSID kAdminBaseClass = {
    0xA9E69610, 0xB80D, 0x11D0, {0xB9, 0xB9, 0x00, 0xA0, 0xC9, 0x22, 0xE7, 0x50}};

// IID_IMSAdminBase_W.
constexpr IID kAdminBaseInterface = {
    0x70B51430, 0xB6CA, 0x11D0, {0xB9, 0xB9, 0x00, 0xA0, 0xC9, 0x22, 0xE7, 0x50}};

// In-process, local and remote servers (21), on this machine: an all-zero server record.
HRESULT GetClassFactory(ComPtr<IClassFactory>& factory) {
    COSERVERINFO server{};
    return ::CoGetClassObject(
        kAdminBaseClass, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER, &server,
        IID_IClassFactory, reinterpret_cast<void**>(factory.receive()));
}

class Win32AdminBaseClassFactory final : public platform::AdminBaseClassFactory {
  public:
    explicit Win32AdminBaseClassFactory(ComPtr<IClassFactory> factory)
        : m_factory(std::move(factory)) {}

    qm::hresult CreateAdminBase() override {
        ComPtr<IUnknown> adminBase;
        return m_factory->CreateInstance(nullptr, kAdminBaseInterface,
                                         reinterpret_cast<void**>(adminBase.receive()));
    }

  private:
    ComPtr<IClassFactory> m_factory;
};

}  // namespace

qm::hresult Win32ComClasses::ProbeAdminBaseClassFactory() {
    ComPtr<IClassFactory> factory;
    return GetClassFactory(factory);
}

qm::hresult Win32ComClasses::GetAdminBaseClassFactory(
    std::unique_ptr<platform::AdminBaseClassFactory>& factory) {
    factory.reset();
    ComPtr<IClassFactory> classFactory;
    const HRESULT hr = GetClassFactory(classFactory);
    if (SUCCEEDED(hr) && classFactory) {
        factory = std::make_unique<Win32AdminBaseClassFactory>(std::move(classFactory));
    }
    return hr;
}

}  // namespace webrig::win32
