#pragma once
// How a command ends: its exit code, and the error that ends it early with a message.

#include <stdexcept>
#include <string>

namespace webrig::cli {

enum ExitCode : int {
    kSuccess = 0,
    // The install (or removal) ran and reported a failure.
    kRunFailed = 1,
    // The command line or an input (settings file, machine folder, journal) is wrong.
    kInputError = 2,
};

// A problem with what the user gave: printed as "webrig: <message>", exit code 2.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace webrig::cli
