#pragma once

#include "settings/record_text.h"
#include "support/status_codes.h"

// One metabase property given by number, applied to a virtual directory or website as it stands.
class CIISMetaDataProp final {
  public:
    virtual int32_t SetValue(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Value, std::move(value),
                                                   qm::status::metadata_value_empty);
    }

    int32_t Prop = 0;      // metabase property identifier
    int32_t Type = 0;      // metabase data type
    int32_t UserType = 0;  // metabase user type
    qm::wstring Value;
};
