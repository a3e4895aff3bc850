#pragma once
// The seam between webrig and the machine it configures. Everything above this folder reaches
// Windows only through these interfaces; `platform/win32` implements them on Windows and
// `platform/sim` on a simulated machine kept in a folder.

#include "platform/adsi.h"
#include "platform/automation.h"
#include "platform/certificates.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/com_classes.h"
#include "platform/file_system.h"
#include "platform/host_objects.h"
#include "platform/iis_config.h"
#include "platform/modules.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/service_control.h"
#include "platform/system_info.h"

namespace webrig::platform {

class Platform {
  public:
    virtual ~Platform() = default;

    virtual Registry& registry() = 0;
    virtual SystemInfo& system() = 0;
    virtual FileSystem& files() = 0;
    virtual Clock& clock() = 0;
    virtual AnsiCodePage& ansiCodePage() = 0;
    virtual ModuleLookup& modules() = 0;
    virtual Automation& automation() = 0;
    virtual HostObjects& hostObjects() = 0;
    virtual ServiceControl& services() = 0;
    virtual ComClasses& comClasses() = 0;
    virtual IisConfiguration& iisConfiguration() = 0;
    virtual Certificates& certificates() = 0;
    virtual Processes& processes() = 0;
    virtual Adsi& adsi() = 0;
};

}  // namespace webrig::platform
