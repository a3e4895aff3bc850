// The property setters of the IIS 7+ backend: each metabase property identifier is translated
// into a configuration attribute and committed on its own, at the commit path the setting found.

#include <algorithm>

#include "apphost/iis_functions_vista.h"
#include "support/format.h"

namespace {

// Metabase property identifiers with a translation.
enum PropertyId : uint32_t {
    kCertificateHash = 5506,
    kAuthentication = 6000,
    kDirectoryBrowsing = 6005,
    kDefaultDocuments = 6006,
    kCustomErrors = 6008,
    kScriptMaps = 6014,
    kAccessFlags = 6016,
    kAnonymousUserName = 6020,
    kAnonymousPassword = 6021,
    kDontLog = 6023,
    kAspScriptTimeout = 7006,
    kAspSessionTimeout = 7007,
    kRecycleSchedule = 9020,
    kAppPool = 9101,
};

constexpr char16_t kAnonymousSection[] =
    u"system.webServer/security/authentication/anonymousAuthentication";

const char16_t* TrueOrFalse(bool value) {
    return value ? u"true" : u"false";
}

}  // namespace

template <typename Translate>
int32_t CIisFunctionsVista::SetProperty(const qm::wstring& logLine, Translate translate) {
    qm::wstring kept = GetCommitPath();
    LogMessage(logLine);
    const std::optional<int32_t> result = translate();
    if (!result) {
        return 0;
    }
    if (*result != 0) {
        return *result;
    }
    if (const int32_t committed = CommitChanges(); committed != 0) {
        return committed;
    }
    return ChangeCommitPath(kept);
}

void CIisFunctionsVista::LogUnsupportedProperty() {
    LogMessage(u"AppHostElement objects detected. Unsupported property.");
}

int32_t CIisFunctionsVista::SetVRtDWProperty(uint32_t identifier, uint32_t, uint32_t value) {
    return SetProperty(
        qm::format(u"SetVRtDWProperty for property '%d' with value '%d'.", identifier, value),
        [&] { return TranslateDWordProperty(identifier, value); });
}

int32_t CIisFunctionsVista::SetVRtStrProperty(uint32_t identifier, uint32_t, uint32_t,
                                              const qm::wstring& value, const qm::wstring&) {
    return SetProperty(
        qm::format(u"SetVRtStrProperty for property '%d' with value '%s'.", identifier,
                   MaskPasswordValue(FormatNumber(static_cast<int32_t>(identifier)), value)),
        [&] { return TranslateStrProperty(identifier, value); });
}

int32_t CIisFunctionsVista::SetVRtDelimMultiszProperty(uint32_t identifier, uint32_t,
                                                       const qm::wstring& delimitedText) {
    return SetProperty(qm::format(u"SetVRtDelimMultiszProperty for property '%d' with value '%s'.",
                                  identifier, delimitedText),
                       [&] { return TranslateListProperty(identifier, delimitedText); });
}

// The IIS 7+ controller hands the application maps over as one ";"-joined text; the byte length
// is that of the multi-string buffer it was sized for.
int32_t CIisFunctionsVista::SetVRtMultiszProperty(uint32_t identifier, uint32_t,
                                                  const char16_t* data, uint32_t byteLength,
                                                  const qm::wstring&) {
    qm::wstring text;
    if (data != nullptr) {
        const char16_t* end = data + byteLength / sizeof(char16_t);
        text.assign(data, std::find(data, end, u'\0'));
    }
    return SetProperty(
        qm::format(u"SetVRtMultiszProperty for property '%d' and value '%s' with length '%d'.",
                   identifier, text, byteLength),
        [&]() -> std::optional<int32_t> {
            if (identifier == kScriptMaps) {
                return SetHandlerMappings(text);
            }
            LogUnsupportedProperty();
            return std::nullopt;
        });
}

// Only the certificate hash has a meaning here; it is bound without the commit frame.
int32_t CIisFunctionsVista::SetVRtBinProperty(uint32_t identifier, uint32_t userType,
                                              const std::byte* data, uint32_t byteLength) {
    LogMessage(qm::format(u"SetVRtBinProperty for property '%d'.", identifier));
    if (identifier == kCertificateHash) {
        return SetSsl(userType, data, byteLength);
    }
    LogUnsupportedProperty();
    return 0;
}

int32_t CIisFunctionsVista::SetDynamicMetaDataProperties(CIISCommonProp&) {
    LogMessage(u"SetDynamicMetaDataProperties");
    LogUnsupportedProperty();
    return 0;
}

std::optional<int32_t> CIisFunctionsVista::TranslateDWordProperty(uint32_t identifier,
                                                                  uint32_t value) {
    if (std::optional<int32_t> pool = SetAppPoolDWordProperty(identifier, value)) {
        return pool;
    }
    switch (identifier) {
        case kAuthentication:
            return SetAuthentication(value);
        case kDirectoryBrowsing:
            return SetSectionElementProperty(u"system.webServer/directoryBrowse", u"", u"enabled",
                                             TrueOrFalse((value & 0x80000000u) != 0));
        case kAccessFlags:
            return SetSectionAttribute(u"system.webServer/handlers", u"accessPolicy",
                                       FormatAccessPolicy(value));
        case kDontLog:
            return SetSectionAttribute(u"system.webServer/httpLogging", u"dontLog",
                                       TrueOrFalse((value & 0x1) != 0));
        case kAspScriptTimeout:
            return SetAspLimit(u"limits", u"scriptTimeout",
                               FormatTimeSpanFromSeconds(static_cast<int32_t>(value)));
        case kAspSessionTimeout:
            return SetAspLimit(u"session", u"timeout", FormatTimeSpanFromMinutes(value));
        default:
            LogUnsupportedProperty();
            return std::nullopt;
    }
}

std::optional<int32_t> CIisFunctionsVista::TranslateStrProperty(uint32_t identifier,
                                                                const qm::wstring& value) {
    switch (identifier) {
        case 7501:
            return SetSectionElementProperty(u"system.applicationHost/applicationPools",
                                             u"processModel", u"userName", value);
        case 7502:
            return SetSectionElementProperty(u"system.applicationHost/applicationPools",
                                             u"processModel", u"password", value);
        case kDefaultDocuments:
            return SetDefaultDocuments(value);
        case kAnonymousUserName:
            return SetSectionElementProperty(kAnonymousSection, u"", u"userName", value);
        case kAnonymousPassword:
            return SetSectionElementProperty(kAnonymousSection, u"", u"password", value);
        case kAppPool:
            LogMessage(u"Application pool is set during creation of virtual directory.");
            return std::nullopt;
        default:
            LogUnsupportedProperty();
            return std::nullopt;
    }
}

std::optional<int32_t> CIisFunctionsVista::TranslateListProperty(uint32_t identifier,
                                                                 const qm::wstring& value) {
    switch (identifier) {
        case kRecycleSchedule:
            return SetRecycleSchedule(value);
        case kCustomErrors:
            return SetCustomErrors(value);
        default:
            LogUnsupportedProperty();
            return std::nullopt;
    }
}
