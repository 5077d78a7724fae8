/// What the application tells its delegate.
#pragma once

#import <objc/NSObject.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSNotification : NSObject

@end

NS_ASSUME_NONNULL_END
