#include "exports/export_calls.h"

#include "exports/runtime_holder.h"
#include "host/host_functions.h"
#include "host/operation_recording.h"
#include "platform/default_platform.h"
#include "settings/iis_pro_ini_loader.h"
#include "support/com_exception.h"
#include "support/format.h"

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

// The uninstall calls: the controller of this call, its session opened, then the removal.
// `applies` is the call's gate on the instance's IIS state.
// The removal's status stays inside (LastStatus): the host is told 0.
template <class Applies, class Remove>
int32_t Uninstall(Applies&& applies, Remove&& remove) noexcept {
    return WithRuntime([&](CIISProRuntime& runtime) {
        runtime.lastStatus = 0;
        if (!applies(runtime.propertyBag)) {
            return 0;
        }
        const std::unique_ptr<CIISProVRootController> controller = runtime.BuildController();
        runtime.lastStatus = runtime.OpenUninstallSession(*controller);
        if (runtime.lastStatus != 0) {
            return 0;
        }
        runtime.lastStatus = remove(*controller);
        return 0;
    });
}

bool IisWorkOn(const CIISPropertyBag& bag) {
    return bag.ignoreIIS == 0;
}

// Application pools and web service extensions exist from IIS 6 on.
bool IisWorkOnIis6(const CIISPropertyBag& bag) {
    return bag.ignoreIIS == 0 && bag.iisMajorVersion >= 6;
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
                     uint32_t hostContext, std::unique_ptr<IIISEvent> sink) {
    try {
        CIISProRuntime& runtime =
            ReplaceRuntime(std::make_unique<CIISProRuntime>(std::move(platform)));
        // The host engine is loaded by the installer before webrig; it is never loaded here.
        const platform::ModuleHandle hostModule =
            runtime.platform().modules().FindModule(host::kHostModuleName);
        CIISProIniLoader loader(runtime.platform(), settingsFile, hostModule, hostContext);
        if (sink == nullptr) {
            sink = std::make_unique<CIISProEvent>();
        }
        runtime.lastStatus = runtime.Initialize(loader, std::move(sink), hostContext);
    } catch (...) {
        // Whatever failed, the host is told 0; a later call finds what was stored.
    }
    return 0;
}

int32_t Uninitialize() {
    return WithRuntime([](CIISProRuntime& runtime) {
        runtime.lastStatus = runtime.RestartW3cService();
        return 0;
    });
}

int32_t ComponentInstall(const qm::wstring& component, void* operations) {
    return WithRuntime([&](CIISProRuntime& runtime) {
        runtime.lastStatus = 0;
        if (runtime.installedComponents.contains(component)) {
            return 0;
        }
        {
            const std::unique_ptr<CIISProVRootController> controller = runtime.BuildController();
            try {
                controller->operationRecorder =
                    host::ObtainOperationRecorder(runtime.platform().hostObjects(), operations);
            } catch (const qm::com_exception& error) {
                // The items are still created, as for a component whose records the host
                // suppresses; the log says why nothing was recorded.
                runtime.Log(
                    qm::format(u"No operation recorder from the host (0x%x): the items "
                               u"of component %s are not recorded",
                               static_cast<uint32_t>(error.error()), component));
            }
            runtime.lastStatus = runtime.ComponentInstall(*controller, component);
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
        runtime->lastStatus = 0;
        return runtime->CheckForContinue(component, continueWithoutIIS);
    } catch (...) {
        return 0;
    }
}

int32_t VRootUninstall(const qm::wstring& name) {
    return Uninstall(IisWorkOn, [&](CIISVRootController& controller) {
        return controller.RemoveVRootNamed(name);
    });
}

int32_t WebSiteUninstall(const qm::wstring& name) {
    return Uninstall(IisWorkOn, [&](CIISVRootController& controller) {
        return controller.RemoveCompWebSiteNamed(name);
    });
}

int32_t AppPoolUninstall(const qm::wstring& name) {
    return Uninstall(IisWorkOnIis6, [&](CIISVRootController& controller) {
        return controller.RemoveAppPoolNamed(name);
    });
}

int32_t WebServiceExtensionUninstall(const qm::wstring& name) {
    return Uninstall(IisWorkOnIis6, [&](CIISVRootController& controller) {
        return controller.RemoveWebServiceExtensionNamed(name);
    });
}

int32_t LastStatus() noexcept {
    const CIISProRuntime* const runtime = CurrentRuntime();
    return runtime == nullptr ? kNoRuntime : runtime->lastStatus;
}

}  // namespace webrig::exports
