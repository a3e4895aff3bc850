// The binding of a website's certificate to its port on IIS 7+: HTTP.sys holds it, and netsh
// makes it. The tool's exit code is logged but not returned, so that a binding made by an
// earlier install does not fail this one.

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"
#include "support/format.h"
#include "support/status_codes.h"

using webrig::apphost::JoinPath;
using webrig::apphost::kMaxPath;

int32_t CIisFunctionsVista::SetSsl(uint32_t, const std::byte* hash, uint32_t size) {
    LogMessage(u"SetSsl on IIS 7 or higher");
    // GetSystemDirectoryW into MAX_PATH characters: the length, or the size it would need.
    qm::wstring systemDirectory = m_platform.system().SystemDirectory();
    const uint32_t directoryResult = static_cast<uint32_t>(
        systemDirectory.size() < kMaxPath ? systemDirectory.size() : systemDirectory.size() + 1);
    if (systemDirectory.size() >= kMaxPath) {
        systemDirectory.clear();
    }
    const qm::wstring tool = JoinPath(systemDirectory, u"netsh.exe");
    if (!m_platform.files().PathExists(tool)) {
        LogMessage(
            qm::format(u"Could not find path '%s' while setting SSL properties. uResult = '%d'",
                       tool, directoryResult));
        return qm::status::certificate_import_failed;
    }
    LogMessage(u"Getting hex value...");
    qm::wstring hex;
    for (uint32_t index = 0; hash != nullptr && index < size; ++index) {
        hex += qm::format(u"%02X", static_cast<uint32_t>(hash[index]));
    }
    const qm::wstring ip = m_sSiteIPAddress.empty() ? qm::wstring(u"0.0.0.0") : m_sSiteIPAddress;
    const qm::wstring command = qm::format(
        u"\"%s\" http add sslcert ipport=%s:%s certhash=\"%s\" "
        u"appid={00112233-4455-6677-8899-AABBCCDDEEFF}",
        tool, ip, m_sSitePort, hex);
    LogMessage(u"Running the following command: " + command);

    webrig::platform::Processes& processes = m_platform.processes();
    webrig::platform::ProcessInformation process;
    if (!processes.Start(command, process)) {
        LogMessage(u"CreateProcess failed.");
        return qm::status::certificate_import_failed;
    }
    processes.Wait(process.process, webrig::platform::kInfinite);
    uint32_t exitCode = 0;
    processes.GetExitCode(process.process, exitCode);
    LogMessage(qm::format(u"netsh add retval: %d", exitCode));
    processes.Close(process.process);
    processes.Close(process.thread);
    return 0;
}
