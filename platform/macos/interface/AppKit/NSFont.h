/// Fonts.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSFont : NSObject

+ (nullable NSFont *)userFixedPitchFontOfSize:(CGFloat)fontSize;
+ (NSFont *)systemFontOfSize:(CGFloat)fontSize;
+ (NSFont *)boldSystemFontOfSize:(CGFloat)fontSize;

@end

NS_ASSUME_NONNULL_END
