/// Moments.
#pragma once

#import <objc/NSObject.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSDate : NSObject

+ (instancetype)date;

@end

NS_ASSUME_NONNULL_END
