/// The door to the platform, as on a Mac: Foundation and AppKit.
///
/// The headers here stand in for the SDK's own when Debian builds the Mac app; a Mac leaves them aside. They declare
/// what the product uses and no more. Each of the other three says how to add a declaration.
#pragma once

#import <Foundation/Foundation.h>

#import <AppKit/AppKit.h>
