#include "platform/sim/iis7/stock_application_host.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/schema.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"

namespace webrig::sim::iis7 {
namespace {

// Reads an applicationHost.config with the schema and lists everything the schema or the value
// rules do not accept: undeclared sections, unknown elements and attributes, refused values,
// missing required attributes and repeated keys.
class ConfigFileCheck {
  public:
    struct Options {
        // Stock files are written by IIS, so every value is already in its stored form.
        bool valuesAsStored = true;
        // Sections the schema does not describe are a problem (else they are passed over).
        bool everySectionDescribed = true;
    };

    ConfigFileCheck(const pugi::xml_document& document, Options options) : m_options(options) {
        const pugi::xml_node configuration = document.child("configuration");
        if (!configuration) {
            Problem("no <configuration>");
            return;
        }
        ReadDeclarations(configuration.child("configSections"), "");
        Walk(configuration, "");
        for (const pugi::xml_node& location : configuration.children("location")) {
            Walk(location, "");
        }
    }

    const std::vector<std::string>& problems() const { return m_problems; }
    const std::set<std::string>& sectionsSeen() const { return m_seen; }
    const std::set<std::string>& declared() const { return m_declared; }

  private:
    void Problem(const std::string& text) { m_problems.push_back(text); }

    void ReadDeclarations(const pugi::xml_node& node, const std::string& prefix) {
        for (const pugi::xml_node& child : node.children()) {
            const std::string name = prefix + child.attribute("name").value();
            if (std::string_view(child.name()) == "section") {
                m_declared.insert(name);
            } else if (std::string_view(child.name()) == "sectionGroup") {
                m_groups.insert(name);
                ReadDeclarations(child, name + "/");
            }
        }
    }

    void Walk(const pugi::xml_node& node, const std::string& prefix) {
        for (const pugi::xml_node& child : node.children()) {
            const std::string name = prefix + child.name();
            if (name == "configSections" || name == "location") {
                continue;
            }
            const SectionSchema* schema = Schema::BuiltIn().FindSection(qm::from_utf8(name));
            const bool byMachineConfig = schema != nullptr && schema->machineConfigDeclaration;
            if (m_declared.count(name) != 0 || byMachineConfig) {
                m_seen.insert(name);
                if (schema != nullptr) {
                    CheckElement(child, schema->root, name);
                } else if (m_options.everySectionDescribed) {
                    Problem(name + ": declared but not described by the schema");
                }
            } else if (m_groups.count(name) != 0) {
                Walk(child, name + "/");
            } else {
                Problem(name + ": neither a declared section nor a section group");
            }
        }
    }

    void CheckElement(const pugi::xml_node& node, const ElementSchema& schema,
                      const std::string& where) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            const std::u16string name = qm::from_utf8(attribute.name());
            if (IsConfigurationSystemAttribute(name)) {
                continue;
            }
            const AttributeSchema* described = schema.FindAttribute(name);
            if (described == nullptr || described->name != name) {
                Problem(where + ": unknown attribute " + attribute.name());
                continue;
            }
            const std::u16string value = qm::from_utf8(attribute.value());
            if (described->encrypted && ConfigEncryption::IsEncrypted(value)) {
                continue;
            }
            const std::optional<std::u16string> stored = NormalizeAttributeText(*described, value);
            if (!stored || (m_options.valuesAsStored && *stored != value)) {
                Problem(where + ": " + attribute.name() + "=\"" + attribute.value() + "\" is " +
                        (stored ? "not in its stored form" : "refused"));
            }
        }
        std::set<std::u16string> keys;
        for (const pugi::xml_node& child : node.children()) {
            const std::u16string name = qm::from_utf8(child.name());
            const std::string childWhere = where + "/" + child.name();
            const ElementSchema* entry = schema.collection ? schema.FindEntry(name) : nullptr;
            if (entry != nullptr && entry->name == name) {
                CheckElement(child, *entry, childWhere);
                CheckEntry(child, *entry, *schema.collection, keys, childWhere);
            } else if (schema.collection && !name.empty() &&
                       (name == schema.collection->removeElement ||
                        name == schema.collection->clearElement)) {
                continue;
            } else if (const ElementSchema* element = schema.FindChild(name);
                       element != nullptr && element->name == name) {
                CheckElement(child, *element, childWhere);
            } else {
                Problem(childWhere + ": unknown element");
            }
        }
    }

    void CheckEntry(const pugi::xml_node& node, const ElementSchema& entry,
                    const CollectionSchema& collection, std::set<std::u16string>& keys,
                    const std::string& where) {
        std::u16string key;
        for (const AttributeSchema& attribute : entry.attributes) {
            const pugi::xml_attribute present = node.attribute(qm::to_utf8(attribute.name).c_str());
            if (attribute.required && !present) {
                Problem(where + ": required " + qm::to_utf8(attribute.name) + " is missing");
            }
            if (attribute.isUniqueKey || attribute.isCombinedKey) {
                const std::u16string value =
                    present ? qm::from_utf8(present.value()) : attribute.defaultValue;
                key += attribute.name + u"=" +
                       (attribute.caseSensitive ? value : qm::to_upper(value)) + u";";
            }
        }
        if (!collection.allowDuplicates && !key.empty() && !keys.insert(key).second) {
            Problem(where + ": the key " + qm::to_utf8(key) + " is repeated");
        }
    }

    Options m_options;
    std::set<std::string> m_declared;
    std::set<std::string> m_groups;
    std::set<std::string> m_seen;
    std::vector<std::string> m_problems;
};

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "\n  " + line;
    }
    return text;
}

class StockFiles : public ::testing::TestWithParam<IisVersion> {
  protected:
    void SetUp() override {
        m_text = StockApplicationHostConfig(GetParam());
        const pugi::xml_parse_result parsed = m_document.load_string(m_text.c_str());
        ASSERT_TRUE(parsed) << parsed.description() << " at byte " << parsed.offset;
    }

    pugi::xml_node Node(const char* xpath) { return m_document.select_node(xpath).node(); }

    std::string m_text;
    pugi::xml_document m_document;
};

TEST_P(StockFiles, HoldOnlyWhatTheSchemaAccepts) {
    const ConfigFileCheck check(m_document, {});
    EXPECT_TRUE(check.problems().empty()) << Joined(check.problems());
    // The sections the runtime edits are all there to be read.
    for (const char* section :
         {"system.applicationHost/applicationPools", "system.applicationHost/sites",
          "system.applicationHost/customMetadata", "system.webServer/handlers",
          "system.webServer/defaultDocument", "system.webServer/directoryBrowse",
          "system.webServer/httpErrors", "system.webServer/httpLogging",
          "system.webServer/staticContent", "system.webServer/asp",
          "system.webServer/security/isapiCgiRestriction",
          "system.webServer/security/authentication/anonymousAuthentication",
          "system.webServer/security/authentication/basicAuthentication",
          "system.webServer/security/authentication/windowsAuthentication"}) {
        EXPECT_EQ(check.sectionsSeen().count(section), 1u) << section;
    }
    // IIS declares these; the schema must describe each one the runtime can reach.
    for (const std::string& declared : check.declared()) {
        if (declared.starts_with("system.applicationHost/") &&
            declared != "system.applicationHost/configHistory") {
            EXPECT_NE(Schema::BuiltIn().FindSection(qm::from_utf8(declared)), nullptr) << declared;
        }
    }
}

// ASP.NET's setup moves both sections there; the server's own level and every web.config may
// then set them although their declarations deny overrides.
TEST_P(StockFiles, KeepHandlersAndModulesInALocationForTheServerThatAllowsOverrides) {
    for (const char* section : {"handlers", "modules"}) {
        EXPECT_FALSE(Node((std::string("/configuration/system.webServer/") + section).c_str()));
        EXPECT_TRUE(Node((std::string("/configuration/location[@path=''][@overrideMode='Allow']"
                                      "/system.webServer/") +
                          section)
                             .c_str()))
            << section;
    }
    EXPECT_STREQ(m_document.child("configuration").last_child().name(), "location");
}

TEST_P(StockFiles, UseCrLfLineEndsAndFourSpaceIndentation) {
    ASSERT_FALSE(m_text.empty());
    EXPECT_NE(m_text.substr(0, 3), "\xEF\xBB\xBF");
    EXPECT_TRUE(m_text.ends_with("</configuration>\r\n"));
    for (size_t at = m_text.find('\n'); at != std::string::npos; at = m_text.find('\n', at + 1)) {
        ASSERT_GT(at, 0u);
        ASSERT_EQ(m_text[at - 1], '\r') << "a bare line feed at byte " << at;
    }
    std::istringstream lines(m_text);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t indent = line.find_first_not_of(' ');
        if (indent != std::string::npos && line[indent] != '\r') {
            EXPECT_EQ(indent % 4, 0u) << line;
        }
        EXPECT_EQ(line.find('\t'), std::string::npos) << line;
    }
}

INSTANTIATE_TEST_SUITE_P(Releases, StockFiles,
                         ::testing::Values(IisVersion{7, 5}, IisVersion{8, 5}, IisVersion{10, 0}));

TEST(StockMachine, Iis7AndLaterGetTheFileAndTheSiteFolder) {
    MachineConfig config;
    config.windowsDirectory = u"C:\\WINNT";
    config.iisVersion = {8, 5};
    testing::TempMachine temp(config);
    const std::filesystem::path drive = DriveCPath(temp.path());
    const auto file = testing::ReadBytes(drive / "WINNT" / "System32" / "inetsrv" / "config" /
                                         "applicationHost.config");
    const std::string expected = StockApplicationHostConfig(config.iisVersion);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.data()), file.size()), expected);
    EXPECT_TRUE(std::filesystem::is_regular_file(drive / "inetpub" / "wwwroot" / "iisstart.htm"));
    // The 32-bit webrig on this 64-bit machine reaches the real System32 only as Sysnative.
    EXPECT_TRUE(temp.machine().files().PathExists(
        u"C:\\WINNT\\Sysnative\\inetsrv\\config\\applicationHost.config"));
    EXPECT_EQ(ApplicationHostConfigPath(config),
              u"C:\\WINNT\\System32\\inetsrv\\config\\applicationHost.config");
}

TEST(StockMachine, OlderIisAndNoIisGetNone) {
    for (const IisVersion version : {IisVersion{6, 0}, IisVersion{0, 0}}) {
        MachineConfig config;
        config.iisVersion = version;
        testing::TempMachine temp(config);
        EXPECT_FALSE(std::filesystem::exists(DriveCPath(temp.path()) / "inetpub"));
        EXPECT_FALSE(temp.machine().files().PathExists(
            u"C:\\Windows\\System32\\inetsrv\\config\\applicationHost.config"));
    }
}

// A real IIS 10 file (tests/data/iis-samples, CC0): what it holds of the sections our schema
// describes must pass the schema and the value rules, as IIS wrote it.
TEST(RealFile, SectionsTheSchemaKnowsPass) {
    const char* data = std::getenv("WEBRIG_TEST_DATA");
    ASSERT_NE(data, nullptr);
    const std::filesystem::path path =
        std::filesystem::path(data) / "iis-samples" / "iis10-reverse-proxy.applicationHost.config";
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_file(path.c_str());
    ASSERT_TRUE(parsed) << path << ": " << parsed.description();
    const ConfigFileCheck check(document, {.valuesAsStored = true, .everySectionDescribed = false});
    EXPECT_TRUE(check.problems().empty()) << Joined(check.problems());
    size_t described = 0;
    for (const std::string& section : check.sectionsSeen()) {
        described += Schema::BuiltIn().FindSection(qm::from_utf8(section)) != nullptr ? 1 : 0;
    }
    EXPECT_GE(described, 35u);
}

}  // namespace
}  // namespace webrig::sim::iis7
