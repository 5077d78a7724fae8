#import <AppKit/AppKit.h>

#import "platform/gnustep/ChildProcess.hpp"

// This override of GNUstep's method is meant.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSWorkspace (DesktopOpener)

/// Opens a URL with the program that the user's desktop has for it. GNUstep's own first looks for one of its services
/// and, finding none, says so in an alert. The opener goes its own way; what it prints is dropped.
///
/// @return whether the opener was started.
- (BOOL)openURL:(NSURL *)url
{
    if (![url scheme]) {
        return NO;
    }
    return startDetached("/usr/bin/xdg-open", { [[url absoluteString] UTF8String] }) == 0;
}

/// Looks through the user's applications. GNUstep's own runs a tool that writes their list into the user's home, at the
/// first need of a workspace; only its own way of opening files reads that list.
- (void)findApplications
{
}

@end
