#include "platform/sim/machine/unavailable_machine.h"

#include "support/last_error.h"

namespace webrig::sim {
namespace {

using qm::win32::not_ready;

class UnavailableRegistry final : public platform::Registry {
  public:
    uint32_t OpenKey(platform::RegKey, qm::wstring_view, uint32_t,
                     platform::RegKey& result) override {
        result = platform::kNoKey;
        return not_ready;
    }
    uint32_t CreateKey(platform::RegKey, qm::wstring_view, uint32_t, platform::RegKey& result,
                       bool*) override {
        result = platform::kNoKey;
        return not_ready;
    }
    uint32_t CloseKey(platform::RegKey) override { return not_ready; }
    uint32_t QueryValue(platform::RegKey, qm::wstring_view, platform::RegValue&) override {
        return not_ready;
    }
    uint32_t SetValue(platform::RegKey, qm::wstring_view, const platform::RegValue&) override {
        return not_ready;
    }
    uint32_t DeleteValue(platform::RegKey, qm::wstring_view) override { return not_ready; }
    uint32_t EnumKey(platform::RegKey, uint32_t, qm::wstring&) override { return not_ready; }
    uint32_t EnumValue(platform::RegKey, uint32_t, qm::wstring&, platform::RegValue&) override {
        return not_ready;
    }
    uint32_t DeleteKey(platform::RegKey, qm::wstring_view, uint32_t) override { return not_ready; }
};

class UnavailableSystemInfo final : public platform::SystemInfo {
  public:
    qm::wstring WindowsDirectory() override { return {}; }
    qm::wstring SystemDirectory() override { return {}; }
    platform::OsVersion Version() override { return {}; }
    platform::ProcessorArchitecture NativeArchitecture() override {
        return platform::ProcessorArchitecture::unknown;
    }
};

class UnavailableFileSystem final : public platform::FileSystem {
  public:
    bool PathExists(qm::wstring_view) override {
        qm::set_last_error(not_ready);
        return false;
    }
    uint32_t ReadWholeFile(qm::wstring_view, uint64_t, std::vector<std::byte>& contents) override {
        contents.clear();
        qm::set_last_error(not_ready);
        return not_ready;
    }
};

class UnavailableServiceControl final : public platform::ServiceControl {
  public:
    platform::ServiceHandle OpenManager(uint32_t) override { return Unavailable(); }
    platform::ServiceHandle OpenNamedService(platform::ServiceHandle, qm::wstring_view,
                                             uint32_t) override {
        return Unavailable();
    }
    bool QueryStatus(platform::ServiceHandle, platform::ServiceStatus&) override {
        return Unavailable() != platform::kNoService;
    }
    bool Start(platform::ServiceHandle) override { return Unavailable() != platform::kNoService; }
    bool Control(platform::ServiceHandle, uint32_t, platform::ServiceStatus&) override {
        return Unavailable() != platform::kNoService;
    }
    bool Close(platform::ServiceHandle) override { return Unavailable() != platform::kNoService; }

  private:
    static platform::ServiceHandle Unavailable() {
        qm::set_last_error(not_ready);
        return platform::kNoService;
    }
};

class UnavailableComClasses final : public platform::ComClasses {
  public:
    qm::hresult ProbeAdminBaseClassFactory() override { return qm::hresult_from_win32(not_ready); }
    qm::hresult GetAdminBaseClassFactory(
        std::unique_ptr<platform::AdminBaseClassFactory>& factory) override {
        factory.reset();
        return qm::hresult_from_win32(not_ready);
    }
};

class UnavailableIisConfiguration final : public platform::IisConfiguration {
  public:
    qm::hresult CreateAdminManager(std::unique_ptr<platform::AdminManager>& manager) override {
        manager.reset();
        return qm::hresult_from_win32(not_ready);
    }
};

template <typename Result>
Result NotReady(Result result) {
    qm::set_last_error(not_ready);
    return result;
}

class UnavailableCertificates final : public platform::Certificates {
  public:
    bool QueryFileObject(qm::wstring_view, platform::CertQueryResult& result) override {
        result = {};
        return NotReady(false);
    }
    platform::CertStore ImportPfx(std::span<const std::byte>, qm::wstring_view, uint32_t) override {
        return NotReady(platform::kNoCertStore);
    }
    platform::CertStore OpenLocalMachineStore(qm::wstring_view, uint32_t, uint32_t) override {
        return NotReady(platform::kNoCertStore);
    }
    platform::CertContext EnumCertificates(platform::CertStore, platform::CertContext) override {
        return NotReady(platform::kNoCertContext);
    }
    bool AddEncodedCertificate(platform::CertStore, uint32_t, std::span<const std::byte>, uint32_t,
                               platform::CertContext* added) override {
        return Refuse(added);
    }
    bool AddCertificateContext(platform::CertStore, platform::CertContext, uint32_t,
                               platform::CertContext* added) override {
        return Refuse(added);
    }
    bool GetContextProperty(platform::CertContext, uint32_t, std::byte*, uint32_t&) override {
        return NotReady(false);
    }
    bool ContextEncoded(platform::CertContext, uint32_t&, std::vector<std::byte>&) override {
        return NotReady(false);
    }
    bool FreeContext(platform::CertContext context) override {
        return context == platform::kNoCertContext || NotReady(false);
    }
    bool CloseStore(platform::CertStore store, uint32_t) override {
        return store == platform::kNoCertStore || NotReady(false);
    }

  private:
    static bool Refuse(platform::CertContext* added) {
        if (added != nullptr) {
            *added = platform::kNoCertContext;
        }
        return NotReady(false);
    }
};

class UnavailableProcesses final : public platform::Processes {
  public:
    bool Start(qm::wstring_view, platform::ProcessInformation& info) override {
        info = {};
        return NotReady(false);
    }
    uint32_t Wait(platform::ProcessHandle, uint32_t) override {
        return NotReady(platform::kWaitFailed);
    }
    bool GetExitCode(platform::ProcessHandle, uint32_t&) override { return NotReady(false); }
    bool Close(platform::ProcessHandle) override { return NotReady(false); }
};

class UnavailableAdsi final : public platform::Adsi {
  public:
    uint32_t LoadActiveDs(qm::wstring_view, std::unique_ptr<platform::ActiveDs>& library) override {
        library.reset();
        return not_ready;
    }
};

}  // namespace

UnavailableMachine::UnavailableMachine(qm::wstring reason)
    : m_reason(std::move(reason)),
      m_registry(std::make_unique<UnavailableRegistry>()),
      m_system(std::make_unique<UnavailableSystemInfo>()),
      m_files(std::make_unique<UnavailableFileSystem>()),
      m_services(std::make_unique<UnavailableServiceControl>()),
      m_comClasses(std::make_unique<UnavailableComClasses>()),
      m_iisConfiguration(std::make_unique<UnavailableIisConfiguration>()),
      m_certificates(std::make_unique<UnavailableCertificates>()),
      m_processes(std::make_unique<UnavailableProcesses>()),
      m_adsi(std::make_unique<UnavailableAdsi>()) {}

UnavailableMachine::~UnavailableMachine() = default;

}  // namespace webrig::sim
