/// The baseline for the time and memory that this AppKit takes: an application with one empty window of the tool's size
/// and style. It is linked with the same platform additions as the tool, so that their effect counts on both sides. See
/// docs/speed.md.
#import "platform/Retained.hpp"
#import <Cocoa/Cocoa.h>

#include "ui/WindowLayout.hpp"

@interface BareWindow : NSObject <NSApplicationDelegate> {
    Retained<NSWindow> _window;
}
@end

@implementation BareWindow

- (void)applicationDidFinishLaunching:(NSNotification *)notification
{
    _window = adopt(
        [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, layout::content.width, layout::content.height)
                                    styleMask:NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask
                                      backing:NSBackingStoreBuffered
                                        defer:NO]);
    [_window.get() setReleasedWhenClosed:NO];
    [_window.get() center];
    [_window.get() makeKeyAndOrderFront:nil];
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)application
{
    return YES;
}

@end

int main(int argc, const char *argv[])
{
    @autoreleasepool {
        const auto application = Retained<NSApplication>::sharing([NSApplication sharedApplication]);
        const auto delegate = adopt([[BareWindow alloc] init]);
        [application.get() setDelegate:delegate.get()];
        return NSApplicationMain(argc, argv);
    }
}
