#import "tests/platform/TestWindow.hpp"

#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

@implementation NotingView

- (BOOL)acceptsFirstResponder
{
    return YES;
}

- (void)keyDown:(NSEvent *)event
{
    seen.push_back(event);
}

- (void)flagsChanged:(NSEvent *)event
{
    seen.push_back(event);
}

@end

TestWindow::TestWindow()
{
    _window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 300, 300)
                                          styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [_window setReleasedWhenClosed:NO];
    [_window setTitle:@"Test window"];
    _view = [[NotingView alloc] initWithFrame:NSMakeRect(0, 0, 300, 300)];
    [[_window contentView] addSubview:_view];
    [_window center];
    [NSApp activateIgnoringOtherApps:YES];
    [_window makeKeyAndOrderFront:nil];
    [_window makeFirstResponder:_view];
    EXPECT_TRUE(handleEventsUntil([this] { return [_window isKeyWindow] && [_window isVisible]; }));
    // A busy manager may still be moving the focus from an earlier window.
    letManagerFinish();
    EXPECT_TRUE(handleEventsUntil([] { return focusedTitle() == "Test window\n"; }));
    // Simulates user input: the manager does not focus later windows of a program that has had no input.
    pressKey("j");
    EXPECT_TRUE(handleEventsUntil([this] { return !_view->seen.empty(); }));
    _view->seen.clear();
}

TestWindow::~TestWindow()
{
    [_window close];
    [_view release];
    [_window release];
}

HeldKey::HeldKey(std::string name) : _name(std::move(name))
{
    EXPECT_EQ(run({ "xdotool", "keydown", _name }).status, 0);
}

HeldKey::~HeldKey()
{
    EXPECT_EQ(run({ "xdotool", "keyup", _name }).status, 0);
}

void pressKey(const std::string &name)
{
    EXPECT_EQ(run({ "xdotool", "key", name }).status, 0);
}

/// Ends a modal session on request.
@interface ModalEnd : NSObject {
@public
    std::atomic<bool> _wanted;
}
@end

@implementation ModalEnd

- (void)look:(NSTimer *)timer
{
    if (_wanted) {
        [NSApp stopModalWithCode:NSModalResponseAbort];
        wakeModalLoop();
    }
}

@end

NSInteger runModalWhile(id panel, const std::function<bool()> &act)
{
    const auto end = adopt([[ModalEnd alloc] init]);
    NSTimer *timer = [NSTimer timerWithTimeInterval:0.1
                                             target:end.get()
                                           selector:@selector(look:)
                                           userInfo:nil
                                            repeats:YES];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSModalPanelRunLoopMode];
    std::atomic<bool> ended = false;
    std::thread person([&] { end.get()->_wanted = !act() || !eventually([&] { return ended.load(); }); });
    const NSInteger code = [panel runModal];
    ended = true;
    person.join();
    [timer invalidate];
    EXPECT_FALSE(end.get()->_wanted) << "the action at the panel failed or did not end the panel";
    // The next alert has the same title. Waits so that a test does not mistake this one for it while this one is
    // focused.
    EXPECT_TRUE(handleEventsUntil([] { return !alertHasTheKeyboard(); }));
    return code;
}

bool eventually(const std::function<bool()> &question)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!question()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

void letManagerFinish()
{
    const std::string desktops = run({ "xdotool", "get_num_desktops" }).output == "2\n" ? "3" : "2";
    run({ "xdotool", "set_num_desktops", desktops });
    EXPECT_TRUE(eventually([&] { return run({ "xdotool", "get_num_desktops" }).output == desktops + "\n"; }));
}

std::string focusedTitle()
{
    return run({ "xdotool", "getwindowfocus", "getwindowname" }).output;
}

std::string alertTitle()
{
    return program_invocation_short_name; // Plain C: threads without an autorelease pool call this.
}

bool alertHasTheKeyboard()
{
    return focusedTitle() == alertTitle() + "\n";
}

bool alertKeepsTheKeyboard()
{
    if (!eventually(alertHasTheKeyboard)) {
        return false;
    }
    letManagerFinish();
    return eventually(alertHasTheKeyboard);
}
