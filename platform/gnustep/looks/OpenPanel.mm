// GNUstep's open panel shows no message, uses the prompt as the label of the name field, does not accept the typed path
// of a file, and is drawn too low when it opens for the second time.
// This file is unnecessary when GNUstep's panel shows its title, message and prompt as a Mac's does, and a file can be
// typed.
#import <AppKit/AppKit.h>

#import "platform/gnustep/looks/ButtonMetrics.hpp"
#import "platform/gnustep/Swizzling.hpp"

// The methods below replace GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

namespace
{

constexpr NSSize contentSize { 720, 420 };
constexpr CGFloat margin = 20;
constexpr CGFloat gap = 12;
constexpr CGFloat messageHeight = 18;
constexpr CGFloat nameHeight = 22;
constexpr CGFloat bottomHeight = margin + pushButtonHeight + gap + nameHeight + gap;
/// Wide enough for a file name with date and time.
constexpr CGFloat leastColumnWidth = 330;

}

/// Draws the pictures of folders and files.
@interface FilePictures : NSObject
@end

@implementation FilePictures

+ (void)drawFolder:(NSCustomImageRep *)picture
{
    [[NSColor colorWithCalibratedRed:0.36 green:0.66 blue:0.90 alpha:1] set];
    [[NSBezierPath bezierPathWithRoundedRect:NSMakeRect(1, 6, 7, 7) xRadius:1.5 yRadius:1.5] fill];
    [[NSBezierPath bezierPathWithRoundedRect:NSMakeRect(1, 2, 14, 9.5) xRadius:1.5 yRadius:1.5] fill];
}

+ (void)drawFile:(NSCustomImageRep *)picture
{
    NSBezierPath *sheet = [NSBezierPath bezierPathWithRect:NSMakeRect(3.5, 1.5, 9, 12)];
    [[NSColor whiteColor] set];
    [sheet fill];
    [[NSColor grayColor] set];
    [sheet stroke];
}

/// Makes a picture that one of the methods above draws. The caller owns it.
+ (NSImage *)newPictureDrawnBy:(SEL)method
{
    NSImage *image = [[NSImage alloc] initWithSize:NSMakeSize(16, 15)];
    [image addRepresentation:[[[NSCustomImageRep alloc] initWithDrawSelector:method delegate:self] autorelease]];
    return image;
}

@end

@interface NSWorkspace (OpenPanel)
@end

@implementation NSWorkspace (OpenPanel)

/// The picture of the file or folder at a path.
- (NSImage *)iconForFile:(NSString *)path
{
    static NSImage *const folder = [FilePictures newPictureDrawnBy:@selector(drawFolder:)];
    static NSImage *const file = [FilePictures newPictureDrawnBy:@selector(drawFile:)];
    BOOL isFolder = NO;
    [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isFolder];
    return isFolder ? folder : file;
}

@end

/// GNUstep's own methods, which no header declares.
@interface NSSavePanel (GNUstep)
/// Gives the panel the settings of a new one, and the folder that the last panel showed.
- (void)_resetDefaults;
/// Whether files of that extension may be chosen.
- (BOOL)_shouldShowExtension:(NSString *)extension;
@end

@interface NSSavePanel (OpenPanel)
@end

@implementation NSSavePanel (OpenPanel)

/// The title of the window. GNUstep also shows it where the message belongs.
- (void)setTitle:(NSString *)title
{
    [super setTitle:title];
}

- (NSString *)title
{
    return [super title];
}

/// The sentence above the files. GNUstep shows none.
- (void)setMessage:(NSString *)message
{
    [_titleField setStringValue:message ?: @""];
}

- (NSString *)message
{
    return [_titleField stringValue];
}

/// The title of the confirming button. GNUstep uses the prompt as the label of the name field.
- (void)setPrompt:(NSString *)prompt
{
    [_okButton setTitle:prompt];
    const CGFloat width = pushButtonWidth(_okButton);
    const CGFloat left = NSWidth([_bottomView bounds]) - margin - width;
    [_okButton setFrame:NSMakeRect(left, margin, width, pushButtonHeight)];
    [[_bottomView viewWithTag:NSFileHandlingPanelCancelButton]
        setFrame:NSMakeRect(left - gap - leastPushButtonWidth, margin, leastPushButtonWidth, pushButtonHeight)];
}

- (NSString *)prompt
{
    return [_okButton title];
}

/// Sets the number of columns so that whole names fit. GNUstep calls this when the size of the panel changes.
- (void)_windowResized:(NSNotification *)notification
{
    [_browser setMaxVisibleColumns:static_cast<NSInteger>(NSWidth([_browser frame]) / leastColumnWidth)];
}

/// Lays out a new panel: the message, the files, the name field and the buttons.
- (void)layOut
{
    [self setContentSize:contentSize];
    const CGFloat width = contentSize.width - 2 * margin;
    const CGFloat topHeight = contentSize.height - bottomHeight;
    [_topView setFrame:NSMakeRect(0, bottomHeight, contentSize.width, topHeight)];
    [_topView setBoundsOrigin:NSZeroPoint];
    [_bottomView setFrame:NSMakeRect(0, 0, contentSize.width, bottomHeight)];

    for (NSView *view in [_topView subviews]) {
        [view setHidden:view != _titleField && view != _browser];
    }
    [_titleField setFont:[NSFont systemFontOfSize:13]];
    [_titleField setAutoresizingMask:NSViewWidthSizable | NSViewMinYMargin];
    [_titleField setFrame:NSMakeRect(margin, topHeight - margin - messageHeight, width, messageHeight)];
    [_browser setTitled:NO];
    [_browser setFrame:NSMakeRect(margin, 0, width, topHeight - margin - messageHeight - gap)];
    [self _windowResized:nil];

    [_form setFrame:NSMakeRect(margin, margin + pushButtonHeight + gap, width, nameHeight)];
    [[_bottomView viewWithTag:NSFileHandlingPanelDiskButton] setHidden:YES];
    [[_bottomView viewWithTag:NSFileHandlingPanelDiskEjectButton] setHidden:YES];
    NSButton *home = [_bottomView viewWithTag:NSFileHandlingPanelHomeButton];
    [home setTitle:@"Home"];
    [home setImagePosition:NSNoImage];
    [home setAutoresizingMask:NSViewMaxXMargin];
    [home setFrame:NSMakeRect(margin, margin, leastPushButtonWidth, pushButtonHeight)];
    [_okButton setImagePosition:NSNoImage];
}

@end

@interface NSOpenPanel (OpenPanel)
@end

@implementation NSOpenPanel (OpenPanel)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(controlTextDidChange:), @selector(controlTextDidChangeToFile:));
    swizzleInstanceMethod(self, @selector(ok:), @selector(confirmTypedFile:));
}

/// A new panel for each call, as on a Mac. GNUstep shares one panel, and draws it too low from its second opening on.
+ (NSOpenPanel *)openPanel
{
    NSOpenPanel *panel = [[[self alloc] init] autorelease];
    [panel layOut];
    [panel _resetDefaults];
    [panel setMessage:@""];
    [panel setPrompt:@"Open"];
    return panel;
}

/// The file whose whole path is in the name field. Nil if there is no such file or it may not be chosen.
- (NSString *)typedFile
{
    NSString *typed = [[_form currentEditor] string] ?: [[_form cellAtIndex:0] stringValue];
    NSString *path = [typed stringByStandardizingPath];
    BOOL isFolder = NO;
    const bool isFile = [path isAbsolutePath] &&
        [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isFolder] && !isFolder;
    return isFile && [self _shouldShowExtension:[path pathExtension]] ? path : nil;
}

/// Replaces `controlTextDidChange:`. GNUstep follows a typed path through the folders, but does not enable the
/// confirming button for the whole path of a file.
- (void)controlTextDidChangeToFile:(NSNotification *)notification
{
    [self controlTextDidChangeToFile:notification];
    if ([self typedFile]) {
        [_okButton setEnabled:YES];
    }
}

/// Replaces `ok:`. Selects the file whose whole path was typed, then confirms.
- (void)confirmTypedFile:(id)sender
{
    if (NSString *path = [self typedFile]) {
        [_form abortEditing];
        [_browser setPath:path];
        [[_form cellAtIndex:0] setStringValue:[path lastPathComponent]];
    }
    [self confirmTypedFile:sender];
}

@end
