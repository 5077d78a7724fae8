#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSServicesManager.h>

#import "platform/gnustep/Appearance.h"
#import "platform/gnustep/MethodExchange.h"

#include <fcntl.h>
#include <unistd.h>

// The override of GNUstep's method below is meant.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

// gnustep-base declares it in no header.
extern "C" const char *GSPathHandling(const char *mode);

/// Opens /dev/null in the place of each standard stream that is closed. Otherwise the connection to the X server, for
/// one, would take its number and be handed to every child as a standard stream.
static void fillStandardStreams()
{
    int opened = 0;
    while (opened >= 0 && opened <= STDERR_FILENO) {
        opened = open("/dev/null", O_RDWR);
    }
    if (opened > STDERR_FILENO) {
        close(opened);
    }
}

@interface NSApplication (Startup)
@end

@implementation NSApplication (Startup)

+ (void)load
{
    fillStandardStreams();
    // Before the first path is made. By default GNUstep takes a backslash in a path for a separator, as on Windows.
    GSPathHandling("unix");
    exchangeInstanceMethods(
        object_getClass(self), @selector(sharedApplication), @selector(sharedApplicationWithDefaults));
}

/// In the place of `sharedApplication`: what GNUstep reads while the application object is made is settled before.
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
/// GNUstep's own, which speaks with the daemon: see below.
+ (NSNotificationCenter *)centerOfDaemon;
@end

/// Notifications within this program, except those that somebody else must post.
@interface LocalNotificationCenter : NSNotificationCenter
@end

@implementation LocalNotificationCenter

/// The first selection of a text starts GNUstep's pasteboard server, and the program stands still until that server
/// says that it is there, or for five seconds.
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
    exchangeInstanceMethods(object_getClass(self), @selector(defaultCenter), @selector(centerOfDaemon));
}

/// In the place of `defaultCenter`. GNUstep's workspace tells every other GNUstep program of this one's start and end,
/// and for that it starts a daemon, gdnc, which outlives the program. Nothing here listens to others or has anything to
/// tell them, so notifications stay within the program.
+ (NSNotificationCenter *)centerOfDaemon
{
    static NSNotificationCenter *center = [[LocalNotificationCenter alloc] init];
    return center;
}

@end

@implementation GSServicesManager (NoServices)

/// GNUstep's Services menu, of which this program has none. Its manager would open a port at which other programs can
/// give this one orders (to open files, to quit), and wake it again and again to look for new services.
+ (GSServicesManager *)newWithApplication:(NSApplication *)application
{
    return nil;
}

@end
