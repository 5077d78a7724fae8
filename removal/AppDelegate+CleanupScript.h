/// The cleanup script for the current user, and the two quotings that carry text to it and with it.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (CleanupScript)

/// A fresh cleanup script for the home directory of the user who runs the tool: twenty lines joined by line feeds, none
/// at the end. Never nil; reads nothing but the home directory's path.
- (NSString *)cleanupShellScript;

/// The text as one single-quoted /bin/sh word.
/// @param text Any text; not nil.
/// @return Not nil; on Debian nil for half a surrogate pair (platform/Text.hpp), which no path there can hold.
- (NSString *)shellQuotedString:(NSString *)text;

/// The text as one double-quoted AppleScript string literal, quotes included.
/// @param text Any text; not nil.
/// @return As that of `shellQuotedString:`.
- (NSString *)appleScriptQuotedString:(NSString *)text;

@end
