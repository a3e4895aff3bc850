#pragma once
// What the eight exported functions do, in C++: the entry points convert their arguments and
// call these. Nothing here lets an exception out.

#include <cstdint>
#include <memory>

#include "platform/platform.h"
#include "support/wide_string.h"

namespace webrig::exports {

// The result of every export but QMIISInitialize while no runtime instance exists.
constexpr int32_t kNoRuntime = -1;

// QMIISInitialize on the process default platform, or on `platform`.
int32_t Initialize(const qm::wstring& settingsFile, uint32_t hostContext);
int32_t InitializeOn(std::shared_ptr<platform::Platform> platform, const qm::wstring& settingsFile,
                     uint32_t hostContext);

int32_t Uninitialize();
int32_t ComponentInstall(const qm::wstring& component, void* operations);
int32_t CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS);
int32_t VRootUninstall(const qm::wstring& name);
int32_t WebSiteUninstall(const qm::wstring& name);
int32_t AppPoolUninstall(const qm::wstring& name);
int32_t WebServiceExtensionUninstall(const qm::wstring& name);

}  // namespace webrig::exports
