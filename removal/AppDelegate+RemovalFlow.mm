#import "removal/AppDelegate+RemovalFlow.h"

#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+DetectionStatus.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "licence/AppDelegate+LicenceBackup.h"
#import "removal/AppDelegate+CleanupScript.h"
#import "removal/AppDelegate+Completion.h"
#import "removal/PrivilegedRun.hpp"
#import "ui/ModalAlert.hpp"

namespace
{

bool confirmRemoval()
{
    return runModalAlert(@"Remove Quorlen 3?", @"This tool removes Quorlen 3 and related support files from this Mac.",
        @[ @"Remove Quorlen 3", @"Cancel" ]);
}

bool confirmOverride()
{
    return runModalAlert(@"Run cleanup anyway?",
        @"Quorlen 3 was not detected in the standard locations. Continue only if Vendrel Support directed you to run cleanup.",
        @[ @"Run Cleanup", @"Cancel" ]);
}

}

@implementation AppDelegate (RemovalFlow)

- (void)removeQuorlen3:(id)sender
{
    [self beginRemovalWithOverride:NO];
}

- (void)overrideRemoveQuorlen3:(id)sender
{
    [self beginRemovalWithOverride:YES];
}

- (void)beginRemovalWithOverride:(BOOL)override
{
    // A fresh scan decides, not the result of the last one.
    const bool present = [[self existingQuorlenPaths] count] > 0;
    if (!override && !present) {
        runModalAlert(@"Quorlen 3 was not detected.",
            @"Cleanup is disabled because no Quorlen 3 files were found in the standard locations.", @[ @"OK" ]);
        [self updateDetectionStatus];
        return;
    }
    if (!(override ? confirmOverride() : confirmRemoval())) {
        return;
    }

    [[self removeButton] setEnabled:NO];
    [[self overrideButton] setEnabled:NO];
    [self appendLog:override ? @"Starting override cleanup..." : @"Starting Quorlen 3 removal..."];
    // Before the administrator prompt, so that the archive exists even if the user then cancels.
    [self backupLicenceIfPresent];

    const auto outcome = runWithAdministratorPrivileges([self appleScriptQuotedString:[self cleanupShellScript]]);
    if (outcome.succeeded) {
        [self appendLog:@"Quorlen 3 removal completed."];
        [self writeRemovalLogToDesktop];
    } else {
        [self appendLog:[NSString stringWithFormat:@"Removal encountered an error: %@", outcome.errorText]];
    }
    [self showCompletionWithSuccess:outcome.succeeded];

    [[self overrideButton] setEnabled:YES];
    [self updateDetectionStatus];
}

@end
