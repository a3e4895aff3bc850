#pragma once
// The settings file a command is given, and what the command reads of it itself: the component
// order and, when the loader refuses the file, the sentence that says what is wrong and where.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/code_page.h"
#include "settings/settings_file.h"

namespace webrig::cli {

struct SettingsInput {
    std::string path;
    std::string name;   // file name, as it is placed on the machine
    std::string bytes;  // the file as it is
};

// Throws InputError when the file cannot be read.
SettingsInput ReadSettingsInput(const std::string& path);
settings::SettingsFile ParseSettings(const SettingsInput& input, platform::AnsiCodePage& ansi);

// The components of "Components", c1 to cCount, in that order.
std::vector<qm::wstring> ComponentsInOrder(const settings::SettingsFile& file);

// "<file>: the settings cannot be loaded: status -1322 (...)", and where: "in section [X], key
// "ItemType" is missing".
std::string DescribeLoadFailure(const SettingsInput& input, const settings::SettingsFile& file,
                                int32_t status);

}  // namespace webrig::cli
