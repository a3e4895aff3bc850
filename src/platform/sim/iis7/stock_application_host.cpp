#include "platform/sim/iis7/stock_application_host.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace webrig::sim::iis7 {
namespace {

// The releases whose stock files differ; other versions take the nearest one.
enum class Release { iis75, iis85, iis10 };

Release ReleaseOf(const IisVersion& version) {
    if (version.major <= 7) {
        return Release::iis75;
    }
    return version.major < 10 ? Release::iis85 : Release::iis10;
}

// A line or list entry that only some releases have.
struct Since {
    Release first = Release::iis75;
    Release last = Release::iis10;

    bool Has(Release release) const { return release >= first && release <= last; }
};

struct MimeMap {
    std::string_view extension;
    std::string_view type;
    Since releases;
};

// A representative part of IIS's stock MIME map list. The JavaScript type changed with IIS 10;
// web fonts, SVG and JSON came with later releases.
constexpr MimeMap kMimeMaps[] = {
    {".323", "text/h323", {}},
    {".3gp", "video/3gpp", {}},
    {".aac", "audio/aac", {}},
    {".ai", "application/postscript", {}},
    {".asf", "video/x-ms-asf", {}},
    {".asx", "video/x-ms-asf", {}},
    {".au", "audio/basic", {}},
    {".avi", "video/avi", {}},
    {".bin", "application/octet-stream", {}},
    {".bmp", "image/bmp", {}},
    {".cab", "application/vnd.ms-cab-compressed", {}},
    {".cer", "application/x-x509-ca-cert", {}},
    {".class", "application/x-java-applet", {}},
    {".css", "text/css", {}},
    {".csv", "application/octet-stream", {}},
    {".dll", "application/x-msdownload", {}},
    {".doc", "application/msword", {}},
    {".docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document", {}},
    {".dtd", "text/xml", {}},
    {".eot", "application/vnd.ms-fontobject", {}},
    {".eps", "application/postscript", {}},
    {".exe", "application/octet-stream", {}},
    {".gif", "image/gif", {}},
    {".gz", "application/x-gzip", {}},
    {".hta", "application/hta", {}},
    {".htc", "text/x-component", {}},
    {".htm", "text/html", {}},
    {".html", "text/html", {}},
    {".ico", "image/x-icon", {}},
    {".jar", "application/java-archive", {}},
    {".jpe", "image/jpeg", {}},
    {".jpeg", "image/jpeg", {}},
    {".jpg", "image/jpeg", {}},
    {".js", "application/x-javascript", {Release::iis75, Release::iis85}},
    {".js", "application/javascript", {Release::iis10}},
    {".json", "application/json", {Release::iis10}},
    {".m4a", "audio/mp4", {}},
    {".manifest", "application/x-ms-manifest", {}},
    {".mid", "audio/mid", {}},
    {".mov", "video/quicktime", {}},
    {".mp3", "audio/mpeg", {}},
    {".mp4", "video/mp4", {}},
    {".mpeg", "video/mpeg", {}},
    {".mpg", "video/mpeg", {}},
    {".msi", "application/octet-stream", {}},
    {".oga", "audio/ogg", {}},
    {".ogg", "video/ogg", {}},
    {".otf", "font/otf", {Release::iis10}},
    {".pdf", "application/pdf", {}},
    {".png", "image/png", {}},
    {".pps", "application/vnd.ms-powerpoint", {}},
    {".ppt", "application/vnd.ms-powerpoint", {}},
    {".pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation", {}},
    {".ps", "application/postscript", {}},
    {".rtf", "application/rtf", {}},
    {".svg", "image/svg+xml", {Release::iis85}},
    {".swf", "application/x-shockwave-flash", {}},
    {".tar", "application/x-tar", {}},
    {".tif", "image/tiff", {}},
    {".tiff", "image/tiff", {}},
    {".ttf", "application/octet-stream", {Release::iis85}},
    {".txt", "text/plain", {}},
    {".vbs", "text/vbscript", {}},
    {".wav", "audio/wav", {}},
    {".webm", "video/webm", {Release::iis85}},
    {".wma", "audio/x-ms-wma", {}},
    {".wmv", "video/x-ms-wmv", {}},
    {".woff", "application/font-woff", {Release::iis85, Release::iis85}},
    {".woff", "font/x-woff", {Release::iis10}},
    {".woff2", "application/font-woff2", {Release::iis10}},
    {".xaml", "application/xaml+xml", {}},
    {".xap", "application/x-silverlight-app", {}},
    {".xhtml", "application/xhtml+xml", {}},
    {".xls", "application/vnd.ms-excel", {}},
    {".xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet", {}},
    {".xml", "text/xml", {}},
    {".xsd", "text/xml", {}},
    {".xsl", "text/xml", {}},
    {".zip", "application/x-zip-compressed", {}},
};

// Native modules: name, the DLL in %windir%\System32\inetsrv, and whether <modules> enables it
// (the cache modules work for the whole server and are only global).
struct NativeModule {
    std::string_view name;
    std::string_view dll;
    bool enabled = true;
};

constexpr NativeModule kModules[] = {
    {"HttpLoggingModule", "loghttp.dll"},
    {"UriCacheModule", "cachuri.dll", false},
    {"FileCacheModule", "cachfile.dll", false},
    {"TokenCacheModule", "cachtokn.dll", false},
    {"HttpCacheModule", "cachhttp.dll"},
    {"StaticCompressionModule", "compstat.dll"},
    {"DefaultDocumentModule", "defdoc.dll"},
    {"DirectoryListingModule", "dirlist.dll"},
    {"ProtocolSupportModule", "protsup.dll"},
    {"StaticFileModule", "static.dll"},
    {"AnonymousAuthenticationModule", "authanon.dll"},
    {"RequestFilteringModule", "modrqflt.dll"},
    {"CustomErrorModule", "custerr.dll"},
    {"BasicAuthenticationModule", "authbas.dll"},
    {"WindowsAuthenticationModule", "authsspi.dll"},
    {"IsapiModule", "isapi.dll"},
    {"IsapiFilterModule", "filter.dll"},
    {"ConfigurationValidationModule", "validcfg.dll"},
};

// The ASP.NET modules its setup enables for every site: name and type. Those of ASP.NET 4 that
// older runtimes lack carry their runtime in the precondition.
constexpr std::pair<std::string_view, std::string_view> kManagedModules[] = {
    {"OutputCache", "System.Web.Caching.OutputCacheModule"},
    {"Session", "System.Web.SessionState.SessionStateModule"},
    {"WindowsAuthentication", "System.Web.Security.WindowsAuthenticationModule"},
    {"FormsAuthentication", "System.Web.Security.FormsAuthenticationModule"},
    {"DefaultAuthentication", "System.Web.Security.DefaultAuthenticationModule"},
    {"RoleManager", "System.Web.Security.RoleManagerModule"},
    {"UrlAuthorization", "System.Web.Security.UrlAuthorizationModule"},
    {"FileAuthorization", "System.Web.Security.FileAuthorizationModule"},
    {"AnonymousIdentification", "System.Web.Security.AnonymousIdentificationModule"},
    {"Profile", "System.Web.Profile.ProfileModule"},
    {"UrlMappingsModule", "System.Web.UrlMappingsModule"},
};

constexpr std::string_view kExtensionsAssembly =
    "System.Web.Extensions, Version=4.0.0.0, Culture=neutral, PublicKeyToken=31bf3856ad364e35";

// The ASP.NET release a stock installation of each IIS has: 2.0 came with IIS 7.5, 4.5 and
// later (still "v4.0" at run time) with IIS 8.5 and 10.
struct AspNet {
    std::string_view runtime;    // "v2.0", "v4.0"
    std::string_view framework;  // the folder below Microsoft.NET\Framework[64]
    std::string_view engine;     // the integrated-mode global module, without its bitness
    std::string_view engineDll;
    std::string_view filter;  // the ISAPI filter's name, without its bitness
};

constexpr AspNet kAspNet2{"v2.0", "v2.0.50727", "ManagedEngine", "webengine.dll",
                          "ASP.Net_2.0.50727"};
constexpr AspNet kAspNet4{"v4.0", "v4.0.30319", "ManagedEngineV4.0", "webengine4.dll",
                          "ASP.Net_4.0"};

constexpr std::string_view kErrorStatusCodes[] = {"401", "403", "404", "405", "406",
                                                  "412", "500", "501", "502"};

class ApplicationHostWriter {
  public:
    explicit ApplicationHostWriter(Release release) : m_release(release) {}

    std::string Text() {
        Line(0, R"(<?xml version="1.0" encoding="UTF-8"?>)");
        Line(0, "<!--");
        Line(1, "IIS configuration of the machine: sites, application pools and the settings of");
        Line(1, "the web server. Sections are declared in <configSections> below.");
        Line(0, "-->");
        Line(0, "");
        Line(0, "<configuration>");
        Line(0, "");
        ConfigSections();
        Line(0, "");
        ProtectedData();
        Line(0, "");
        ApplicationHost();
        Line(0, "");
        WebServer();
        Line(0, "");
        ServerLevelLocation();
        Line(0, "");
        Line(0, "</configuration>");
        return std::move(m_text);
    }

  private:
    void Line(int depth, std::string_view text) {
        if (!text.empty()) {
            m_text.append(static_cast<size_t>(depth) * 4, ' ');
            m_text += text;
        }
        m_text += "\r\n";
    }

    void Lines(int depth, std::initializer_list<std::string_view> lines) {
        for (const std::string_view line : lines) {
            Line(depth, line);
        }
    }

    bool From(Release first) const { return m_release >= first; }

    const AspNet& Asp() const { return From(Release::iis85) ? kAspNet4 : kAspNet2; }

    // "%windir%\Microsoft.NET\Framework64\v4.0.30319\" for `bits` 64.
    std::string FrameworkFolder(int bits) const {
        return R"(%windir%\Microsoft.NET\Framework)" + std::string(bits == 64 ? "64" : "") + "\\" +
               std::string(Asp().framework) + "\\";
    }

    void Section(int depth, std::string_view name, std::string_view declaration) {
        Line(depth,
             "<section name=\"" + std::string(name) + "\" " + std::string(declaration) + " />");
    }

    void ConfigSections() {
        constexpr std::string_view appHostOnly =
            R"(allowDefinition="AppHostOnly" overrideModeDefault="Deny")";
        constexpr std::string_view deny = R"(overrideModeDefault="Deny")";
        constexpr std::string_view allow = R"(overrideModeDefault="Allow")";
        Line(1, "<configSections>");
        Line(2, R"(<sectionGroup name="system.applicationHost">)");
        for (const std::string_view name :
             {"applicationPools", "configHistory", "customMetadata", "listenerAdapters", "log",
              "serviceAutoStartProviders", "sites", "webLimits"}) {
            Section(3, name, appHostOnly);
        }
        Line(2, "</sectionGroup>");
        Line(0, "");
        Line(2, R"(<sectionGroup name="system.webServer">)");
        Section(3, "asp", deny);
        Section(3, "caching", allow);
        Section(3, "cgi", deny);
        Section(3, "defaultDocument", allow);
        Section(3, "directoryBrowse", allow);
        Section(3, "fastCgi", appHostOnly);
        Section(3, "globalModules", appHostOnly);
        Section(3, "handlers", deny);
        Section(3, "httpCompression", From(Release::iis85) ? allow : appHostOnly);
        Section(3, "httpErrors", allow);
        Section(3, "httpLogging", deny);
        Section(3, "httpProtocol", allow);
        Section(3, "httpRedirect", allow);
        Section(3, "httpTracing", deny);
        Section(3, "isapiFilters",
                R"(allowDefinition="MachineToApplication" )" + std::string(deny));
        Section(3, "modules", R"(allowDefinition="MachineToApplication" )" + std::string(deny));
        if (From(Release::iis85)) {
            Section(3, "applicationInitialization",
                    R"(allowDefinition="MachineToApplication" )" + std::string(allow));
        }
        Section(3, "odbcLogging", deny);
        Line(3, R"(<sectionGroup name="security">)");
        Section(4, "access", deny);
        Section(4, "applicationDependencies", deny);
        Line(4, R"(<sectionGroup name="authentication">)");
        for (const std::string_view name :
             {"anonymousAuthentication", "basicAuthentication",
              "clientCertificateMappingAuthentication", "digestAuthentication",
              "iisClientCertificateMappingAuthentication", "windowsAuthentication"}) {
            Section(5, name, deny);
        }
        Line(4, "</sectionGroup>");
        Section(4, "authorization", allow);
        Section(4, "ipSecurity", deny);
        if (From(Release::iis85)) {
            Section(4, "dynamicIpSecurity", deny);
        }
        Section(4, "isapiCgiRestriction", appHostOnly);
        Section(4, "requestFiltering", allow);
        Line(3, "</sectionGroup>");
        Section(3, "serverRuntime", deny);
        Section(3, "serverSideInclude", deny);
        Section(3, "staticContent", allow);
        Line(3, R"(<sectionGroup name="tracing">)");
        Section(4, "traceFailedRequests", allow);
        Section(4, "traceProviderDefinitions", deny);
        Line(3, "</sectionGroup>");
        Section(3, "urlCompression", allow);
        Section(3, "validation", allow);
        if (From(Release::iis85)) {
            Line(3, R"(<sectionGroup name="webdav">)");
            Section(4, "globalSettings", deny);
            Section(4, "authoring", deny);
            Section(4, "authoringRules", deny);
            Line(3, "</sectionGroup>");
            Section(3, "webSocket", deny);
        }
        Line(2, "</sectionGroup>");
        Line(1, "</configSections>");
    }

    void ProtectedData() {
        Line(1, "<configProtectedData>");
        Line(2, "<providers>");
        Line(
            3,
            R"(<add name="IISWASOnlyRsaProvider" type="" description="Uses RsaCryptoServiceProvider to encrypt and decrypt" keyContainerName="iisWasKey" cspProviderName="" useMachineContainer="true" useOAEP="false" />)");
        if (From(Release::iis10)) {
            Line(
                3,
                R"(<add name="IISCngProvider" type="Microsoft.ApplicationHost.CngProtectedConfigurationProvider" description="Uses Win32 Crypto CNG to encrypt and decrypt" keyContainerName="iisCngConfigurationKey" useMachineContainer="true" />)");
        }
        // The simulated machine keeps AesProvider's key in its keys folder, not in a sessionKey.
        Line(
            3,
            R"(<add name="AesProvider" type="Microsoft.ApplicationHost.AesProtectedConfigurationProvider" description="Uses an AES session key to encrypt and decrypt" keyContainerName="iisConfigurationKey" cspProviderName="" useOAEP="false" useMachineContainer="true" />)");
        Line(2, "</providers>");
        Line(1, "</configProtectedData>");
    }

    void ApplicationHost() {
        Line(1, "<system.applicationHost>");
        Line(0, "");
        Line(2, "<applicationPools>");
        Line(3, R"(<add name="DefaultAppPool" />)");
        if (m_release == Release::iis75) {
            Line(3, R"(<add name="Classic .NET AppPool" managedPipelineMode="Classic" />)");
            Line(3, R"(<applicationPoolDefaults managedRuntimeVersion="v2.0">)");
        } else {
            Line(
                3,
                R"(<add name=".NET v4.5 Classic" managedRuntimeVersion="v4.0" managedPipelineMode="Classic" />)");
            Line(3, R"(<add name=".NET v4.5" managedRuntimeVersion="v4.0" />)");
            Line(3, R"(<applicationPoolDefaults managedRuntimeVersion="v4.0">)");
        }
        if (From(Release::iis10)) {
            Line(4, R"(<processModel identityType="ApplicationPoolIdentity" />)");
        } else {
            Line(
                4,
                R"(<processModel identityType="ApplicationPoolIdentity" loadUserProfile="true" setProfileEnvironment="false" />)");
        }
        Line(3, "</applicationPoolDefaults>");
        Line(2, "</applicationPools>");
        Line(0, "");
        Line(2, "<customMetadata />");
        Line(0, "");
        Lines(2, {"<listenerAdapters>", R"(    <add name="http" />)", "</listenerAdapters>"});
        Line(0, "");
        Lines(
            2,
            {"<log>",
             R"(    <centralBinaryLogFile enabled="true" directory="%SystemDrive%\inetpub\logs\LogFiles" />)",
             R"(    <centralW3CLogFile enabled="true" directory="%SystemDrive%\inetpub\logs\LogFiles" />)",
             "</log>"});
        Line(0, "");
        Lines(
            2,
            {"<sites>", R"(    <site name="Default Web Site" id="1">)",
             R"(        <application path="/">)",
             R"(            <virtualDirectory path="/" physicalPath="%SystemDrive%\inetpub\wwwroot" />)",
             R"(        </application>)", R"(        <bindings>)",
             R"(            <binding protocol="http" bindingInformation="*:80:" />)",
             R"(        </bindings>)", R"(    </site>)", R"(    <siteDefaults>)",
             R"(        <logFile logFormat="W3C" directory="%SystemDrive%\inetpub\logs\LogFiles" />)",
             R"(        <traceFailedRequestsLogging directory="%SystemDrive%\inetpub\logs\FailedReqLogFiles" />)",
             R"(    </siteDefaults>)",
             R"(    <applicationDefaults applicationPool="DefaultAppPool" />)",
             R"(    <virtualDirectoryDefaults allowSubDirConfig="true" />)", "</sites>"});
        Line(0, "");
        Line(2, "<webLimits />");
        Line(0, "");
        Line(1, "</system.applicationHost>");
    }

    void WebServer() {
        Line(1, "<system.webServer>");
        Line(0, "");
        Line(2, "<asp />");
        Line(0, "");
        Lines(2, {R"(<caching enabled="true" enableKernelCache="true">)", "</caching>"});
        Line(0, "");
        Line(2, "<cgi />");
        Line(0, "");
        Line(2, R"(<defaultDocument enabled="true">)");
        Line(3, "<files>");
        for (const std::string_view file :
             {"Default.htm", "Default.asp", "index.htm", "index.html", "iisstart.htm"}) {
            Line(4, R"(<add value=")" + std::string(file) + R"(" />)");
        }
        Line(3, "</files>");
        Line(2, "</defaultDocument>");
        Line(0, "");
        Line(2, R"(<directoryBrowse enabled="false" />)");
        Line(0, "");
        Line(2, "<fastCgi />");
        Line(0, "");
        Line(2, "<globalModules>");
        for (const NativeModule& module : kModules) {
            Line(3, R"(<add name=")" + std::string(module.name) +
                        R"(" image="%windir%\System32\inetsrv\)" + std::string(module.dll) +
                        R"(" />)");
        }
        for (const int bits : {32, 64}) {
            Line(3, R"(<add name=")" + EngineName(bits) + R"(" image=")" + FrameworkFolder(bits) +
                        std::string(Asp().engineDll) + R"(" preCondition=")" +
                        EnginePrecondition(bits) + R"(" />)");
        }
        Line(2, "</globalModules>");
        Line(0, "");
        Compression();
        Line(0, "");
        Line(2, R"(<httpErrors lockAttributes="allowAbsolutePathsWhenDelegated,defaultPath">)");
        for (const std::string_view code : kErrorStatusCodes) {
            Line(3, R"(<error statusCode=")" + std::string(code) +
                        R"(" prefixLanguageFilePath="%SystemDrive%\inetpub\custerr" path=")" +
                        std::string(code) + R"(.htm" />)");
        }
        Line(2, "</httpErrors>");
        Line(0, "");
        Line(2, R"(<httpLogging dontLog="false" />)");
        Line(0, "");
        Lines(2, {"<httpProtocol>", "    <customHeaders>", "        <clear />",
                  "    </customHeaders>", "    <redirectHeaders>", "        <clear />",
                  "    </redirectHeaders>", "</httpProtocol>"});
        Line(0, "");
        Lines(2, {"<httpRedirect />", "", "<httpTracing />", ""});
        Line(2, "<isapiFilters>");
        for (const int bits : {64, 32}) {
            Line(3, R"(<filter name=")" + FilterName(bits) + R"(" path=")" + FrameworkFolder(bits) +
                        R"(aspnet_filter.dll" enableCache="true" preCondition=")" +
                        RuntimePrecondition(bits) + R"(" />)");
        }
        Line(2, "</isapiFilters>");
        Line(0, "");
        Line(2, "<odbcLogging />");
        Line(0, "");
        Security();
        Line(0, "");
        Lines(2, {"<serverRuntime />", "", "<serverSideInclude />", ""});
        Line(2, R"(<staticContent lockAttributes="isDocFooterFileName">)");
        for (const MimeMap& map : kMimeMaps) {
            if (map.releases.Has(m_release)) {
                Line(3, R"(<mimeMap fileExtension=")" + std::string(map.extension) +
                            R"(" mimeType=")" + std::string(map.type) + R"(" />)");
            }
        }
        Line(2, "</staticContent>");
        Line(0, "");
        Lines(2, {"<tracing>", "", "    <traceFailedRequests />", "",
                  "    <traceProviderDefinitions />", "", "</tracing>", "", "<urlCompression />",
                  "", "<validation />", ""});
        Line(1, "</system.webServer>");
    }

    std::string EngineName(int bits) const {
        if (From(Release::iis85)) {
            return std::string(Asp().engine) + (bits == 64 ? "_64bit" : "_32bit");
        }
        return std::string(Asp().engine) + (bits == 64 ? "64" : "");
    }

    std::string EnginePrecondition(int bits) const {
        return "integratedMode,runtimeVersion" + std::string(Asp().runtime) + ",bitness" +
               std::to_string(bits);
    }

    std::string FilterName(int bits) const {
        if (From(Release::iis85)) {
            return std::string(Asp().filter) + (bits == 64 ? "_64bit" : "_32bit");
        }
        return std::string(Asp().filter) + (bits == 64 ? "-64" : ".0");
    }

    std::string RuntimePrecondition(int bits) const {
        return "runtimeVersion" + std::string(Asp().runtime) + ",bitness" + std::to_string(bits);
    }

    // ASP.NET's setup moves modules and handlers into a location tag for the server's own level
    // that allows web.config files to change them.
    void ServerLevelLocation() {
        Line(1, R"(<location path="" overrideMode="Allow">)");
        Line(2, "<system.webServer>");
        Modules();
        Handlers();
        Line(2, "</system.webServer>");
        Line(1, "</location>");
    }

    void Modules() {
        Line(3, "<modules>");
        for (const NativeModule& module : kModules) {
            if (module.enabled) {
                Line(4, R"(<add name=")" + std::string(module.name) + R"(" lockItem="true" />)");
            }
        }
        for (const auto& [name, type] : kManagedModules) {
            Line(4, R"(<add name=")" + std::string(name) + R"(" type=")" + std::string(type) +
                        R"(" preCondition="managedHandler" />)");
        }
        if (From(Release::iis85)) {
            Lines(
                4,
                {R"(<add name="UrlRoutingModule-4.0" type="System.Web.Routing.UrlRoutingModule" preCondition="managedHandler,runtimeVersionv4.0" />)",
                 R"(<add name="ScriptModule-4.0" type="System.Web.Handlers.ScriptModule, )" +
                     std::string(kExtensionsAssembly) +
                     R"(" preCondition="managedHandler,runtimeVersionv4.0" />)"});
        }
        Line(3, "</modules>");
    }

    void Handlers() {
        Line(3, R"(<handlers accessPolicy="Read, Script">)");
        Lines(
            4,
            {
                R"(<add name="ASPClassic" path="*.asp" verb="GET,HEAD,POST" modules="IsapiModule" scriptProcessor="%windir%\system32\inetsrv\asp.dll" resourceType="File" />)",
                R"(<add name="SecurityCertificate" path="*.cer" verb="GET,HEAD,POST" modules="IsapiModule" scriptProcessor="%windir%\system32\inetsrv\asp.dll" resourceType="File" />)",
                R"(<add name="ISAPI-dll" path="*.dll" verb="*" modules="IsapiModule" resourceType="File" requireAccess="Execute" allowPathInfo="true" />)",
            });
        AspNetHandler("PageHandlerFactory", "*.aspx", "System.Web.UI.PageHandlerFactory");
        AspNetHandler("SimpleHandlerFactory", "*.ashx", "System.Web.UI.SimpleHandlerFactory");
        if (From(Release::iis85)) {
            AspNetHandler("ExtensionlessUrlHandler", "*.",
                          "System.Web.Handlers.TransferRequestHandler");
        }
        Lines(
            4,
            {
                R"(<add name="TRACEVerbHandler" path="*" verb="TRACE" modules="ProtocolSupportModule" requireAccess="None" />)",
                R"(<add name="OPTIONSVerbHandler" path="*" verb="OPTIONS" modules="ProtocolSupportModule" requireAccess="None" />)",
                R"(<add name="StaticFile" path="*" verb="*" modules="StaticFileModule,DefaultDocumentModule,DirectoryListingModule" resourceType="Either" requireAccess="Read" />)",
            });
        Line(3, "</handlers>");
    }

    // The mappings of one ASP.NET handler: through aspnet_isapi.dll for classic pools of each
    // bitness, and by type for integrated ones.
    void AspNetHandler(std::string_view name, std::string_view path, std::string_view type) {
        const std::string runtime(Asp().runtime);
        const std::string common =
            R"(" path=")" + std::string(path) + R"(" verb="GET,HEAD,POST,DEBUG" )";
        for (const int bits : {32, 64}) {
            const std::string suffix = From(Release::iis85)
                                           ? "-ISAPI-4.0_" + std::to_string(bits) + "bit"
                                           : std::string("-ISAPI-2.0") + (bits == 64 ? "-64" : "");
            Line(4, R"(<add name=")" + std::string(name) + suffix + common +
                        R"(modules="IsapiModule" scriptProcessor=")" + FrameworkFolder(bits) +
                        R"(aspnet_isapi.dll" preCondition="classicMode,)" +
                        RuntimePrecondition(bits) + R"(" responseBufferLimit="0" />)");
        }
        const std::string integrated = From(Release::iis85) ? "-Integrated-4.0" : "-Integrated";
        const std::string condition =
            From(Release::iis85) ? "integratedMode,runtimeVersionv4.0" : "integratedMode";
        Line(4, R"(<add name=")" + std::string(name) + integrated + common + R"(type=")" +
                    std::string(type) + R"(" preCondition=")" + condition + R"(" />)");
    }

    void Compression() {
        Line(
            2,
            R"(<httpCompression directory="%SystemDrive%\inetpub\temp\IIS Temporary Compressed Files">)");
        Line(3, R"(<scheme name="gzip" dll="%Windir%\system32\inetsrv\gzip.dll" />)");
        Line(3, "<staticTypes>");
        Lines(4, {R"(<add mimeType="text/*" enabled="true" />)",
                  R"(<add mimeType="message/*" enabled="true" />)"});
        if (From(Release::iis10)) {
            Line(4, R"(<add mimeType="application/javascript" enabled="true" />)");
        } else {
            Line(4, R"(<add mimeType="application/x-javascript" enabled="true" />)");
        }
        if (From(Release::iis85)) {
            Lines(4, {R"(<add mimeType="application/atom+xml" enabled="true" />)",
                      R"(<add mimeType="application/xaml+xml" enabled="true" />)"});
        }
        if (From(Release::iis10)) {
            Line(4, R"(<add mimeType="image/svg+xml" enabled="true" />)");
        }
        Line(4, R"(<add mimeType="*/*" enabled="false" />)");
        Line(3, "</staticTypes>");
        Line(2, "</httpCompression>");
    }

    void Security() {
        Line(2, "<security>");
        Line(0, "");
        Lines(3, {R"(<access sslFlags="None" />)", "", "<applicationDependencies />", ""});
        Line(3, "<authentication>");
        Line(0, "");
        Lines(4, {R"(<anonymousAuthentication enabled="true" userName="IUSR" />)", "",
                  "<basicAuthentication />", "", "<clientCertificateMappingAuthentication />", "",
                  "<digestAuthentication />", "", "<iisClientCertificateMappingAuthentication />",
                  "", "<windowsAuthentication>", "    <providers>",
                  R"(        <add value="Negotiate" />)", R"(        <add value="NTLM" />)",
                  "    </providers>", "</windowsAuthentication>", ""});
        Line(3, "</authentication>");
        Line(0, "");
        Lines(3, {"<authorization />", "", "<ipSecurity />", ""});
        Line(3, "<isapiCgiRestriction>");
        Line(
            4,
            R"(<add path="%windir%\system32\inetsrv\asp.dll" allowed="true" groupId="ASP" description="Active Server Pages" />)");
        for (const int bits : {64, 32}) {
            const std::string group = "ASP.NET " + std::string(Asp().framework);
            Line(4, R"(<add path=")" + FrameworkFolder(bits) +
                        R"(aspnet_isapi.dll" allowed="true" groupId=")" + group +
                        R"(" description=")" + group + R"(" />)");
        }
        Line(3, "</isapiCgiRestriction>");
        Line(0, "");
        Lines(3,
              {"<requestFiltering>",
               R"(    <fileExtensions allowUnlisted="true" applyToWebDAV="true">)",
               R"(        <add fileExtension=".asa" allowed="false" />)",
               R"(        <add fileExtension=".cdx" allowed="false" />)", "    </fileExtensions>",
               R"(    <verbs allowUnlisted="true" applyToWebDAV="true" />)",
               R"(    <hiddenSegments applyToWebDAV="true">)",
               R"(        <add segment="web.config" />)", "    </hiddenSegments>",
               "</requestFiltering>"});
        Line(0, "");
        Line(2, "</security>");
    }

    Release m_release;
    std::string m_text;
};

}  // namespace

qm::wstring ApplicationHostConfigPath(const MachineConfig& config) {
    return config.windowsDirectory + u"\\System32\\inetsrv\\config\\applicationHost.config";
}

std::string StockApplicationHostConfig(const IisVersion& version) {
    return ApplicationHostWriter(ReleaseOf(version)).Text();
}

std::string StockIisStartPage(const IisVersion& version) {
    const std::string release = std::to_string(version.major) + "." + std::to_string(version.minor);
    return "<!DOCTYPE html>\r\n"
           "<html>\r\n"
           "<head>\r\n"
           "<meta charset=\"utf-8\" />\r\n"
           "<title>IIS " +
           release +
           "</title>\r\n"
           "</head>\r\n"
           "<body>\r\n"
           "<h1>Internet Information Services " +
           release +
           "</h1>\r\n"
           "<p>The Default Web Site answers. Put this site's content in "
           "C:\\inetpub\\wwwroot.</p>\r\n"
           "</body>\r\n"
           "</html>\r\n";
}

}  // namespace webrig::sim::iis7
