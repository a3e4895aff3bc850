#pragma once
// A simulated IIS 10 machine for the configuration store's tests: a known applicationHost.config,
// the test schema (or webrig's schema files in the machine's schema folder), a file cache of its
// own and a fixed key for secret attributes.

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/config_file_cache.h"
#include "platform/sim/iis7/sim_iis_configuration.h"
#include "testing/temp_machine.h"

namespace webrig::testing {

// The configuration paths the tests edit: the main file and the stock site.
inline constexpr std::u16string_view kAppHostPath = u"MACHINE/WEBROOT/APPHOST";
inline constexpr std::u16string_view kDefaultSitePath = u"MACHINE/WEBROOT/APPHOST/Default Web Site";

// The applicationHost.config the tests start from (CRLF line ends, as IIS writes them).
std::string TestAppHostConfig();
// "\n" to "\r\n".
std::string WithCrLf(std::string_view text);

enum class SchemaSource { testSchema, schemaFolder };

class IisConfigMachine {
  public:
    explicit IisConfigMachine(const std::string& appHostText = TestAppHostConfig(),
                              SchemaSource schema = SchemaSource::testSchema);

    const std::filesystem::path& folder() const noexcept { return m_machine.path(); }
    std::filesystem::path AppHostPath() const;
    // A path on drive C, "inetpub/wwwroot/web.config".
    std::filesystem::path DrivePath(std::string_view relative) const;

    std::string ReadAppHost() const { return ReadText(AppHostPath()); }
    void WriteAppHost(std::string_view text) const { WriteText(AppHostPath(), text); }
    static std::string ReadText(const std::filesystem::path& path);
    static void WriteText(const std::filesystem::path& path, std::string_view text);

    // The configuration system starts again, as in a new process: it reads the schema again.
    void Restart();
    // A fresh administration manager, as the runtime creates one for each setting.
    std::unique_ptr<platform::AdminManager> NewManager();
    sim::iis7::ConfigFileCache& cache() noexcept { return m_cache; }
    const sim::iis7::ConfigEncryption& encryption() const noexcept { return m_encryption; }
    sim::iis7::SimIisConfiguration& configuration() noexcept { return *m_configuration; }
    // Makes every file write of a commit fail (a full disk), or work again.
    void FailWrites(bool fail) noexcept { m_failWrites = fail; }

  private:
    TempMachine m_machine;
    sim::iis7::ConfigFileCache m_cache;
    sim::iis7::ConfigEncryption m_encryption;
    SchemaSource m_schemaSource;
    sim::iis7::ConfigMachine m_machineSettings;  // its schema is set by Restart
    std::unique_ptr<sim::iis7::SimIisConfiguration> m_configuration;
    bool m_failWrites = false;
};

// The full names of the sections a configuration file's <configSections> declares.
std::vector<std::u16string> DeclaredSections(const std::string& configText);

// Shortcuts over the seam for tests: each returns the HRESULT of the first call that fails.
qm::hresult PutAttribute(platform::AdminManager& manager, std::u16string_view section,
                         std::u16string_view path, std::u16string_view attribute,
                         const platform::Variant& value);
qm::hresult ReadAttribute(platform::AdminManager& manager, std::u16string_view section,
                          std::u16string_view path, std::u16string_view attribute,
                          std::u16string& text);

}  // namespace webrig::testing
