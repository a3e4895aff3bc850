#pragma once
// journal/processes.log in the machine folder: one line for every process started on the
// machine, appended when it has ended and never rewritten. Each line is a JSON object:
//
//   {"commandLine":"\"C:\\Windows\\system32\\netsh.exe\" http add sslcert ...",
//    "executable":"C:\\Windows\\SysWOW64\\netsh.exe","exitCode":0}
//
// with "output" added when the program printed something.

#include <cstdint>
#include <filesystem>
#include <string>

#include "support/wide_string.h"

namespace webrig::sim {

struct JournalEntry {
    qm::wstring commandLine;
    qm::wstring executable;  // the file that ran, after WOW64 redirection
    uint32_t exitCode = 0;
    std::string output;
};

// The entry's line, ending with "\n".
std::string FormatJournalLine(const JournalEntry& entry);

class ProcessJournal {
  public:
    explicit ProcessJournal(std::filesystem::path path) : m_path(std::move(path)) {}
    ~ProcessJournal();
    ProcessJournal(const ProcessJournal&) = delete;
    ProcessJournal& operator=(const ProcessJournal&) = delete;

    // Opens the file for appending (creating it and its folder); false when it cannot.
    bool Open();
    // Appends the entry's line in one write; false when it cannot.
    bool Append(const JournalEntry& entry);

  private:
    std::filesystem::path m_path;
    int m_fd = -1;
};

}  // namespace webrig::sim
