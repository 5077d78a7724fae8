/// Hands for staging: text conversion, files, commands, and the practice Mac's own staging verbs.
#pragma once

#import <Cocoa/Cocoa.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// The text in UTF-8; empty for nil.
std::string utf8(NSString *text);

/// A platform string of UTF-8 text.
NSString *ns(const std::string &text);

/// What a command printed on standard output, and its exit status.
struct CommandOutput {
    int status;
    std::string output;
};

/// Runs a command, found on PATH, without a shell, and waits for it.
CommandOutput run(const std::vector<std::string> &command);

/// Runs a staging verb of the practice Mac as root ("plant --locations 1,4", "rights refused", "tool ditto fails",
/// "desktop missing"); a verb that fails is a test failure.
void stage(const std::vector<std::string> &verb);

/// The home directory of the user who runs the tests: the practice Mac's ann.
std::filesystem::path home();

/// A file's bytes; a file that can't be read is a test failure.
std::string contents(const std::filesystem::path &file);

/// Writes a file, making its folders.
void write(const std::filesystem::path &file, const std::string &bytes);

/// Handles events as the main loop does until a condition holds; gives up after a generous while. Returns whether it
/// holds.
bool handleEventsUntil(const std::function<bool()> &condition);

/// Makes a modal loop look whether it has been told to end, which it does only after an event.
void wakeModalLoop();
