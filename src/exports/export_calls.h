#pragma once
// What the eight exported functions do, in C++: the entry points convert their arguments and
// call these. Nothing here lets an exception out.
//
// This is also webrig's C++ embedding API, for a host engine that links webrig's libraries
// instead of loading the shared library (the `webrig` command does): the calls are those of the
// exports, in the same order and with the same results, and in addition a host may give
// InitializeOn its own event sink (log lines, error reports, progress, cancel) and read, after
// each call, the status of the operation behind it, which the exports never pass on.
//
//   InitializeOn(platform, settings, context, sink)  then per component
//   CheckForContinue and ComponentInstall, then Uninitialize; on removal or rollback the four
//   uninstall calls with the names the host's operation recorder received, then Uninitialize.

#include <cstdint>
#include <memory>

#include "host/iis_event.h"
#include "platform/platform.h"
#include "support/wide_string.h"

namespace webrig::exports {

// The result of every export but QMIISInitialize while no runtime instance exists.
constexpr int32_t kNoRuntime = -1;

// QMIISInitialize on the process default platform, or on `platform` with the event sink `sink`
// (none: the sink that lets nothing out, as the exports install it).
int32_t Initialize(const qm::wstring& settingsFile, uint32_t hostContext);
int32_t InitializeOn(std::shared_ptr<platform::Platform> platform, const qm::wstring& settingsFile,
                     uint32_t hostContext, std::unique_ptr<IIISEvent> sink = nullptr);

int32_t Uninitialize();
int32_t ComponentInstall(const qm::wstring& component, void* operations);
int32_t CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS);
int32_t VRootUninstall(const qm::wstring& name);
int32_t WebSiteUninstall(const qm::wstring& name);
int32_t AppPoolUninstall(const qm::wstring& name);
int32_t WebServiceExtensionUninstall(const qm::wstring& name);

// The status of the operation behind the latest call: the initialization status, the component
// install's first failure, the removal's status, the restart's status (0 when the call had
// nothing to do); kNoRuntime before the first InitializeOn.
int32_t LastStatus() noexcept;

}  // namespace webrig::exports
