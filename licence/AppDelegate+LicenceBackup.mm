#import "licence/AppDelegate+LicenceBackup.h"

#import "app/AppDelegate+ActivityLog.h"
#import "app/OutputFiles.hpp"
#import "detection/AppDelegate+KnownLocations.h"
#include "detection/KnownLocations.hpp"
#import "licence/Archiver.hpp"
#import "licence/FailureReason.hpp"
#import "platform/Text.hpp"

@implementation AppDelegate (LicenceBackup)

- (void)backupLicenceIfPresent
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSString *licence = [self licensePath];
    if (![fileManager fileExistsAtPath:licence]) {
        [self appendLog:@"No license file found to back up."];
        return;
    }
    [self appendLog:@"License detected."];

    NSString *name = licenceBackupName();
    NSString *desktop = desktopFolder();
    NSString *staging = [NSTemporaryDirectory() stringByAppendingPathComponent:name];
    NSString *stagedLicence = [staging stringByAppendingPathComponent:nsString(known_locations::licenceFileName)];
    NSString *archive = [desktop stringByAppendingPathComponent:[name stringByAppendingString:@".zip"]];
    @try {
        // If one of these fails, the archiver finds no file and fails.
        [fileManager createDirectoryAtPath:staging withIntermediateDirectories:YES attributes:nil error:nullptr];
        [fileManager copyItemAtPath:licence toPath:stagedLicence error:nullptr];
        // Without a Desktop folder the archive's path is nil, and the literal raises.
        const int status = runArchiver(@[ @"-c", @"-k", @"--sequesterRsrc", @"--keepParent", stagedLicence, archive ]);
        if (status == 0 && [fileManager fileExistsAtPath:archive]) {
            [self setLastBackupPath:archive];
            [self appendLog:[NSString stringWithFormat:@"License backup created: %@", archive]];
        } else {
            [self appendLog:@"License backup was not created."];
        }
        [fileManager removeItemAtPath:staging error:nullptr];
    } @catch (NSException *exception) {
        // The staging folder stays: it may hold the only copy of the licence.
        NSString *reason = failureReason([exception reason]);
        [self appendLog:[NSString stringWithFormat:@"License backup skipped: %@", reason]];
    }
}

@end
