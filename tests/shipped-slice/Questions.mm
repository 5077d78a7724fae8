// A bundle that GNUstep loads into the running slice. With "-AskMenu YES" it writes the items of the menu bar in four
// states of the tool, the text that "Copy" puts on the pasteboard, and the effect of each item on an alert. Otherwise
// it tests what no user can reach: the public methods that the tool itself does not call, and the controller's
// destruction, before which the process normally ends.
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

void writeItems(NSMenu *menu)
{
    [menu update]; // As when it opens: an item is enabled if an object handles its action.
    for (NSMenuItem *item in [menu itemArray]) {
        NSMenu *submenu = [item submenu];
        NSString *action = submenu ? @"" : NSStringFromSelector([item action]) ?: @"";
        NSString *target = submenu || ![item target] ? @"" : @"with a target: ";
        std::cout << [[NSString stringWithFormat:@"%@%@|%@|%@|%lx|%d\n", target, [item title], action,
            [item keyEquivalent], [item keyEquivalentModifierMask], [item isEnabled]] UTF8String];
        if (submenu) {
            writeItems(submenu);
        }
    }
}

void write(const char *state)
{
    std::cout << "\n# " << state << '\n';
    writeItems([NSApp mainMenu]);
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
    // The run loop starts after the launch.
    const BOOL menu = [[NSUserDefaults standardUserDefaults] boolForKey:@"AskMenu"];
    [self performSelector:menu ? @selector(askMenu) : @selector(askController) withObject:nil afterDelay:0];
    return self;
}

- (void)askMenu
{
    AppDelegate *controller = [NSApp delegate];
    NSTextView *log = [controller logView];
    [[log window] makeFirstResponder:nil];
    write("nothing has the keyboard");
    [[log window] makeFirstResponder:log];
    [log setSelectedRange:NSMakeRange(0, 0)];
    write("the log has the keyboard");
    [log setSelectedRange:[[log string] lineRangeForRange:NSMakeRange(0, 1)]];
    write("a line of the log is selected");

    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
    [pasteboard setString:@"before" forType:NSStringPboardType];
    NSMenu *edit = [[[NSApp mainMenu] itemWithTitle:@"Edit"] submenu];
    [edit performActionForItemAtIndex:[edit indexOfItemWithTitle:@"Copy"]];
    std::cout << "\n# copied\n" << [[pasteboard stringForType:NSStringPboardType] UTF8String];

    [self performSelector:@selector(askMenuAtAlert) withObject:nil afterDelay:0 inModes:@[ NSModalPanelRunLoopMode ]];
    [controller performSelector:@selector(removeQuorlen3:) withObject:nil]; // "Quorlen 3 was not detected."
}

- (void)askMenuAtAlert
{
    NSWindow *alert = [NSApp modalWindow];
    write("an alert is open");
    std::cout << "\n# chosen while the alert is open\n";
    for (NSMenuItem *title in [[NSApp mainMenu] itemArray]) {
        for (NSMenuItem *item in [[title submenu] itemArray]) {
            if ([item isEnabled] && [item action] && [item action] != @selector(terminate:)) {
                [[title submenu] performActionForItemAtIndex:[[title submenu] indexOfItem:item]];
                std::cout << [[item title] UTF8String] << (alert == [NSApp modalWindow] ? ": still open" : ": gone")
                          << '\n';
            }
        }
    }
    std::cout.flush();
    std::exit(0);
}

- (void)askController
{
    AppDelegate *controller = [NSApp delegate];
    NSWindow *window = [controller window];
    expect([[window title] isEqualToString:@"Quorlen 3 Removal Tool"] &&
            [[[controller restoreLicenseButton] title] isEqualToString:@"Restore License"] &&
            ![controller lastBackupPath],
        "the controller has its window and its button, and made no archive");
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
