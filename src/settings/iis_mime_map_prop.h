#pragma once

#include "settings/record_text.h"
#include "support/status_codes.h"

// One MIME map entry of a virtual directory or website.
class CIISMimeMapProp final {
  public:
    virtual int32_t SetExtension(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Extension, std::move(value),
                                                   qm::status::mime_map_empty);
    }
    virtual int32_t SetType(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Type, std::move(value),
                                                   qm::status::mime_map_empty);
    }

    qm::wstring Extension;
    qm::wstring Type;  // the MIME type
};
