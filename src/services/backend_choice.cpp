#include "services/backend_choice.h"

#include "host/event_log.h"
#include "support/case_insensitive.h"

namespace webrig::services {

bool LegacyObjectsAvailable(platform::ComClasses& classes) {
    return classes.ProbeAdminBaseClassFactory() >= 0;
}

bool UseIis7Objects(const CIISPropertyBag& bag, platform::ComClasses& classes, IIISEvent* sink) {
    if (bag.iisMajorVersion < 7) {
        host::LogLine(sink, u"IIS Version is less than 7, so IIS 7 objects are not available.");
        return false;
    }
    if (!LegacyObjectsAvailable(classes)) {
        host::LogLine(sink, u"This machine does not support legacy objects");
        return true;
    }
    host::LogLine(sink, u"User legacy object preference is the following: " +
                            bag.preferLegacyObjects +
                            u" . This is based on the value of the following property: " +
                            u"IISPREFERLEGACYOBJECTS");
    return !qm::iequals(bag.preferLegacyObjects, u"1");
}

}  // namespace webrig::services
