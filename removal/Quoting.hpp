/// Makes text safe on its way to root's shell. Plain C++ on UTF-16 code units; nothing here can fail.
///
/// The quotings nest: each path is shell-quoted in the cleanup script, and the whole script is then quoted for
/// AppleScript. AppleScript undoes exactly these three escapes, so the shell receives the script unchanged.
#pragma once

#include <string>
#include <string_view>

/// The text as one single-quoted /bin/sh word: each ' becomes '\''. Between single quotes nothing else needs an
/// escape.
[[nodiscard]] std::u16string shellQuoted(std::u16string_view text);

/// The text as one double-quoted AppleScript string literal, quotes included: backslash, double quote and line feed are
/// escaped, everything else passes unchanged.
[[nodiscard]] std::u16string appleScriptQuoted(std::u16string_view text);
