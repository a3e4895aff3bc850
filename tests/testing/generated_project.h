#pragma once
// A complete, loadable settings file of `componentCount` components for tests, benchmarks and
// fuzz seeds: every key the loader reads, with realistic values.

#include "support/wide_string.h"
#include "testing/settings_file_builder.h"

namespace webrig::testing {

// Each component has one virtual directory (two application maps, two MIME maps, one metadata
// property, a parent website of its own), one application pool, one web service extension and
// one website. Components are named "Component1" to "Component<componentCount>". Lines stay
// under 200 characters, the line limit of common INI readers such as inih.
SettingsFileBuilder GenerateProject(int componentCount);

// The plaintext of every scrambled password in a generated project. Its scrambled form is also
// representable in a Windows-1252 file (see password_scrambling.h), so both encodings load it.
inline constexpr qm::wstring_view kGeneratedPassword = u"Гость-1";

}  // namespace webrig::testing
