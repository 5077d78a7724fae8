/// The AppleScript statement that runs a shell text as root. Plain C++.
#pragma once

#include <string>
#include <string_view>

/// The statement that runs a shell text as root, after the system has asked for an administrator's name and password.
/// @param literal The shell text as an AppleScript string literal, quotes included (see `appleScriptQuoted`).
[[nodiscard]] std::u16string privilegedStatement(std::u16string_view literal);
