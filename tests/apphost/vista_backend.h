#pragma once
// The IIS 7+ backend on a simulated IIS 10 machine whose administration objects can be told to
// fail. The controller's services are stand-ins that keep every log line.

#include <gtest/gtest.h>

#include <algorithm>

#include "apphost/iis_functions_vista.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/config_xml.h"
#include "testing/faulty_platform.h"
#include "testing/iis_config_machine.h"

namespace webrig::testing {

class TestVistaBackend final : public CIisFunctionsVista {
  public:
    explicit TestVistaBackend(platform::Platform& platform) : CIisFunctionsVista(platform) {}

    void LogMessage(const qm::wstring& text) override { log.push_back(qm::to_utf8(text)); }
    bool WebsiteExists(CIISWebsiteProp&) override { return false; }
    // "ip:port:host"
    qm::wstring GetPortFromBindingInfo(const qm::wstring& binding) override {
        const size_t first = binding.find(u':');
        return binding.substr(first + 1, binding.find(u':', first + 1) - first - 1);
    }
    qm::wstring GetBasePath(const CIISWebsiteProp&, const qm::wstring&) override { return {}; }
    qm::wstring MaskPasswordValue(qm::wstring name, const qm::wstring& value) override {
        return name == u"password" ? u"********" : value;
    }

    size_t Count(std::string_view line) const { return std::count(log.begin(), log.end(), line); }
    bool Logged(std::string_view line) const { return Count(line) != 0; }

    using CIisFunctionsVista::AddElement;
    using CIisFunctionsVista::CanDeletePath;
    using CIisFunctionsVista::ChangeCommitPath;
    using CIisFunctionsVista::CommitChanges;
    using CIisFunctionsVista::CreateNewElement;
    using CIisFunctionsVista::FindElementInCollection;
    using CIisFunctionsVista::FindParentApplication;
    using CIisFunctionsVista::GetAdminSection;
    using CIisFunctionsVista::GetCommitPath;
    using CIisFunctionsVista::GetConfigElement;
    using CIisFunctionsVista::GetConfigElementCollection;
    using CIisFunctionsVista::GetElementCollection;
    using CIisFunctionsVista::m_bValueChanged;
    using CIisFunctionsVista::m_sAppPoolName;
    using CIisFunctionsVista::m_sConfigDirectory;
    using CIisFunctionsVista::m_sParentAppPath;
    using CIisFunctionsVista::m_sPhysicalPath;
    using CIisFunctionsVista::m_spSiteElement;
    using CIisFunctionsVista::m_sSiteName;
    using CIisFunctionsVista::PutCommitPath;
    using CIisFunctionsVista::PutPropertyCommon;
    using CIisFunctionsVista::PutPropertyValue;
    using CIisFunctionsVista::RemoveApplicationLeftovers;
    using CIisFunctionsVista::SetCommitPath;

    std::vector<std::string> log;
};

inline constexpr char16_t kSitePath[] = u"MACHINE/WEBROOT/APPHOST/Default Web Site";

// A fresh IIS 10 machine with the backend on it.
struct VistaMachine {
    FaultyPlatform platform;
    TestVistaBackend backend{platform};
    CIISWebsiteProp website;

    VistaMachine() {
        website.DisplayName = u"Default Web Site";
        website.SiteNumber = u"1";
        website.Port = u"80";
        website.RootDir = u"C:\\inetpub\\wwwroot";
    }

    std::filesystem::path DrivePath(const std::string& relative) {
        return sim::DriveCPath(platform.temp().path()) / relative;
    }
    std::filesystem::path AppHost() {
        return DrivePath("Windows/System32/inetsrv/config/applicationHost.config");
    }
    std::unique_ptr<pugi::xml_document> AppHostXml() { return ReadConfigXml(AppHost()); }
    // Elements of applicationHost.config an XPath selects.
    size_t CountNodes(const std::string& xpath) {
        return AppHostXml()->select_nodes(xpath.c_str()).size();
    }
    // Replaces the first `from` of applicationHost.config's text.
    void EditAppHost(const std::string& from, const std::string& to) {
        std::string text = IisConfigMachine::ReadText(AppHost());
        text.replace(text.find(from), from.size(), to);
        IisConfigMachine::WriteText(AppHost(), text);
    }
    // Applications of the Default Web Site, after its root application.
    void AddApplications(const std::vector<std::string>& paths) {
        std::string xml;
        for (const std::string& path : paths) {
            xml += "<application path=\"" + path +
                   R"("><virtualDirectory path="/" physicalPath="C:\inetpub" /></application>)";
        }
        EditAppHost("<bindings>", xml + "<bindings>");
    }
    // The Default Web Site becomes the current site, as a site lookup makes it.
    void SelectDefaultSite() {
        backend.m_spSiteElement = backend.FindElementInCollection(
            backend.GetAdminSection(u"system.applicationHost/sites", u"MACHINE/WEBROOT/APPHOST"),
            u"name", u"Default Web Site", u"", u"", false);
        ASSERT_NE(backend.m_spSiteElement, nullptr);
    }
    static std::unique_ptr<CIISVRootProp> VRoot(const std::u16string& displayName, int32_t itemType,
                                                const std::u16string& appName = u"") {
        auto vroot = std::make_unique<CIISVRootProp>();
        vroot->DisplayName = displayName;
        vroot->ItemType = itemType;
        vroot->AppName = appName;
        vroot->RootDir = u"C:\\content";
        return vroot;
    }
};

struct VistaFixture : ::testing::Test, VistaMachine {};

}  // namespace webrig::testing
