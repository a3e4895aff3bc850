#include "platform/sim/programs/process_journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace webrig::sim {
namespace {

void AppendJsonString(std::string& out, std::string_view utf8) {
    out += '"';
    for (const char c : utf8) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
                    out += escaped;
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

}  // namespace

std::string FormatJournalLine(const JournalEntry& entry) {
    std::string line = "{\"commandLine\":";
    AppendJsonString(line, qm::to_utf8(entry.commandLine));
    line += ",\"executable\":";
    AppendJsonString(line, qm::to_utf8(entry.executable));
    line += ",\"exitCode\":" + std::to_string(entry.exitCode);
    if (!entry.output.empty()) {
        line += ",\"output\":";
        AppendJsonString(line, entry.output);
    }
    line += "}\n";
    return line;
}

ProcessJournal::~ProcessJournal() {
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

bool ProcessJournal::Open() {
    if (m_fd >= 0) {
        return true;
    }
    std::error_code error;
    std::filesystem::create_directories(m_path.parent_path(), error);
    m_fd = ::open(m_path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    return m_fd >= 0;
}

bool ProcessJournal::Append(const JournalEntry& entry) {
    if (!Open()) {
        return false;
    }
    const std::string line = FormatJournalLine(entry);
    // One write per line: appends of other processes never land inside it.
    ssize_t written = -1;
    do {
        written = ::write(m_fd, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    return written == static_cast<ssize_t>(line.size()) && ::fsync(m_fd) == 0;
}

}  // namespace webrig::sim
