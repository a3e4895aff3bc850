#include "testing/generated_project.h"

#include <array>
#include <string>

#include "platform/sim/text/windows_1252.h"
#include "settings/password_scrambling.h"

namespace webrig::testing {
namespace {

constexpr std::array<std::string_view, 21> kProgressMessages = {
    "PROGMSG_IIS_CREATEVROOT",
    "PROGMSG_IIS_CREATEVROOTS",
    "PROGMSG_IIS_CREATEAPPPOOLS",
    "PROGMSG_IIS_CREATEAPPPOOL",
    "PROGMSG_IIS_CREATEWEBSERVICEEXTENSIONS",
    "PROGMSG_IIS_CREATEWEBSERVICEEXTENSION",
    "PROGMSG_IIS_EXTRACT",
    "PROGMSG_IIS_EXTRACTDONE",
    "PROGMSG_IIS_REMOVEVROOT",
    "PROGMSG_IIS_REMOVEVROOTS",
    "PROGMSG_IIS_REMOVEAPPPOOL",
    "PROGMSG_IIS_REMOVEAPPPOOLS",
    "PROGMSG_IIS_REMOVEWEBSERVICEEXTENSION",
    "PROGMSG_IIS_REMOVEWEBSERVICEEXTENSIONS",
    "PROGMSG_IIS_REMOVESITE",
    "PROGMSG_IIS_ROLLBACKVROOTS",
    "PROGMSG_IIS_ROLLBACKAPPPOOLS",
    "PROGMSG_IIS_ROLLBACKWEBSERVICEEXTENSIONS",
    "PROGMSG_IIS_REMOVEWEBSITES",
    "PROGMSG_IIS_CREATEWEBSITE",
    "PROGMSG_IIS_CREATEWEBSITES",
};

std::string Numbered(std::string_view prefix, int number) {
    return std::string(prefix) + std::to_string(number);
}

class ProjectWriter {
  public:
    explicit ProjectWriter(int componentCount)
        : m_componentCount(componentCount),
          m_scrambledPassword(settings::ScramblePassword(kGeneratedPassword, m_codePage)) {}

    SettingsFileBuilder Write() {
        WriteGlobalOptions();
        WriteComponentLists();
        for (int i = 1; i <= m_componentCount; ++i) {
            WriteComponent(Numbered("Component", i), i);
        }
        WriteProgressMessages();
        WriteUninstallProps();
        return std::move(m_file);
    }

  private:
    void WriteGlobalOptions() {
        m_file.Section("GlobalOptions")
            .Entry("IGNOREIIS", 0)
            .Entry("QUILLMARK_SSI_PROP", 0)
            .Entry("IISVERSION", 10)
            .Entry("IISPREFERLEGACYOBJECTS", 0)
            .Entry("ProductCode", "{6F1A3C2E-8B4D-4E7A-9C15-2D3B4A5E6F70}")
            .Entry("RESTARTW3SVC", 1);
    }

    void WriteComponentLists() {
        m_file.Section("Components").Entry("Count", m_componentCount);
        for (int i = 1; i <= m_componentCount; ++i) {
            m_file.Entry(Numbered("c", i), Numbered("Component", i));
        }
        m_file.Section("FeatureComponents");
        for (int i = 1; i <= m_componentCount; ++i) {
            m_file.Entry(Numbered("Component", i), Numbered("WebFeature", (i + 9) / 10));
        }
    }

    void WriteComponent(const std::string& component, int number) {
        const std::string vroot = "VRoot_" + component;
        const std::string pool = "AppPool_" + component;
        const std::string extension = "WebSvcExt_" + component;
        // Only the parent website's section name starts with "Website_": the component's own
        // website is marked component based and must not be read as a vroot's parent.
        const std::string parentSite = "Website_Parent_" + component;
        const std::string site = "Site_" + component;

        WriteList(component + "_VRoots", "v", vroot);
        WriteList(component + "_AppPools", "a", pool);
        WriteList(component + "_WebServiceExtensions", "w", extension);
        WriteList(component + "_WebSites", "ws", site);

        m_file.Section(vroot)
            .Entry("QMIISCommon", vroot)
            .Entry("VRootProps", 1)
            .Entry("ParentSite", "ParentSite_" + component);
        WriteCommonKeys(component, vroot, number, true);
        m_file.Entry("Parent", parentSite);
        WriteMetaData(vroot);
        WriteAppMap(vroot + "_AppMap1", ".aspx", "aspnet_isapi.dll", "GET,HEAD,POST,DEBUG");
        WriteAppMap(vroot + "_AppMap2", ".asmx", "aspnet_isapi.dll", "GET,HEAD,POST");
        WriteMimeMap(vroot + "_Mime1", ".json", "application/json");
        WriteMimeMap(vroot + "_Mime2", ".woff2", "font/woff2");

        WriteWebsite(parentSite, "ParentSite_" + component, 8000 + number % 1000, 0, component,
                     number);
        WriteAppPool(pool, component);
        WriteWebServiceExtension(extension, component);
        WriteWebsite(site, site, 9000 + number % 1000, 1, component, number);
    }

    void WriteList(const std::string& section, std::string_view entryPrefix,
                   const std::string& item) {
        m_file.Section(section)
            .Entry("ActionState", 3)
            .Entry("Count", 1)
            .Entry(Numbered(entryPrefix, 1), item);
    }

    // The keys virtual directories and websites share, with one metadata property, two
    // application maps and two MIME maps for a virtual directory and none for a website.
    void WriteCommonKeys(const std::string& component, const std::string& item, int number,
                         bool isVRoot) {
        const std::string root = "[INSTALLDIR]wwwroot\\" + component + "\\" + item + "\\htdocs";
        const std::string errors = "[INSTALLDIR]errors\\" + component + "\\";
        m_file.Entry("DisplayName", isVRoot ? "Shop" + std::to_string(number) : item)
            .Entry("ItemType", isVRoot ? 2 : 1)
            .Entry("RootDir", root)
            .Entry("Attributes", isVRoot ? 0x0205 : 0x0201)
            .Entry("SessionTimeout", 20)
            .Entry("ScriptTimeout", 90)
            .Entry("DefDoc",
                   "Default.aspx,Default.htm,Default.asp,index.htm,index.html,iisstart.htm")
            .Entry("AppPool", "AppPool_" + component)
            .Entry("AppName", "App_" + item)
            .Entry("Aspversion", "4.0.30319")
            .Entry("AspVersionBitness", "64")
            .Entry("AspNetRegistration", "1")
            .Entry("AnonyUserName", "WEBSHOP\\IUSR_" + component);
        m_file.Entry(u"AnonyPasswrd", m_scrambledPassword)
            .Entry(u"SslPassword", m_scrambledPassword)
            .Entry("CustomErrors", "403,*,FILE," + errors + "403.htm;404,*,FILE," + errors +
                                       "404.htm;500,*,FILE," + errors + "500.htm")
            .Entry("FormsAuthentication", isVRoot ? 1 : 0)
            .Entry("SSLCertPath", "[INSTALLDIR]certificates\\" + component + "\\" + item + ".pfx");
        if (isVRoot) {
            m_file.Entry("MetaDataPropCount", 1)
                .Entry("mdp1", item + "_Meta1")
                .Entry("AppMapCount", 2)
                .Entry("a1", item + "_AppMap1")
                .Entry("a2", item + "_AppMap2")
                .Entry("MimeMapCount", 2)
                .Entry("mm1", item + "_Mime1")
                .Entry("mm2", item + "_Mime2");
        } else {
            m_file.Entry("MetaDataPropCount", 0).Entry("AppMapCount", 0).Entry("MimeMapCount", 0);
        }
        m_file.Entry("ActionTaken", 0);
    }

    void WriteMetaData(const std::string& vroot) {
        m_file.Section(vroot + "_Meta1")
            .Entry("Prop", 6032)
            .Entry("Type", 1)
            .Entry("UserType", 1)
            .Entry("Value", "1");
    }

    void WriteAppMap(const std::string& section, std::string_view extension,
                     std::string_view executable, std::string_view verbs) {
        m_file.Section(section)
            .Entry("VRootAppMapKey", section)
            .Entry("Extension", extension)
            .Entry("ExecPath", "[WindowsFolder]Microsoft.NET\\Framework64\\v4.0.30319\\" +
                                   std::string(executable))
            .Entry("Verb", verbs)
            .Entry("AppMapProps", 5);
    }

    void WriteMimeMap(const std::string& section, std::string_view extension,
                      std::string_view type) {
        m_file.Section(section).Entry("Extension", extension).Entry("Type", type);
    }

    void WriteWebsite(const std::string& section, const std::string& key, int port,
                      int isComponentBased, const std::string& component, int number) {
        m_file.Section(section)
            .Entry("QMIISCommon", key)
            .Entry("Port", port)
            .Entry("IPAddress", "*")
            .Entry("HostHeaderName", "shop" + std::to_string(number) + ".example.com")
            .Entry("SiteNumber", 100 + number)
            .Entry("SiteNumberProperty", "SITENUMBER_" + component)
            .Entry("WebSiteProps", 3)
            .Entry("IsComponentBased", isComponentBased);
        WriteCommonKeys(component, section, number, false);
    }

    void WriteAppPool(const std::string& section, const std::string& component) {
        m_file.Section(section)
            .Entry("Name", section)
            .Entry("Attributes", 0x0008)
            .Entry("RecycleRequests", 100000)
            .Entry("RecycleTimes", "03:00;09:00;15:00;21:00")
            .Entry("IdleTimeout", 20)
            .Entry("QueueLimit", 1000)
            .Entry("CPUMon", "80,5,0")
            .Entry("MaxProc", 1)
            .Entry("RecycleMinutes", 1740)
            .Entry("User", "SVC_" + component);
        m_file.Entry(u"UserPassword", m_scrambledPassword)
            .Entry("ActionTaken", 0)
            .Entry("ManagedPipelineMode", "Integrated")
            .Entry("Enable32bitAppOnWin64", "0")
            .Entry("ManagedRuntimeVersion", "v4.0")
            .Entry("OverwriteExisting", "1")
            .Entry("LoadUserProfile", 1);
    }

    void WriteWebServiceExtension(const std::string& section, const std::string& component) {
        m_file.Section(section)
            .Entry("File", "[INSTALLDIR]bin\\" + component + "Handler.dll")
            .Entry("Description", component + " request handler for the storefront and its pages")
            .Entry("Group", component + "Handlers")
            .Entry("Attributes", 1)
            .Entry("ActionTaken", 0);
    }

    void WriteProgressMessages() {
        m_file.Section("ProgressMessages");
        for (const std::string_view identifier : kProgressMessages) {
            m_file.Entry(identifier, "Configuring IIS: [1]");
        }
    }

    void WriteUninstallProps() {
        m_file.Section("UninstallProps")
            .Entry("INSTALLDIR", "C:\\inetpub\\Shop")
            .Entry("WEBSITE_PORT", "8080")
            .Entry("RemoveUninstProps", 1);
    }

    int m_componentCount;
    sim::Windows1252 m_codePage;
    qm::wstring m_scrambledPassword;
    SettingsFileBuilder m_file;
};

}  // namespace

SettingsFileBuilder GenerateProject(int componentCount) {
    return ProjectWriter(componentCount).Write();
}

}  // namespace webrig::testing
