/// Scrolling.
#pragma once

#import <AppKit/NSView.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSUInteger, NSBorderType) {
    NSBezelBorder = 2,
};

@interface NSScrollView : NSView

@property (nullable, strong) __kindof NSView *documentView;
@property NSBorderType borderType;
@property BOOL hasVerticalScroller;

@end

NS_ASSUME_NONNULL_END
