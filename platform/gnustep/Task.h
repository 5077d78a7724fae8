/// NSTask for this program. GNUstep's own forks with vfork and, when the launch fails, goes on in the child on the
/// parent's memory, which was seen to damage the parent; and it polls for the child's end. GNUstep itself goes on using
/// its own, of which it needs more.
#pragma once

#import <Foundation/Foundation.h>

#include <sys/types.h>

/// A program to be run once as a child process. It inherits this process's environment, working folder and standard
/// streams, and no other descriptor. A task that was launched must be waited for, else the ended child stays in the
/// system's process table.
@interface SpawnedTask : NSObject {
    NSString *_launchPath;
    NSArray *_arguments;
    pid_t _process;
    BOOL _ended;
    NSTaskTerminationReason _terminationReason;
    int _terminationStatus;
}

/// The path of the program. Nil at first.
@property (nonatomic, copy) NSString *launchPath;
/// Its arguments, without its own name; strings. Nil, as at first, means none.
@property (nonatomic, copy) NSArray *arguments;

/// Starts the program. Raises NSInvalidArgumentException, with the path and the cause in its reason, when it cannot be
/// started, when no launch path is set, or when the task was launched before.
- (void)launch;

/// Blocks until the program has ended; does nothing when it was waited for before. Raises NSInvalidArgumentException
/// when the task was not launched, and NSGenericException when the system cannot tell how the program ended.
- (void)waitUntilExit;

/// The program's exit status, or the number of the signal that ended it. Raises NSInvalidArgumentException when the
/// task was not launched or not waited for.
@property (nonatomic, readonly) int terminationStatus;
/// Whether an exit or a signal ended the program. Raises as `terminationStatus` does.
@property (nonatomic, readonly) NSTaskTerminationReason terminationReason;

@end

// After GNUstep's own declarations, which stay as they are.
#define NSTask SpawnedTask
