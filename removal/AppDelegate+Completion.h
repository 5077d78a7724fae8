/// The end of a removal: the log file, the completion alert and the restart.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (Completion)

/// Writes the whole activity log to a new file on the Desktop, named for the current second, in UTF-8 without a
/// byte-order mark and atomically; a file of that name is replaced. A failure is silent.
- (void)writeRemovalLogToDesktop;

/// Tells the outcome of a removal in a modal alert and returns when it is dismissed. After success it offers a restart,
/// which may end the tool.
/// @param success Whether the cleanup script ran.
- (void)showCompletionWithSuccess:(BOOL)success;

/// Has the machine restart a second from now, with administrator rights, and quits the tool. When the rights are
/// refused or the request fails otherwise, that is logged and the tool stays open.
- (void)restartNow;

@end
