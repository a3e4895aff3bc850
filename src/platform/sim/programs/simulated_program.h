#pragma once
// A Windows program whose effect the simulated machine reproduces when it is started.

#include <cstdint>
#include <string>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

struct ProgramRun {
    uint32_t exitCode = 0;
    std::string output;  // what the program prints, UTF-8, lines separated by "\n"
};

class SimulatedProgram {
  public:
    virtual ~SimulatedProgram() = default;
    // Runs to its end with the arguments after the program's own name.
    virtual ProgramRun Run(const std::vector<qm::wstring>& arguments) = 0;
};

}  // namespace webrig::sim
