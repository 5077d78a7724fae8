/// Gives the Mac app its menu bar, and with it ⌘Q, ⌘W, ⌘M and ⌘H everywhere, ⌘C and ⌘A in the log, and ⌘V in the open
/// panel. The product's folders (app/, ui/ and so on) do not use the menu bar and work without it.
#import "platform/Retained.hpp"

#import <Cocoa/Cocoa.h>
#include <initializer_list>

// A misspelt selector would make an item that is always disabled.
#pragma clang diagnostic error "-Wundeclared-selector"

namespace
{

constexpr auto commandKey = NSEventModifierFlagCommand;
constexpr auto commandAndOptionKeys = commandKey | NSEventModifierFlagOption;

/// An item of a menu. It has no target, so AppKit searches for an object that handles the action, from the first
/// responder up to the application. AppKit disables the item while no object handles the action.
struct Item {
    NSString *title; // nil in a separator
    SEL action = nullptr;
    NSString *key = @"";
    NSEventModifierFlags modifiers = commandKey;
};

void addMenu(NSMenu *menuBar, NSString *title, std::initializer_list<Item> items)
{
    const auto menu = adopt([[NSMenu alloc] initWithTitle:title]);
    for (const auto &item : items) {
        if (item.title) {
            NSMenuItem *added = [menu.get() addItemWithTitle:item.title action:item.action keyEquivalent:item.key];
            [added setKeyEquivalentModifierMask:item.modifiers];
        } else {
            [menu.get() addItem:[NSMenuItem separatorItem]];
        }
    }
    [[menuBar addItemWithTitle:title action:nil keyEquivalent:@""] setSubmenu:menu.get()];
}

void setUpMenuBar()
{
    NSString *app = [[NSProcessInfo processInfo] processName];
    const Item separator { nil };
    const auto menuBar = adopt([[NSMenu alloc] initWithTitle:@""]);
    addMenu(menuBar.get(), app,
        {
            { [@"About " stringByAppendingString:app], @selector(orderFrontStandardAboutPanel:) },
            separator,
            { [@"Hide " stringByAppendingString:app], @selector(hide:), @"h" },
            { @"Hide Others", @selector(hideOtherApplications:), @"h", commandAndOptionKeys },
            { @"Show All", @selector(unhideAllApplications:) },
            separator,
            { [@"Quit " stringByAppendingString:app], @selector(terminate:), @"q" },
        });
    addMenu(menuBar.get(), @"Edit",
        {
            { @"Cut", @selector(cut:), @"x" },
            { @"Copy", @selector(copy:), @"c" },
            { @"Paste", @selector(paste:), @"v" },
            { @"Select All", @selector(selectAll:), @"a" },
        });
    addMenu(menuBar.get(), @"Window",
        {
            { @"Minimize", @selector(performMiniaturize:), @"m" },
            { @"Zoom", @selector(performZoom:) },
            { @"Close", @selector(performClose:), @"w" },
        });
    [NSApp setMainMenu:menuBar.get()];
}

}

@interface NSApplication (MenuBar)
@end

@implementation NSApplication (MenuBar)

/// The runtime calls this before main(). By then Foundation is loaded and initialized, and no application object
/// exists. The notification center keeps the observer until the process ends. The observer is a block,
/// because the center would initialize this class too early if the class were the observer.
+ (void)load
{
    [[NSNotificationCenter defaultCenter] addObserverForName:NSApplicationWillFinishLaunchingNotification
                                                      object:nil
                                                       queue:nil
                                                  usingBlock:^(NSNotification *) { setUpMenuBar(); }];
}

@end
