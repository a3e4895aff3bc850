#pragma once
// The journal: what the host engine keeps to undo an installation. One JSON object a line; each
// install run starts with a line that holds what is needed to start webrig again for removal
// (the settings file itself, the properties, the string table, the components), followed by one
// line per item-created record as the operation recorder receives it. Lines are only ever
// appended and each reaches the disk before the recorder returns, so a run that dies half-way
// still lists every item it created.

#include <map>
#include <span>
#include <string>
#include <vector>

#include "support/wide_string.h"

namespace webrig::cli {

struct JournalRecord {
    std::string event;  // "IIS WebSite Created", ...
    std::string name;   // the item's name, as the uninstall call takes it
};

struct JournalRun {
    std::string settingsName;   // the settings file's name
    std::string settingsBytes;  // and its bytes
    std::map<std::string, std::string> properties;
    std::map<std::string, std::string> strings;
    std::vector<std::string> components;
    // Content folders the run made for the items (Windows paths), removed again with them.
    std::vector<std::string> folders;
    std::vector<JournalRecord> records;
};

class Journal {
  public:
    // Opens (creating it, readable by its owner only) `path` for appending.
    explicit Journal(const std::string& path);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    void AppendRun(const JournalRun& run);
    // One record of the operation recorder: its first text is the event, its second the name.
    void AppendRecord(std::span<const qm::wstring> record);
    // Records appended through this object.
    size_t recordsAppended() const { return m_records; }

    // Every run of the journal, in order. Throws InputError for a journal that cannot be read
    // or has a malformed line (a torn last line, left by a crash, is skipped).
    static std::vector<JournalRun> Read(const std::string& path);

  private:
    void AppendLine(const std::string& line);

    std::string m_path;
    int m_file;
    size_t m_records = 0;
};

}  // namespace webrig::cli
