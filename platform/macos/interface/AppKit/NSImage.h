/// Pictures.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSString *NSImageName;

@interface NSImage : NSObject

+ (nullable NSImage *)imageNamed:(NSImageName)name;

@end

NS_ASSUME_NONNULL_END
