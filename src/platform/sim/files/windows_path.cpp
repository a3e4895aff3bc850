#include "platform/sim/files/windows_path.h"

#include <system_error>

#include "support/case_insensitive.h"
#include "support/result_codes.h"

namespace webrig::sim {
namespace {

bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

bool IsInvalidInName(char16_t c) {
    return c < 0x20 || c == u'<' || c == u'>' || c == u':' || c == u'"' || c == u'|' || c == u'?' ||
           c == u'*';
}

bool IsAllPeriods(qm::wstring_view text) {
    return text.find_first_not_of(u'.') == qm::wstring_view::npos;
}

// "name." loses its period; "...", a name made of periods, keeps them.
void TrimInnerComponent(qm::wstring& component) {
    if (component.size() >= 2 && component.back() == u'.' &&
        component[component.size() - 2] != u'.' && !IsAllPeriods(component)) {
        component.pop_back();
    }
}

void TrimLastComponent(qm::wstring& component) {
    if (component == u"." || component == u"..") {
        return;
    }
    while (!component.empty() && (component.back() == u'.' || component.back() == u' ')) {
        component.pop_back();
    }
}

// The entry of `folder` named `name`: the exact name if there is one, otherwise the first, in
// listing order, that differs only in letter case.
bool FindEntry(const std::filesystem::path& folder, const qm::wstring& name,
               std::filesystem::path& found, bool& isDirectory) {
    std::error_code error;
    std::filesystem::directory_iterator it(folder, error);
    if (error) {
        return false;
    }
    bool haveCaseless = false;
    for (; it != std::filesystem::directory_iterator(); it.increment(error)) {
        if (error) {
            break;
        }
        const std::filesystem::file_status status = it->symlink_status(error);
        if (error || std::filesystem::is_symlink(status)) {
            continue;
        }
        const qm::wstring entryName = qm::from_utf8(it->path().filename().string());
        if (entryName == name) {
            found = it->path();
            isDirectory = std::filesystem::is_directory(status);
            return true;
        }
        if (!haveCaseless && qm::iequals(entryName, name)) {
            haveCaseless = true;
            found = it->path();
            isDirectory = std::filesystem::is_directory(status);
        }
    }
    return haveCaseless;
}

}  // namespace

uint32_t NormalizeWindowsPath(qm::wstring_view path, std::vector<qm::wstring>& components) {
    components.clear();
    const bool onDriveC = path.size() >= 2 && (path[0] == u'C' || path[0] == u'c') &&
                          path[1] == u':' && (path.size() == 2 || IsSeparator(path[2]));
    if (!onDriveC) {
        return qm::win32::path_not_found;
    }
    std::vector<qm::wstring> parts;
    size_t start = 2;
    while (start < path.size()) {
        while (start < path.size() && IsSeparator(path[start])) {
            ++start;
        }
        size_t end = start;
        while (end < path.size() && !IsSeparator(path[end])) {
            ++end;
        }
        if (end > start) {
            parts.emplace_back(path.substr(start, end - start));
        }
        start = end;
    }
    const bool endsWithSeparator = IsSeparator(path.back());
    for (size_t i = 0; i < parts.size(); ++i) {
        qm::wstring& part = parts[i];
        if (i + 1 == parts.size() && !endsWithSeparator) {
            TrimLastComponent(part);
        } else {
            TrimInnerComponent(part);
        }
        if (part.empty() || part == u".") {
            continue;
        }
        if (part == u"..") {
            if (!components.empty()) {
                components.pop_back();
            }
            continue;
        }
        for (const char16_t c : part) {
            if (IsInvalidInName(c)) {
                components.clear();
                return qm::win32::invalid_name;
            }
        }
        components.push_back(std::move(part));
    }
    return qm::win32::success;
}

ResolvedPath ResolveWindowsPath(const std::filesystem::path& driveRoot,
                                qm::wstring_view windowsPath) {
    ResolvedPath resolved;
    std::vector<qm::wstring> components;
    resolved.error = NormalizeWindowsPath(windowsPath, components);
    if (resolved.error != qm::win32::success) {
        return resolved;
    }
    resolved.hostPath = driveRoot;
    resolved.isDirectory = true;
    for (size_t i = 0; i < components.size(); ++i) {
        std::filesystem::path entry;
        bool isDirectory = false;
        if (!resolved.isDirectory ||
            !FindEntry(resolved.hostPath, components[i], entry, isDirectory)) {
            const bool last = i + 1 == components.size();
            resolved.error = last && resolved.isDirectory ? qm::win32::file_not_found
                                                          : qm::win32::path_not_found;
            resolved.isDirectory = false;
            for (size_t j = i; j < components.size(); ++j) {
                resolved.hostPath /= qm::to_utf8(components[j]);
            }
            return resolved;
        }
        resolved.hostPath = std::move(entry);
        resolved.isDirectory = isDirectory;
    }
    // "C:\file.txt\" names a folder that a file cannot be.
    if (!resolved.isDirectory && IsSeparator(windowsPath.back())) {
        resolved.error = qm::win32::invalid_name;
    }
    return resolved;
}

}  // namespace webrig::sim
