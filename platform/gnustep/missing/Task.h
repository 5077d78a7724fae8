/// GNUstep's NSTask damages this process's memory when a launch fails (its forked child runs on in the parent's
/// memory), and polls for the child's end. This class takes its name in this program; GNUstep's libraries keep their
/// own. This file is unnecessary when GNUstep's NSTask raises when a launch fails and leaves this process as it was.
#pragma once

#import <Foundation/Foundation.h>

#include <sys/types.h>

/// A program to run once as a child process: set it up, launch it, wait for it once, read its status. It inherits this
/// process's environment, working folder and standard streams, and no other descriptor.
@interface SpawnedTask : NSObject {
    NSString *_launchPath;
    NSArray *_arguments;
    pid_t _process;
    int _terminationStatus;
}

/// The path of the program. Nil at first; not nil at the launch.
@property (nonatomic, copy) NSString *launchPath;
/// Its arguments, without its own name; strings. Nil, as at first, means none.
@property (nonatomic, copy) NSArray *arguments;

/// Starts the program. Raises NSInvalidArgumentException, with the path and the cause in its reason, when it cannot be
/// started.
- (void)launch;

/// Blocks until the program has ended. Raises NSGenericException when the system cannot say how it ended.
- (void)waitUntilExit;

/// After the wait, the program's exit status or the number of the signal that ended it.
@property (nonatomic, readonly) int terminationStatus;

@end

// After GNUstep's own declarations, which stay as they are.
#define NSTask SpawnedTask
