/// The part of the text view that is older than it.
#pragma once

#import <AppKit/NSView.h>

NS_ASSUME_NONNULL_BEGIN

@class NSFont;

typedef NS_ENUM(NSInteger, NSTextAlignment) {
    NSTextAlignmentLeft = 0,
};

@interface NSText : NSView

@property (copy) NSString *string;
@property (getter=isEditable) BOOL editable;
@property (getter=isSelectable) BOOL selectable;
@property (nullable, strong) NSFont *font;

- (void)scrollRangeToVisible:(NSRange)range;

@end

NS_ASSUME_NONNULL_END
