#pragma once
// `webrig machine create` and `webrig machine show`.

#include <filesystem>
#include <ostream>
#include <string>

namespace webrig::cli {

struct CreateRequest {
    std::filesystem::path folder;
    std::string iis = "10";
    std::string os = "10.0.20348";  // Windows Server 2022
    std::string arch = "x64";
    std::string apphost;  // a real server's applicationHost.config to start from
};

// Makes the machine in a new folder beside the target and moves it into place only when it is
// whole, so a refused request creates nothing. The exit code.
int CreateMachine(const CreateRequest& request, std::ostream& out);

int ShowMachine(const std::filesystem::path& folder, bool json, std::ostream& out);

}  // namespace webrig::cli
