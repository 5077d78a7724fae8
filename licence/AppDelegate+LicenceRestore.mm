#import "licence/AppDelegate+LicenceRestore.h"

#import "app/AppDelegate+ActivityLog.h"
#import "app/OutputFiles.hpp"
#import "detection/AppDelegate+DetectionStatus.h"
#import "detection/AppDelegate+KnownLocations.h"
#include "detection/KnownLocations.hpp"
#import "licence/Archiver.hpp"
#import "licence/FailureReason.hpp"
#import "platform/Text.hpp"
#import "ui/ModalAlert.hpp"

namespace
{

/// Lets the user choose a backup archive. Returns nil if the user cancels the panel, or if the panel has no URL.
NSURL *chooseBackup()
{
    NSOpenPanel *panel = [NSOpenPanel openPanel];
    [panel setTitle:@"Choose a Quorlen License Backup"];
    [panel setMessage:@"Select a Quorlen license backup zip created by this tool."];
    [panel setPrompt:@"Restore License"];
    [panel setCanChooseFiles:YES];
    [panel setCanChooseDirectories:NO];
    [panel setAllowsMultipleSelection:NO];
    [panel setAllowedFileTypes:@[ @"zip" ]];
    return [panel runModal] == NSModalResponseOK ? [panel URL] : nil;
}

bool confirmReplacement()
{
    return runModalAlert(@"Replace existing license?",
        @"A Quorlen 3 license file already exists on this Mac. Replace it with the selected backup?",
        @[ @"Replace", @"Cancel" ]);
}

}

@implementation AppDelegate (LicenceRestore)

- (void)restoreLicense:(id)sender
{
    NSURL *backup = chooseBackup();
    if (!backup) {
        return;
    }
    NSString *destination = [self licensePath];
    if ([[NSFileManager defaultManager] fileExistsAtPath:destination] && !confirmReplacement()) {
        return;
    }

    [self appendLog:[NSString stringWithFormat:@"Restoring license from: %@", [backup path]]];
    if ([self restoreLicenseFromZip:[backup path] toPath:destination]) {
        [self appendLog:[NSString stringWithFormat:@"License restored: %@", destination]];
        [self showSimpleAlertWithTitle:@"License restored." message:@"The Quorlen 3 license file has been restored."];
    } else {
        [self appendLog:@"License restore failed."];
        NSString *cause = @"The selected backup did not contain a .licence file or could not be restored.";
        [self showSimpleAlertWithTitle:@"License was not restored." message:cause];
    }
    [self updateDetectionStatus];
}

- (BOOL)restoreLicenseFromZip:(NSString *)archive toPath:(NSString *)destination
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSString *unpacked = [NSTemporaryDirectory() stringByAppendingPathComponent:licenceRestoreFolderName()];
    @try {
        [fileManager createDirectoryAtPath:unpacked withIntermediateDirectories:YES attributes:nil error:nullptr];
        const int status = runArchiver(@[ @"-x", @"-k", archive, unpacked ]);
        NSString *licence = status == 0 ? [self findLicenseFileUnderPath:unpacked] : nil;
        if ([licence length] == 0) {
            [fileManager removeItemAtPath:unpacked error:nullptr];
            return NO;
        }

        [fileManager createDirectoryAtPath:[destination stringByDeletingLastPathComponent]
               withIntermediateDirectories:YES
                                attributes:nil
                                     error:nullptr];
        // Copying onto an existing file fails, so this removes it first. If the copy then fails, only the archive has
        // the licence.
        if ([fileManager fileExistsAtPath:destination]) {
            [fileManager removeItemAtPath:destination error:nullptr];
        }
        NSError *error = nil;
        const BOOL copied = [fileManager copyItemAtPath:licence toPath:destination error:&error];
        if (!copied) {
            NSString *reason = failureReason([error localizedDescription]);
            [self appendLog:[NSString stringWithFormat:@"License copy error: %@", reason]];
        }
        [fileManager removeItemAtPath:unpacked error:nullptr];
        return copied;
    } @catch (NSException *exception) {
        NSString *reason = failureReason([exception reason]);
        [self appendLog:[NSString stringWithFormat:@"License restore skipped: %@", reason]];
        [fileManager removeItemAtPath:unpacked error:nullptr];
        return NO;
    }
}

- (NSString *)findLicenseFileUnderPath:(NSString *)root
{
    NSString *licenceFileName = nsString(known_locations::licenceFileName);
    NSDirectoryEnumerator *entries = [[NSFileManager defaultManager] enumeratorAtPath:root];
    while (NSString *entry = [entries nextObject]) {
        if ([[entry lastPathComponent] isEqualToString:licenceFileName]) {
            return [root stringByAppendingPathComponent:entry];
        }
    }
    return nil;
}

- (void)showSimpleAlertWithTitle:(NSString *)title message:(NSString *)message
{
    runModalAlert(title ?: @"", message ?: @"", @[ @"OK" ]);
}

@end
