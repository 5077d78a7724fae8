// A bundle that GNUstep loads into the running slice. It prints the items of the menu bar in four states of the tool,
// the text that "Copy" puts on the pasteboard, and the effect of each item on an alert.
#import <AppKit/AppKit.h>

#import "app/AppDelegate.h"

#include <cstdlib>
#include <iostream>

namespace
{

void writeItems(NSMenu *menu)
{
    [menu update]; // As when it opens: an item is enabled if an object handles its action.
    for (NSMenuItem *item in [menu itemArray]) {
        if ([item isSeparatorItem]) {
            std::cout << "-\n";
            continue;
        }
        if ([item target] && ![item hasSubmenu]) {
            std::cout << "with a target: ";
        }
        NSString *action = [item action] && ![item hasSubmenu] ? NSStringFromSelector([item action]) : @"";
        std::cout << [[item title] UTF8String] << '|' << [action UTF8String] << '|' << [[item keyEquivalent] UTF8String]
                  << '|' << std::hex << [item keyEquivalentModifierMask] << std::dec << '|'
                  << ([item isEnabled] ? "enabled" : "disabled") << '\n';
        if ([item hasSubmenu]) {
            writeItems([item submenu]);
        }
    }
}

void write(const char *state)
{
    std::cout << "\n# " << state << '\n';
    writeItems([NSApp mainMenu]);
}

}

@interface MenuQuestions : NSObject
@end

@implementation MenuQuestions

- (instancetype)init
{
    // The run loop starts after the launch.
    [self performSelector:@selector(askMenu) withObject:nil afterDelay:0];
    return self;
}

- (void)askMenu
{
    NSTextView *log = [static_cast<AppDelegate *>([NSApp delegate]) logView];
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
    [[NSApp delegate] performSelector:@selector(removeQuorlen3:) withObject:nil]; // "Quorlen 3 was not detected."
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

@end
