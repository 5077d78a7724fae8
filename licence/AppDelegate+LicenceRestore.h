/// Puts the licence file back from a backup archive that the user chooses.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (LicenceRestore)

/// The restore button's action: lets the user choose a zip archive, asks before an existing licence file is replaced,
/// restores, tells the outcome in the log and an alert, and scans the disk again. A panel or a question that is
/// cancelled leaves no trace. Every failure shows the same alert; the log tells them apart.
/// @param sender Ignored.
- (void)restoreLicense:(id)sender;

/// Unpacks an archive into a temporary folder and copies the first entry named ".licence" to its destination, whatever
/// the entry's kind. What exists at the destination is removed before the copy, and only once an entry was found. The
/// temporary folder is gone when this returns. Failures of the copy and exceptions are logged; an archiver that failed
/// and an archive without the entry are not.
/// @param archive The archive's absolute path; not nil.
/// @param destination The licence file's absolute path; not nil. Its folder is made when missing.
/// @return Whether the copy succeeded.
- (BOOL)restoreLicenseFromZip:(NSString *)archive toPath:(NSString *)destination;

/// Finds the first entry below a folder, at any depth and in the file system's order, whose name is exactly ".licence".
/// @param root The folder's absolute path; not nil.
/// @return The entry's full path, or nil when there is none.
- (NSString *)findLicenseFileUnderPath:(NSString *)root;

/// Shows a modal alert with the one button "OK" and waits until it is dismissed.
/// @param title The message text; nil is taken as empty.
/// @param message The informative text; nil is taken as empty.
- (void)showSimpleAlertWithTitle:(NSString *)title message:(NSString *)message;

@end
