/// The product's known locations and the tests that tell which of them exist. Nothing is cached: each call asks the
/// disk afresh, and shows and logs nothing.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (KnownLocations)

/// The eleven known locations as absolute paths, in their fixed order; the last eight lie in the current user's home
/// directory.
- (NSArray<NSString *> *)knownQuorlenPaths;

/// The absolute path of the product's licence file, whether it exists or not; never nil.
- (NSString *)licensePath;

/// Whether anything, file or folder, exists at the licence path. A link to nothing counts as absent, and so does what
/// can't be reached.
- (BOOL)licenseExists;

/// The known locations that exist now, in their fixed order; empty when there are none, never nil. Files and folders
/// are not told apart; a link to nothing counts as absent, and so does what can't be reached.
- (NSArray<NSString *> *)existingQuorlenPaths;

@end
