#pragma once
// What virtual directories and websites have in common: their place, content, ASP and
// authentication settings, and their application maps, MIME maps and metadata.

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "settings/iis_meta_data_prop.h"
#include "settings/iis_mime_map_prop.h"
#include "settings/iis_vroot_app_map_prop.h"
#include "settings/record_text.h"

class CIISCommonProp {
  public:
    CIISCommonProp(const CIISCommonProp&) = delete;
    CIISCommonProp& operator=(const CIISCommonProp&) = delete;

    // Text setters in their fixed slot order; each returns 0 or the status of an empty text.
    virtual int32_t SetKey(qm::wstring value);          // 0, rejects empty
    virtual int32_t SetParentKey(qm::wstring value);    // 1
    virtual int32_t SetDisplayName(qm::wstring value);  // 2
    virtual int32_t SetRootDir(qm::wstring value);      // 3, rejects empty
    virtual int32_t SetDefDoc(qm::wstring value);       // 4
    virtual int32_t SetAnonyUserName(qm::wstring value);
    virtual int32_t SetAnonyPasswrd(qm::wstring value);
    virtual int32_t SetCustomErrors(qm::wstring value);
    virtual int32_t SetAppName(qm::wstring value);  // 8
    virtual int32_t SetAspversion(qm::wstring value);
    virtual int32_t SetSSLCertPath(qm::wstring value);
    virtual int32_t SetAppPool(qm::wstring value);
    virtual int32_t SetSslPassword(qm::wstring value);  // 12
    virtual int32_t SetHostHeaderName(qm::wstring value);
    virtual int32_t SetAspVersionBitness(qm::wstring value);
    virtual int32_t SetAspNetRegistration(qm::wstring value);  // 15

    // AddAppMap: a new entry under `key` (replacing one there); the status of its SetKey.
    webrig::settings::Added<CIISVRootAppMapProp*> AddAppMap(const qm::wstring& key);
    // AddMimeMap and AddMetaData: a new empty entry at the end of the list; status 0.
    webrig::settings::Added<CIISMimeMapProp*> AddMimeMap();
    webrig::settings::Added<CIISMetaDataProp*> AddMetaData();

    qm::wstring Key;
    qm::wstring ParentKey;
    qm::wstring DisplayName;
    qm::wstring RootDir;
    int32_t SessionTimeout = 20;
    int32_t ScriptTimeout = 90;
    qm::wstring DefDoc;
    qm::wstring AnonyUserName;
    qm::wstring AnonyPasswrd;
    qm::wstring CustomErrors;
    int32_t Attributes = 0;
    int32_t ActionTaken = 0;
    qm::wstring AppName;
    qm::wstring Aspversion;
    qm::wstring SSLCertPath;
    qm::wstring AppPool;
    qm::wstring SslPassword;
    qm::wstring HostHeaderName;
    int32_t ItemType = 0;
    qm::wstring AspVersionBitness;
    qm::wstring AspNetRegistration;
    bool FormsAuthentication = false;
    bool FormsAuthenticationEffective = false;
    std::map<qm::wstring, std::unique_ptr<CIISVRootAppMapProp>> appMaps;
    std::vector<std::unique_ptr<CIISMimeMapProp>> mimeMaps;
    std::vector<std::unique_ptr<CIISMetaDataProp>> metaDataProps;

  protected:
    CIISCommonProp() = default;
    // Records are destroyed as their concrete type, never through this base.
    ~CIISCommonProp() = default;
};
