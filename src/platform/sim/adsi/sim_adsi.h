#pragma once
// ADSI on the simulated machine. "activeds.dll" loads from the simulated drive (through the WOW64
// redirector) and has ADsGetObject. The IIS web service object exists where IIS 7 or later has
// its IIS 6 metabase compatibility feature: it then edits the web service extension list that
// IIS keeps in applicationHost.config, the system.webServer/security/isapiCgiRestriction
// section, through the machine's configuration system. Elsewhere ADsGetObject fails with
// E_ADS_BAD_PATHNAME, as on a machine without the IIS ADSI provider; IIS 6 and older machines
// answer so too until their metabase is simulated.

#include "platform/adsi.h"
#include "platform/iis_config.h"
#include "platform/sim/files/sim_file_system.h"

namespace webrig::sim {

class SimAdsi final : public platform::Adsi {
  public:
    SimAdsi(const SimFileSystem& files, qm::wstring systemDirectory, bool hasIisProvider,
            platform::IisConfiguration& iis)
        : m_files(files),
          m_systemDirectory(std::move(systemDirectory)),
          m_hasIisProvider(hasIisProvider),
          m_iis(iis) {}

    uint32_t LoadActiveDs(qm::wstring_view dllPath,
                          std::unique_ptr<platform::ActiveDs>& library) override;

  private:
    const SimFileSystem& m_files;
    qm::wstring m_systemDirectory;
    bool m_hasIisProvider;
    platform::IisConfiguration& m_iis;
};

}  // namespace webrig::sim
