#include "command_host.h"

#include <algorithm>
#include <fstream>

#include "command_error.h"
#include "journal.h"
#include "support/result_codes.h"

namespace webrig::cli {
namespace {

// The host functions receive only the context; it leads back to the host object.
std::map<uint32_t, CommandHost*>& Hosts() {
    static std::map<uint32_t, CommandHost*> hosts;
    return hosts;
}

uint32_t NextContext() {
    static uint32_t next = 0x57E0;
    return ++next;
}

}  // namespace

qm::wstring SubstituteProperties(qm::wstring_view text,
                                 const std::map<qm::wstring, qm::wstring>& properties) {
    qm::wstring result;
    size_t at = 0;
    while (at < text.size()) {
        const size_t open = text.find(u'[', at);
        if (open == qm::wstring_view::npos) {
            break;
        }
        const size_t close = text.find(u']', open + 1);
        if (close == qm::wstring_view::npos) {
            break;
        }
        const qm::wstring_view name = text.substr(open + 1, close - open - 1);
        result.append(text.substr(at, open - at));
        if (name.size() == 2 && name[0] == u'\\') {
            result += name[1];
        } else if (!name.empty() && name.find(u'[') == qm::wstring_view::npos &&
                   name.find_first_of(u"#!$%\\") == qm::wstring_view::npos) {
            const auto found = properties.find(qm::wstring(name));
            if (found != properties.end()) {
                result += found->second;
            }
        } else {
            result.append(text.substr(open, close - open + 1));
        }
        at = close + 1;
    }
    result.append(text.substr(at));
    return result;
}

std::map<qm::wstring, qm::wstring> ReadStringTable(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw InputError("cannot read the string table " + path);
    }
    std::map<qm::wstring, qm::wstring> strings;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        const size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line[start] == '#' || line[start] == ';') {
            continue;
        }
        const size_t equals = line.find('=');
        if (equals == std::string::npos) {
            throw InputError(path + ":" + std::to_string(number) +
                             ": a string table line is KEY=text");
        }
        std::string key = line.substr(start, equals - start);
        key.erase(key.find_last_not_of(" \t") + 1);
        strings[qm::from_utf8(key)] = qm::from_utf8(line.substr(equals + 1));
    }
    return strings;
}

CommandHost::CommandHost(sim::Machine& machine, HostTables tables, const qm::wstring& folder,
                         Journal* journal)
    : m_machine(machine), m_tables(std::move(tables)), m_context(NextContext()), m_source(journal) {
    const std::map<std::string, platform::ProcAddress> functions = {
        {host::kLoadStringExport, reinterpret_cast<platform::ProcAddress>(&LoadString)},
        {host::kTextSubstituteExport, reinterpret_cast<platform::ProcAddress>(&Substitute)},
        {host::kComponentFileInfoExport, reinterpret_cast<platform::ProcAddress>(&FileInfo)},
    };
    m_module = machine.simModules().LoadModule(folder + u"\\" + host::kHostModuleName, functions);
    // The engine extracts webrig.dll next to its own module.
    machine.simModules().SetOwnModulePath(folder + u"\\" + host::kOwnModuleName);
    Hosts()[m_context] = this;
}

CommandHost::~CommandHost() {
    Hosts().erase(m_context);
    m_machine.simModules().UnloadModule(m_module);
}

CommandHost* CommandHost::Find(uint32_t context) {
    const auto found = Hosts().find(context);
    return found == Hosts().end() ? nullptr : found->second;
}

int32_t WEBRIG_HOST_CALL CommandHost::LoadString(uint32_t context, const char16_t* key,
                                                 char16_t* buffer, uint32_t capacity) {
    CommandHost* const host = Find(context);
    if (host == nullptr || key == nullptr) {
        return -1;
    }
    const auto found = host->m_tables.strings.find(key);
    if (found == host->m_tables.strings.end()) {
        return -1;
    }
    const qm::wstring& text = found->second;
    if (buffer == nullptr || text.size() + 1 > capacity) {
        return static_cast<int32_t>(text.size());
    }
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = u'\0';
    return 0;
}

int32_t WEBRIG_HOST_CALL CommandHost::Substitute(uint32_t context, platform::Bstr* text) {
    CommandHost* const host = Find(context);
    if (host == nullptr || text == nullptr) {
        return -1;
    }
    platform::Automation& automation = host->m_machine.automation();
    const qm::wstring value(*text, automation.SysStringLen(*text));
    automation.SysFreeString(*text);
    *text = automation.SysAllocStringLen(SubstituteProperties(value, host->m_tables.properties));
    return 0;
}

int32_t WEBRIG_HOST_CALL CommandHost::FileInfo(uint32_t context, const char16_t*, const char16_t*,
                                               const char16_t*, uint32_t, uint32_t* result,
                                               uint32_t) {
    // Every component's records are wanted: no flag is reported.
    if (Find(context) == nullptr || result == nullptr) {
        return -1;
    }
    *result = 0;
    return 0;
}

qm::hresult CommandHost::Recorder::RecordOperation(std::span<const qm::wstring> record) {
    if (m_journal == nullptr) {
        return qm::hr::ok;
    }
    try {
        m_journal->AppendRecord(record);
        return qm::hr::ok;
    } catch (const std::exception&) {
        return qm::hr::fail;
    }
}

qm::hresult CommandHost::Source::GetOperationRecorder(
    qm::wstring_view, std::shared_ptr<platform::IOperationRecorder>& recorder) {
    recorder = m_recorder;
    return qm::hr::ok;
}

}  // namespace webrig::cli
