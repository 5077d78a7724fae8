/// The activity log, through which every operation reports, and the two strings at its top.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (ActivityLog)

/// The version in the bundle's information dictionary (`CFBundleShortVersionString`), or "1.0" when it is missing or
/// empty. Never nil.
- (NSString *)appVersionString;

/// The date of this version as year, month and day separated by points. Never nil.
- (NSString *)appUpdatedString;

/// Appends a message and one line feed to the log and scrolls the log view to its end. The message's own line feeds
/// pass unchanged; nothing else is added, nothing is ever trimmed.
/// @param message The text; nil is taken as empty.
/// Without a log view this does nothing. It cannot fail.
- (void)appendLog:(NSString *)message;

@end
