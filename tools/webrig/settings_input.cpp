#include "settings_input.h"

#include <filesystem>
#include <fstream>
#include <span>
#include <sstream>

#include "command_error.h"
#include "load_failure.h"
#include "run_output.h"
#include "support/decimal.h"
#include "support/format.h"

namespace webrig::cli {

SettingsInput ReadSettingsInput(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw InputError("no settings file " + path);
    }
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (!in) {
        throw InputError("cannot read the settings file " + path);
    }
    return {path, std::filesystem::path(path).filename().string(), bytes.str()};
}

settings::SettingsFile ParseSettings(const SettingsInput& input, platform::AnsiCodePage& ansi) {
    const auto* data = reinterpret_cast<const std::byte*>(input.bytes.data());
    return settings::SettingsFile::Parse(std::span(data, input.bytes.size()), ansi);
}

std::vector<qm::wstring> ComponentsInOrder(const settings::SettingsFile& file) {
    std::vector<qm::wstring> components;
    const int32_t count = qm::read_decimal(file.Find(u"Components", u"Count").value_or(u"0"));
    for (int32_t i = 1; i <= count; ++i) {
        const auto name = file.Find(u"Components", qm::format(u"c%d", i));
        if (name && !name->empty()) {
            components.emplace_back(*name);
        }
    }
    return components;
}

std::string DescribeLoadFailure(const SettingsInput& input, const settings::SettingsFile& file,
                                int32_t status) {
    std::string text =
        input.path + ": the settings cannot be loaded: status " + DescribeStatus(status);
    const std::optional<LoadFailure> failure = LocateLoadFailure(file);
    if (failure && failure->status == status) {
        text += "; in section [" + failure->section + "] the key \"" + failure->key + "\" is " +
                (failure->absent ? "missing" : "empty");
    }
    return text;
}

}  // namespace webrig::cli
