/// Puts the licence file back from a backup archive that the user chooses.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (LicenceRestore)

/// The restore button's action. Lets the user choose a zip archive, asks before it replaces an existing licence file,
/// restores, reports the outcome in the log and an alert, and scans the disk again. If the user cancels the panel or
/// the question, nothing happens and nothing is logged. Every failure shows the same alert; the log has the cause.
/// @param sender Ignored.
- (void)restoreLicense:(id)sender;

/// Unpacks an archive into a temporary folder and copies the first entry named ".licence", file or folder, to the
/// destination. Once it has found the entry, it removes what exists at the destination; then it copies. It always
/// removes the temporary folder. It logs a failed copy and an exception, but not a failed archiver or a missing entry.
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
