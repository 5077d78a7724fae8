// GNUstep opens a URL by a service of its own, finds none, and says so in an alert.
// This file is unnecessary when GNUstep passes URLs to the desktop's opener.
#import <AppKit/AppKit.h>

#import "platform/gnustep/missing/ChildProcess.hpp"

// The methods below replace GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSWorkspace (DesktopOpener)

/// Opens a URL with the program that the user's desktop has for it. The opener runs on its own, and its output is
/// dropped.
/// @return Whether the opener was started.
- (BOOL)openURL:(NSURL *)url
{
    if (![url scheme]) {
        return NO;
    }
    return startDetached("/usr/bin/xdg-open", { [[url absoluteString] UTF8String] }) == 0;
}

/// Does nothing. GNUstep runs a tool here that writes a list of applications into the user's home, and only GNUstep's
/// own way of opening files reads that list.
- (void)findApplications
{
}

@end
