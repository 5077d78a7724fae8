/// GNUstep's NSTask damages this process's memory when a launch fails (its forked child runs on in the parent's
/// memory), and polls for the child's end. This class takes its name in this program; GNUstep's libraries keep their
/// own. This file is unnecessary when GNUstep's NSTask raises when a launch fails and leaves this process as it was.
#pragma once

#import <Foundation/Foundation.h>

#include <sys/types.h>

/// A program to run once as a child process. It inherits this process's environment, working folder and standard
/// streams, and no other descriptor. Wait for each launched task; otherwise the ended child stays in the
/// system's process table.
@interface SpawnedTask : NSObject {
    NSString *_launchPath;
    NSArray *_arguments;
    pid_t _process;
    BOOL _ended;
    int _terminationStatus;
}

/// The path of the program. Nil at first.
@property (nonatomic, copy) NSString *launchPath;
/// Its arguments, without its own name; strings. Nil, as at first, means none.
@property (nonatomic, copy) NSArray *arguments;

/// Starts the program. Raises NSInvalidArgumentException, with the path and the cause in its reason, when it cannot be
/// started, when no launch path is set, or when the task was launched before.
- (void)launch;

/// Blocks until the program has ended. Does nothing after an earlier wait. Raises NSInvalidArgumentException
/// when the task was not launched, and NSGenericException when the system cannot say how the program ended.
- (void)waitUntilExit;

/// The program's exit status, or the number of the signal that ended it. Raises NSInvalidArgumentException when the
/// task was not launched or not waited for.
@property (nonatomic, readonly) int terminationStatus;

@end

// After GNUstep's own declarations, which stay as they are.
#define NSTask SpawnedTask
