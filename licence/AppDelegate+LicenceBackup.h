/// The backup of the licence file that every removal makes first.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (LicenceBackup)

/// Saves the licence file, when there is one, into a new zip archive on the Desktop named for the current second, and
/// keeps the archive's path in `lastBackupPath`.
///
/// The file is staged in the temporary folder, never read or interpreted. Blocks until the archiver has ended. Every
/// outcome is a line in the activity log: no licence file, created (with the path), not created (the archiver failed or
/// left no archive), or skipped with the reason of an exception. After a skipped backup the staging folder stays; else
/// it is removed. Nothing is shown, and the caller goes on in every case.
- (void)backupLicenceIfPresent;

@end
