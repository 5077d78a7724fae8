/// Child processes.
#pragma once

#import <Foundation/NSArray.h>
#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSTask : NSObject

@property (nullable, copy) NSArray<NSString *> *arguments;
@property (readonly) int terminationStatus;

@end

@interface NSTask (NSTaskConveniences)

- (void)waitUntilExit;

@end

@interface NSTask (NSDeprecated)

@property (nullable, copy) NSString *launchPath API_DEPRECATED("executableURL", macos(10.0, API_TO_BE_DEPRECATED));
- (void)launch API_DEPRECATED("launchAndReturnError:", macos(10.0, API_TO_BE_DEPRECATED));

@end

NS_ASSUME_NONNULL_END
