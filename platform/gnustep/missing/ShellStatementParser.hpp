/// Parses the one AppleScript statement that NSAppleScript runs on Debian, where there is no AppleScript. Plain C++;
/// text is UTF-16, as in the platform's strings. This file is unnecessary when NSAppleScript runs that statement.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Parses `do shell script "…" with administrator privileges`, with exactly these words and single blanks.
///
/// In the literal, `\\`, `\"`, `\n`, `\r` and `\t` stand for a backslash, a double quote, a line feed, a carriage
/// return and a tab. Every other character but a double quote stands for itself.
/// @param source The whole source.
/// @return The unescaped shell text, or nothing if the source is anything else.
[[nodiscard]] std::optional<std::u16string> parseShellStatement(std::u16string_view source);

/// Whether a shell can receive a text unchanged. A null character ends a text there, and half a surrogate pair has no
/// UTF-8.
[[nodiscard]] bool canReachTheShell(std::u16string_view text);
