#include "support/status_codes.h"

#include <array>

namespace qm {
namespace {

constexpr status_info kStatuses[] = {
#define WEBRIG_STATUS(name, code, meaning) {code, #name, meaning},
#include "support/status_codes.inc"
#undef WEBRIG_STATUS
};

}  // namespace

std::span<const status_info> all_statuses() noexcept {
    return kStatuses;
}

const status_info* find_status(int32_t code) noexcept {
    for (const status_info& info : kStatuses) {
        if (info.code == code) {
            return &info;
        }
    }
    return nullptr;
}

}  // namespace qm
