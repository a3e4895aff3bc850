#include "settings/iis_common_prop.h"

#include "support/status_codes.h"

using webrig::settings::Added;
using webrig::settings::StoreNonEmptyText;
using webrig::settings::StoreText;

int32_t CIISCommonProp::SetKey(qm::wstring value) {
    return StoreNonEmptyText(Key, std::move(value), qm::status::item_key_empty);
}
int32_t CIISCommonProp::SetParentKey(qm::wstring value) {
    return StoreText(ParentKey, std::move(value));
}
int32_t CIISCommonProp::SetDisplayName(qm::wstring value) {
    return StoreText(DisplayName, std::move(value));
}
int32_t CIISCommonProp::SetRootDir(qm::wstring value) {
    return StoreNonEmptyText(RootDir, std::move(value), qm::status::root_dir_empty);
}
int32_t CIISCommonProp::SetDefDoc(qm::wstring value) {
    return StoreText(DefDoc, std::move(value));
}
int32_t CIISCommonProp::SetAnonyUserName(qm::wstring value) {
    return StoreText(AnonyUserName, std::move(value));
}
int32_t CIISCommonProp::SetAnonyPasswrd(qm::wstring value) {
    return StoreText(AnonyPasswrd, std::move(value));
}
int32_t CIISCommonProp::SetCustomErrors(qm::wstring value) {
    return StoreText(CustomErrors, std::move(value));
}
int32_t CIISCommonProp::SetAppName(qm::wstring value) {
    return StoreText(AppName, std::move(value));
}
int32_t CIISCommonProp::SetAspversion(qm::wstring value) {
    return StoreText(Aspversion, std::move(value));
}
int32_t CIISCommonProp::SetSSLCertPath(qm::wstring value) {
    return StoreText(SSLCertPath, std::move(value));
}
int32_t CIISCommonProp::SetAppPool(qm::wstring value) {
    return StoreText(AppPool, std::move(value));
}
int32_t CIISCommonProp::SetSslPassword(qm::wstring value) {
    return StoreText(SslPassword, std::move(value));
}
int32_t CIISCommonProp::SetHostHeaderName(qm::wstring value) {
    return StoreText(HostHeaderName, std::move(value));
}
int32_t CIISCommonProp::SetAspVersionBitness(qm::wstring value) {
    return StoreText(AspVersionBitness, std::move(value));
}
int32_t CIISCommonProp::SetAspNetRegistration(qm::wstring value) {
    return StoreText(AspNetRegistration, std::move(value));
}

Added<CIISVRootAppMapProp*> CIISCommonProp::AddAppMap(const qm::wstring& key) {
    auto& slot = appMaps[key];
    slot = std::make_unique<CIISVRootAppMapProp>();
    return {slot->SetKey(key), slot.get()};
}

Added<CIISMimeMapProp*> CIISCommonProp::AddMimeMap() {
    mimeMaps.push_back(std::make_unique<CIISMimeMapProp>());
    return {0, mimeMaps.back().get()};
}

Added<CIISMetaDataProp*> CIISCommonProp::AddMetaData() {
    metaDataProps.push_back(std::make_unique<CIISMetaDataProp>());
    return {0, metaDataProps.back().get()};
}
