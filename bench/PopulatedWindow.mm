/// The tool's window and nothing more: the same views as the tool's, put up by the same calls of AppKit, with no
/// detection, no event monitor and no actions. What it costs above the bare window is what AppKit takes to show them.
#import "app/AppDelegate.h"
#import "platform/Retained.hpp"
#import "ui/AppDelegate+MainWindow.h"

@interface PopulatedWindow : NSObject <NSApplicationDelegate> {
    Retained<AppDelegate> _controller;
}
@end

@implementation PopulatedWindow

- (void)applicationDidFinishLaunching:(NSNotification *)notification
{
    _controller = adopt([[AppDelegate alloc] init]);
    [_controller.get() buildWindow];
}

@end

int main(int argc, const char *argv[])
{
    @autoreleasepool {
        const auto application = Retained<NSApplication>::sharing([NSApplication sharedApplication]);
        const auto delegate = adopt([[PopulatedWindow alloc] init]);
        [application.get() setDelegate:delegate.get()];
        return NSApplicationMain(argc, argv);
    }
}
