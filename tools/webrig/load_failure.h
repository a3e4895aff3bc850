#pragma once
// Where in a settings file the loader stops: the first key, in the loader's reading order, whose
// emptiness or absence gives a load status. The loader reports only the status; this finds the
// section and key that a person has to fix.

#include <cstdint>
#include <optional>
#include <string>

#include "settings/settings_file.h"

namespace webrig::cli {

struct LoadFailure {
    int32_t status;
    std::string section;
    std::string key;
    bool absent;  // the key is missing (else it is present and empty)
};

// The first such key; nullopt when every key the loader insists on is there. Values that become
// empty only through the host's resolution are not seen here.
std::optional<LoadFailure> LocateLoadFailure(const settings::SettingsFile& file);

}  // namespace webrig::cli
