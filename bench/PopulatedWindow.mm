/// The tool's window alone: the same views, made by the same calls of AppKit, without detection, event monitor and
/// actions. Its time and memory above those of the bare window are what AppKit takes to show the views.
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
