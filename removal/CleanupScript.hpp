/// The cleanup script: the whole of what a removal does to the machine. Plain C++.
#pragma once

#include <string>
#include <string_view>

/// Builds the /bin/sh script that stops the product's agent and daemon, deletes its eleven locations, resets the
/// system's record of background items and ends with status 0.
///
/// Twenty lines joined by line feeds, none at the end. Every command between the first line and the last is guarded, so
/// that all of them run whatever the state of the machine, and every path is deleted without a test.
/// @param homeDirectory The absolute path of the home directory of the user who runs the tool: the script runs as
/// somebody else, so it holds no tilde and no variable.
[[nodiscard]] std::u16string cleanupScript(std::u16string_view homeDirectory);
