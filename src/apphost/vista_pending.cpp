#include "apphost/iis_functions_vista.h"

int32_t CIisFunctionsVista::AddWebSiteFunction(CIISWebsiteProp&) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::RemoveWebsite(CIISWebsiteProp&) {
    return qm::hr::not_implemented;
}
bool CIisFunctionsVista::FindSiteWithId(CIISWebsiteProp&) {
    return false;
}
bool CIisFunctionsVista::FindSiteWithPort(CIISWebsiteProp&) {
    return false;
}
void CIisFunctionsVista::GetNextWebsiteId(CIISWebsiteProp&) {}
int32_t CIisFunctionsVista::AppCreate(CIISWebsiteProp&, CIISVRootProp*) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::CreateApplication(CIISWebsiteProp&, CIISVRootProp*) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::CreateVirtualDirectory(CIISWebsiteProp&, CIISVRootProp&) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::CreateAppPoolFunction(CIISAppPoolProp&) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::RemoveLegacyApplication(CIISWebsiteProp&, CIISVRootProp&) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::RemoveApplication(CIISWebsiteProp&, CIISVRootProp&) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::RemoveVirtualDirectory(CIISWebsiteProp&, CIISVRootProp&) {
    return qm::hr::not_implemented;
}
int32_t CIisFunctionsVista::RemoveAppPoolFunction(CIISAppPoolProp&) {
    return qm::hr::not_implemented;
}
bool CIisFunctionsVista::CanDeletePath() {
    return false;
}
