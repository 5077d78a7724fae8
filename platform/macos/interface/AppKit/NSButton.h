/// Buttons.
#pragma once

#import <AppKit/NSButtonCell.h>
#import <AppKit/NSControl.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSButton : NSControl

@property (copy) NSString *title;
@property NSBezelStyle bezelStyle;

@end

NS_ASSUME_NONNULL_END
