#include "host/component_file_info.h"

#include "host/host_functions.h"

namespace webrig::host {
namespace {

constexpr uint32_t kFileInfoSelector = 14;
constexpr uint32_t kSuppressEventsFlag = 0x40;
// GetModuleFileNameW is given a buffer of MAX_PATH characters.
constexpr size_t kModulePathCapacity = 260;

// Length of the part of a path that a folder never gets shorter than.
size_t RootLength(qm::wstring_view path) {
    if (path.starts_with(u"\\\\")) {
        // "\\server\share": up to the backslash after the share, or the whole path.
        const size_t server_end = path.find(u'\\', 2);
        if (server_end == qm::wstring_view::npos) {
            return path.size();
        }
        const size_t share_end = path.find(u'\\', server_end + 1);
        return share_end == qm::wstring_view::npos ? path.size() : share_end;
    }
    if (path.size() >= 2 && path[1] == u':') {
        return 2;
    }
    return 0;
}

}  // namespace

qm::wstring ModuleDirectory(qm::wstring_view modulePath) {
    const size_t last = modulePath.rfind(u'\\');
    const size_t cut = last == qm::wstring_view::npos ? 0 : last;
    return qm::wstring(modulePath.substr(0, std::max(cut, RootLength(modulePath))));
}

bool ComponentSuppressesEvents(platform::Platform& platform, uint32_t hostContext,
                               const qm::wstring& feature, const qm::wstring& component) {
    platform::ModuleLookup& modules = platform.modules();
    qm::wstring ownPath = modules.ModuleFileName(modules.FindModule(kOwnModuleName));
    if (ownPath.size() >= kModulePathCapacity) {
        ownPath.resize(kModulePathCapacity - 1);  // GetModuleFileNameW truncates
    }
    qm::wstring hostPath = ModuleDirectory(ownPath);
    if (!hostPath.ends_with(u'\\')) {
        hostPath += u'\\';
    }
    hostPath += kHostModuleName;

    const platform::ModuleHandle host = modules.FindModule(hostPath);
    if (host == platform::kNoModule) {
        return false;
    }
    const auto fileInfo = reinterpret_cast<ComponentFileInfoFunction>(
        modules.FindFunction(host, kComponentFileInfoExport));
    if (fileInfo == nullptr) {
        return false;
    }
    uint32_t info = 0;
    const int32_t result = fileInfo(hostContext, u"DATA", feature.c_str(), component.c_str(),
                                    kFileInfoSelector, &info, 0);
    return result == 0 && (info & kSuppressEventsFlag) != 0;
}

}  // namespace webrig::host
