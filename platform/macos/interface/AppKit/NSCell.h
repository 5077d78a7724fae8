/// What a control draws with.
#pragma once

#import <AppKit/NSParagraphStyle.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSUInteger, NSImageScaling) {
    NSImageScaleProportionallyUpOrDown = 3,
};

@interface NSCell : NSObject

@property NSLineBreakMode lineBreakMode;

@end

NS_ASSUME_NONNULL_END
