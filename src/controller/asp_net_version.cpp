// The ASP.NET version of a website or virtual directory, registered by running the framework's
// aspnet_regiis.exe, and the web service's server-side-include switch in the registry.

#include "controller/iis_vroot_controller.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace {

// ASP.NET 1.x has no 64-bit framework.
bool Is32BitOnlyFramework(const qm::wstring& version) {
    return version == u"1.0.3705" || version == u"1.1.4322";
}

bool Is64BitMachine(webrig::platform::ProcessorArchitecture architecture) {
    using webrig::platform::ProcessorArchitecture;
    return architecture == ProcessorArchitecture::amd64 ||
           architecture == ProcessorArchitecture::ia64 ||
           architecture == ProcessorArchitecture::arm64;
}

constexpr char16_t kW3svcParameters[] = u"SYSTEM\\CurrentControlSet\\Services\\W3SVC\\Parameters";

}  // namespace

int32_t CIISVRootController::SetAspversion(const qm::wstring& path, const qm::wstring& version,
                                           const qm::wstring& bitness, const qm::wstring& pool,
                                           const qm::wstring& registration) {
    if (version.empty()) {
        return 0;
    }
    try {
        qm::wstring folder = u"Framework";
        if (Is64BitMachine(platform().system().NativeArchitecture())) {
            const bool safe = CheckAspNetBitness(pool, bitness);
            if (safe && !Is32BitOnlyFramework(version)) {
                if (bitness != u"x86") {
                    folder = u"Framework64";
                }
            } else if (!Is32BitOnlyFramework(version)) {
                LogMessage(
                    u"SetAspversion: machine is 64-bit and IIS running in a bit mode other "
                    u"than the currently selected mode");
                return qm::status::asp_net_version_failed;
            }
        }
        const qm::wstring tool = platform().system().WindowsDirectory() + u"\\Microsoft.NET\\" +
                                 folder + u"\\v" + version + u"\\aspnet_regiis.exe";
        if (!platform().files().PathExists(tool)) {
            LogMessage(u"Could not find path while setting ASP .NET version: " + tool);
            return qm::status::asp_net_version_failed;
        }
        if (const int32_t ran = AspVersionChanger(tool + u" -ir"); ran != 0) {
            return ran;
        }
        const size_t start = path.find(u"W3SVC/");
        if (start == qm::wstring::npos) {
            throw std::out_of_range("no W3SVC/ in the metabase path");
        }
        const qm::wstring target = path.substr(start);
        if (const int32_t ran = AspVersionChanger(tool + u" -k " + target); ran != 0) {
            return ran;
        }
        const qm::wstring scope = registration == u"NonRecursive" ? u" -sn " : u" -s ";
        return AspVersionChanger(tool + scope + target);
    } catch (...) {
        LogMessage(u"SetAspversion had an exception with the path '" + path +
                   u"' and the following version: " + version);
        return qm::status::asp_net_version_failed;
    }
}

int32_t CIISVRootController::AspVersionChanger(const qm::wstring& command) {
    try {
        LogMessage(u"Configuring ASP .NET version: " + command);
        webrig::platform::Processes& processes = platform().processes();
        webrig::platform::ProcessInformation started;
        if (!processes.Start(command, started)) {
            LogMessage(u"CreateProcess while setting ASP .NET Version failed.");
            return qm::status::asp_net_version_failed;
        }
        processes.Wait(started.process, webrig::platform::kInfinite);
        uint32_t exitCode = 0;
        if (processes.GetExitCode(started.process, exitCode)) {
            LogMessage(qm::format(u"aspnet_regiis.exe exit code: %x", exitCode));
        }
        processes.Close(started.process);
        processes.Close(started.thread);
        // The tool's own verdict is in the log only.
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in AspVersionChanger with the following command: " + command);
        return qm::status::asp_net_version_failed;
    }
}

int32_t CIISVRootController::SetSSIEnableCmdDirective() {
    try {
        const qm::wstring value = m_pPropertyBag->ssiProperty;
        LogMessage(qm::format(u"SetSSIEnableCmdDirective with %s value of '%s'.",
                              u"QUILLMARK_SSI_PROP", value));
        if (value != u"0" && value != u"1") {
            LogMessage(u"Do nothing, user preference is to ignore SetSSIEnableCmdDirective");
            return 0;
        }
        webrig::platform::Registry& registry = platform().registry();
        webrig::platform::ScopedRegKey parameters(registry);
        const uint32_t opened =
            registry.OpenKey(webrig::platform::kLocalMachine, kW3svcParameters,
                             webrig::platform::key_access::write, parameters.receive());
        if (opened != qm::win32::success) {
            LogMessage(
                qm::format(u"regKey.Open for key '%s' failed with the following HRESULT: "
                           u"'%d'.",
                           kW3svcParameters, static_cast<int32_t>(opened)));
            return static_cast<int32_t>(opened);
        }
        constexpr uint32_t kCreateAccess = 0x2001F;  // KEY_READ | KEY_WRITE
        webrig::platform::ScopedRegKey key(registry);
        uint32_t result = registry.CreateKey(parameters.get(), u"", kCreateAccess, key.receive());
        if (result == qm::win32::success) {
            result = registry.SetValue(key.get(), u"SSIEnableCmdDirective",
                                       webrig::platform::RegValue::String(value));
        }
        LogMessage(qm::format(u"SetKeyValue for key '%s' value '%s' returned '%d'.",
                              kW3svcParameters, u"SSIEnableCmdDirective",
                              static_cast<int32_t>(result)));
        return static_cast<int32_t>(result);
    } catch (...) {
        LogMessage(u"Exception caught in SetSSIEnableCmdDirective");
        return qm::status::ssi_setting_failed;
    }
}
