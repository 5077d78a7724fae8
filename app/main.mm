#import "app/AppDelegate.h"
#import "platform/Retained.hpp"

int main(int argc, const char *argv[])
{
    @autoreleasepool {
        const auto application = Retained<NSApplication>::sharing([NSApplication sharedApplication]);
        // The application holds its delegate weakly, so this is the only strong reference.
        const auto controller = adopt([[AppDelegate alloc] init]);
        [application.get() setDelegate:controller.get()];
        return NSApplicationMain(argc, argv);
    }
}
