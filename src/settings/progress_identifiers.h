#pragma once
// The keys of a settings file's "ProgressMessages" section, in the order the loader reads them;
// their texts are shown by the install and uninstall steps.

#include <array>

namespace webrig::settings {

inline constexpr std::array<const char16_t*, 21> kProgressIdentifiers = {
    u"PROGMSG_IIS_CREATEVROOT",
    u"PROGMSG_IIS_CREATEVROOTS",
    u"PROGMSG_IIS_CREATEAPPPOOLS",
    u"PROGMSG_IIS_CREATEAPPPOOL",
    u"PROGMSG_IIS_CREATEWEBSERVICEEXTENSIONS",
    u"PROGMSG_IIS_CREATEWEBSERVICEEXTENSION",
    u"PROGMSG_IIS_EXTRACT",
    u"PROGMSG_IIS_EXTRACTDONE",
    u"PROGMSG_IIS_REMOVEVROOT",
    u"PROGMSG_IIS_REMOVEVROOTS",
    u"PROGMSG_IIS_REMOVEAPPPOOL",
    u"PROGMSG_IIS_REMOVEAPPPOOLS",
    u"PROGMSG_IIS_REMOVEWEBSERVICEEXTENSION",
    u"PROGMSG_IIS_REMOVEWEBSERVICEEXTENSIONS",
    u"PROGMSG_IIS_REMOVESITE",
    u"PROGMSG_IIS_ROLLBACKVROOTS",
    u"PROGMSG_IIS_ROLLBACKAPPPOOLS",
    u"PROGMSG_IIS_ROLLBACKWEBSERVICEEXTENSIONS",
    u"PROGMSG_IIS_REMOVEWEBSITES",
    u"PROGMSG_IIS_CREATEWEBSITE",
    u"PROGMSG_IIS_CREATEWEBSITES",
};

}  // namespace webrig::settings
