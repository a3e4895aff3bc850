#pragma once
// netsh.exe's "http add sslcert": binds a certificate of a local machine store to an IP address
// and port in HTTP.sys's configuration, which HTTP.sys keeps in the registry under
// HKLM\SYSTEM\CurrentControlSet\Services\HTTP\Parameters\SslBindingInfo\<ip:port>. Other netsh
// commands are not simulated: they end with 0 and change nothing.

#include "platform/registry.h"
#include "platform/sim/files/sim_file_system.h"
#include "platform/sim/programs/simulated_program.h"

namespace webrig::sim {

inline constexpr char16_t kSslBindingInfoKey[] =
    u"SYSTEM\\CurrentControlSet\\Services\\HTTP\\Parameters\\SslBindingInfo";

class Netsh final : public SimulatedProgram {
  public:
    Netsh(platform::Registry& registry, const SimFileSystem& files)
        : m_registry(registry), m_files(files) {}

    // ipport=, certhash= and appid= are needed, certstorename= is optional ("MY"); any other
    // parameter, or one netsh cannot read, gives "The parameter is incorrect.". The binding
    // fails with error 183 when the address already has one, and with 1312 when the store has
    // no certificate of that hash with a private key. netsh ends with 1 on every failure.
    ProgramRun Run(const std::vector<qm::wstring>& arguments) override;

  private:
    ProgramRun AddSslCert(const std::vector<qm::wstring>& parameters);

    platform::Registry& m_registry;
    const SimFileSystem& m_files;
};

}  // namespace webrig::sim
