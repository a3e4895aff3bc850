#include "testing/iis_config_machine.h"

#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <stdexcept>

#include "platform/sim/iis7/schema_folder.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/iis_test_schema.h"

namespace webrig::testing {
namespace {

constexpr std::string_view kAppHost = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- The configuration the tests start from. -->
<configuration>
    <configSections>
        <sectionGroup name="system.applicationHost">
            <section name="applicationPools" allowDefinition="AppHostOnly" overrideModeDefault="Deny" />
            <section name="customMetadata" allowDefinition="AppHostOnly" overrideModeDefault="Deny" />
            <section name="sites" allowDefinition="AppHostOnly" overrideModeDefault="Deny" />
        </sectionGroup>
        <sectionGroup name="system.webServer">
            <section name="asp" overrideModeDefault="Deny" />
            <section name="defaultDocument" overrideModeDefault="Allow" />
            <section name="directoryBrowse" overrideModeDefault="Allow" />
            <section name="handlers" overrideModeDefault="Deny" />
            <section name="httpErrors" overrideModeDefault="Allow" />
            <sectionGroup name="security">
                <sectionGroup name="authentication">
                    <section name="anonymousAuthentication" overrideModeDefault="Deny" />
                </sectionGroup>
            </sectionGroup>
        </sectionGroup>
    </configSections>

    <system.applicationHost>
        <applicationPools>
            <add name="DefaultAppPool" />
            <applicationPoolDefaults managedRuntimeVersion="v4.0">
                <processModel identityType="ApplicationPoolIdentity" />
            </applicationPoolDefaults>
        </applicationPools>
        <customMetadata />
        <sites>
            <site name="Default Web Site" id="1">
                <application path="/">
                    <virtualDirectory path="/" physicalPath="%SystemDrive%\inetpub\wwwroot" />
                </application>
                <application path="/shop" applicationPool="DefaultAppPool">
                    <virtualDirectory path="/" physicalPath="C:\inetpub\shop" />
                </application>
                <bindings>
                    <binding protocol="http" bindingInformation="*:80:" />
                </bindings>
            </site>
            <siteDefaults serverAutoStart="true" />
            <applicationDefaults applicationPool="DefaultAppPool" />
        </sites>
    </system.applicationHost>

    <system.webServer>
        <asp />
        <defaultDocument enabled="true">
            <files>
                <add value="Default.htm" />
                <add value="index.html" />
            </files>
        </defaultDocument>
        <directoryBrowse enabled="false" />
        <handlers accessPolicy="Read, Script">
            <add name="StaticFile" path="*" verb="*" modules="StaticFileModule" resourceType="Either" />
        </handlers>
        <httpErrors>
            <error statusCode="404" path="404.htm" />
            <error statusCode="500" path="500.htm" />
        </httpErrors>
        <security>
            <authentication>
                <anonymousAuthentication enabled="true" userName="IUSR" />
            </authentication>
        </security>
    </system.webServer>
</configuration>
)";

}  // namespace

std::string WithCrLf(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    for (const char c : text) {
        if (c == '\n') {
            out += '\r';
        }
        out += c;
    }
    return out;
}

std::string TestAppHostConfig() {
    return WithCrLf(kAppHost);
}

IisConfigMachine::IisConfigMachine(const std::string& appHostText, SchemaSource schema)
    : m_encryption(std::string(32, '\x5a')) {
    std::filesystem::create_directories(AppHostPath().parent_path());
    std::filesystem::create_directories(DrivePath("inetpub/wwwroot"));
    std::filesystem::create_directories(DrivePath("inetpub/shop"));
    WriteAppHost(appHostText);
    sim::iis7::ConfigMachine machine;
    machine.driveRoot = sim::DriveCPath(m_machine.path());
    machine.lockFile = sim::MachineLockPath(m_machine.path());
    machine.config = m_machine.machine().config();
    if (schema == SchemaSource::schemaFolder) {
        const auto folder = AppHostPath().parent_path() / "schema";
        std::filesystem::create_directories(folder);
        for (const sim::iis7::SchemaFile& file : sim::iis7::Schema::BuiltInFiles()) {
            WriteText(folder / file.name, file.text);
        }
    }
    m_schemaSource = schema;
    machine.encryption = [this]() -> const sim::iis7::ConfigEncryption& { return m_encryption; };
    machine.cache = &m_cache;
    machine.writer = [this](const std::filesystem::path& path, std::span<const std::byte> bytes) {
        return !m_failWrites && sim::WriteFileAtomically(path, bytes);
    };
    m_machineSettings = std::move(machine);
    Restart();
}

void IisConfigMachine::Restart() {
    sim::iis7::ConfigMachine machine = m_machineSettings;
    machine.schema =
        m_schemaSource == SchemaSource::schemaFolder
            ? sim::iis7::SchemaFolderProvider(machine.driveRoot, machine.config.windowsDirectory)
            : sim::iis7::FixedSchema(IisTestSchema());
    m_configuration = std::make_unique<sim::iis7::SimIisConfiguration>(std::move(machine));
}

std::filesystem::path IisConfigMachine::AppHostPath() const {
    return DrivePath("Windows/System32/inetsrv/config/applicationHost.config");
}

std::filesystem::path IisConfigMachine::DrivePath(std::string_view relative) const {
    return sim::DriveCPath(m_machine.path()) / relative;
}

std::string IisConfigMachine::ReadText(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return std::string((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
}

void IisConfigMachine::WriteText(const std::filesystem::path& path, std::string_view text) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!stream) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::unique_ptr<platform::AdminManager> IisConfigMachine::NewManager() {
    std::unique_ptr<platform::AdminManager> manager;
    if (m_configuration->CreateAdminManager(manager) != qm::hr::ok) {
        throw std::runtime_error("the administration manager cannot be created");
    }
    return manager;
}

namespace {

void AddDeclared(const pugi::xml_node& group, const std::string& prefix,
                 std::vector<std::u16string>& names) {
    for (const pugi::xml_node& child : group.children()) {
        const std::string name = prefix + child.attribute("name").value();
        if (std::string_view(child.name()) == "section") {
            names.push_back(qm::from_utf8(name));
        } else if (std::string_view(child.name()) == "sectionGroup") {
            AddDeclared(child, name + "/", names);
        }
    }
}

}  // namespace

std::vector<std::u16string> DeclaredSections(const std::string& configText) {
    pugi::xml_document document;
    std::vector<std::u16string> names;
    if (document.load_string(configText.c_str())) {
        AddDeclared(document.child("configuration").child("configSections"), "", names);
    }
    return names;
}

qm::hresult PutAttribute(platform::AdminManager& manager, std::u16string_view section,
                         std::u16string_view path, std::u16string_view attribute,
                         const platform::Variant& value) {
    std::shared_ptr<platform::ConfigElement> element;
    if (const qm::hresult hr = manager.GetAdminSection(section, path, element); hr != 0) {
        return hr;
    }
    std::shared_ptr<platform::ConfigProperty> property;
    if (const qm::hresult hr = element->GetPropertyByName(attribute, property); hr != 0) {
        return hr;
    }
    return property->PutValue(value);
}

qm::hresult ReadAttribute(platform::AdminManager& manager, std::u16string_view section,
                          std::u16string_view path, std::u16string_view attribute,
                          std::u16string& text) {
    std::shared_ptr<platform::ConfigElement> element;
    if (const qm::hresult hr = manager.GetAdminSection(section, path, element); hr != 0) {
        return hr;
    }
    std::shared_ptr<platform::ConfigProperty> property;
    if (const qm::hresult hr = element->GetPropertyByName(attribute, property); hr != 0) {
        return hr;
    }
    return property->GetStringValue(text);
}

}  // namespace webrig::testing
