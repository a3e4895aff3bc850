#pragma once
// The real IIS 10 applicationHost.config of tests/data/iis-samples grown to many sites and
// pools, on a simulated IIS 10 machine whose configuration system uses the built-in schema and
// a file cache the benchmark controls.

#include <memory>
#include <string>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_file_cache.h"
#include "platform/sim/iis7/sim_iis_configuration.h"
#include "testing/temp_machine.h"

namespace webrig::bench {

// The sample file with `sites` sites (the stock one included), each with a root application in
// a pool of its own, a virtual directory and a binding, and `sites` pools, as IIS writes them.
std::string GrownRealAppHost(int sites);

class GrownMachine {
  public:
    explicit GrownMachine(int sites);

    const std::string& text() const noexcept { return m_text; }
    // A configuration system over `cache`, as a process starts one.
    std::unique_ptr<sim::iis7::SimIisConfiguration> NewConfiguration(
        sim::iis7::ConfigFileCache& cache);
    // A fresh manager of the machine's own configuration system, whose cache stays warm.
    std::unique_ptr<platform::AdminManager> NewManager();

  private:
    testing::TempMachine m_machine;
    std::string m_text;
    sim::iis7::ConfigFileCache m_cache;
    std::unique_ptr<sim::iis7::SimIisConfiguration> m_configuration;
};

std::unique_ptr<platform::AdminManager> NewManager(sim::iis7::SimIisConfiguration& configuration);

}  // namespace webrig::bench
