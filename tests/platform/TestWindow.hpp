/// A window on the screen, and real keys and presses from outside.
#pragma once

#import <Cocoa/Cocoa.h>

#include <functional>
#include <string>
#include <vector>

/// A view that takes part in the event dispatch as the window's first responder and notes what reaches it.
@interface NotingView : NSView {
@public
    std::vector<NSEvent *> seen; // Owned by the event queue's pool: compare, don't message.
}
@end

/// A titled window with a NotingView in it, shown in front and key for as long as this lives.
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

/// A key that is really held down, from this object's making to its end; keys are named as xdotool names them.
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

/// Runs an alert or a panel modally while somebody acts from outside.
/// @param act What that person does, on a thread of its own: commands only, nothing of the platform's. False means that
///     it could not be done. Then, and when the panel doesn't end, the test fails and the panel is aborted.
/// @return what `runModal` returned.
NSInteger runModalWhile(id panel, const std::function<bool()> &act);

/// Asks again and again until the answer is yes, from a thread that doesn't handle events. Gives up after a generous
/// while. Returns the last answer.
bool eventually(const std::function<bool()> &question);

/// Waits until the window manager has done all that it was asked for: it takes requests in their order. Handles no
/// events.
void letManagerFinish();

/// The title of the window that has the keyboard, as the X server tells it.
std::string focusedTitle();

/// What an alert's window is titled: the program's name.
std::string alertTitle();

/// Whether an alert has the keyboard.
bool alertHasTheKeyboard();

/// Waits until an alert has the keyboard for good: a busy window manager may still be moving it. To be called from a
/// thread that doesn't handle events. Returns whether it has.
bool alertKeepsTheKeyboard();
