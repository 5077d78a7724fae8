/// The names of the files and folders that the tool makes, and the Desktop folder.
///
/// Each name ends in the current local date and time, "yyyyMMdd-HHmmss", by the user's calendar, locale and time zone.
/// Each call that returns a name reads the clock once and never returns nil.
#pragma once

#import <Cocoa/Cocoa.h>

/// The removal log file on the Desktop: "Quorlen-3-Removal-Log-STAMP.txt".
[[nodiscard]] NSString *removalLogFileName();

/// A licence backup: "Quorlen-License-Backup-STAMP". It names the staging folder; with ".zip" added, the archive on the
/// Desktop.
[[nodiscard]] NSString *licenceBackupName();

/// The temporary folder into which a licence backup is unpacked: "Quorlen-License-Restore-STAMP".
[[nodiscard]] NSString *licenceRestoreFolderName();

/// The user's Desktop folder as an absolute path, or nil when the platform names none. The folder can be missing; this
/// does not create it.
[[nodiscard]] NSString *desktopFolder();
