#pragma once
// The settings loader of an installation: values are resolved through the host engine's string
// table and text substitution.

#include "host/host_text.h"
#include "settings/iis_ini_loader.h"

class CIISProIniLoader final : public CIISIniLoader {
  public:
    // `hostModule` is the already-loaded host engine module (kNoModule when it is not loaded).
    CIISProIniLoader(webrig::platform::Platform& platform, qm::wstring settingsFile,
                     webrig::platform::ModuleHandle hostModule, uint32_t hostContext)
        : CIISIniLoader(platform, std::move(settingsFile), hostModule, hostContext),
          m_hostText(platform, hostModule, hostContext) {}

    // A value that contains backslashes is resolved piece by piece between them: each piece as a
    // string-table identifier, then substituted. Empty pieces and pieces that resolve to nothing
    // are dropped; when nothing is left the value stays as it was.
    qm::wstring ResolveValue(qm::wstring value) override;
    // Only substitution: paths are never looked up in the string table or split.
    qm::wstring ResolveRootDir(qm::wstring value) override;
    qm::wstring ResolveCertPath(qm::wstring value) override;
    virtual qm::wstring SubstituteHostText(const qm::wstring& text);

  private:
    webrig::host::HostText m_hostText;
};
