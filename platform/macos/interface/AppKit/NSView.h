/// Views.
#pragma once

#import <AppKit/NSResponder.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSView : NSResponder

- (instancetype)initWithFrame:(NSRect)frameRect;

@property (getter=isHidden) BOOL hidden;
@property (nullable, copy) NSString *toolTip;

- (void)addSubview:(NSView *)view;

@end

NS_ASSUME_NONNULL_END
