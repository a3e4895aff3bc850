// The ASP.NET authentication mode of an application: Forms for an item that asks for it,
// Windows for one that inherits it. The change is not committed here: it rides on the next
// commit of the session.

#include "apphost/iis_functions_vista.h"
#include "support/format.h"
#include "support/status_codes.h"

int32_t CIisFunctionsVista::SetFormsAuthentication(bool effective, bool own) {
    const qm::wstring mode = own ? u"Forms" : effective ? u"Windows" : u"";
    if (mode.empty()) {
        return 0;
    }
    try {
        ElementPtr element;
        if (const int32_t code = GetConfigElement(u"system.web/authentication", u"", element)) {
            return code;
        }
        LogMessage(qm::format(u"PutPropertyValue: sProperty 'mode' sValue %s", mode));
        const int32_t code = PutPropertyCommon(element, u"mode", mode, false);
        return code < 0 ? code : 0;
    } catch (...) {
        LogMessage(qm::format(
            u"Exception caught in SetFormsAuthentication for property 'mode' with value '%s'",
            mode));
        return qm::status::create_vroot_or_write_property_failed;
    }
}
