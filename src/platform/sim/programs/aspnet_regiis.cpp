#include "platform/sim/programs/aspnet_regiis.h"

#include "support/case_insensitive.h"

namespace webrig::sim {

ProgramRun AspNetRegIis::Run(const std::vector<qm::wstring>& arguments) {
    if (arguments.empty() || arguments[0].size() < 2 ||
        (arguments[0][0] != u'-' && arguments[0][0] != u'/')) {
        return {1, "No option was given."};
    }
    const qm::wstring_view option = qm::wstring_view(arguments[0]).substr(1);
    const bool takesPath =
        qm::iequals(option, u"s") || qm::iequals(option, u"sn") || qm::iequals(option, u"k");
    const bool alone = qm::iequals(option, u"i") || qm::iequals(option, u"ir");
    if (takesPath && arguments.size() == 2 && !arguments[1].empty()) {
        return {};
    }
    if (alone && arguments.size() == 1) {
        return {};
    }
    return {1, "The command line is not one the simulated aspnet_regiis.exe knows: " +
                   qm::to_utf8(arguments[0])};
}

}  // namespace webrig::sim
