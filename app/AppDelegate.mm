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
    if ([self modifierMonitor] == nil) {
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
    // The handler of a monitor that outlives the controller must find nobody from here on.
    _liveness.reset();

    // In the reverse of the declared order.
    letGo(_modifierMonitor);
    letGo(_lastBackupPath);
    letGo(_logView);
    letGo(_restoreLicenseButton);
    letGo(_overrideButton);
    letGo(_removeButton);
    letGo(_statusLabel);
    letGo(_window);
    [super dealloc];
}

@end
