// An application pool's settings, sent to the backend as metabase properties of the pool's key.
// The metabase backend stores them as they are; the IIS 7+ backend translates each into an
// attribute of the pool's element, ignoring the key handle.

#include <utility>
#include <vector>

#include "controller/iis_vroot_controller.h"
#include "support/decimal.h"
#include "support/format.h"

namespace {

namespace status = qm::status;

constexpr uint32_t kServerUserType = 1;
constexpr uint32_t kFileUserType = 2;
constexpr uint32_t kInheritAttribute = 1;
constexpr uint32_t kInheritSecureAttributes = 5;
constexpr uint32_t kOpenTimeoutMilliseconds = 2000;
constexpr int32_t kNotGiven = -1;

namespace property {
constexpr uint32_t periodic_restart_time = 9001;
constexpr uint32_t periodic_restart_requests = 9002;
constexpr uint32_t max_processes = 9003;
constexpr uint32_t idle_timeout = 9005;
constexpr uint32_t queue_length = 9017;
constexpr uint32_t periodic_restart_schedule = 9020;
constexpr uint32_t identity_type = 9021;
constexpr uint32_t cpu_action = 9022;
constexpr uint32_t cpu_limit = 9023;
constexpr uint32_t load_user_profile = 9043;
constexpr uint32_t cpu_reset_interval = 2144;
constexpr uint32_t identity_user_name = 7501;
constexpr uint32_t identity_password = 7502;
}  // namespace property

// Metabase identity types.
constexpr int32_t kLocalSystem = 0;
constexpr int32_t kLocalService = 1;
constexpr int32_t kNetworkService = 2;
constexpr int32_t kSpecificUser = 3;
constexpr int32_t kApplicationPoolIdentity = 4;

int32_t IdentityTypeOf(uint32_t attributes, bool vistaBackend) {
    int32_t type = kNetworkService;
    if ((attributes & 0x01) != 0) {
        type = kNetworkService;
    } else if ((attributes & 0x02) != 0) {
        type = kLocalService;
    } else if ((attributes & 0x04) != 0) {
        type = kLocalSystem;
    } else if ((attributes & 0x08) != 0) {
        type = kSpecificUser;
    }
    // Only IIS 7+ knows the pool's own identity.
    if (vistaBackend && (attributes & 0x10) != 0) {
        type = kApplicationPoolIdentity;
    }
    return type;
}

// The pieces of a comma-separated text, empty ones kept; a trailing comma adds none, so an
// empty text is one empty piece.
std::vector<qm::wstring_view> CommaPieces(qm::wstring_view text) {
    std::vector<qm::wstring_view> pieces;
    size_t start = 0;
    for (;;) {
        const size_t comma = text.find(u',', start);
        if (comma == qm::wstring_view::npos) {
            if (start < text.size() || pieces.empty()) {
                pieces.push_back(text.substr(start));
            }
            return pieces;
        }
        pieces.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
}

// Closes the pool's key on every way out, an exception included.
class PoolKey {
  public:
    PoolKey(CIISVRootController& controller, CIISVRootController::MetadataHandle handle)
        : m_controller(controller), m_handle(handle) {}
    PoolKey(const PoolKey&) = delete;
    PoolKey& operator=(const PoolKey&) = delete;
    ~PoolKey() {
        try {
            m_controller.CloseKey(m_handle);
        } catch (...) {
        }
    }

  private:
    CIISVRootController& m_controller;
    CIISVRootController::MetadataHandle m_handle;
};

}  // namespace

int32_t CIISVRootController::SetAppPoolProperties(CIISAppPoolProp& pool) {
    try {
        MetadataHandle handle{};
        const int32_t opened = OpenKeyLog(
            webrig::platform::kMasterRootHandle, u"/LM/W3SVC/AppPools/" + pool.Name,
            webrig::platform::metadata_permission::write, kOpenTimeoutMilliseconds, handle);
        if (opened != 0) {
            return opened;
        }
        const PoolKey key(*this, handle);
        struct Numeric {
            int32_t value;
            uint32_t identifier;
            int32_t defaultValue;
        };
        const Numeric numbers[] = {
            {pool.IdleTimeout, property::idle_timeout, 0},
            {pool.MaxProc, property::max_processes, 0},
            {pool.RecycleRequests, property::periodic_restart_requests, 0},
            {pool.RecycleMinutes, property::periodic_restart_time, 0},
            {pool.QueueLimit, property::queue_length, 65535},
            {pool.LoadUserProfile, property::load_user_profile, 0},
        };
        for (const Numeric& number : numbers) {
            if (const int32_t result = SetAppPoolProperty(handle, number.value, number.identifier,
                                                          number.defaultValue);
                result != 0) {
                return result;
            }
        }
        if (const int32_t result = SetRecycleTimes(handle, pool); result != 0) {
            return result;
        }
        if (const int32_t result = SetCpuMon(handle, pool); result != 0) {
            return result;
        }
        if (const int32_t result = SetIdentity(handle, pool); result != 0) {
            return result;
        }
        return SetAppPoolProperties(std::as_const(pool));
    } catch (...) {
        LogMessage(u"Exception caught in SetAppPoolProperties function");
        return status::app_pool_failed_or_element_missing;
    }
}

int32_t CIISVRootController::SetAppPoolProperty(MetadataHandle handle, int32_t value,
                                                uint32_t identifier, int32_t defaultValue) {
    try {
        const int32_t written = value == kNotGiven ? defaultValue : value;
        return SetVRtDWProperty(handle, identifier, kServerUserType,
                                static_cast<uint32_t>(written));
    } catch (...) {
        LogMessage(u"Exception caught in SetAppPoolProperty function");
        return status::app_pool_failed_or_element_missing;
    }
}

int32_t CIISVRootController::SetRecycleTimes(MetadataHandle handle, const CIISAppPoolProp& pool) {
    try {
        if (SetVRtDelimMultiszProperty(handle, property::periodic_restart_schedule, kServerUserType,
                                       pool.RecycleTimes) != 0) {
            LogMessage(u"Failed to set RecycleTimes for app pool");
            return status::app_pool_setting_failed;
        }
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in SetRecycleTimes function");
        return status::app_pool_failed_or_element_missing;
    }
}

int32_t CIISVRootController::SetCpuMon(MetadataHandle handle, const CIISAppPoolProp& pool) {
    try {
        int32_t limit = 0;
        int32_t interval = 0;
        int32_t action = 0;
        const std::vector<qm::wstring_view> pieces = CommaPieces(pool.CPUMon);
        if (!pieces.empty() && !pieces[0].empty()) {
            limit = qm::read_decimal(pieces[0]);
            if (limit != kNotGiven) {
                // Percent to thousandths of a percent, in the DWORD's own 32-bit arithmetic.
                limit = static_cast<int32_t>(static_cast<uint32_t>(limit) * 1000u);
            }
        }
        if (pieces.size() > 1 && !pieces[1].empty()) {
            interval = qm::read_decimal(pieces[1]);
        }
        if (pieces.size() > 2 && !pieces[2].empty()) {
            action = qm::read_decimal(pieces[2]);
        }
        return SetCpuMonProperties(handle, action, limit, interval);
    } catch (...) {
        LogMessage(u"Exception caught in SetCpuMon function");
        return status::app_pool_failed_or_element_missing;
    }
}

int32_t CIISVRootController::SetCpuMonProperties(MetadataHandle handle, int32_t action,
                                                 int32_t limit, int32_t interval) {
    try {
        struct Setting {
            int32_t value;
            uint32_t identifier;
            const char16_t* failure;
        };
        const Setting settings[] = {
            {limit, property::cpu_limit, u"Failed to set Percentage for app pool"},
            {interval, property::cpu_reset_interval, u"Failed to set Recycle Minutes for app pool"},
            {action, property::cpu_action, u"Failed to set Identity action for app pool"},
        };
        for (const Setting& setting : settings) {
            if (setting.value == kNotGiven) {
                continue;
            }
            if (SetVRtDWProperty(handle, setting.identifier, kServerUserType,
                                 static_cast<uint32_t>(setting.value)) != 0) {
                LogMessage(setting.failure);
                return status::app_pool_setting_failed;
            }
        }
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in SetCpuMonProperties function");
        return status::app_pool_failed_or_element_missing;
    }
}

int32_t CIISVRootController::SetIdentity(MetadataHandle handle, const CIISAppPoolProp& pool) {
    try {
        const int32_t type =
            IdentityTypeOf(static_cast<uint32_t>(pool.Attributes), IsVistaBackend());
        if (SetVRtDWProperty(handle, property::identity_type, kServerUserType,
                             static_cast<uint32_t>(type)) != 0) {
            LogMessage(u"Failed to set Identity for app pool");
            return status::app_pool_setting_failed;
        }
        if (type != kSpecificUser) {
            return 0;
        }
        if (!pool.User.empty() &&
            SetVRtStrProperty(handle, property::identity_user_name, kFileUserType,
                              kInheritAttribute, pool.User, u"/") != 0) {
            LogMessage(u"Failed to set User for app pool");
            return status::app_pool_setting_failed;
        }
        if (!pool.UserPassword.empty() &&
            SetVRtStrProperty(handle, property::identity_password, kFileUserType,
                              kInheritSecureAttributes, pool.UserPassword, u"/") != 0) {
            LogMessage(u"Failed to set Password for app pool");
            return status::app_pool_setting_failed;
        }
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in SetIdentity function");
        return status::app_pool_failed_or_element_missing;
    }
}
