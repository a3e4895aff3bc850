#pragma once
// The IIS 7+ backend on a fresh simulated IIS 10 machine whose administration objects can be
// told to fail, with stand-ins for the controller's services that keep every log line.

#include <gtest/gtest.h>

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>

#include "apphost/iis_functions_vista.h"
#include "host/password_masking.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/faulty_platform.h"
#include "testing/iis_config_machine.h"

namespace webrig::testing {

inline constexpr char16_t kSitePath[] = u"MACHINE/WEBROOT/APPHOST/Default Web Site";

class TestVistaBackend final : public CIisFunctionsVista {
  public:
    explicit TestVistaBackend(platform::Platform& platform) : CIisFunctionsVista(platform) {}

    void LogMessage(const qm::wstring& text) override { log.push_back(qm::to_utf8(text)); }
    bool WebsiteExists(CIISWebsiteProp&) override { return false; }
    qm::wstring GetPortFromBindingInfo(const qm::wstring& binding) override {  // "ip:port:host"
        const size_t first = binding.find(u':');
        return binding.substr(first + 1, binding.find(u':', first + 1) - first - 1);
    }
    qm::wstring GetBasePath(const CIISWebsiteProp&, const qm::wstring&) override { return {}; }
    qm::wstring MaskPasswordValue(qm::wstring name, const qm::wstring& value) override {
        return host::MaskPasswordValue(u"", name, value, nullptr);
    }

    size_t Count(std::string_view line) const { return std::count(log.begin(), log.end(), line); }
    bool Logged(std::string_view line) const { return Count(line) != 0; }

    using CIisFunctionsVista::m_bValueChanged;
    using CIisFunctionsVista::m_sAppPoolName;
    using CIisFunctionsVista::m_sParentAppPath;
    using CIisFunctionsVista::m_sPhysicalPath;
    using CIisFunctionsVista::m_spSiteElement;
    using CIisFunctionsVista::m_sSiteName;
    std::vector<std::string> log;
};

struct VistaMachine {
    FaultyPlatform platform;
    TestVistaBackend backend{platform};
    CIISWebsiteProp website;

    VistaMachine() {
        website.DisplayName = u"Default Web Site";
        website.SiteNumber = u"1";
        website.RootDir = u"C:\\inetpub\\wwwroot";
    }
    std::filesystem::path Drive(const std::string& path) {
        return sim::DriveCPath(platform.temp().path()) / path;
    }
    std::filesystem::path AppHost() {
        return Drive("Windows/System32/inetsrv/config/applicationHost.config");
    }
    // applicationHost.config's elements and attributes, without white space and comments.
    std::string AppHostElements() {
        std::ostringstream text;
        Load().save(text, "", pugi::format_raw);
        return text.str();
    }
    size_t CountNodes(const std::string& xpath) {
        return Load().select_nodes(xpath.c_str()).size();
    }
    pugi::xml_document& Load() {
        EXPECT_TRUE(m_document.load_file(AppHost().c_str()));
        return m_document;
    }
    pugi::xml_document m_document;
    // Replaces the first `from` in applicationHost.config.
    void EditAppHost(const std::string& from, const std::string& to) {
        std::string text = IisConfigMachine::ReadText(AppHost());
        IisConfigMachine::WriteText(AppHost(), text.replace(text.find(from), from.size(), to));
    }
    void AddApplications(const std::vector<std::string>& paths) {
        for (const std::string& path : paths) {
            EditAppHost(
                "<bindings>",
                "<application path=\"" + path +
                    R"("><virtualDirectory path="/" physicalPath="C:\inetpub" /></application><bindings>)");
        }
    }
    // The Default Web Site becomes the current site, as a lookup makes it.
    void SelectDefaultSite() {
        backend.m_spSiteElement = backend.FindElementInCollection(
            backend.GetAdminSection(u"system.applicationHost/sites", u"MACHINE/WEBROOT/APPHOST"),
            u"name", u"Default Web Site", u"", u"", false);
    }
    static std::unique_ptr<CIISVRootProp> VRoot(const std::u16string& name, int32_t itemType,
                                                const std::u16string& appName = u"") {
        auto vroot = std::make_unique<CIISVRootProp>();
        vroot->DisplayName = name;
        vroot->ItemType = itemType;
        vroot->AppName = appName;
        vroot->RootDir = u"C:\\content";
        return vroot;
    }
};

struct VistaFixture : ::testing::Test, VistaMachine {};

}  // namespace webrig::testing
