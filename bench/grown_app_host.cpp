#include "grown_app_host.h"

#include <stdexcept>

#include "platform/sim/iis7/schema.h"
#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/iis_config_machine.h"

namespace webrig::bench {
namespace {

void InsertBefore(std::string& text, std::string_view anchor, const std::string& block) {
    const size_t at = text.find(anchor);
    if (at == std::string::npos) {
        throw std::runtime_error("the sample file has changed: no " + std::string(anchor));
    }
    text.insert(at, block);
}

}  // namespace

std::string GrownRealAppHost(int sites) {
    std::string text = testing::IisConfigMachine::ReadText(
        std::string(WEBRIG_SOURCE_DIR) +
        "/tests/data/iis-samples/iis10-reverse-proxy.applicationHost.config");
    std::string siteBlock;
    std::string poolBlock;
    for (int i = 2; i <= sites; ++i) {
        const std::string n = std::to_string(i);
        siteBlock +=
            "            <site name=\"Site " + n + "\" id=\"" + n +
            "\" serverAutoStart=\"true\">\r\n"
            "                <application path=\"/\" applicationPool=\"Pool " +
            n +
            "\">\r\n"
            "                    <virtualDirectory path=\"/\" "
            "physicalPath=\"D:\\Sites\\site" +
            n +
            "\\wwwroot\" />\r\n"
            "                </application>\r\n"
            "                <bindings>\r\n"
            "                    <binding protocol=\"http\" bindingInformation=\"*:80:site" +
            n +
            ".example.com\" />\r\n"
            "                </bindings>\r\n"
            "            </site>\r\n";
        poolBlock += "            <add name=\"Pool " + n +
                     "\" managedRuntimeVersion=\"v4.0\" startMode=\"AlwaysRunning\" />\r\n";
    }
    InsertBefore(text, "            <siteDefaults>", siteBlock);
    InsertBefore(text, "            <applicationPoolDefaults", poolBlock);
    return text;
}

GrownMachine::GrownMachine(int sites) : m_text(GrownRealAppHost(sites)) {
    const auto path = sim::DriveCPath(m_machine.path()) /
                      "Windows/System32/inetsrv/config/applicationHost.config";
    std::filesystem::create_directories(path.parent_path());
    testing::IisConfigMachine::WriteText(path, m_text);
}

std::unique_ptr<sim::iis7::SimIisConfiguration> GrownMachine::NewConfiguration(
    sim::iis7::ConfigFileCache& cache) {
    return std::make_unique<sim::iis7::SimIisConfiguration>(sim::iis7::ConfigMachine{
        sim::DriveCPath(m_machine.path()), sim::MachineLockPath(m_machine.path()),
        m_machine.machine().config(), &sim::iis7::Schema::BuiltIn(),
        []() -> const sim::iis7::ConfigEncryption& {
            throw std::logic_error("no secret is read here");
        },
        &cache, sim::WriteFileAtomically});
}

std::unique_ptr<platform::AdminManager> GrownMachine::NewManager() {
    if (!m_configuration) {
        m_configuration = NewConfiguration(m_cache);
    }
    return bench::NewManager(*m_configuration);
}

std::unique_ptr<platform::AdminManager> NewManager(sim::iis7::SimIisConfiguration& configuration) {
    std::unique_ptr<platform::AdminManager> manager;
    if (configuration.CreateAdminManager(manager) != 0) {
        throw std::runtime_error("the administration manager cannot be created");
    }
    return manager;
}

}  // namespace webrig::bench
