/// The cleanup script, which is all that a removal does to the Mac. Plain C++.
#pragma once

#include <string>
#include <string_view>

/// Builds the /bin/sh script that stops the product's agent and daemon, deletes its eleven locations, resets the
/// system's record of background items and ends with status 0.
///
/// The script has twenty lines, joined by line feeds, with none at the end. Every command ignores its own failure, so
/// all of them run. Every path is deleted whether it exists or not.
/// @param homeDirectory The absolute path of the home directory of the user who runs the tool. The script runs as root,
///     so it uses no tilde and no variable.
[[nodiscard]] std::u16string cleanupScript(std::u16string_view homeDirectory);
