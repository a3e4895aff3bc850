#include "testing/faulty_platform.h"

namespace webrig::testing {
namespace {

using platform::AdminManager;

class FaultyConfigManager final : public platform::ConfigManager {
  public:
    FaultyConfigManager(std::shared_ptr<platform::ConfigManager> inner, IisFaults& faults)
        : m_inner(std::move(inner)), m_faults(faults) {}
    qm::hresult GetConfigFile(qm::wstring_view path,
                              std::shared_ptr<platform::ConfigFile>& file) override {
        if (m_faults.getConfigFile != 0) {
            return m_faults.getConfigFile;
        }
        const qm::hresult hr = m_inner->GetConfigFile(path, file);
        if (hr == 0 && m_faults.getLocations != 0) {
            file = std::make_shared<NoLocations>(m_faults.getLocations);
        }
        return hr;
    }

  private:
    struct NoLocations final : platform::ConfigFile {
        explicit NoLocations(qm::hresult hr) : failure(hr) {}
        qm::hresult GetLocations(std::shared_ptr<platform::ConfigLocations>&) override {
            return failure;
        }
        qm::hresult failure;
    };
    std::shared_ptr<platform::ConfigManager> m_inner;
    IisFaults& m_faults;
};

class FaultyManager final : public AdminManager {
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
        if (m_faults.getConfigManager != 0) {
            return m_faults.getConfigManager;
        }
        const qm::hresult hr = m_inner->GetConfigManager(manager);
        if (manager) {
            manager = std::make_shared<FaultyConfigManager>(manager, m_faults);
        }
        return hr;
    }
    qm::wstring LastErrorDescription() override { return m_inner->LastErrorDescription(); }

  private:
    std::unique_ptr<AdminManager> m_inner;
    IisFaults& m_faults;
};

class FaultyFactory final : public platform::AdminBaseClassFactory {
  public:
    FaultyFactory(std::unique_ptr<platform::AdminBaseClassFactory> inner, IisFaults& faults)
        : m_inner(std::move(inner)), m_faults(faults) {}
    qm::hresult CreateAdminBase() override {
        return m_faults.createAdminBase != 0 ? m_faults.createAdminBase
                                             : m_inner->CreateAdminBase();
    }

  private:
    std::unique_ptr<platform::AdminBaseClassFactory> m_inner;
    IisFaults& m_faults;
};

}  // namespace

class FaultyPlatform::Configuration final : public platform::IisConfiguration {
  public:
    explicit Configuration(FaultyPlatform& owner) : m_owner(owner) {}
    qm::hresult CreateAdminManager(std::unique_ptr<AdminManager>& manager) override {
        if (m_owner.faults.createManager != 0) {
            return m_owner.faults.createManager;
        }
        std::unique_ptr<AdminManager> inner;
        const qm::hresult hr = m_owner.machine().iisConfiguration().CreateAdminManager(inner);
        if (inner) {
            ++m_owner.faults.managersCreated;
            manager = std::make_unique<FaultyManager>(std::move(inner), m_owner.faults);
        }
        return hr;
    }

  private:
    FaultyPlatform& m_owner;
};

class FaultyPlatform::Classes final : public platform::ComClasses {
  public:
    explicit Classes(FaultyPlatform& owner) : m_owner(owner) {}
    qm::hresult ProbeAdminBaseClassFactory() override {
        return m_owner.machine().comClasses().ProbeAdminBaseClassFactory();
    }
    qm::hresult GetAdminBaseClassFactory(
        std::unique_ptr<platform::AdminBaseClassFactory>& factory) override {
        std::unique_ptr<platform::AdminBaseClassFactory> inner;
        const qm::hresult hr = m_owner.machine().comClasses().GetAdminBaseClassFactory(inner);
        if (inner) {
            factory = std::make_unique<FaultyFactory>(std::move(inner), m_owner.faults);
        }
        return hr;
    }

  private:
    FaultyPlatform& m_owner;
};

FaultyPlatform::FaultyPlatform(const sim::MachineConfig& config)
    : m_temp(config),
      m_configuration(std::make_unique<Configuration>(*this)),
      m_classes(std::make_unique<Classes>(*this)) {}

FaultyPlatform::~FaultyPlatform() = default;

platform::ComClasses& FaultyPlatform::comClasses() {
    return *m_classes;
}

platform::IisConfiguration& FaultyPlatform::iisConfiguration() {
    return *m_configuration;
}

}  // namespace webrig::testing
