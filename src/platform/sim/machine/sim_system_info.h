#pragma once
// What the simulated Windows says about itself, from machine.json.

#include "platform/sim/machine/machine_config.h"
#include "platform/system_info.h"

namespace webrig::sim {

class SimSystemInfo final : public platform::SystemInfo {
  public:
    explicit SimSystemInfo(const MachineConfig& config) : m_config(config) {}

    qm::wstring WindowsDirectory() override { return m_config.windowsDirectory; }
    // GetSystemDirectoryW answers in lower case: "C:\Windows\system32".
    qm::wstring SystemDirectory() override { return m_config.windowsDirectory + u"\\system32"; }
    // The version as machine.json states it; the compatibility lie Windows tells processes
    // without a manifest is the machine author's to write there.
    platform::OsVersion Version() override { return m_config.osVersion; }
    platform::ProcessorArchitecture NativeArchitecture() override { return m_config.architecture; }

  private:
    const MachineConfig& m_config;
};

}  // namespace webrig::sim
