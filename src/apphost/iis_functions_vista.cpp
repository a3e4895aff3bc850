#include "apphost/iis_functions_vista.h"

#include "support/result_codes.h"

// Item settings are not translated yet: these operations answer E_NOTIMPL (or "no" and nothing
// done for those without a status).

namespace {
constexpr int32_t kNotImplemented = qm::hr::not_implemented;
}  // namespace

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
