#include "host/password_masking.h"

#include "host/event_log.h"
#include "support/case_insensitive.h"
#include "support/decimal.h"

namespace webrig::host {
namespace {

constexpr int32_t kAnonymousUserPassword = 6021;
constexpr int32_t kAppPoolIdentityPassword = 7502;

bool IsListed(qm::wstring_view hiddenProperties, qm::wstring_view name) {
    size_t start = 0;
    while (true) {
        const size_t end = hiddenProperties.find(u';', start);
        if (hiddenProperties.substr(start, end - start) == name) {
            return true;
        }
        if (end == qm::wstring_view::npos) {
            return false;
        }
        start = end + 1;
    }
}

}  // namespace

qm::wstring MaskPasswordValue(qm::wstring_view hiddenProperties, const qm::wstring& name,
                              const qm::wstring& value, IIISEvent* sink) {
    try {
        if (IsListed(hiddenProperties, name)) {
            return kMaskedValue;
        }
        if (qm::to_upper(name).find(u"PASSWORD") != qm::wstring::npos) {
            return kMaskedValue;
        }
        const int32_t identifier = qm::read_decimal(name);
        if (identifier == kAnonymousUserPassword || identifier == kAppPoolIdentityPassword) {
            return kMaskedValue;
        }
        return value;
    } catch (...) {
        LogLine(sink, u"Exception caught while trying to mask passwords in the log");
        // When in doubt, the value stays hidden.
        return kMaskedValue;
    }
}

}  // namespace webrig::host
