#import "ui/AppDelegate+MainWindow.h"

#import "app/AppDelegate+ActivityLog.h"
#import "platform/Retained.hpp"
#import "platform/Text.hpp"
#import "ui/AppDelegate+SupportPage.h"
#include "ui/WindowLayout.hpp"

namespace
{

NSRect rectangle(const layout::Frame &frame)
{
    return NSMakeRect(frame.x, frame.y, frame.width, frame.height);
}

Retained<NSWindow> makeWindow()
{
    auto window = adopt([[NSWindow alloc]
        initWithContentRect:rectangle(layout::content)
                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable
                    backing:NSBackingStoreBuffered
                      defer:NO]);
    [window.get() setTitle:nsString(layout::toolName)];
    [window.get() setReleasedWhenClosed:NO];
    [window.get() setRestorable:NO];
    [window.get() center];
    return window;
}

Retained<NSImageView> makeImageView(const layout::Frame &frame, NSImage *image)
{
    auto view = adopt([[NSImageView alloc] initWithFrame:rectangle(frame)]);
    [view.get() setImage:image];
    [view.get() setImageScaling:NSImageScaleProportionallyUpOrDown];
    return view;
}

Retained<NSScrollView> makeLogScrollView()
{
    auto view = adopt([[NSScrollView alloc] initWithFrame:rectangle(layout::log)]);
    [view.get() setHasVerticalScroller:YES];
    [view.get() setBorderType:NSBezelBorder];
    return view;
}

Retained<NSTextView> makeLogView(NSString *firstText)
{
    const layout::Frame bounds { 0, 0, layout::log.width, layout::log.height };
    auto view = adopt([[NSTextView alloc] initWithFrame:rectangle(bounds)]);
    [view.get() setEditable:NO];
    [view.get() setSelectable:YES];
    [view.get() setFont:[NSFont userFixedPitchFontOfSize:layout::logFontSize]];
    [view.get() setString:firstText];
    return view;
}

Retained<NSButton> makeButton(const layout::Button &button, NSBezelStyle bezelStyle, id target, SEL action)
{
    auto view = adopt([[NSButton alloc] initWithFrame:rectangle(button.frame)]);
    [view.get() setTitle:nsString(button.title)];
    [view.get() setBezelStyle:bezelStyle];
    [view.get() setTarget:target];
    [view.get() setAction:action];
    if (!button.toolTip.empty()) {
        [view.get() setToolTip:nsString(button.toolTip)];
    }
    return view;
}

}

@implementation AppDelegate (MainWindow)

- (void)buildWindow
{
    const auto window = makeWindow();
    [self setWindow:window.get()];
    NSView *content = [window.get() contentView];

    NSImage *icon =
        [NSImage imageNamed:nsString(layout::iconImage)] ?: [NSImage imageNamed:nsString(layout::fallbackIconImage)];
    [content addSubview:makeImageView(layout::icon, icon).get()];
    [content addSubview:makeImageView(layout::wordmark, [NSImage imageNamed:nsString(layout::wordmarkImage)]).get()];

    [content addSubview:[self labelWithFrame:rectangle(layout::title)
                                        text:nsString(layout::toolName)
                                        font:[NSFont boldSystemFontOfSize:layout::titleFontSize]
                                   alignment:NSTextAlignmentLeft]];
    NSTextField *description = [self labelWithFrame:rectangle(layout::description)
                                               text:nsString(layout::descriptionText)
                                               font:[NSFont systemFontOfSize:layout::descriptionFontSize]
                                          alignment:NSTextAlignmentLeft];
    [[description cell] setLineBreakMode:NSLineBreakByWordWrapping];
    [content addSubview:description];
    [self setStatusLabel:[self labelWithFrame:rectangle(layout::status)
                                         text:nsString(layout::statusText)
                                         font:[NSFont systemFontOfSize:layout::statusFontSize]
                                    alignment:NSTextAlignmentLeft]];
    [content addSubview:[self statusLabel]];

    const auto scrollView = makeLogScrollView();
    const auto logView = makeLogView([NSString
        stringWithFormat:@"version: %@\nupdated: %@\nReady.\n", [self appVersionString], [self appUpdatedString]]);
    [self setLogView:logView.get()];
    [scrollView.get() setDocumentView:logView.get()];
    [content addSubview:scrollView.get()];

    [content addSubview:makeButton(layout::support, NSBezelStyleCircular, self, @selector(openSupportPage:)).get()];

    const auto restore = makeButton(layout::restoreLicence, NSBezelStyleRounded, self, @selector(restoreLicense:));
    [self setRestoreLicenseButton:restore.get()];
    [content addSubview:restore.get()];

    const auto remove = makeButton(layout::remove, NSBezelStyleRounded, self, @selector(removeQuorlen3:));
    [self setRemoveButton:remove.get()];
    [content addSubview:remove.get()];

    const auto override =
        makeButton(layout::overrideCleanup, NSBezelStyleRounded, self, @selector(overrideRemoveQuorlen3:));
    [override.get() setHidden:YES];
    [self setOverrideButton:override.get()];
    [content addSubview:override.get()];

    [content addSubview:makeButton(layout::cancel, NSBezelStyleRounded, NSApp, @selector(terminate:)).get()];

    [window.get() makeKeyAndOrderFront:nil];
}

- (NSTextField *)labelWithFrame:(NSRect)frame
                           text:(NSString *)text
                           font:(NSFont *)font
                      alignment:(NSTextAlignment)alignment
{
    auto label = adopt([[NSTextField alloc] initWithFrame:frame]);
    [label.get() setStringValue:text ?: @""];
    [label.get() setFont:font];
    [label.get() setAlignment:alignment];
    [label.get() setEditable:NO];
    [label.get() setSelectable:NO];
    [label.get() setBezeled:NO];
    [label.get() setDrawsBackground:NO];
    return std::move(label).autoreleased();
}

@end
