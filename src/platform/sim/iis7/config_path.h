#pragma once
// Configuration paths: "MACHINE/WEBROOT/APPHOST" is applicationHost.config; below it come a site
// name and the segments of a virtual path ("MACHINE/WEBROOT/APPHOST/Default Web Site/shop").

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim::iis7 {

inline constexpr std::u16string_view kAppHostPath = u"MACHINE/WEBROOT/APPHOST";

// The segments below MACHINE/WEBROOT/APPHOST (none for the path itself), compared without regard
// to case; nullopt for a path elsewhere or with an empty segment. A trailing "/" is ignored.
std::optional<std::vector<qm::wstring>> SplitConfigPath(qm::wstring_view path);

// Segments [first, last) joined with "/".
qm::wstring JoinSegments(const std::vector<qm::wstring>& segments, size_t first, size_t last);

// Whether `prefix` is `path` or an ancestor of it (segments compared without regard to case).
bool IsPathPrefix(const std::vector<qm::wstring>& prefix, const std::vector<qm::wstring>& path);

// A location tag's path as segments ("" and "." are the file's own level).
std::vector<qm::wstring> SplitLocationPath(qm::wstring_view path);

// Comparison of UTF-8 names and paths without regard to case, as IIS compares them.
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace webrig::sim::iis7
