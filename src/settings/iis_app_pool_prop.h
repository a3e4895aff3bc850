#pragma once

#include "settings/record_text.h"
#include "support/status_codes.h"

// An application pool of a component. Its numbers start at -1, "not given"; the loader then
// stores the file's value (0 when the key is absent).
class CIISAppPoolProp final {
  public:
    virtual int32_t SetKey(qm::wstring value) {  // 0
        return webrig::settings::StoreNonEmptyText(Key, std::move(value),
                                                   qm::status::app_pool_key_empty);
    }
    virtual int32_t SetName(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Name, std::move(value),
                                                   qm::status::app_pool_name_empty);
    }
    virtual int32_t SetExtra(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Extra, std::move(value),
                                                   qm::status::app_pool_extra_empty);
    }
    virtual int32_t SetUser(qm::wstring value) {  // 3
        return webrig::settings::StoreText(User, std::move(value));
    }
    virtual int32_t SetUserPassword(qm::wstring value) {
        return webrig::settings::StoreText(UserPassword, std::move(value));
    }
    virtual int32_t SetRecycleTimes(qm::wstring value) {
        return webrig::settings::StoreText(RecycleTimes, std::move(value));
    }
    virtual int32_t SetCPUMon(qm::wstring value) {  // 6
        return webrig::settings::StoreText(CPUMon, std::move(value));
    }
    virtual int32_t SetManagedPipelineMode(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(ManagedPipelineMode, std::move(value),
                                                   qm::status::app_pool_pipeline_mode_empty);
    }
    virtual int32_t SetEnable32bitAppOnWin64(qm::wstring value) {
        return webrig::settings::StoreText(Enable32bitAppOnWin64, std::move(value));
    }
    virtual int32_t SetManagedRuntimeVersion(qm::wstring value) {
        return webrig::settings::StoreText(ManagedRuntimeVersion, std::move(value));
    }
    virtual int32_t SetOverwriteExisting(qm::wstring value) {  // 10
        return webrig::settings::StoreText(OverwriteExisting, std::move(value));
    }

    qm::wstring Key;  // the pool's section name
    qm::wstring Name;
    qm::wstring Extra;
    int32_t Attributes = -1;
    qm::wstring User;
    qm::wstring UserPassword;
    int32_t RecycleMinutes = -1;
    int32_t RecycleRequests = -1;
    qm::wstring RecycleTimes;
    int32_t IdleTimeout = -1;
    int32_t QueueLimit = -1;
    qm::wstring CPUMon;
    int32_t MaxProc = -1;
    int32_t ActionTaken = 0;
    int32_t LoadUserProfile = 0;
    qm::wstring ManagedPipelineMode;
    qm::wstring Enable32bitAppOnWin64;
    qm::wstring ManagedRuntimeVersion;
    qm::wstring OverwriteExisting;
};
