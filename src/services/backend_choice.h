#pragma once
// Which backend does the IIS work: the IIS 6 metabase or the configuration system of IIS 7 and
// later. Asked afresh by every call that builds a controller.

#include "host/iis_event.h"
#include "platform/com_classes.h"
#include "settings/iis_property_bag.h"

namespace webrig::services {

// Whether the IIS 6 admin base class (native on IIS 6, a compatibility feature later) can be
// created on this machine.
bool LegacyObjectsAvailable(platform::ComClasses& classes);

// True for the IIS 7+ configuration backend, false for the metabase backend: the metabase before
// IIS 7, and on IIS 7+ where the admin base exists and the project prefers it
// ("IISPREFERLEGACYOBJECTS" is "1", in any case).
bool UseIis7Objects(const CIISPropertyBag& bag, platform::ComClasses& classes, IIISEvent* sink);

}  // namespace webrig::services
