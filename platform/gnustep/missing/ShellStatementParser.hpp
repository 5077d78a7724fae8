/// Parses the one AppleScript statement that NSAppleScript runs on Debian, where there is no AppleScript. Plain C++;
/// text is UTF-16, as in the platform's strings. This file is unnecessary when NSAppleScript runs that statement.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

/// Why a source is not that statement.
struct SyntaxError {
    std::size_t position;   ///< Where parsing stopped, in code units from the source's start.
    std::size_t length;     ///< How many code units from there are the offending ones; 0 at the source's end.
    std::u16string message; ///< One English sentence: what was expected, and what stands there.
};

/// Parses `do shell script "…" with administrator privileges`.
///
/// Words are separated by blanks, tabs or line ends, which may also stand before and after the statement. The literal
/// is one AppleScript string:
/// `\\`, `\"`, `\n`, `\r` and `\t` stand for a backslash, a double quote, a line feed, a carriage return and a tab;
/// every other character stands for itself. Nothing else is understood: no other statement, parameter, comment,
/// expression or second statement.
///
/// @param source the whole source.
/// @return the shell text with its escapes undone, or why the source is not this statement.
[[nodiscard]] std::variant<std::u16string, SyntaxError> parseShellStatement(std::u16string_view source);

/// Whether a text can be handed to a shell as it is: without a null character, which ends a text there, and without
/// half a surrogate pair, which has no UTF-8. Handing it over without these would run another text than the one that
/// was meant.
[[nodiscard]] bool canReachTheShell(std::u16string_view text);
