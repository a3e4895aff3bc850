#include "platform/sim/programs/command_line.h"

namespace webrig::sim {
namespace {

bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t';
}

qm::wstring WithExtension(qm::wstring name) {
    const size_t lastSeparator = name.find_last_of(u"\\/");
    const size_t fileStart = lastSeparator == qm::wstring::npos ? 0 : lastSeparator + 1;
    if (name.find(u'.', fileStart) == qm::wstring::npos) {
        name += u".exe";
    }
    return name;
}

size_t SkipBlanks(qm::wstring_view text, size_t at) {
    while (at < text.size() && IsBlank(text[at])) {
        ++at;
    }
    return at;
}

// Where the program's own name ends: after its closing quote, or at the first blank.
size_t EndOfProgramName(qm::wstring_view line) {
    size_t at = SkipBlanks(line, 0);
    if (at < line.size() && line[at] == u'"') {
        const size_t close = line.find(u'"', at + 1);
        return close == qm::wstring_view::npos ? line.size() : close + 1;
    }
    while (at < line.size() && !IsBlank(line[at])) {
        ++at;
    }
    return at;
}

}  // namespace

std::vector<qm::wstring> ExecutableCandidates(qm::wstring_view commandLine) {
    std::vector<qm::wstring> candidates;
    const qm::wstring_view line = commandLine.substr(SkipBlanks(commandLine, 0));
    if (line.empty()) {
        return candidates;
    }
    if (line.front() == u'"') {
        const size_t close = line.find(u'"', 1);
        candidates.push_back(WithExtension(qm::wstring(
            line.substr(1, close == qm::wstring_view::npos ? qm::wstring_view::npos : close - 1))));
        return candidates;
    }
    for (size_t at = 0; at <= line.size(); ++at) {
        if (at == line.size() || IsBlank(line[at])) {
            if (at > 0 && !IsBlank(line[at - 1])) {
                candidates.push_back(WithExtension(qm::wstring(line.substr(0, at))));
            }
        }
    }
    return candidates;
}

std::vector<qm::wstring> ProgramArguments(qm::wstring_view commandLine) {
    std::vector<qm::wstring> arguments;
    size_t at = EndOfProgramName(commandLine);
    while (true) {
        at = SkipBlanks(commandLine, at);
        if (at >= commandLine.size()) {
            return arguments;
        }
        qm::wstring argument;
        bool quoted = false;
        while (at < commandLine.size() && (quoted || !IsBlank(commandLine[at]))) {
            size_t backslashes = 0;
            while (at < commandLine.size() && commandLine[at] == u'\\') {
                ++backslashes;
                ++at;
            }
            if (at < commandLine.size() && commandLine[at] == u'"') {
                argument.append(backslashes / 2, u'\\');
                if (backslashes % 2 == 1) {
                    argument += u'"';
                } else if (quoted && at + 1 < commandLine.size() && commandLine[at + 1] == u'"') {
                    argument += u'"';
                    ++at;
                } else {
                    quoted = !quoted;
                }
                ++at;
            } else {
                argument.append(backslashes, u'\\');
                if (at < commandLine.size() && (quoted || !IsBlank(commandLine[at]))) {
                    argument += commandLine[at];
                    ++at;
                }
            }
        }
        arguments.push_back(std::move(argument));
    }
}

}  // namespace webrig::sim
