#pragma once

#include "settings/iis_common_prop.h"
#include "support/status_codes.h"

// A website, listed by a component or named as a virtual directory's parent.
class CIISWebsiteProp final : public CIISCommonProp {
  public:
    virtual int32_t SetPort(qm::wstring value) {  // 16
        return webrig::settings::StoreNonEmptyText(Port, std::move(value),
                                                   qm::status::website_port_empty);
    }
    virtual int32_t SetIPAddress(qm::wstring value) {
        return webrig::settings::StoreText(IPAddress, std::move(value));
    }
    virtual int32_t SetSiteNumber(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(SiteNumber, std::move(value),
                                                   qm::status::website_site_number_empty);
    }
    virtual int32_t SetSiteNumberProperty(qm::wstring value) {
        return webrig::settings::StoreText(SiteNumberProperty, std::move(value));
    }
    virtual int32_t SetComponent(qm::wstring value) {  // 20
        return webrig::settings::StoreText(Component, std::move(value));
    }

    qm::wstring Port;
    qm::wstring IPAddress;
    qm::wstring SiteNumber;
    qm::wstring SiteNumberProperty;
    int32_t WebSiteProps = 0;
    qm::wstring Component;
};
