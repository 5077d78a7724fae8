/// The platform's umbrella header, as on a Mac: Foundation and AppKit.
///
/// These headers replace the SDK's when Debian builds the Mac app. A Mac does not use them. They declare only what the
/// product uses. Each of the other three says how to add a declaration.
#pragma once

#import <Foundation/Foundation.h>

#import <AppKit/AppKit.h>
