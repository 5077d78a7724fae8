/// Reads shell text with the C library's POSIX word parser and with the real /bin/sh.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Expands one shell word with wordexp(3). Ends the run if the text is not exactly one word or contains a command.
/// Returns nothing if there was not enough memory.
[[nodiscard]] std::optional<std::string> wordAsShellReadsIt(const std::string &word);

/// The single-quoted word at the start of a shell text, quotes included: strings in single quotes, joined by escaped
/// single quotes. Empty if the text does not start with one.
[[nodiscard]] std::string_view quotedWordAtStart(std::string_view text);

/// The output of /bin/sh for a script on its standard input, and whether its exit status was 0. The shell can start no
/// program, write no file and gain no rights.
struct ShellRun {
    std::string output;
    bool succeeded;
};
[[nodiscard]] ShellRun runShell(const std::string &script);

/// Whether the real shell also reads an input. It reads about one in a thousand, always the same ones.
[[nodiscard]] bool isSample(std::string_view text);
