#pragma once
// The configuration manager, the file MACHINE/WEBROOT/APPHOST and its <location> tags, as the
// runtime's clean-up of leftover location settings walks them.

#include <memory>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_session.h"

namespace webrig::sim::iis7 {

class ConfigManagerImpl final : public platform::ConfigManager {
  public:
    explicit ConfigManagerImpl(std::shared_ptr<ConfigSession> session)
        : m_session(std::move(session)) {}
    qm::hresult GetConfigFile(qm::wstring_view configPath,
                              std::shared_ptr<platform::ConfigFile>& file) override;

  private:
    std::shared_ptr<ConfigSession> m_session;
};

}  // namespace webrig::sim::iis7
