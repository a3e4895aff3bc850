#include "scramble.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>
#include <string>

#include "command_error.h"
#include "platform/sim/text/windows_1252.h"
#include "settings/password_scrambling.h"

namespace webrig::cli {
namespace {

// Turns echo off while a password is typed at a terminal.
class HiddenInput {
  public:
    HiddenInput() : m_terminal(::isatty(STDIN_FILENO) == 1) {
        if (m_terminal && ::tcgetattr(STDIN_FILENO, &m_saved) == 0) {
            termios quiet = m_saved;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
            std::cerr << "password: " << std::flush;
        } else {
            m_terminal = false;
        }
    }
    ~HiddenInput() {
        if (m_terminal) {
            ::tcsetattr(STDIN_FILENO, TCSANOW, &m_saved);
            std::cerr << "\n";
        }
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;

  private:
    bool m_terminal;
    termios m_saved{};
};

}  // namespace

int ScramblePassword(std::istream& in, std::ostream& out, bool utf16) {
    std::string password;
    {
        const HiddenInput hidden;
        if (!std::getline(in, password)) {
            throw InputError("no password on standard input");
        }
    }
    if (!password.empty() && password.back() == '\r') {
        password.pop_back();
    }
    qm::wstring plain;
    size_t badOffset = 0;
    if (!qm::from_utf8_strict(password, plain, badOffset)) {
        throw InputError("the password is not UTF-8 text");
    }
    sim::Windows1252 ansi;
    const qm::wstring scrambled = settings::ScramblePassword(plain, ansi);
    if (utf16) {
        for (const char16_t c : scrambled) {
            out.put(static_cast<char>(c & 0xFF));
            out.put(static_cast<char>(c >> 8));
        }
    } else {
        out << qm::to_utf8(scrambled) << "\n";
    }
    return kSuccess;
}

}  // namespace webrig::cli
