#pragma once
// Small helpers of the IIS 7+ backend's calls into the configuration system.

#include <cstdint>
#include <vector>

#include "support/com_exception.h"
#include "support/format.h"
#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::apphost {

// MAX_PATH: GetSystemDirectoryW into a buffer of this many characters leaves it empty for a
// longer directory.
inline constexpr size_t kMaxPath = 260;

// A failed configuration call that the operation has no answer for ends it, as a COM error.
inline void ThrowIfFailed(qm::hresult hr) {
    if (qm::failed(hr)) {
        throw qm::com_exception(hr);
    }
}

// Codes appear in log lines as signed decimal numbers (0x80070002 is -2147024894).
inline qm::wstring Decimal(int32_t code) {
    return qm::format(u"%d", code);
}

// Equal when only the letters A to Z differ in case.
bool EqualsIgnoringAsciiCase(qm::wstring_view a, qm::wstring_view b) noexcept;

// The pieces between the separators, empty ones included ("a;;b" gives a, "", b; "" gives one
// empty piece). A separator at the end adds an empty piece only with `trailingPiece`.
std::vector<qm::wstring> SplitText(qm::wstring_view text, char16_t separator, bool trailingPiece);

// Two pieces of a Windows path with exactly one backslash between them; an empty piece adds
// nothing.
qm::wstring JoinPath(const qm::wstring& first, const qm::wstring& second);

}  // namespace webrig::apphost
