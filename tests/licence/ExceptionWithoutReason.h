/// An exception of the platform's type that gives no reason.
#pragma once

#import <Cocoa/Cocoa.h>

/// Debian's NSException makes up a reason where it was given none; this one doesn't.
@interface ExceptionWithoutReason : NSException
@end
