/// Makes text safe on its way to root's shell. Plain C++ on UTF-16 code units; nothing here can fail.
///
/// The quotings nest: a path is shell-quoted into the cleanup script, and the whole script is quoted for AppleScript,
/// whose reader undoes exactly these three escapes, so that the shell receives the script unit for unit.
#pragma once

#include <string>
#include <string_view>

/// The text as one single-quoted /bin/sh word: each ' becomes '\'' and nothing else needs an escape between single
/// quotes.
[[nodiscard]] std::u16string shellQuoted(std::u16string_view text);

/// The text as one double-quoted AppleScript string literal, quotes included: backslash, double quote and line feed are
/// escaped, everything else passes unchanged.
[[nodiscard]] std::u16string appleScriptQuoted(std::u16string_view text);
