#include "platform/sim/machine/machine_variables.h"

#include <optional>

#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

std::optional<qm::wstring> VariableValue(qm::wstring_view name, const MachineConfig& config) {
    const qm::wstring drive = u"C:";
    if (qm::iequals(name, u"SystemDrive")) {
        return drive;
    }
    if (qm::iequals(name, u"SystemRoot") || qm::iequals(name, u"windir")) {
        return config.windowsDirectory;
    }
    if (qm::iequals(name, u"ProgramFiles")) {
        return drive + u"\\Program Files";
    }
    if (qm::iequals(name, u"ProgramFiles(x86)") && config.Is64Bit()) {
        return drive + u"\\Program Files (x86)";
    }
    if (qm::iequals(name, u"ProgramData") || qm::iequals(name, u"ALLUSERSPROFILE")) {
        return drive + u"\\ProgramData";
    }
    if (qm::iequals(name, u"PUBLIC")) {
        return drive + u"\\Users\\Public";
    }
    if (qm::iequals(name, u"TEMP") || qm::iequals(name, u"TMP")) {
        return config.windowsDirectory + u"\\Temp";
    }
    return std::nullopt;
}

}  // namespace

qm::wstring ExpandMachineVariables(qm::wstring_view text, const MachineConfig& config) {
    qm::wstring expanded;
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t open = text.find(u'%', pos);
        if (open == qm::wstring_view::npos) {
            break;
        }
        const size_t close = text.find(u'%', open + 1);
        if (close == qm::wstring_view::npos) {
            break;
        }
        expanded.append(text.substr(pos, open - pos));
        const std::optional<qm::wstring> value =
            VariableValue(text.substr(open + 1, close - open - 1), config);
        if (value) {
            expanded += *value;
            pos = close + 1;
        } else {
            // The closing "%" may open the next name.
            expanded.append(text.substr(open, close - open));
            pos = close;
        }
    }
    expanded.append(text.substr(pos));
    return expanded;
}

}  // namespace webrig::sim
