/// A window on the screen, and real key presses and clicks.
#pragma once

#import <Cocoa/Cocoa.h>

#include <functional>
#include <string>
#include <vector>

/// A view that is the window's first responder and records the events that reach it.
@interface NotingView : NSView {
@public
    std::vector<NSEvent *> seen; // Owned by the event queue's pool: compare, don't message.
}
@end

/// A titled window with a NotingView. It is in front and key for this object's lifetime.
class TestWindow
{
public:
    TestWindow();
    ~TestWindow();
    TestWindow(const TestWindow &) = delete;
    TestWindow &operator=(const TestWindow &) = delete;

    NSWindow *window() const { return _window; }
    NotingView *view() const { return _view; }

private:
    NSWindow *_window;
    NotingView *_view;
};

/// Holds a real key down for its own lifetime. xdotool defines the names of the keys.
class HeldKey
{
public:
    explicit HeldKey(std::string name);
    ~HeldKey();
    HeldKey(const HeldKey &) = delete;
    HeldKey &operator=(const HeldKey &) = delete;

private:
    std::string _name;
};

/// Presses and releases a key.
void pressKey(const std::string &name);

/// Runs an alert or a panel modally while another thread acts as its user.
/// @param act The user's action. It runs on its own thread and may run commands, but may not call AppKit. It returns
/// false
///     if the action failed. If it fails or the panel does not end, the test fails and the panel is aborted.
/// @return The result of `runModal`.
NSInteger runModalWhile(id panel, const std::function<bool()> &act);

/// Repeats a question until the answer is yes or a time limit passes. Call it from a thread that does not handle
/// events. Returns the last answer.
bool eventually(const std::function<bool()> &question);

/// Waits until the window manager has handled all requests so far. It handles them in order. This function handles no
/// events.
void letManagerFinish();

/// The title of the focused window, as the X server reports it.
std::string focusedTitle();

/// The title of an alert's window: the program's name.
std::string alertTitle();

/// Whether an alert is focused.
bool alertHasTheKeyboard();

/// Waits until an alert is focused and the window manager no longer moves the focus. Call it from a thread that does
/// not handle events. Returns whether an alert is focused.
bool alertKeepsTheKeyboard();
