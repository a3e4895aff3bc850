#include "file_diff.h"

#include <dtl/dtl.hpp>
#include <set>
#include <sstream>
#include <vector>

#include "support/wide_string.h"

namespace webrig::cli {
namespace {

bool IsUtf16(const std::string& bytes) {
    return bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
           static_cast<unsigned char>(bytes[1]) == 0xFE;
}

// The file as UTF-8 text; false for a binary file.
bool AsText(const std::string& bytes, std::string& text) {
    if (IsUtf16(bytes)) {
        qm::wstring wide;
        for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
            wide += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          static_cast<unsigned char>(bytes[i + 1]) << 8);
        }
        text = qm::to_utf8(wide);
        return true;
    }
    text = bytes;
    return text.find('\0') == std::string::npos;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

std::string UnifiedDiff(const std::string& path, const std::string* before,
                        const std::string* after) {
    if ((before != nullptr && after != nullptr && *before == *after) ||
        (before == nullptr && after == nullptr)) {
        return {};
    }
    const std::string oldName = before != nullptr ? "a/" + path : "/dev/null";
    const std::string newName = after != nullptr ? "b/" + path : "/dev/null";
    std::string oldText;
    std::string newText;
    if ((before != nullptr && !AsText(*before, oldText)) ||
        (after != nullptr && !AsText(*after, newText))) {
        return "Binary files " + oldName + " and " + newName + " differ\n";
    }
    const std::vector<std::string> oldLines = Lines(oldText);
    const std::vector<std::string> newLines = Lines(newText);
    dtl::Diff<std::string> diff(oldLines, newLines);
    diff.onHuge();
    diff.compose();
    diff.composeUnifiedHunks();
    std::ostringstream hunks;
    diff.printUnifiedFormat(hunks);
    std::string text = hunks.str();
    // An empty side starts at line 0, as diff and patch write it.
    const auto startAtZero = [&text](const std::string& from, const std::string& to) {
        if (text.starts_with(from)) {
            text.replace(0, from.size(), to);
        }
    };
    if (oldLines.empty()) {
        startAtZero("@@ -1,0 ", "@@ -0,0 ");
    }
    if (newLines.empty()) {
        const size_t at = text.find(" +1,0 @@");
        if (at != std::string::npos && at < text.find('\n')) {
            text.replace(at, 8, " +0,0 @@");
        }
    }
    return "--- " + oldName + "\n+++ " + newName + "\n" + text;
}

std::string DiffMachineFiles(const MachineFiles& before, const MachineFiles& after) {
    std::set<std::string> paths;
    for (const auto& [path, bytes] : before) {
        paths.insert(path);
    }
    for (const auto& [path, bytes] : after) {
        paths.insert(path);
    }
    std::string diff;
    for (const std::string& path : paths) {
        const auto old = before.find(path);
        const auto now = after.find(path);
        diff += UnifiedDiff(path, old != before.end() ? &old->second : nullptr,
                            now != after.end() ? &now->second : nullptr);
    }
    return diff;
}

}  // namespace webrig::cli
