/// What went wrong, as an exception.
#pragma once

#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

__attribute__((objc_exception))
@interface NSException : NSObject

@property (nullable, readonly, copy) NSString *reason;

@end

NS_ASSUME_NONNULL_END
