#include "journal.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "command_error.h"

namespace webrig::cli {
namespace {

std::string Base64(const std::string& bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<size_t>(length));
    return text;
}

// False for text that is not base64.
bool FromBase64(const std::string& text, std::string& bytes) {
    if (text.size() % 4 != 0) {
        return false;
    }
    bytes.assign(text.size() / 4 * 3 + 1, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                       reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    if (length < 0) {
        return false;
    }
    // EVP_DecodeBlock counts the padding as zero bytes.
    size_t padding = 0;
    for (size_t i = text.size(); i > 0 && text[i - 1] == '='; --i) {
        ++padding;
    }
    bytes.resize(static_cast<size_t>(length) - padding);
    return true;
}

}  // namespace

Journal::Journal(const std::string& path) : m_path(path) {
    m_file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (m_file < 0) {
        throw InputError("cannot write the journal " + path + ": " + std::strerror(errno));
    }
}

Journal::~Journal() {
    ::close(m_file);
}

void Journal::AppendLine(const std::string& line) {
    const std::string text = line + "\n";
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = ::write(m_file, text.data() + written, text.size() - written);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw std::system_error(errno, std::generic_category(), "journal " + m_path);
        }
        written += static_cast<size_t>(n);
    }
    ::fsync(m_file);
}

void Journal::AppendRun(const JournalRun& run) {
    const nlohmann::json line = {{"run", "install"},
                                 {"settingsName", run.settingsName},
                                 {"settings", Base64(run.settingsBytes)},
                                 {"properties", run.properties},
                                 {"strings", run.strings},
                                 {"components", run.components},
                                 {"folders", run.folders}};
    AppendLine(line.dump());
}

void Journal::AppendRecord(std::span<const qm::wstring> record) {
    nlohmann::json line = {{"event", record.empty() ? "" : qm::to_utf8(record[0])},
                           {"name", record.size() < 2 ? "" : qm::to_utf8(record[1])}};
    AppendLine(line.dump());
    ++m_records;
}

std::vector<JournalRun> Journal::Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw InputError("cannot read the journal " + path);
    }
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    const bool lastLineTorn =
        !lines.empty() && in.eof() && !lines.back().empty() && lines.back().back() != '}';
    std::vector<JournalRun> runs;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].empty() || (lastLineTorn && i + 1 == lines.size())) {
            continue;
        }
        const std::string where = path + ":" + std::to_string(i + 1) + ": ";
        try {
            const nlohmann::json line = nlohmann::json::parse(lines[i]);
            if (line.contains("run")) {
                JournalRun run;
                run.settingsName = line.at("settingsName").get<std::string>();
                if (!FromBase64(line.at("settings").get<std::string>(), run.settingsBytes)) {
                    throw InputError(where + "the settings are not base64");
                }
                run.properties = line.at("properties").get<std::map<std::string, std::string>>();
                run.strings = line.at("strings").get<std::map<std::string, std::string>>();
                run.components = line.at("components").get<std::vector<std::string>>();
                run.folders = line.value("folders", std::vector<std::string>());
                runs.push_back(std::move(run));
            } else {
                if (runs.empty()) {
                    throw InputError(where + "a record before the first run");
                }
                runs.back().records.push_back(
                    {line.at("event").get<std::string>(), line.at("name").get<std::string>()});
            }
        } catch (const nlohmann::json::exception& error) {
            throw InputError(where + "not a journal line (" + error.what() + ")");
        }
    }
    return runs;
}

}  // namespace webrig::cli
