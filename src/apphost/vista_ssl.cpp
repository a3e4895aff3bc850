// The binding of a website's certificate to its port. On IIS 7+ it is made by running
// "netsh http add sslcert", which needs a way to start processes that the platform does not
// offer yet: until then the binding is reported as not made.

#include "apphost/iis_functions_vista.h"

int32_t CIisFunctionsVista::SetSsl(uint32_t, const std::byte*, uint32_t) {
    LogMessage(u"SetSsl on IIS 7 or higher");
    return qm::hr::not_implemented;
}
