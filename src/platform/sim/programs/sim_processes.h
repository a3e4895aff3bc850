#pragma once
// platform::Processes on the simulated machine. A process starts only when its executable is a
// program file on the simulated drive (found as CreateProcessW finds it, through the WOW64
// redirector). It runs to its end at once: netsh.exe and aspnet_regiis.exe do what
// `SimulatedProgram`s of those names do, any other program just ends with 0. Every started
// process is appended to the machine's journal (process_journal.h).

#include <map>
#include <memory>
#include <mutex>

#include "platform/processes.h"
#include "platform/sim/files/sim_file_system.h"
#include "platform/sim/programs/process_journal.h"
#include "platform/sim/programs/simulated_program.h"
#include "support/case_insensitive.h"

namespace webrig::sim {

class SimProcesses final : public platform::Processes {
  public:
    // `windowsDirectory` as GetWindowsDirectoryW gives it; the system directory is below it.
    SimProcesses(SimFileSystem& files, qm::wstring windowsDirectory,
                 std::filesystem::path journalPath);

    // The program run for executables of this file name ("netsh.exe"), whatever their folder.
    void AddProgram(qm::wstring fileName, std::unique_ptr<SimulatedProgram> program);

    bool Start(qm::wstring_view commandLine, platform::ProcessInformation& info) override;
    uint32_t Wait(platform::ProcessHandle handle, uint32_t milliseconds) override;
    bool GetExitCode(platform::ProcessHandle process, uint32_t& exitCode) override;
    bool Close(platform::ProcessHandle handle) override;

  private:
    struct Handle {
        bool isProcess = true;
        uint32_t exitCode = 0;
    };

    // 0 and the Windows path of the program file, or the error CreateProcessW gives.
    uint32_t FindExecutable(qm::wstring_view commandLine, qm::wstring& executable) const;
    // The Windows paths a candidate name stands for: itself when it has a folder, else the name
    // in each folder of the search path.
    std::vector<qm::wstring> Locations(const qm::wstring& candidate) const;
    // 0 when the path is a program file; otherwise the error of starting it.
    uint32_t CheckProgramFile(const qm::wstring& path, bool& found) const;

    std::mutex m_mutex;
    SimFileSystem& m_files;
    qm::wstring m_windowsDirectory;
    ProcessJournal m_journal;
    std::map<qm::wstring, std::unique_ptr<SimulatedProgram>, qm::iless> m_programs;
    std::map<uintptr_t, Handle> m_handles;
    uintptr_t m_nextHandle = 0x700;
    uint32_t m_nextId = 0x1000;
};

}  // namespace webrig::sim
