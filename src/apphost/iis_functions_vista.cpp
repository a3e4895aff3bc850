#include "apphost/iis_functions_vista.h"

#include "support/result_codes.h"

// The configuration system is not reached yet: every operation answers E_NOTIMPL (or "no" and
// nothing done for those without a status) until the backend is written.

namespace {
constexpr int32_t kNotImplemented = qm::hr::not_implemented;
}  // namespace

CIisFunctionsVista::CIisFunctionsVista(webrig::platform::Platform& platform)
    : m_platform(platform) {}

CIisFunctionsVista::~CIisFunctionsVista() = default;

int32_t CIisFunctionsVista::InitIISObject() {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::OpenKeyToWebsite(CIISWebsiteProp*, MetadataHandle*, CIISVRootProp*) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::AddWebSiteFunction(CIISWebsiteProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::RemoveWebsite(CIISWebsiteProp&) {
    return kNotImplemented;
}

bool CIisFunctionsVista::FindSiteWithId(CIISWebsiteProp&) {
    return false;
}

bool CIisFunctionsVista::FindSiteWithPort(CIISWebsiteProp&) {
    return false;
}

void CIisFunctionsVista::GetNextWebsiteId(CIISWebsiteProp&) {}

int32_t CIisFunctionsVista::AppCreate(CIISWebsiteProp&, CIISVRootProp*) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::CreateApplication(CIISWebsiteProp&, CIISVRootProp*) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::CreateVirtualDirectory(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::CreateAppPoolFunction(CIISAppPoolProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::RemoveLegacyApplication(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::RemoveApplication(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::RemoveVirtualDirectory(CIISWebsiteProp&, CIISVRootProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::RemoveAppPoolFunction(CIISAppPoolProp&) {
    return kNotImplemented;
}

bool CIisFunctionsVista::CanDeletePath() {
    return false;
}

int32_t CIisFunctionsVista::SetVRtStrProperty(uint32_t, uint32_t, uint32_t, const qm::wstring&,
                                              const qm::wstring&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetVRtDelimMultiszProperty(uint32_t, uint32_t, const qm::wstring&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetVRtMultiszProperty(uint32_t, uint32_t, const char16_t*, uint32_t,
                                                  const qm::wstring&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetVRtDWProperty(uint32_t, uint32_t, uint32_t) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetVRtBinProperty(uint32_t, uint32_t, const std::byte*, uint32_t) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetDynamicMetaDataProperties(CIISCommonProp&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::InstallMimeTypes(MetadataHandle,
                                             const std::vector<std::unique_ptr<CIISMimeMapProp>>&) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetFormsAuthentication(bool, bool) {
    return kNotImplemented;
}

int32_t CIisFunctionsVista::SetAppPoolProperties(CIISAppPoolProp&) {
    return kNotImplemented;
}

bool CIisFunctionsVista::CheckAspNetBitness(const qm::wstring&, const qm::wstring&) {
    return false;
}
