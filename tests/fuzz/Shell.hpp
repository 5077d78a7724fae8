/// The judges of shell text: the C library's POSIX word parser, and the real /bin/sh.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a shell makes of one word, by wordexp(3). Ends the run when the text is not exactly one word, or asks for a
/// command to be run. Nothing when there was no memory for it.
[[nodiscard]] std::optional<std::string> wordAsShellReadsIt(const std::string &word);

/// The single-quoted word at the start of a shell text, quotes included: strings in single quotes, joined by escaped
/// single quotes. Empty when none stands there.
[[nodiscard]] std::string_view quotedWordAtStart(std::string_view text);

/// What /bin/sh writes when it is given a script on its standard input, and whether it ended with status 0. It can
/// start no program, write no file and gain no rights, whatever the script says.
struct ShellRun {
    std::string output;
    bool succeeded;
};
[[nodiscard]] ShellRun runShell(const std::string &script);

/// Whether an input is one of the few on which the real shell is asked as well: one in about a thousand, always the
/// same ones.
[[nodiscard]] bool isSample(std::string_view text);
