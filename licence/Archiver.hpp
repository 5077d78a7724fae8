/// The system's archiver, as a child process.
#pragma once

#import <Cocoa/Cocoa.h>

/// Runs /usr/bin/ditto and waits until it ends. It inherits the tool's streams, environment and working folder.
/// @param arguments Its arguments, without the program's name; not nil.
/// @return Its exit status; 0 means success.
/// Raises the platform's exception when the program cannot be started.
[[nodiscard]] int runArchiver(NSArray<NSString *> *arguments);
