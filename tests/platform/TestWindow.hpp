/// A window on the screen.
#pragma once

#import "platform/Retained.hpp"
#import <Cocoa/Cocoa.h>

/// A titled window. It is on the screen for this object's lifetime.
class TestWindow
{
public:
    TestWindow()
    {
        [_window.get() setReleasedWhenClosed:NO];
        [_window.get() setTitle:@"Test window"];
        [_window.get() makeKeyAndOrderFront:nil];
    }
    ~TestWindow() { [_window.get() close]; }
    TestWindow(const TestWindow &) = delete;
    TestWindow &operator=(const TestWindow &) = delete;

    NSWindow *window() const { return _window.get(); }

private:
    const Retained<NSWindow> _window = adopt([[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 300, 300)
                                                                         styleMask:NSWindowStyleMaskTitled
                                                                           backing:NSBackingStoreBuffered
                                                                             defer:NO]);
};
