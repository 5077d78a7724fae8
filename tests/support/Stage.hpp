/// Helpers of the tests: text conversion, files, commands, and the practice Mac's staging verbs.
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

/// A command's standard output and exit status.
struct CommandOutput {
    int status;
    std::string output;
};

/// Runs a command, found on PATH, without a shell, and waits for it.
CommandOutput run(const std::vector<std::string> &command);

/// Runs a staging verb of the practice Mac as root ("plant --locations 1,4", "rights refused", "tool ditto fails",
/// "desktop missing"). If it fails, the test fails.
void stage(const std::vector<std::string> &verb);

/// The home directory of the user who runs the tests: the practice Mac's ann.
std::filesystem::path home();

/// A file's bytes. If the file cannot be read, the test fails.
std::string contents(const std::filesystem::path &file);

/// Writes a file and makes its folders.
void write(const std::filesystem::path &file, const std::string &bytes);

/// Handles events as the main loop does until a condition holds or a time limit passes. Returns whether it holds.
bool handleEventsUntil(const std::function<bool()> &condition);

/// A key event for the window with this number.
NSEvent *keyEvent(NSEventType type, NSString *characters, NSInteger window = 0);

/// An event for the window with this number that is of no mouse and no keyboard.
NSEvent *otherEvent(NSEventType type, NSInteger window = 0, short subtype = 0);

/// Posts an event to a modal loop. Only after an event does the loop check whether it must end.
void wakeModalLoop();
