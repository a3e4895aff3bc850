#pragma once
// The IIS 7+ backend on a simulated IIS 10 machine whose administration objects can be told to
// fail. The controller's services are stand-ins that keep every log line.

#include <gtest/gtest.h>

#include <algorithm>

#include "apphost/iis_functions_vista.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/config_xml.h"
#include "testing/faulty_platform.h"

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

struct VistaFixture : ::testing::Test {
    FaultyPlatform platform;
    TestVistaBackend backend{platform};

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
};

}  // namespace webrig::testing
