#import "app/AppDelegate.h"

#import "detection/AppDelegate+DetectionStatus.h"
#import "platform/Retained.hpp"
#import "ui/AppDelegate+MainWindow.h"
#import "ui/AppDelegate+OverrideReveal.h"

@implementation AppDelegate

@synthesize window = _window;
@synthesize statusLabel = _statusLabel;
@synthesize removeButton = _removeButton;
@synthesize overrideButton = _overrideButton;
@synthesize restoreLicenseButton = _restoreLicenseButton;
@synthesize logView = _logView;
@synthesize lastBackupPath = _lastBackupPath;
@synthesize quorlenDetected = _quorlenDetected;
@synthesize modifierMonitor = _modifierMonitor;

- (void)applicationDidFinishLaunching:(NSNotification *)notification
{
    [self buildWindow];
    [self installModifierMonitor];
    [self updateDetectionStatus];
}

- (void)applicationWillTerminate:(NSNotification *)notification
{
    if (![self modifierMonitor]) {
        return;
    }
    [NSEvent removeMonitor:[self modifierMonitor]];
    [self setModifierMonitor:nil];
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)application
{
    return YES;
}

- (void)dealloc
{
    // The handler of a monitor that outlives the controller must find no controller from here on.
    _liveness.reset();

    // In the reverse of the declared order.
    releaseAndClear(_modifierMonitor);
    releaseAndClear(_lastBackupPath);
    releaseAndClear(_logView);
    releaseAndClear(_restoreLicenseButton);
    releaseAndClear(_overrideButton);
    releaseAndClear(_removeButton);
    releaseAndClear(_statusLabel);
    releaseAndClear(_window);
    [super dealloc];
}

@end
