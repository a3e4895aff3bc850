#pragma once

#include "settings/record_text.h"
#include "support/status_codes.h"

// One application (script) map entry of a virtual directory or website.
class CIISVRootAppMapProp final {
  public:
    virtual int32_t SetKey(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Key, std::move(value),
                                                   qm::status::app_map_key_empty);
    }
    virtual int32_t SetExtension(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Extension, std::move(value),
                                                   qm::status::app_map_extension_empty);
    }
    virtual int32_t SetExecPath(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(ExecPath, std::move(value),
                                                   qm::status::app_map_exec_path_empty);
    }
    virtual int32_t SetVerb(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Verb, std::move(value),
                                                   qm::status::app_map_verb_empty);
    }

    qm::wstring Key;
    qm::wstring Extension;
    qm::wstring ExecPath;
    qm::wstring Verb;
    int32_t AppMapProps = 0;
};
