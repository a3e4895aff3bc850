#pragma once

#include "settings/iis_common_prop.h"
#include "support/status_codes.h"

// A virtual directory or application of a component.
class CIISVRootProp final : public CIISCommonProp {
  public:
    // A virtual directory must have a display name.
    int32_t SetDisplayName(qm::wstring value) override {
        return webrig::settings::StoreNonEmptyText(DisplayName, std::move(value),
                                                   qm::status::vroot_display_name_empty);
    }
    virtual int32_t SetComponent(qm::wstring value) {  // 16
        return webrig::settings::StoreNonEmptyText(Component, std::move(value),
                                                   qm::status::vroot_component_empty);
    }
    virtual int32_t SetParentSite(qm::wstring value) {  // 17
        return webrig::settings::StoreNonEmptyText(ParentSite, std::move(value),
                                                   qm::status::vroot_parent_site_empty);
    }

    qm::wstring Component;
    int32_t VRootProps = 0;
    qm::wstring ParentSite;
};
