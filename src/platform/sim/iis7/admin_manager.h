#pragma once
// The writable administration manager of the simulated configuration system.

#include <memory>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_session.h"

namespace webrig::sim::iis7 {

class AdminManagerImpl final : public platform::AdminManager {
  public:
    AdminManagerImpl(std::shared_ptr<const ConfigMachine> machine,
                     std::shared_ptr<AppHostLocation> appHostLocation);

    qm::hresult GetAdminSection(qm::wstring_view sectionName, qm::wstring_view path,
                                std::shared_ptr<platform::ConfigElement>& section) override;
    qm::hresult CommitChanges() override;
    qm::hresult GetCommitPath(qm::wstring& path) override;
    qm::hresult PutCommitPath(qm::wstring_view path) override;
    qm::hresult GetConfigManager(std::shared_ptr<platform::ConfigManager>& manager) override;
    qm::wstring LastErrorDescription() override;

  private:
    std::shared_ptr<ConfigSession> m_session;
};

}  // namespace webrig::sim::iis7
