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
    dtl::Diff<std::string> diff(Lines(oldText), Lines(newText));
    diff.onHuge();
    diff.compose();
    diff.composeUnifiedHunks();
    std::ostringstream out;
    out << "--- " << oldName << "\n+++ " << newName << "\n";
    diff.printUnifiedFormat(out);
    return out.str();
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
