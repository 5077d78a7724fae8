/// The script runner.
#pragma once

#import <Foundation/NSDictionary.h>
#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@class NSAppleEventDescriptor;

@interface NSAppleScript : NSObject

- (nullable instancetype)initWithSource:(NSString *)source;
- (NSAppleEventDescriptor *)executeAndReturnError:(NSDictionary<NSString *, id> *_Nullable *_Nullable)errorInfo;

@end

NS_ASSUME_NONNULL_END
