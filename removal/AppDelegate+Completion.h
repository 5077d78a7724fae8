/// The end of a removal: the log file, the completion alert and the restart.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (Completion)

/// Writes the whole activity log to a file on the Desktop, named for the current second, atomically and in UTF-8
/// without a byte-order mark. Replaces a file of that name. A failure is neither logged nor shown.
- (void)writeRemovalLogToDesktop;

/// Shows the outcome of a removal in a modal alert and returns when the user has closed it. After success it offers a
/// restart, which ends the tool if it is granted.
/// @param success Whether the cleanup script ran.
- (void)showCompletionWithSuccess:(BOOL)success;

/// Requests a restart of the Mac one second from now, with administrator rights, logs it and quits the tool. If the
/// request fails, or the user refuses the rights, logs that and returns.
- (void)restartNow;

@end
