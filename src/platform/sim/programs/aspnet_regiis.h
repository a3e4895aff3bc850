#pragma once
// aspnet_regiis.exe with the options webrig runs: -i and -ir (register ASP.NET with IIS), -s and
// -sn (map a path's scripts to this ASP.NET version, recursively or not) and -k (remove the
// path's mappings). The simulation checks the command and ends with 0; it does not rewrite the IIS
// configuration as the real tool does. An unknown option, or a path option without its path,
// ends with 1.

#include "platform/sim/programs/simulated_program.h"

namespace webrig::sim {

class AspNetRegIis final : public SimulatedProgram {
  public:
    ProgramRun Run(const std::vector<qm::wstring>& arguments) override;
};

}  // namespace webrig::sim
