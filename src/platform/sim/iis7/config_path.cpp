#include "platform/sim/iis7/config_path.h"

#include "support/case_insensitive.h"

namespace webrig::sim::iis7 {
namespace {

std::vector<qm::wstring> Split(qm::wstring_view text) {
    std::vector<qm::wstring> segments;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t slash = text.find(u'/', start);
        const size_t end = slash == qm::wstring_view::npos ? text.size() : slash;
        segments.emplace_back(text.substr(start, end - start));
        if (slash == qm::wstring_view::npos) {
            break;
        }
        start = slash + 1;
    }
    return segments;
}

}  // namespace

std::optional<std::vector<qm::wstring>> SplitConfigPath(qm::wstring_view path) {
    if (!qm::istarts_with(path, kAppHostPath)) {
        return std::nullopt;
    }
    qm::wstring_view rest = path.substr(kAppHostPath.size());
    if (rest.empty() || rest == u"/") {
        return std::vector<qm::wstring>{};
    }
    if (rest.front() != u'/') {
        return std::nullopt;
    }
    rest.remove_prefix(1);
    if (rest.back() == u'/') {
        rest.remove_suffix(1);
    }
    std::vector<qm::wstring> segments = Split(rest);
    for (const qm::wstring& segment : segments) {
        if (segment.empty()) {
            return std::nullopt;
        }
    }
    return segments;
}

qm::wstring JoinSegments(const std::vector<qm::wstring>& segments, size_t first, size_t last) {
    qm::wstring joined;
    for (size_t i = first; i < last && i < segments.size(); ++i) {
        if (i != first) {
            joined += u'/';
        }
        joined += segments[i];
    }
    return joined;
}

bool IsPathPrefix(const std::vector<qm::wstring>& prefix, const std::vector<qm::wstring>& path) {
    if (prefix.size() > path.size()) {
        return false;
    }
    for (size_t i = 0; i < prefix.size(); ++i) {
        if (!qm::iequals(prefix[i], path[i])) {
            return false;
        }
    }
    return true;
}

std::vector<qm::wstring> SplitLocationPath(qm::wstring_view path) {
    while (!path.empty() && path.back() == u'/') {
        path.remove_suffix(1);
    }
    while (!path.empty() && path.front() == u'/') {
        path.remove_prefix(1);
    }
    if (path.empty() || path == u".") {
        return {};
    }
    return Split(path);
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        bool ascii = true;
        for (const char c : a) {
            ascii = ascii && static_cast<unsigned char>(c) < 0x80;
        }
        for (const char c : b) {
            ascii = ascii && static_cast<unsigned char>(c) < 0x80;
        }
        if (ascii) {
            return false;
        }
        return qm::iequals(qm::from_utf8(a), qm::from_utf8(b));
    }
    for (size_t i = 0; i < a.size(); ++i) {
        const auto x = static_cast<unsigned char>(a[i]);
        const auto y = static_cast<unsigned char>(b[i]);
        if (x >= 0x80 || y >= 0x80) {
            return qm::iequals(qm::from_utf8(a), qm::from_utf8(b));
        }
        const auto upper = [](unsigned char c) {
            return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c;
        };
        if (upper(x) != upper(y)) {
            return false;
        }
    }
    return true;
}

}  // namespace webrig::sim::iis7
