#include "testing/faulty_platform.h"

namespace webrig::testing {
namespace {

class FaultyManager final : public platform::AdminManager {
  public:
    FaultyManager(std::unique_ptr<AdminManager> inner, IisFaults& faults)
        : m_inner(std::move(inner)), m_faults(faults) {}
    qm::hresult GetAdminSection(qm::wstring_view name, qm::wstring_view path,
                                std::shared_ptr<platform::ConfigElement>& section) override {
        return m_inner->GetAdminSection(name, path, section);
    }
    qm::hresult CommitChanges() override {
        if (m_faults.commitAnswers.empty()) {
            return m_inner->CommitChanges();
        }
        const qm::hresult answer = m_faults.commitAnswers.front();
        m_faults.commitAnswers.pop_front();
        return answer;
    }
    qm::hresult GetCommitPath(qm::wstring& path) override {
        return m_faults.getCommitPath != 0 ? m_faults.getCommitPath : m_inner->GetCommitPath(path);
    }
    qm::hresult PutCommitPath(qm::wstring_view path) override {
        return m_inner->PutCommitPath(path);
    }
    qm::hresult GetConfigManager(std::shared_ptr<platform::ConfigManager>& manager) override {
        return m_faults.getConfigManager != 0 ? m_faults.getConfigManager
                                              : m_inner->GetConfigManager(manager);
    }
    qm::wstring LastErrorDescription() override { return m_inner->LastErrorDescription(); }

  private:
    std::unique_ptr<AdminManager> m_inner;
    IisFaults& m_faults;
};

class FaultyConfiguration final : public platform::IisConfiguration {
  public:
    FaultyConfiguration(platform::IisConfiguration& inner, IisFaults& faults)
        : m_inner(inner), m_faults(faults) {}
    qm::hresult CreateAdminManager(std::unique_ptr<platform::AdminManager>& manager) override {
        if (m_faults.createManager != 0) {
            return m_faults.createManager;
        }
        const qm::hresult hr = m_inner.CreateAdminManager(manager);
        if (manager) {
            manager = std::make_unique<FaultyManager>(std::move(manager), m_faults);
        }
        return hr;
    }

  private:
    platform::IisConfiguration& m_inner;
    IisFaults& m_faults;
};

}  // namespace

FaultyPlatform::FaultyPlatform(const sim::MachineConfig& config)
    : m_temp(config),
      m_configuration(
          std::make_unique<FaultyConfiguration>(m_temp.machine().iisConfiguration(), faults)) {}

}  // namespace webrig::testing
