#include "platform/win32/win32_com_classes.h"

#include "platform/win32/com_values.h"

namespace webrig::win32 {
namespace {

// The IIS 6 admin base class (CLSID_MSAdminBase_W).
constexpr CLSID kAdminBaseClass = {
    0xA9E69610, 0xB80D, 0x11D0, {0xB9, 0xB9, 0x00, 0xA0, 0xC9, 0x22, 0xE7, 0x50}};

}  // namespace

qm::hresult Win32ComClasses::ProbeAdminBaseClassFactory() {
    // In-process, local and remote servers (21), on this machine: an all-zero server record.
    COSERVERINFO server{};
    ComPtr<IClassFactory> factory;
    return ::CoGetClassObject(
        kAdminBaseClass, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER, &server,
        IID_IClassFactory, reinterpret_cast<void**>(factory.receive()));
}

}  // namespace webrig::win32
