/// The product's known locations, and which of them exist. Every call reads the disk again; nothing is cached, shown or
/// logged.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (KnownLocations)

/// The eleven known locations as absolute paths, in their fixed order; the last eight lie in the current user's home
/// directory.
- (NSArray<NSString *> *)knownQuorlenPaths;

/// The absolute path of the product's licence file, whether it exists or not; never nil.
- (NSString *)licensePath;

/// Whether a file or folder exists at the licence path. A dangling link and an unreachable path count as absent.
- (BOOL)licenseExists;

/// The known locations at which a file or folder exists now, in their fixed order; empty if there is none, never nil. A
/// dangling link and an unreachable path count as absent.
- (NSArray<NSString *> *)existingQuorlenPaths;

@end
