/// Text fields.
#pragma once

#import <AppKit/NSControl.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSTextField : NSControl

@property BOOL drawsBackground;
@property (getter=isBezeled) BOOL bezeled;
@property (getter=isEditable) BOOL editable;
@property (getter=isSelectable) BOOL selectable;

@end

NS_ASSUME_NONNULL_END
