/// The application's bundle.
#pragma once

#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSBundle : NSObject

@property (class, readonly, strong) NSBundle *mainBundle;

- (nullable id)objectForInfoDictionaryKey:(NSString *)key;

@end

NS_ASSUME_NONNULL_END
