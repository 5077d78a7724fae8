/// The platform, under its own names. Every Objective-C++ file of the product imports this header and no other of the
/// platform's.
#pragma once

#if defined(__APPLE__)
#import <Cocoa/Cocoa.h>
#else
#import "platform/gnustep/AppKitAdditions.h"
#endif
