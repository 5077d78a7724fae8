/// The declarations that the product uses of AppKit.
///
/// To add a declaration, write it under the name of the file that declares it on a Mac, with Apple's types, nullability
/// and first macOS version, and add its line to tests/macos/interface-facts.txt (a method or property) or
/// tests/macos/InterfaceFacts.mm (anything else). A class or function that the app did not use before also needs a line
/// in platform/macos/stubs/symbols.txt; the link error names it.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

// NSEvent.h
typedef NS_ENUM(NSUInteger, NSEventType) {
    NSEventTypeMouseMoved = 5,
    NSEventTypeKeyDown = 10,
    NSEventTypeFlagsChanged = 12,
};

typedef NS_OPTIONS(unsigned long long, NSEventMask) {
    NSEventMaskMouseMoved = 1ULL << NSEventTypeMouseMoved,
    NSEventMaskKeyDown = 1ULL << NSEventTypeKeyDown,
    NSEventMaskFlagsChanged = 1ULL << NSEventTypeFlagsChanged,
};

typedef NS_OPTIONS(NSUInteger, NSEventModifierFlags) {
    NSEventModifierFlagShift = 1 << 17,
    NSEventModifierFlagOption = 1 << 19,
    NSEventModifierFlagCommand = 1 << 20,
};

@interface NSEvent : NSObject
@property (class, readonly) NSEventModifierFlags modifierFlags API_AVAILABLE(macos(10.6));

+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent *_Nullable (^)(NSEvent *event))block
    API_AVAILABLE(macos(10.6));
+ (void)removeMonitor:(id)eventMonitor API_AVAILABLE(macos(10.6));
@end

// NSFont.h
@interface NSFont : NSObject
+ (nullable NSFont *)userFixedPitchFontOfSize:(CGFloat)fontSize;
+ (NSFont *)systemFontOfSize:(CGFloat)fontSize;
+ (NSFont *)boldSystemFontOfSize:(CGFloat)fontSize;
@end

// NSImage.h
typedef NSString *NSImageName;

@interface NSImage : NSObject
+ (nullable NSImage *)imageNamed:(NSImageName)name;
@end

// NSParagraphStyle.h
typedef NS_ENUM(NSUInteger, NSLineBreakMode) {
    NSLineBreakByWordWrapping = 0,
};

// NSGraphics.h
typedef NS_ENUM(NSUInteger, NSBackingStoreType) {
    NSBackingStoreBuffered = 2,
};

// NSCell.h
typedef NS_ENUM(NSUInteger, NSImageScaling) {
    NSImageScaleProportionallyUpOrDown = 3,
};

@interface NSCell : NSObject
@property NSLineBreakMode lineBreakMode;
@end

// NSButtonCell.h
typedef NS_ENUM(NSUInteger, NSBezelStyle) {
    NSBezelStyleRounded = 1,
    NSBezelStyleCircular = 7,
};

// NSResponder.h
@interface NSResponder : NSObject
@end

// NSMenu.h
@class NSMenuItem;

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString *)title;
- (NSMenuItem *)addItemWithTitle:(NSString *)string action:(nullable SEL)selector keyEquivalent:(NSString *)charCode;
- (void)addItem:(NSMenuItem *)newItem;
@end

// NSMenuItem.h
@interface NSMenuItem : NSObject
@property (nullable, strong) NSMenu *submenu;
@property NSEventModifierFlags keyEquivalentModifierMask;
+ (NSMenuItem *)separatorItem;
@end

// NSApplication.h
@protocol NSApplicationDelegate;

@interface NSApplication : NSResponder
@property (class, readonly, strong) __kindof NSApplication *sharedApplication;
@property (nullable, weak) id<NSApplicationDelegate> delegate;

@property (nullable, strong) NSMenu *mainMenu;
- (void)hide:(nullable id)sender;
- (void)hideOtherApplications:(nullable id)sender;
- (void)unhideAllApplications:(nullable id)sender;
- (void)terminate:(nullable id)sender;
@end

@interface NSApplication (NSStandardAboutPanel)
- (void)orderFrontStandardAboutPanel:(nullable id)sender;
@end

APPKIT_EXTERN __kindof NSApplication *_Null_unspecified NSApp;

@protocol NSApplicationDelegate <NSObject>
@optional
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)sender;
- (void)applicationDidFinishLaunching:(NSNotification *)notification;
- (void)applicationWillTerminate:(NSNotification *)notification;
@end

APPKIT_EXTERN NSNotificationName NSApplicationWillFinishLaunchingNotification;

APPKIT_EXTERN int NSApplicationMain(int argc, const char *_Nonnull argv[_Nonnull]);

// NSView.h
@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frameRect;

@property (getter=isHidden) BOOL hidden;
@property (nullable, copy) NSString *toolTip;

- (void)addSubview:(NSView *)view;
@end

// NSText.h
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
- (void)copy:(nullable id)sender;
- (void)cut:(nullable id)sender;
- (void)paste:(nullable id)sender;
- (void)selectAll:(nullable id)sender;
@end

// NSTextView.h
@interface NSTextView : NSText
@end

// NSScrollView.h
typedef NS_ENUM(NSUInteger, NSBorderType) {
    NSBezelBorder = 2,
};

@interface NSScrollView : NSView
@property (nullable, strong) __kindof NSView *documentView;
@property NSBorderType borderType;
@property BOOL hasVerticalScroller;
@end

// NSControl.h
@interface NSControl : NSView
@property (nullable, weak) id target;
@property (nullable) SEL action;
@property (getter=isEnabled) BOOL enabled;
@property (copy) NSString *stringValue;
@property (nullable, strong) NSFont *font;
@property NSTextAlignment alignment;
@property (nullable, strong) __kindof NSCell *cell;
@end

// NSButton.h
@interface NSButton : NSControl
@property (copy) NSString *title;
@property NSBezelStyle bezelStyle;
@end

// NSTextField.h
@interface NSTextField : NSControl
@property BOOL drawsBackground;
@property (getter=isBezeled) BOOL bezeled;
@property (getter=isEditable) BOOL editable;
@property (getter=isSelectable) BOOL selectable;
@end

// NSImageView.h
@interface NSImageView : NSControl
@property (nullable, strong) NSImage *image;
@property NSImageScaling imageScaling;
@end

// NSWindow.h
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
- (void)performClose:(nullable id)sender;
- (void)performMiniaturize:(nullable id)sender;
- (void)performZoom:(nullable id)sender;
@end

// From NSWindowRestoration.h.
@interface NSWindow (NSUserInterfaceRestoration)
@property (getter=isRestorable) BOOL restorable API_AVAILABLE(macos(10.7));
@end

// NSPanel.h
@interface NSPanel : NSWindow
@end

// NSSavePanel.h
@interface NSSavePanel : NSPanel
@property (nullable, readonly, copy) NSURL *URL;
@property (nullable, copy)
    NSArray<NSString *> *allowedFileTypes API_DEPRECATED("Use -allowedContentTypes instead", macos(10.3, 12.0));
@property (null_resettable, copy) NSString *prompt;
@property (null_resettable, copy) NSString *title;
@property (null_resettable, copy) NSString *message;

- (NSModalResponse)runModal;
@end

// NSOpenPanel.h
@interface NSOpenPanel : NSSavePanel
+ (NSOpenPanel *)openPanel;

@property BOOL canChooseDirectories;
@property BOOL allowsMultipleSelection;
@property BOOL canChooseFiles;
@end

// NSAlert.h
static const NSModalResponse NSAlertFirstButtonReturn = 1000;

@interface NSAlert : NSObject
@property (copy) NSString *messageText;
@property (copy) NSString *informativeText;

- (NSButton *)addButtonWithTitle:(NSString *)title;
- (NSModalResponse)runModal;
@end

// NSWorkspace.h
@interface NSWorkspace : NSObject
@property (class, readonly, strong) NSWorkspace *sharedWorkspace;

- (BOOL)openURL:(NSURL *)url;
@end

NS_ASSUME_NONNULL_END
