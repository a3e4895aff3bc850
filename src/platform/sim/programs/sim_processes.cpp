#include "platform/sim/programs/sim_processes.h"

#include "platform/sim/files/program_file.h"
#include "platform/sim/programs/command_line.h"
#include "support/last_error.h"
#include "support/result_codes.h"

namespace webrig::sim {
namespace {

using platform::kNoProcess;
using platform::ProcessHandle;

bool HasFolder(qm::wstring_view name) {
    return name.find_first_of(u"\\/:") != qm::wstring_view::npos;
}

qm::wstring FileNameOf(qm::wstring_view path) {
    const size_t separator = path.find_last_of(u"\\/");
    return qm::wstring(separator == qm::wstring_view::npos ? path : path.substr(separator + 1));
}

}  // namespace

SimProcesses::SimProcesses(SimFileSystem& files, qm::wstring windowsDirectory,
                           std::filesystem::path journalPath)
    : m_files(files),
      m_windowsDirectory(std::move(windowsDirectory)),
      m_journal(std::move(journalPath)) {}

void SimProcesses::AddProgram(qm::wstring fileName, std::unique_ptr<SimulatedProgram> program) {
    m_programs[std::move(fileName)] = std::move(program);
}

std::vector<qm::wstring> SimProcesses::Locations(const qm::wstring& candidate) const {
    const qm::wstring system = m_windowsDirectory + u"\\system32";
    if (!HasFolder(candidate)) {
        // The current directory (the system directory here), the system directory, the 16-bit
        // system directory, the Windows directory.
        return {system + u"\\" + candidate, m_windowsDirectory + u"\\System\\" + candidate,
                m_windowsDirectory + u"\\" + candidate};
    }
    if (candidate.size() >= 2 && candidate[1] == u':') {
        return {candidate};
    }
    if (candidate.front() == u'\\' || candidate.front() == u'/') {
        return {u"C:" + candidate};
    }
    return {system + u"\\" + candidate};
}

uint32_t SimProcesses::CheckProgramFile(const qm::wstring& path, bool& found) const {
    const ResolvedPath resolved = m_files.Resolve(path);
    found = resolved.error == 0;
    if (!found) {
        return resolved.error;
    }
    if (resolved.isDirectory) {
        return qm::win32::access_denied;
    }
    return HasProgramHeader(resolved.hostPath) ? 0 : platform::kErrorBadExeFormat;
}

uint32_t SimProcesses::FindExecutable(qm::wstring_view commandLine, qm::wstring& executable) const {
    uint32_t firstError = 0;
    for (const qm::wstring& candidate : ExecutableCandidates(commandLine)) {
        for (const qm::wstring& location : Locations(candidate)) {
            bool found = false;
            const uint32_t error = CheckProgramFile(location, found);
            if (found && error != qm::win32::access_denied) {
                executable = location;
                return error;
            }
            if (firstError == 0) {
                firstError = HasFolder(candidate) ? error : qm::win32::file_not_found;
            }
        }
    }
    return firstError == 0 ? qm::win32::file_not_found : firstError;
}

bool SimProcesses::Start(qm::wstring_view commandLine, platform::ProcessInformation& info) {
    info = {};
    qm::wstring executable;
    const uint32_t error = FindExecutable(commandLine, executable);
    if (error != 0) {
        qm::set_last_error(error);
        return false;
    }
    const std::lock_guard lock(m_mutex);
    if (!m_journal.Open()) {
        qm::set_last_error(qm::win32::write_fault);
        return false;
    }
    ProgramRun run;
    const auto program = m_programs.find(FileNameOf(executable));
    if (program != m_programs.end()) {
        run = program->second->Run(ProgramArguments(commandLine));
    }
    m_journal.Append(
        {qm::wstring(commandLine), m_files.Redirect(executable), run.exitCode, run.output});
    const uintptr_t process = m_nextHandle += 4;
    const uintptr_t thread = m_nextHandle += 4;
    m_handles[process] = {true, run.exitCode};
    m_handles[thread] = {false, 0};
    info.process = ProcessHandle{process};
    info.thread = ProcessHandle{thread};
    info.processId = m_nextId += 4;
    info.threadId = m_nextId += 4;
    return true;
}

uint32_t SimProcesses::Wait(ProcessHandle handle, uint32_t) {
    const std::lock_guard lock(m_mutex);
    if (m_handles.count(static_cast<uintptr_t>(handle)) == 0) {
        qm::set_last_error(qm::win32::invalid_handle);
        return platform::kWaitFailed;
    }
    return platform::kWaitObject0;  // every simulated process has already ended
}

bool SimProcesses::GetExitCode(ProcessHandle process, uint32_t& exitCode) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_handles.find(static_cast<uintptr_t>(process));
    if (found == m_handles.end() || !found->second.isProcess) {
        qm::set_last_error(qm::win32::invalid_handle);
        return false;
    }
    exitCode = found->second.exitCode;
    return true;
}

bool SimProcesses::Close(ProcessHandle handle) {
    const std::lock_guard lock(m_mutex);
    if (handle == kNoProcess || m_handles.erase(static_cast<uintptr_t>(handle)) != 1) {
        qm::set_last_error(qm::win32::invalid_handle);
        return false;
    }
    return true;
}

}  // namespace webrig::sim
