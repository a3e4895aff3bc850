#pragma once
// `webrig check`: loads a settings file as an install would and says what is wrong with it:
// the loader's refusal with its place, and warnings about what loads but will not do what the
// author meant.

#include <ostream>
#include <string>
#include <vector>

#include "install_run.h"
#include "settings/iis_property_bag.h"
#include "settings/settings_file.h"

namespace webrig::cli {

// Warnings about a file that loaded into `bag`; `machinePools` are the application pools the
// machine already has.
std::vector<std::string> CheckSettings(const settings::SettingsFile& file,
                                       const CIISPropertyBag& bag,
                                       const std::vector<std::string>& machinePools);

// The exit code: 0 when the file loads (warnings or not); a file that does not load is an
// InputError. Only the settings, strings and properties of `request` are used.
int RunCheck(const InstallRequest& request, std::ostream& out);

}  // namespace webrig::cli
