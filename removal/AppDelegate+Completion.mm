#import "removal/AppDelegate+Completion.h"

#import "app/AppDelegate+ActivityLog.h"
#import "app/OutputFiles.hpp"
#import "removal/AppDelegate+CleanupScript.h"
#import "removal/PrivilegedRun.hpp"
#import "ui/ModalAlert.hpp"

namespace
{
/// Restarts after a second, so that the tool can quit first. It is detached and silent, so that the privileged call
/// that starts it returns at once.
NSString *const restartCommand = @"/bin/sh -c '/bin/sleep 1; /sbin/shutdown -r now' >/dev/null 2>&1 &";
}

@implementation AppDelegate (Completion)

- (void)writeRemovalLogToDesktop
{
    NSString *desktop = desktopFolder();
    NSString *path = [desktop stringByAppendingPathComponent:removalLogFileName()];
    [[[self logView] string] writeToFile:path atomically:YES encoding:NSUTF8StringEncoding error:nullptr];
}

- (void)showCompletionWithSuccess:(BOOL)success
{
    if (!success) {
        runModalAlert(@"Quorlen 3 removal did not complete.",
            @"Please contact Vendrel Support if the problem continues.", @[ @"OK" ]);
        return;
    }
    if (runModalAlert(@"Quorlen 3 has been removed successfully.", @"A restart is recommended to complete cleanup.",
            @[ @"Restart Now", @"Restart Later" ])) {
        [self restartNow];
    }
}

- (void)restartNow
{
    const auto outcome = runWithAdministratorPrivileges([self appleScriptQuotedString:restartCommand]);
    if (outcome.succeeded) {
        [self appendLog:@"Restart requested. Closing Quorlen 3 Removal Tool before restart."];
        [NSApp terminate:nil];
    } else {
        [self appendLog:[NSString stringWithFormat:@"Restart request failed: %@", outcome.errorText]];
    }
}

@end
