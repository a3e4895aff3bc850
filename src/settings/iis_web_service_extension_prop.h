#pragma once

#include "settings/record_text.h"
#include "support/status_codes.h"

// A web service extension (an ISAPI or CGI file allowed or forbidden to run) of a component.
class CIISWebServiceExtensionProp final {
  public:
    virtual int32_t SetKey(qm::wstring value) {  // 0
        return webrig::settings::StoreNonEmptyText(Key, std::move(value),
                                                   qm::status::extension_key_empty);
    }
    virtual int32_t SetExtra(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Extra, std::move(value),
                                                   qm::status::extension_extra_empty);
    }
    virtual int32_t SetFile(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(File, std::move(value),
                                                   qm::status::extension_file_empty);
    }
    virtual int32_t SetDescription(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Description, std::move(value),
                                                   qm::status::extension_description_empty);
    }
    virtual int32_t SetGroup(qm::wstring value) {  // 4
        return webrig::settings::StoreNonEmptyText(Group, std::move(value),
                                                   qm::status::extension_group_empty);
    }

    qm::wstring Key;  // the extension's section name
    qm::wstring Extra;
    qm::wstring File;
    qm::wstring Description;
    qm::wstring Group;
    int32_t Attributes = 0;
    int32_t ActionTaken = 0;
};
