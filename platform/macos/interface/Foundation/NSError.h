/// What went wrong, as an object.
#pragma once

#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSError : NSObject

@property (readonly, copy) NSString *localizedDescription;

@end

NS_ASSUME_NONNULL_END
