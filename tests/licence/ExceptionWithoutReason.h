/// An NSException whose reason is nil.
#pragma once

#import <Cocoa/Cocoa.h>

/// Debian's NSException makes up a reason if it is given none. This class does not.
@interface ExceptionWithoutReason : NSException
@end
