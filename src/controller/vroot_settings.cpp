// The settings of a virtual directory or website, sent to the backend as metabase properties:
// the metabase backend stores them as they are, the IIS 7+ backend translates each into its
// configuration sections. Every write stops the operation at its first failure, which is
// returned after the item's key has been closed.

#include <array>

#include "controller/iis_vroot_controller.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace {

// Metabase property identifiers.
namespace id {
constexpr uint32_t keyType = 1002;
constexpr uint32_t serverAutoStart = 1012;
constexpr uint32_t serverComment = 1015;
constexpr uint32_t serverBindings = 1023;
constexpr uint32_t appFriendlyName = 2102;
constexpr uint32_t appIsolated = 2104;
constexpr uint32_t path = 3001;
constexpr uint32_t authorization = 6000;
constexpr uint32_t dirBrowseFlags = 6005;
constexpr uint32_t defaultDoc = 6006;
constexpr uint32_t httpErrors = 6008;
constexpr uint32_t scriptMaps = 6014;
constexpr uint32_t accessPerm = 6016;
constexpr uint32_t anonymousUserName = 6020;
constexpr uint32_t anonymousUserPass = 6021;
constexpr uint32_t anonymousPasswordSync = 6022;
constexpr uint32_t dontLog = 6023;
constexpr uint32_t contentIndexed = 6039;
constexpr uint32_t aspScriptTimeout = 7006;
constexpr uint32_t aspSessionTimeout = 7007;
constexpr uint32_t appPoolId = 9101;
}  // namespace id

// User types.
constexpr uint32_t kServer = 1;
constexpr uint32_t kFile = 2;
constexpr uint32_t kWam = 100;
constexpr uint32_t kAspApp = 101;

// String attributes.
constexpr uint32_t kNoAttributes = 0;
constexpr uint32_t kInherit = 1;

constexpr char16_t kHere[] = u"/";
constexpr char16_t kSiteRoot[] = u"/ROOT";

constexpr int32_t kVirtualDirectory = 3;  // ItemType without an application

// The bindings of IIS 6 sites are held in a buffer of 256 characters.
constexpr size_t kMaxBindingLength = 255;

// Bits of Attributes.
namespace attr {
constexpr int32_t read = 0x0001;
constexpr int32_t write = 0x0002;
constexpr int32_t source = 0x0004;
constexpr int32_t browse = 0x0008;
constexpr int32_t execute = 0x0030;
constexpr int32_t scriptsOnly = 0x0010;
constexpr int32_t indexed = 0x0040;
constexpr int32_t logVisits = 0x0080;
constexpr int32_t protection = 0x0300;
constexpr int32_t pooled = 0x0100;
constexpr int32_t anonymous = 0x0800;
constexpr int32_t basic = 0x1000;
constexpr int32_t integrated = 0x2000;
constexpr int32_t anonymousWithoutPassword = 0x4000;
}  // namespace attr

bool Has(int32_t attributes, int32_t bit) {
    return (attributes & bit) != 0;
}

uint32_t AccessPermissions(int32_t attributes) {
    uint32_t access = 0;
    access += Has(attributes, attr::read) ? 1 : 0;
    access += Has(attributes, attr::write) ? 2 : 0;
    access += Has(attributes, attr::source) ? 16 : 0;
    const int32_t execute = attributes & attr::execute;
    if (execute == attr::scriptsOnly) {
        access += 512;
    } else if (execute != 0) {
        access += 4;
    }
    return access;
}

uint32_t DirectoryBrowsing(int32_t attributes, const qm::wstring& defaultDocuments) {
    uint32_t flags = defaultDocuments.empty() ? 0 : 0x40000000u;
    if (Has(attributes, attr::browse)) {
        flags += 0x8000003Eu;
    }
    return flags;
}

uint32_t Authentication(int32_t attributes) {
    return (Has(attributes, attr::anonymous) ? 1u : 0u) + (Has(attributes, attr::basic) ? 2u : 0u) +
           (Has(attributes, attr::integrated) ? 4u : 0u);
}

// 0 in process, 2 pooled, 1 isolated.
uint32_t ApplicationProtection(int32_t attributes) {
    const int32_t protection = attributes & attr::protection;
    if (protection == 0) {
        return 0;
    }
    return protection == attr::pooled ? 2 : 1;
}

// Runs the writes of `steps` in order; the first non-zero result ends them.
template <class... Steps>
int32_t FirstFailure(Steps&&... steps) {
    int32_t result = 0;
    (void)((result = steps(), result == 0) && ...);
    return result;
}

qm::wstring AppMapText(const CIISVRootAppMapProp& map) {
    qm::wstring text =
        map.Extension + u"," + map.ExecPath + u"," + qm::format(u"%d", map.AppMapProps);
    if (map.Verb != u"*") {
        text += u",";
        text += map.Verb;
    }
    return text;
}

}  // namespace

int32_t CIISVRootController::SetVRootProperties(CIISVRootProp& vroot) {
    LogMessage(qm::format(u"SetVRootProperties for virtual directory '%s', app '%s'",
                          vroot.DisplayName, vroot.AppName));
    CIISWebsiteProp* const website = ParentWebsiteOf(vroot);
    if (website == nullptr) {
        LogMessage(
            qm::format(u"Virtual directory '%s' names the website '%s', which the settings "
                       u"do not hold; its settings are not written.",
                       vroot.DisplayName, vroot.ParentSite));
        return qm::status::vroot_website_missing;
    }
    const bool isApplication = vroot.ItemType != kVirtualDirectory;
    if (isApplication) {
        const qm::wstring name =
            m_pPropertyBag->iisMajorVersion < 7 ? vroot.DisplayName : vroot.AppName;
        const qm::wstring path = GetBasePath(*website, u"") + u"/" + name;
        if (const int32_t set = SetAspversion(path, vroot.Aspversion, vroot.AspVersionBitness,
                                              vroot.AppPool, vroot.AspNetRegistration);
            set != 0) {
            return set;
        }
    }
    MetadataHandle handle{};
    if (const int32_t opened = OpenKeyToWebsite(website, &handle, &vroot); opened != 0) {
        return opened;
    }
    const int32_t result = FirstFailure(
        [&] { return SetVRtStrProperty(handle, id::path, kFile, kInherit, vroot.RootDir, kHere); },
        [&] {
            if (!isApplication) {
                return 0;
            }
            const qm::wstring& name = vroot.AppName.empty() ? vroot.DisplayName : vroot.AppName;
            if (const int32_t set =
                    SetVRtStrProperty(handle, id::appFriendlyName, kWam, kInherit, name, kHere);
                set != 0) {
                return set;
            }
            bool inherited = false;
            if (!vroot.FormsAuthentication) {
                if (vroot.ParentKey == vroot.ParentSite) {
                    inherited = website->FormsAuthenticationEffective;
                } else {
                    for (const auto& [componentName, component] : m_pPropertyBag->components) {
                        const auto parent = component->vroots.find(vroot.ParentKey);
                        if (parent != component->vroots.end()) {
                            inherited = parent->second->FormsAuthenticationEffective;
                            break;
                        }
                    }
                }
            }
            vroot.FormsAuthenticationEffective = vroot.FormsAuthentication || inherited;
            // Its result does not stop the settings.
            SetFormsAuthentication(handle, vroot.FormsAuthenticationEffective,
                                   vroot.FormsAuthentication);
            return 0;
        },
        [&] {
            return SetVRtStrProperty(handle, id::keyType, kServer, kNoAttributes,
                                     u"IIsWebVirtualDir", kHere);
        },
        [&] { return SetCommonProperties(handle, vroot); });
    const int32_t closed = CloseKey(handle);
    return result != 0 ? result : closed;
}

int32_t CIISVRootController::SetWebSiteProperties(CIISWebsiteProp& website) {
    const qm::wstring bindings =
        qm::format(u"%s:%s:%s", website.IPAddress, website.Port, website.HostHeaderName);
    if (bindings.size() > kMaxBindingLength) {
        LogMessage(
            qm::format(u"The bindings '%s' of website '%s' are longer than %d characters; "
                       u"the website's settings are not written.",
                       bindings, website.DisplayName, static_cast<int32_t>(kMaxBindingLength)));
        return qm::status::binding_too_long;
    }
    const qm::wstring path = GetBasePath(website, u"");
    if (const int32_t set = SetAspversion(path, website.Aspversion, website.AspVersionBitness,
                                          website.AppPool, website.AspNetRegistration);
        set != 0) {
        return set;
    }
    MetadataHandle handle{};
    if (const int32_t opened = OpenKeyToWebsite(&website, &handle, nullptr); opened != 0) {
        return opened;
    }
    // One entry and the double terminator.
    qm::wstring bindingList = bindings;
    bindingList.append(2, u'\0');
    const auto bindingBytes = static_cast<uint32_t>((bindings.size() + 2) * sizeof(char16_t));
    const int32_t result = FirstFailure(
        [&] {
            return SetVRtStrProperty(handle, id::keyType, kServer, kNoAttributes, u"IIsWebServer",
                                     kHere);
        },
        [&] {
            return SetVRtStrProperty(handle, id::serverComment, kServer, kInherit,
                                     website.DisplayName, kHere);
        },
        [&] {
            return SetVRtMultiszProperty(handle, id::serverBindings, kServer, bindingList.data(),
                                         bindingBytes, kHere);
        },
        [&] {
            return SetVRtStrProperty(handle, id::path, kFile, kInherit, website.RootDir, kSiteRoot);
        },
        [&] {
            return SetVRtStrProperty(handle, id::keyType, kServer, kNoAttributes,
                                     u"IIsWebVirtualDir", kSiteRoot);
        },
        [&] { return SetVRtDWProperty(handle, id::serverAutoStart, kServer, 1); },
        [&] { return InstallSSLCert(handle, website); },
        [&] {
            const qm::wstring name =
                website.AppName.empty() ? qm::wstring(u"Default Application") : website.AppName;
            return SetVRtStrProperty(handle, id::appFriendlyName, kWam, kInherit, name, kSiteRoot);
        },
        [&] {
            website.FormsAuthenticationEffective = website.FormsAuthentication;
            // Its result does not stop the settings.
            SetFormsAuthentication(handle, website.FormsAuthentication,
                                   website.FormsAuthentication);
            return 0;
        },
        [&] { return SetCommonProperties(handle, website); });
    const int32_t closed = CloseKey(handle);
    return result != 0 ? result : closed;
}

int32_t CIISVRootController::SetCommonProperties(MetadataHandle handle, CIISCommonProp& item) {
    LogMessage(u"SetCommonProperties for the following: " + item.DisplayName);
    const int32_t attributes = item.Attributes;
    const bool anonymous = Has(attributes, attr::anonymous);
    const bool withPassword = anonymous && !Has(attributes, attr::anonymousWithoutPassword);
    const auto dword = [&](uint32_t identifier, uint32_t userType, uint32_t value) {
        return [=, this] { return SetVRtDWProperty(handle, identifier, userType, value); };
    };
    const auto text = [&](uint32_t identifier, uint32_t userType, const qm::wstring& value,
                          bool when) {
        return [=, this, &value] {
            return when ? SetVRtStrProperty(handle, identifier, userType, kInherit, value, kHere)
                        : 0;
        };
    };
    const int32_t result = FirstFailure(
        dword(id::accessPerm, kFile, AccessPermissions(attributes)),
        dword(id::dirBrowseFlags, kFile, DirectoryBrowsing(attributes, item.DefDoc)),
        dword(id::aspSessionTimeout, kAspApp, static_cast<uint32_t>(item.SessionTimeout)),
        dword(id::aspScriptTimeout, kAspApp, static_cast<uint32_t>(item.ScriptTimeout)),
        dword(id::authorization, kFile, Authentication(attributes)),
        text(id::anonymousUserName, kFile, item.AnonyUserName,
             anonymous && !item.AnonyUserName.empty()),
        [&] {
            return withPassword ? SetVRtDWProperty(handle, id::anonymousPasswordSync, kFile, 0) : 0;
        },
        text(id::anonymousUserPass, kFile, item.AnonyPasswrd,
             withPassword && !item.AnonyPasswrd.empty()),
        dword(id::contentIndexed, kServer, Has(attributes, attr::indexed) ? 1 : 0),
        dword(id::dontLog, kFile, Has(attributes, attr::logVisits) ? 0 : 1),
        [&] {
            return item.ItemType != kVirtualDirectory
                       ? SetVRtDWProperty(handle, id::appIsolated, kWam,
                                          ApplicationProtection(attributes))
                       : 0;
        },
        text(id::defaultDoc, kFile, item.DefDoc, !item.DefDoc.empty()),
        [&] {
            return SetVRtDelimMultiszProperty(handle, id::httpErrors, kFile, item.CustomErrors);
        },
        [&] { return SetDynamicMetaDataProperties(handle, item); },
        [&] { return AddAppMaps(handle, item); },
        [&] { return InstallMimeTypes(handle, item.mimeMaps); });
    if (result != 0 || m_pPropertyBag->iisMajorVersion < 6 || item.AppPool.empty()) {
        return result;
    }
    return SetVRtStrProperty(handle, id::appPoolId, kServer, kInherit, item.AppPool, kHere);
}

int32_t CIISVRootController::AddAppMaps(MetadataHandle handle, CIISCommonProp& item) {
    if (item.appMaps.empty()) {
        return 0;
    }
    LogMessage(u"AddAppMaps");
    std::vector<qm::wstring> texts;
    size_t newCharacters = 0;
    for (const auto& [key, map] : item.appMaps) {
        const int32_t flags = map->AppMapProps;
        if (flags != 0 && flags != 1 && flags != 4 && flags != 5) {
            LogMessage(u"Error in setting the AppMaps of " + item.DisplayName);
        }
        texts.push_back(AppMapText(*map));
        newCharacters += texts.back().size() + 1;
    }
    const qm::wstring subPath = item.ItemType == 1 ? kSiteRoot : kHere;

    // The maps already there (inherited ones included) come first.
    std::array<std::byte, 2> probe{};
    webrig::platform::MetadataRecord record{.identifier = id::scriptMaps,
                                            .attributes = kInherit,
                                            .userType = kFile,
                                            .dataType = 5,
                                            .dataLength = probe.size(),
                                            .data = probe.data()};
    uint32_t needed = 0;
    const bool noExistingMaps = GetData(handle, subPath, record, needed) == 0;
    if (needed < 2) {
        needed = 2;
    }
    std::vector<char16_t> buffer(newCharacters + needed / 2, u'\0');
    if (!noExistingMaps) {
        record.dataLength = needed;
        record.data = reinterpret_cast<std::byte*>(buffer.data());
        uint32_t ignored = 0;
        GetData(handle, subPath, record, ignored);
    }
    qm::wstring joined;
    size_t position = (needed - 2) / 2;
    for (const qm::wstring& text : texts) {
        std::copy(text.begin(), text.end(), buffer.begin() + static_cast<ptrdiff_t>(position));
        position += text.size() + 1;
        joined += text;
        joined += u';';
    }
    const auto byteLength = static_cast<uint32_t>(buffer.size() * sizeof(char16_t));
    // The IIS 7+ backend takes the maps as one ";"-separated text; the metabase always gets a
    // multi-string, also when its list exists but is empty.
    const char16_t* const data = IsVistaBackend() ? joined.c_str() : buffer.data();
    const int32_t result =
        SetVRtMultiszProperty(handle, id::scriptMaps, kFile, data, byteLength, subPath);
    if (result < 0) {
        LogMessage(u"Error in setting the AppMaps of " + item.DisplayName);
    }
    return result;
}
