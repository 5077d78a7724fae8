/// Addresses.
#pragma once

#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSURL : NSObject

+ (nullable instancetype)URLWithString:(NSString *)URLString;

@property (nullable, readonly, copy) NSString *path;

@end

NS_ASSUME_NONNULL_END
