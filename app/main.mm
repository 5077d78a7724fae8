#import "app/AppDelegate.h"
#import "platform/Retained.hpp"

int main(int argc, const char *argv[])
{
    @autoreleasepool {
        const auto application = Retained<NSApplication>::sharing([NSApplication sharedApplication]);
        // The application's own reference to its delegate is weak: this is the only strong one.
        const auto controller = adopt([[AppDelegate alloc] init]);
        [application.get() setDelegate:controller.get()];
        return NSApplicationMain(argc, argv);
    }
}
