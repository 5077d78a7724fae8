/// Starts programs and waits for their end by the system's own calls. GNUstep's task damages this process's memory when
/// a launch fails, and polls for the end. This file is unnecessary when GNUstep's task does neither and keeps the
/// streams of a child apart.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

/// How a child ended.
struct ProcessEnd {
    bool bySignal; ///< Whether a signal ended it.
    int value;     ///< The exit status, or the number of that signal.
};

/// A child's standard streams: a descriptor of the parent, or, by default, the parent's own stream.
struct StandardStreams {
    int input = 0;
    int output = 1;
    int error = 2;
};

/// Starts a program. It inherits the working folder and the standard streams given, no other descriptor, and no blocked
/// or ignored signal.
///
/// @param path the program's absolute path; the search path is not consulted.
/// @param arguments its arguments, without its own name.
/// @param environment its whole environment, as NAME=VALUE.
/// @param streams its standard streams; each descriptor stays open in the parent.
/// @param process receives the child's id.
/// @param flags more flags of posix_spawn.
/// @return 0, or the error number of the failure; then there is no child.
[[nodiscard]] int startProcess(const std::string &path, std::vector<std::string> arguments,
    const std::vector<std::string> &environment, const StandardStreams &streams, pid_t &process, short flags = 0);

/// Waits until a child has ended, and reaps it.
///
/// @param process the child's id.
/// @param end receives how it ended.
/// @return 0, or the error number of the failure (ECHILD if another wait has reaped the child).
[[nodiscard]] int waitForEnd(pid_t process, ProcessEnd &end);

/// Starts a program for which this process does not wait: in its own session, without a terminal, with its standard
/// streams on /dev/null.
///
/// @param path the program's absolute path.
/// @param arguments its arguments, without its own name. It gets this process's environment.
/// @return 0, or the error number of the failure.
[[nodiscard]] int startDetached(const std::string &path, const std::vector<std::string> &arguments);

/// This process's environment, as NAME=VALUE.
[[nodiscard]] std::vector<std::string> currentEnvironment();
