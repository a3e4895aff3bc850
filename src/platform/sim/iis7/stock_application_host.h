#pragma once
// The applicationHost.config a fresh IIS 7.5, 8.5 or 10 installation writes, for Machine::Create.
//
// The installation modelled is an application server on 64-bit Windows: IIS's default role
// services (static content, default document, directory browsing, HTTP errors, HTTP logging,
// request filtering, static compression) plus the ones installers of web applications usually
// need: ASP.NET (2.0 with IIS 7.5, 4.x with 8.5 and 10), ASP, ISAPI extensions and filters, basic
// and Windows authentication. With ASP.NET, handlers and modules live in a
// <location path="" overrideMode="Allow"> at the end of the file, so web.config files may set them.

#include <string>

#include "platform/sim/machine/machine_config.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

// Where IIS keeps the file: <Windows>\System32\inetsrv\config\applicationHost.config.
qm::wstring ApplicationHostConfigPath(const MachineConfig& config);

// The Default Web Site's folder, C:\inetpub\wwwroot (%SystemDrive%\inetpub\wwwroot).
inline constexpr char16_t kDefaultSiteFolder[] = u"C:\\inetpub\\wwwroot";

// The file's text for IIS `version` (7.x is written as 7.5, 8.x as 8.5): UTF-8 without a
// byte-order mark, CRLF line ends and four-space indentation, as IIS writes it on Windows.
std::string StockApplicationHostConfig(const IisVersion& version);

// The welcome page IIS puts in the Default Web Site's folder (iisstart.htm).
std::string StockIisStartPage(const IisVersion& version);

}  // namespace webrig::sim::iis7
