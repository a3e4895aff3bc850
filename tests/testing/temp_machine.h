#pragma once
// A simulated machine in a temporary folder, created fresh and removed at the end of the test.

#include <memory>

#include "platform/sim/machine/machine.h"
#include "testing/temp_folder.h"

namespace webrig::testing {

class TempMachine {
  public:
    explicit TempMachine(const sim::MachineConfig& config = {});

    // The machine folder (machine.json, registry/, drive_c/).
    const std::filesystem::path& path() const noexcept { return m_folder.path(); }
    sim::Machine& machine() noexcept { return *m_machine; }
    // Opens the folder again, as another process would; the machine held before is closed.
    sim::Machine& Reopen();

  private:
    TempFolder m_folder;
    std::unique_ptr<sim::Machine> m_machine;
};

}  // namespace webrig::testing
