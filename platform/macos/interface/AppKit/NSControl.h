/// Controls.
#pragma once

#import <AppKit/NSCell.h>
#import <AppKit/NSText.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSControl : NSView

@property (nullable, weak) id target;
@property (nullable) SEL action;
@property (getter=isEnabled) BOOL enabled;
@property (copy) NSString *stringValue;
@property (nullable, strong) NSFont *font;
@property NSTextAlignment alignment;
@property (nullable, strong) __kindof NSCell *cell;

@end

NS_ASSUME_NONNULL_END
