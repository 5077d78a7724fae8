// A bundle that GNUstep loads into the running slice. It tests what no user can reach: the public methods that the tool
// itself does not call, and the controller's destruction, before which the process normally ends.
#import "app/AppDelegate.h"
#import "licence/AppDelegate+LicenceRestore.h"
#import "platform/Retained.hpp"
#import "removal/AppDelegate+CleanupScript.h"

#include <cstdlib>
#include <iostream>

namespace
{

void expect(bool holds, const char *fact)
{
    if (!holds) {
        std::cerr << "This does not hold: " << fact << "\n";
        std::exit(1);
    }
}

void sendMouseMoved()
{
    [NSApp sendEvent:[NSEvent mouseEventWithType:NSMouseMoved
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                     eventNumber:0
                                      clickCount:0
                                        pressure:0]];
}

}

@interface Questions : NSObject
@end

@implementation Questions

- (instancetype)init
{
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(ask:)
                                                 name:NSApplicationDidFinishLaunchingNotification
                                               object:nil];
    return self;
}

- (void)ask:(NSNotification *)notification
{
    [self performSelector:@selector(askController)
               withObject:nil
               afterDelay:0]; // The controller gets the notification first.
}

- (void)askController
{
    AppDelegate *controller = [NSApp delegate];
    NSWindow *window = [controller window];
    expect([[window title] isEqualToString:@"Quorlen 3 Removal Tool"], "the controller has its window");
    expect([[[controller restoreLicenseButton] title] isEqualToString:@"Restore License"],
        "the controller has its button");
    expect(![controller lastBackupPath], "no archive was made");
    // By name: no class in this bundle adopts the protocol, so the runtime does not know its @protocol.
    expect([[controller class] conformsToProtocol:NSProtocolFromString(@"NSApplicationDelegate")],
        "the controller's class says that it is an application's delegate");
    expect([[controller shellQuotedString:@"o'neil"] isEqualToString:@"'o'\\''neil'"], "a quotation mark is quoted");

    NSButton *hidden = [[controller overrideButton] retain];
    [hidden setHidden:NO];
    sendMouseMoved();
    expect([hidden isHidden], "the monitor's handler reaches the controller");

    id monitor = [controller modifierMonitor];
    [NSApp setDelegate:nil];
    [window retain];
    const NSUInteger owners = [window retainCount];
    static_cast<void>(adopt(controller)); // The reference of main(), which never returns to release it.
    expect([window retainCount] == owners - 1, "the controller releases its window");
    [hidden setHidden:NO];
    sendMouseMoved();
    expect(![hidden isHidden], "the handler does nothing after the controller's end");
    [NSEvent removeMonitor:monitor]; // This also releases the handler's captures.
    std::exit(0);
}

@end
