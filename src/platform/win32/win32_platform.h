#pragma once
// Windows itself behind the seam: one object per area, each over the real API.

#include "platform/platform.h"
#include "platform/win32/win32_adsi.h"
#include "platform/win32/win32_automation.h"
#include "platform/win32/win32_certificates.h"
#include "platform/win32/win32_clock.h"
#include "platform/win32/win32_code_page.h"
#include "platform/win32/win32_com_classes.h"
#include "platform/win32/win32_file_system.h"
#include "platform/win32/win32_host_objects.h"
#include "platform/win32/win32_iis_configuration.h"
#include "platform/win32/win32_modules.h"
#include "platform/win32/win32_processes.h"
#include "platform/win32/win32_registry.h"
#include "platform/win32/win32_service_control.h"
#include "platform/win32/win32_system_info.h"

namespace webrig::win32 {

class Win32Platform final : public platform::Platform {
  public:
    platform::Registry& registry() override { return m_registry; }
    platform::SystemInfo& system() override { return m_system; }
    platform::FileSystem& files() override { return m_files; }
    platform::Clock& clock() override { return m_clock; }
    platform::AnsiCodePage& ansiCodePage() override { return m_ansiCodePage; }
    platform::ModuleLookup& modules() override { return m_modules; }
    platform::Automation& automation() override { return m_automation; }
    platform::HostObjects& hostObjects() override { return m_hostObjects; }
    platform::ServiceControl& services() override { return m_services; }
    platform::ComClasses& comClasses() override { return m_comClasses; }
    platform::IisConfiguration& iisConfiguration() override { return m_iisConfiguration; }
    platform::Certificates& certificates() override { return m_certificates; }
    platform::Processes& processes() override { return m_processes; }
    platform::Adsi& adsi() override { return m_adsi; }

  private:
    Win32Registry m_registry;
    Win32SystemInfo m_system;
    Win32FileSystem m_files;
    Win32Clock m_clock;
    Win32AnsiCodePage m_ansiCodePage;
    Win32Modules m_modules;
    Win32Automation m_automation;
    Win32HostObjects m_hostObjects;
    Win32ServiceControl m_services;
    Win32ComClasses m_comClasses;
    Win32IisConfiguration m_iisConfiguration;
    Win32Certificates m_certificates;
    Win32Processes m_processes;
    Win32Adsi m_adsi;
};

}  // namespace webrig::win32
