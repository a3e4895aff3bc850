#pragma once
// The one rule every text setter of the item records follows: store the text and return 0, or,
// for a field that must not be empty, return the field's status and keep the old text.

#include <cstdint>
#include <utility>

#include "support/wide_string.h"

namespace webrig::settings {

inline int32_t StoreText(qm::wstring& field, qm::wstring value) {
    field = std::move(value);
    return 0;
}

inline int32_t StoreNonEmptyText(qm::wstring& field, qm::wstring value, int32_t statusWhenEmpty) {
    if (value.empty()) {
        return statusWhenEmpty;
    }
    field = std::move(value);
    return 0;
}

// What the Add... operations of the bag and the records return: the status of the new record's
// key setter (or 0) and the record, which stays in its map whatever the status.
template <class Record>
struct Added {
    int32_t status;
    Record record;
};

}  // namespace webrig::settings
