#pragma once
// Runs the webrig command as a subprocess in a folder, with standard input from a text and its
// output caught in files of that folder.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace webrig::testing {

struct CommandResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline std::string ReadText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline CommandResult RunWebrig(const std::filesystem::path& folder,
                               const std::vector<std::string>& args,
                               const std::string& input = {}) {
    const std::filesystem::path in = folder / ".stdin";
    const std::filesystem::path out = folder / ".stdout";
    const std::filesystem::path err = folder / ".stderr";
    std::ofstream(in, std::ios::binary) << input;
    std::vector<char*> argv{const_cast<char*>(WEBRIG_COMMAND)};
    for (const std::string& arg : args) {
        argv.push_back(const_cast<char*>(arg.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::chdir(folder.c_str()) != 0) {
            ::_exit(127);
        }
        ::dup2(::open(in.c_str(), O_RDONLY), 0);
        ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
        ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
        ::unsetenv("WEBRIG_MACHINE");
        ::execv(WEBRIG_COMMAND, argv.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    CommandResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadText(out),
                         ReadText(err)};
    std::filesystem::remove(in);
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return result;
}

inline std::string Example(const std::string& name) {
    return std::string(WEBRIG_SOURCE_DIR) + "/examples/" + name;
}

}  // namespace webrig::testing
