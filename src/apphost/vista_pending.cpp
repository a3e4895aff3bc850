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
