/// Windows.
#pragma once

#import <AppKit/NSGraphics.h>
#import <AppKit/NSView.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) {
    NSWindowStyleMaskTitled = 1 << 0,
    NSWindowStyleMaskClosable = 1 << 1,
    NSWindowStyleMaskMiniaturizable = 1 << 2,
};

typedef NSInteger NSModalResponse;
static const NSModalResponse NSModalResponseOK API_AVAILABLE(macos(10.9)) = 1;

@interface NSWindow : NSResponder

- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;

@property (copy) NSString *title;
@property (nullable, strong) __kindof NSView *contentView;
@property (getter=isReleasedWhenClosed) BOOL releasedWhenClosed;

- (void)center;
- (void)makeKeyAndOrderFront:(nullable id)sender;

@end

// From NSWindowRestoration.h.
@interface NSWindow (NSUserInterfaceRestoration)

@property (getter=isRestorable) BOOL restorable API_AVAILABLE(macos(10.7));

@end

NS_ASSUME_NONNULL_END
