#include "metabase/iis_functions_legacy.h"

#include "support/result_codes.h"

// The metabase is not reached yet: every operation answers E_NOTIMPL (or "no" and nothing done
// for those without a status) until the backend is written.

namespace {
constexpr int32_t kNotImplemented = qm::hr::not_implemented;
}  // namespace

CIisFunctionsLegacy::CIisFunctionsLegacy(webrig::platform::Platform& platform)
    : m_platform(platform) {}

CIisFunctionsLegacy::~CIisFunctionsLegacy() = default;

int32_t CIisFunctionsLegacy::InitIISObject() {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::OpenKeyLog(MetadataHandle, const qm::wstring&, uint32_t, uint32_t,
                                        MetadataHandle&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::OpenKeyToWebsite(CIISWebsiteProp*, MetadataHandle*, CIISVRootProp*) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::EnumKeys(MetadataHandle, const qm::wstring&, qm::wstring&, uint32_t) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::GetData(MetadataHandle, const qm::wstring&, MetadataRecord&,
                                     uint32_t&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::CloseKey(MetadataHandle) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::AddWebSiteFunction(CIISWebsiteProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::RemoveWebsite(CIISWebsiteProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::AppCreate(CIISWebsiteProp&, CIISVRootProp*) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::CreateVirtualDirectory(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::CreateAppPoolFunction(CIISAppPoolProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::RemoveApplication(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::RemoveVirtualDirectory(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::RemoveAppPoolFunction(CIISAppPoolProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::CompareDirValues(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

bool CIisFunctionsLegacy::FindSiteWithId(CIISWebsiteProp&) {
    return false;
}

bool CIisFunctionsLegacy::FindSiteWithPort(CIISWebsiteProp&) {
    return false;
}

bool CIisFunctionsLegacy::CanDeletePath(const qm::wstring&, const qm::wstring&) {
    return false;
}

void CIisFunctionsLegacy::GetNextWebsiteId(CIISWebsiteProp&) {}

int32_t CIisFunctionsLegacy::SetVRtStrProperty(MetadataHandle, uint32_t, uint32_t, uint32_t,
                                               const qm::wstring&, const qm::wstring&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::SetVRtDelimMultiszProperty(MetadataHandle, uint32_t, uint32_t,
                                                        const qm::wstring&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::SetVRtMultiszProperty(MetadataHandle, uint32_t, uint32_t,
                                                   const char16_t*, uint32_t, const qm::wstring&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::SetVRtDWProperty(MetadataHandle, uint32_t, uint32_t, uint32_t) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::SetVRtBinProperty(MetadataHandle, uint32_t, uint32_t, const std::byte*,
                                               uint32_t) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::SetDynamicMetaDataProperties(MetadataHandle, CIISCommonProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsLegacy::InstallMimeTypes(
    MetadataHandle, const std::vector<std::unique_ptr<CIISMimeMapProp>>&) {
    return kNotImplemented;
}

bool CIisFunctionsLegacy::CheckAspNetBitness(const qm::wstring&, const qm::wstring&) {
    return false;
}
