/// Debian has no `do shell script … with administrator privileges`: this runs a shell text as root, after the user has
/// granted administrator rights in polkit's prompt. This file is unnecessary when NSAppleScript runs that statement.
#pragma once

#include <string>
#include <string_view>

/// How a privileged run of a shell ended.
struct ShellResult {
    enum class Outcome {
        Succeeded,   ///< The shell's exit status is 0.
        Failed,      ///< The shell failed: `code` is its status, or 128 plus the number of the signal that
                     ///< ended it.
        Refused,     ///< The user dismissed the prompt or may not have the rights. Nothing has run.
        NotStarted,  ///< pkexec did not start the shell, for a reason other than a refusal: `code` is pkexec's status,
                     ///< `error` its message.
        SystemError, ///< A system call failed: `code` is the error number, `error` the call's name. The shell may have
                     ///< run in part.
    };
    Outcome outcome;
    int code = 0;
    std::string output; ///< What the shell wrote on standard output.
    std::string error;  ///< What the shell or pkexec wrote on standard error; for a system error see there.
};

/// Runs a text through `/bin/sh` as root and waits until the shell has ended and all its output streams are closed.
///
/// The text is passed to the shell's standard input in sealed memory. So it is not on a command line (otherwise a text
/// that kills processes by their command lines would kill its own shell), and no other process can change it. The
/// text's commands get an empty input.
///
/// @param text the shell text, any bytes but NUL.
/// @return How the run ended.
[[nodiscard]] ShellResult runAsRoot(std::string_view text);
