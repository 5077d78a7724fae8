/// The backup of the licence file, which every removal makes first.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (LicenceBackup)

/// If there is a licence file, saves it into a new zip archive on the Desktop, named for the current second, and keeps
/// the archive's path in `lastBackupPath`.
///
/// Copies the file to a staging folder in the temporary folder, and blocks until the archiver has ended. Logs the
/// outcome: no licence file, created (with the path), not created (the archiver failed or left no archive), or skipped
/// (with the reason of an exception). After a skipped backup the staging folder stays; otherwise it is removed. Shows
/// nothing.
- (void)backupLicenceIfPresent;

@end
