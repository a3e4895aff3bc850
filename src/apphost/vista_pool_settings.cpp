// Application pool settings: the pool identifiers written on the current pool's entry of the
// applicationPools section, its recycle schedule, its managed runtime, and whether a requested
// ASP.NET bitness suits it.

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"

using webrig::apphost::SplitText;

namespace {

constexpr char16_t kAppPoolsSection[] = u"system.applicationHost/applicationPools";

// The metabase identity types by number; anything else runs as NetworkService.
const char16_t* IdentityTypeName(uint32_t identityType) {
    switch (identityType) {
        case 0:
            return u"LocalSystem";
        case 1:
            return u"LocalService";
        case 3:
            return u"SpecificUser";
        case 4:
            return u"ApplicationPoolIdentity";
        default:
            return u"NetworkService";
    }
}

}  // namespace

std::optional<int32_t> CIisFunctionsVista::SetAppPoolDWordProperty(uint32_t identifier,
                                                                   uint32_t value) {
    const auto minutes = [value] { return FormatTimeSpanFromMinutes(value); };
    const auto decimal = [value] { return FormatNumber(static_cast<int32_t>(value)); };
    const auto set = [this](const char16_t* elementPath, const char16_t* attribute,
                            const qm::wstring& text) {
        return SetSectionElementProperty(kAppPoolsSection, elementPath, attribute, text);
    };
    switch (identifier) {
        case 9001:
            return set(u"recycling/periodicRestart", u"time", minutes());
        case 9002:
            return set(u"recycling/periodicRestart", u"requests", decimal());
        case 9003:
            return set(u"processModel", u"maxProcesses", decimal());
        case 9005:
            return set(u"processModel", u"idleTimeout", minutes());
        case 9017:
            return set(u"", u"queueLength", decimal());
        case 9021:
            return set(u"processModel", u"identityType", IdentityTypeName(value));
        case 9022:
            return set(u"cpu", u"action", value == 1 ? u"KillW3wp" : u"NoAction");
        case 9023:
            return set(u"cpu", u"limit", decimal());
        case 9043:
            return set(u"processModel", u"loadUserProfile", value != 0 ? u"true" : u"false");
        case 2144:
            return set(u"cpu", u"resetInterval", minutes());
        default:
            return std::nullopt;
    }
}

// Times of day "hh:mm" separated by ";" become schedule entries "hh:mm:00"; the schedule only
// grows.
int32_t CIisFunctionsVista::SetRecycleSchedule(const qm::wstring& recycleTimes) {
    std::vector<AttributeMap> entries;
    if (!recycleTimes.empty()) {
        for (const qm::wstring& time : SplitText(recycleTimes, u';', true)) {
            entries.push_back({{u"value", time + u":00"}});
        }
    }
    return MergeCollectionEntries(kAppPoolsSection, u"recycling/periodicRestart/schedule", u"add",
                                  u"value", entries);
}

// The puts are not checked: one refused value does not keep the others from being written.
int32_t CIisFunctionsVista::SetAppPoolProperties(CIISAppPoolProp& pool) {
    m_sAppPoolName = pool.Name;
    const ElementPtr element = GetAppPoolElement(pool);
    if (!element) {
        LogMessage(u"IIS 7.x: SetAppPoolProperties: existing application pool not found");
        return qm::hr::path_not_found;
    }
    LogMessage(u"Setting application pool ASP.NET version to '" + pool.ManagedRuntimeVersion +
               u"'");
    PutPropertyValue(element, u"managedRuntimeVersion", pool.ManagedRuntimeVersion, false);
    PutPropertyValue(element, u"managedPipelineMode", pool.ManagedPipelineMode, false);
    if (!pool.Enable32bitAppOnWin64.empty()) {
        PutPropertyValue(element, u"Enable32BitAppOnWin64", pool.Enable32bitAppOnWin64, false);
    }
    return CommitChanges();
}

// "x86" asks for 32-bit, anything else for 64-bit; a pool that cannot be read is not safe.
bool CIisFunctionsVista::CheckAspNetBitness(const qm::wstring& poolName,
                                            const qm::wstring& requestedBitness) {
    const qm::wstring pool = poolName.empty() ? qm::wstring(u"DefaultAppPool") : poolName;
    LogMessage(qm::format(
        u"IIS7 check for ASP.NET version bitness on application pool '%s', install is requesting "
        u"'%s'",
        pool, requestedBitness));
    ElementPtr element;
    try {
        element = FindElementInCollection(GetAdminSection(kAppPoolsSection, kAppHostPath), u"name",
                                          pool, u"", u"", false);
    } catch (...) {
        LogMessage(u"Exception caught in CheckAspNetBitness");
    }
    if (!element) {
        LogMessage(u"Failed to locate application pool. Assuming change in bitness is not safe.");
        return false;
    }
    const PropertyPtr property = GetPropertyByName(element, u"Enable32BitAppOnWin64");
    qm::wstring text;
    if (!property || qm::failed(property->GetStringValue(text))) {
        LogMessage(
            u"Failed to read property Enable32bitAppOnWin64, assuming application pool bitness "
            u"change is not safe.");
        return false;
    }
    LogMessage(qm::format(u"Application pool Enable32bitAppOnWin64 value is '%s'", text));
    const bool wants32Bit = requestedBitness == u"x86";
    if (text == u"true") {
        if (wants32Bit) {
            LogMessage(u"ASP.NET version can be set for 32-bit.");
        }
        return wants32Bit;
    }
    if (!wants32Bit) {
        LogMessage(u"ASP.NET version can be set for 64-bit.");
    }
    return !wants32Bit;
}
