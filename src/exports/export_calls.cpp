#include "exports/export_calls.h"

#include "exports/runtime_holder.h"
#include "host/host_functions.h"
#include "platform/default_platform.h"
#include "settings/iis_pro_ini_loader.h"

namespace webrig::exports {
namespace {

// Runs `work` against the current instance; -1 without one. An exception ends the call with 0,
// the result the host gets whatever happened inside.
template <class Work>
int32_t WithRuntime(Work&& work) noexcept {
    CIISProRuntime* const runtime = CurrentRuntime();
    if (runtime == nullptr) {
        return kNoRuntime;
    }
    try {
        return work(*runtime);
    } catch (...) {
        return 0;
    }
}

}  // namespace

int32_t Initialize(const qm::wstring& settingsFile, uint32_t hostContext) {
    try {
        qm::wstring problem;
        auto platform = platform::OpenDefaultPlatform(problem);
        return InitializeOn(std::move(platform), settingsFile, hostContext);
    } catch (...) {
        return 0;
    }
}

int32_t InitializeOn(std::shared_ptr<platform::Platform> platform, const qm::wstring& settingsFile,
                     uint32_t hostContext) {
    try {
        CIISProRuntime& runtime =
            ReplaceRuntime(std::make_unique<CIISProRuntime>(std::move(platform)));
        // The host engine is loaded by the installer before webrig; it is never loaded here.
        const platform::ModuleHandle hostModule =
            runtime.platform().modules().FindModule(host::kHostModuleName);
        CIISProIniLoader loader(runtime.platform(), settingsFile, hostModule, hostContext);
        runtime.Initialize(loader, std::make_unique<CIISProEvent>(), hostContext);
    } catch (...) {
        // Whatever failed, the host is told 0; a later call finds what was stored.
    }
    return 0;
}

int32_t Uninitialize() {
    return WithRuntime([](CIISProRuntime& runtime) {
        runtime.RestartW3cService();
        return 0;
    });
}

int32_t ComponentInstall(const qm::wstring& component, void* /*operations*/) {
    return WithRuntime([&](CIISProRuntime& runtime) {
        if (runtime.installedComponents.contains(component)) {
            return 0;
        }
        runtime.installedComponents.insert(component);
        return 0;
    });
}

int32_t CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS) {
    CIISProRuntime* const runtime = CurrentRuntime();
    if (runtime == nullptr) {
        return kNoRuntime;
    }
    try {
        return runtime->CheckForContinue(component, continueWithoutIIS);
    } catch (...) {
        return 0;
    }
}

int32_t VRootUninstall(const qm::wstring& /*name*/) {
    return WithRuntime([](CIISProRuntime&) { return 0; });
}

int32_t WebSiteUninstall(const qm::wstring& /*name*/) {
    return WithRuntime([](CIISProRuntime&) { return 0; });
}

int32_t AppPoolUninstall(const qm::wstring& /*name*/) {
    return WithRuntime([](CIISProRuntime&) { return 0; });
}

int32_t WebServiceExtensionUninstall(const qm::wstring& /*name*/) {
    return WithRuntime([](CIISProRuntime&) { return 0; });
}

}  // namespace webrig::exports
