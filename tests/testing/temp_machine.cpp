#include "testing/temp_machine.h"

namespace webrig::testing {

TempMachine::TempMachine(const sim::MachineConfig& config) {
    sim::Machine::Create(m_folder.path(), config);
    m_machine = sim::Machine::Open(m_folder.path());
}

sim::Machine& TempMachine::Reopen() {
    m_machine.reset();
    m_machine = sim::Machine::Open(m_folder.path());
    return *m_machine;
}

}  // namespace webrig::testing
