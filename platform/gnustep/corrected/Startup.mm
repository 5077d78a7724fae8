// Unlike a Mac, GNUstep shows an icon tile at the start, starts daemons, opens a port for other programs, and treats a
// backslash in a path as a separator. This file is unnecessary when GNUstep does none of these.
#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSServicesManager.h>

#import "platform/gnustep/looks/Appearance.h"
#import "platform/gnustep/Swizzling.hpp"

#include <fcntl.h>
#include <unistd.h>

// A method below replaces GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

// gnustep-base declares it in no header.
extern "C" const char *GSPathHandling(const char *mode);

namespace
{

/// Opens /dev/null for each standard stream that is closed. Otherwise the connection to the X server would take the
/// stream's number, and every child process would get it as a standard stream.
void fillStandardStreams()
{
    int opened = 0;
    while (opened >= 0 && opened <= STDERR_FILENO) {
        opened = open("/dev/null", O_RDWR);
    }
    if (opened > STDERR_FILENO) {
        close(opened);
    }
}

}

@interface NSApplication (Startup)
@end

@implementation NSApplication (Startup)

+ (void)load
{
    fillStandardStreams();
    // Before the first path is made.
    GSPathHandling("unix");
    swizzleInstanceMethod(
        object_getClass(self), @selector(sharedApplication), @selector(sharedApplicationWithDefaults));
}

/// Replaces `sharedApplication`. Sets what GNUstep reads while it makes the application object.
+ (NSApplication *)sharedApplicationWithDefaults
{
    if (!NSApp) {
        [[NSUserDefaults standardUserDefaults] registerDefaults:@{
            @"GSSuppressAppIcon" : @(YES), // A Mac shows no tile for a running application on the desktop,
            @"NSScrollViewInterfaceStyle" : @"NSMacintoshInterfaceStyle", // and has its scrollers on the right.
        }];
        showInLightTheme();
    }
    return [self sharedApplicationWithDefaults];
}

@end

@interface NSDistributedNotificationCenter (NoDaemon)
/// GNUstep's own center, which talks to its daemon.
+ (NSNotificationCenter *)centerOfDaemon;
@end

/// Keeps notifications within this program, except those that another program must post.
@interface LocalNotificationCenter : NSNotificationCenter
@end

@implementation LocalNotificationCenter

/// The first selection of a text starts GNUstep's pasteboard server. The program blocks until the server says that it
/// runs, or for five seconds, so that notification must arrive.
- (void)addObserver:(id)observer selector:(SEL)selector name:(NSString *)name object:(id)object
{
    if ([name hasPrefix:@"GSStartup-"]) {
        NSNotificationCenter *center = [NSDistributedNotificationCenter centerOfDaemon];
        [center addObserver:observer selector:selector name:name object:object];
    } else {
        [super addObserver:observer selector:selector name:name object:object];
    }
}

@end

@implementation NSDistributedNotificationCenter (NoDaemon)

+ (void)load
{
    swizzleInstanceMethod(object_getClass(self), @selector(defaultCenter), @selector(centerOfDaemon));
}

/// Replaces `defaultCenter`. GNUstep's workspace announces the start and the end of this program to other GNUstep
/// programs, and starts a daemon for that, gdnc, which outlives the program. This program neither sends nor needs such
/// notifications.
+ (NSNotificationCenter *)centerOfDaemon
{
    static NSNotificationCenter *center = [[LocalNotificationCenter alloc] init];
    return center;
}

@end

@implementation GSServicesManager (NoServices)

/// The manager of GNUstep's Services menu; this program has no such menu. The manager would open a port through which
/// other programs can make this one open files or quit. It would also wake regularly to look for new services.
+ (GSServicesManager *)newWithApplication:(NSApplication *)application
{
    return nil;
}

@end
