/// Pictures on screen.
#pragma once

#import <AppKit/NSControl.h>
#import <AppKit/NSImage.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSImageView : NSControl

@property (nullable, strong) NSImage *image;
@property NSImageScaling imageScaling;

@end

NS_ASSUME_NONNULL_END
