#pragma once
// Doubles of the two backends: every operation the controller reaches is a mock, so that tests
// see exactly what a controller passes on. Bound to the controller by the same binding as the
// real backends, and told when the backend part of a controller is destroyed.

#include <gmock/gmock.h>

#include <functional>

#include "apphost/iis_functions_vista.h"
#include "metabase/iis_functions_legacy.h"

namespace webrig::testing {

class MockLegacyBackend : public CIisFunctionsLegacy {
  public:
    explicit MockLegacyBackend(platform::Platform& platform) : CIisFunctionsLegacy(platform) {}
    ~MockLegacyBackend() override {
        if (onDestroyed) {
            onDestroyed();
        }
    }

    MOCK_METHOD(int32_t, InitIISObject, ());
    MOCK_METHOD(int32_t, OpenKeyLog,
                (MetadataHandle, const qm::wstring&, uint32_t, uint32_t, MetadataHandle&));
    MOCK_METHOD(int32_t, OpenKeyToWebsite, (CIISWebsiteProp*, MetadataHandle*, CIISVRootProp*));
    MOCK_METHOD(int32_t, EnumKeys, (MetadataHandle, const qm::wstring&, qm::wstring&, uint32_t));
    MOCK_METHOD(int32_t, GetData, (MetadataHandle, const qm::wstring&, MetadataRecord&, uint32_t&));
    MOCK_METHOD(int32_t, CloseKey, (MetadataHandle));
    MOCK_METHOD(int32_t, AddWebSiteFunction, (CIISWebsiteProp&));
    MOCK_METHOD(int32_t, RemoveWebsite, (CIISWebsiteProp&));
    MOCK_METHOD(int32_t, AppCreate, (CIISWebsiteProp&, CIISVRootProp*));
    MOCK_METHOD(int32_t, CreateVirtualDirectory, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, CreateAppPoolFunction, (CIISAppPoolProp&));
    MOCK_METHOD(int32_t, RemoveApplication, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, RemoveVirtualDirectory, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, RemoveAppPoolFunction, (CIISAppPoolProp&));
    MOCK_METHOD(int32_t, CompareDirValues, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(bool, FindSiteWithId, (CIISWebsiteProp&));
    MOCK_METHOD(bool, FindSiteWithPort, (CIISWebsiteProp&));
    MOCK_METHOD(bool, CanDeletePath, (const qm::wstring&, const qm::wstring&));
    MOCK_METHOD(void, GetNextWebsiteId, (CIISWebsiteProp&));
    MOCK_METHOD(int32_t, SetVRtStrProperty,
                (MetadataHandle, uint32_t, uint32_t, uint32_t, const qm::wstring&,
                 const qm::wstring&));
    MOCK_METHOD(int32_t, SetVRtDelimMultiszProperty,
                (MetadataHandle, uint32_t, uint32_t, const qm::wstring&));
    MOCK_METHOD(int32_t, SetVRtMultiszProperty,
                (MetadataHandle, uint32_t, uint32_t, const char16_t*, uint32_t,
                 const qm::wstring&));
    MOCK_METHOD(int32_t, SetVRtDWProperty, (MetadataHandle, uint32_t, uint32_t, uint32_t));
    MOCK_METHOD(int32_t, SetVRtBinProperty,
                (MetadataHandle, uint32_t, uint32_t, const std::byte*, uint32_t));
    MOCK_METHOD(int32_t, SetDynamicMetaDataProperties, (MetadataHandle, CIISCommonProp&));
    MOCK_METHOD(int32_t, InstallMimeTypes,
                (MetadataHandle, const std::vector<std::unique_ptr<CIISMimeMapProp>>&));
    MOCK_METHOD(bool, CheckAspNetBitness, (const qm::wstring&, const qm::wstring&));

    std::function<void()> onDestroyed;
};

class MockVistaBackend : public CIisFunctionsVista {
  public:
    explicit MockVistaBackend(platform::Platform& platform) : CIisFunctionsVista(platform) {}
    ~MockVistaBackend() override {
        if (onDestroyed) {
            onDestroyed();
        }
    }

    MOCK_METHOD(int32_t, InitIISObject, ());
    MOCK_METHOD(int32_t, OpenKeyToWebsite, (CIISWebsiteProp*, MetadataHandle*, CIISVRootProp*));
    MOCK_METHOD(int32_t, AddWebSiteFunction, (CIISWebsiteProp&));
    MOCK_METHOD(int32_t, RemoveWebsite, (CIISWebsiteProp&));
    MOCK_METHOD(bool, FindSiteWithId, (CIISWebsiteProp&));
    MOCK_METHOD(bool, FindSiteWithPort, (CIISWebsiteProp&));
    MOCK_METHOD(void, GetNextWebsiteId, (CIISWebsiteProp&));
    MOCK_METHOD(int32_t, AppCreate, (CIISWebsiteProp&, CIISVRootProp*));
    MOCK_METHOD(int32_t, CreateApplication, (CIISWebsiteProp&, CIISVRootProp*));
    MOCK_METHOD(int32_t, CreateVirtualDirectory, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, CreateAppPoolFunction, (CIISAppPoolProp&));
    MOCK_METHOD(int32_t, RemoveLegacyApplication, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, RemoveApplication, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, RemoveVirtualDirectory, (CIISWebsiteProp&, CIISVRootProp&));
    MOCK_METHOD(int32_t, RemoveAppPoolFunction, (CIISAppPoolProp&));
    MOCK_METHOD(bool, CanDeletePath, ());
    MOCK_METHOD(int32_t, SetVRtStrProperty,
                (uint32_t, uint32_t, uint32_t, const qm::wstring&, const qm::wstring&));
    MOCK_METHOD(int32_t, SetVRtDelimMultiszProperty, (uint32_t, uint32_t, const qm::wstring&));
    MOCK_METHOD(int32_t, SetVRtMultiszProperty,
                (uint32_t, uint32_t, const char16_t*, uint32_t, const qm::wstring&));
    MOCK_METHOD(int32_t, SetVRtDWProperty, (uint32_t, uint32_t, uint32_t));
    MOCK_METHOD(int32_t, SetVRtBinProperty, (uint32_t, uint32_t, const std::byte*, uint32_t));
    MOCK_METHOD(int32_t, SetDynamicMetaDataProperties, (CIISCommonProp&));
    MOCK_METHOD(int32_t, InstallMimeTypes,
                (MetadataHandle, const std::vector<std::unique_ptr<CIISMimeMapProp>>&));
    MOCK_METHOD(int32_t, SetFormsAuthentication, (bool, bool));
    MOCK_METHOD(int32_t, SetAppPoolProperties, (CIISAppPoolProp&));
    MOCK_METHOD(bool, CheckAspNetBitness, (const qm::wstring&, const qm::wstring&));

    std::function<void()> onDestroyed;
};

}  // namespace webrig::testing
