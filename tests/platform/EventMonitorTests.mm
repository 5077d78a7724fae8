#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

using Strings = std::vector<std::string>;

namespace
{

/// The character of a key press, or "flags" for a change of the modifier keys.
std::string nameOf(NSEvent *event)
{
    return [event type] == NSKeyDown ? utf8([event characters]) : "flags";
}

}

/// Notes the events that reach it as the window's first responder.
@interface NotingView : NSView {
@public
    Strings *_trace;
}
@end

@implementation NotingView

- (BOOL)acceptsFirstResponder
{
    return YES;
}

- (void)keyDown:(NSEvent *)event
{
    _trace->push_back("window " + nameOf(event));
}

- (void)flagsChanged:(NSEvent *)event
{
    _trace->push_back("window " + nameOf(event));
}

@end

namespace
{

/// What a monitor's handler returns for an event.
using Answer = std::function<NSEvent *(NSEvent *)>;

constexpr NSEventMask keys = NSEventMaskKeyDown;
const Answer pass = std::identity();

struct EventMonitors : testing::Test {
    TestWindow shown;
    Retained<NotingView> view = adopt([[NotingView alloc] initWithFrame:NSMakeRect(0, 0, 300, 300)]);
    /// Who got which event, in order: the monitors by their numbers ("1 j"), and the window ("window j").
    Strings trace;
    std::vector<Retained<NSObject>> installed;

    EventMonitors()
    {
        view.get()->_trace = &trace;
        [[shown.window() contentView] addSubview:view.get()];
        [shown.window() makeFirstResponder:view.get()];
    }
    ~EventMonitors() override { removeAll(); }

    /// Installs a monitor whose handler notes the event and returns the answer. The block on this function's stack
    /// holds the answer only until this function returns.
    void install(NSEventMask mask, Answer answer)
    {
        const std::string number = std::to_string(installed.size() + 1);
        id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:mask
                                                           handler:^(NSEvent *event) {
                                                               trace.push_back(number + " " + nameOf(event));
                                                               return answer(event);
                                                           }];
        installed.push_back(Retained<NSObject>::sharing(monitor));
    }
    void removeAll()
    {
        for (const auto &monitor : installed) {
            [NSEvent removeMonitor:monitor.get()];
        }
        installed.clear();
    }

    NSEvent *event(NSEventType type, NSString *characters)
    {
        return keyEvent(type, characters, [shown.window() windowNumber]);
    }
    NSEvent *key(NSString *characters) { return event(NSKeyDown, characters); }
};

}

TEST_F(EventMonitors, PassOnWhatTheirHandlersReturnInTheOrderOfTheirInstallation)
{
    const Answer drop = [](NSEvent *) { return static_cast<NSEvent *>(nil); };
    const Answer replace = [this](NSEvent *) { return key(@"k"); };
    const Answer change = [this](NSEvent *) { return event(NSFlagsChanged, @""); };
    const struct {
        std::vector<std::pair<NSEventMask, Answer>> monitors;
        Strings expected;
    } rows[] = {
        { { { keys, pass }, { keys, pass }, { keys, pass } }, { "1 j", "2 j", "3 j", "window j" } },
        { { { NSEventMaskMouseMoved | NSEventMaskFlagsChanged, pass } }, { "window j" } },
        { { { keys, drop }, { NSAnyEventMask, pass } }, { "1 j" } },
        { { { keys, replace }, { keys, pass } }, { "1 j", "2 k", "window k" } },
        { { { keys, change }, { keys, pass } }, { "1 j", "window flags" } },
    };
    for (const auto &[monitors, expected] : rows) {
        for (const auto &[mask, answer] : monitors) {
            install(mask, answer);
        }
        [NSApp sendEvent:key(@"j")];
        EXPECT_EQ(trace, expected);
        removeAll();
        trace.clear();
    }
}

TEST_F(EventMonitors, EndWithTheirHandlersWhenTheyAreRemoved)
{
    const auto held = std::make_shared<int>();
    install(keys, [copy = held](NSEvent *event) { return event; });
    [NSApp sendEvent:key(@"j")];
    removeAll();
    [NSApp sendEvent:key(@"k")];

    EXPECT_EQ(trace, (Strings { "1 j", "window j", "window k" }));
    EXPECT_EQ(held.use_count(), 1) << "the removed handler was not destroyed";
}

TEST_F(EventMonitors, SeeTheEventsOfAModalSession)
{
    install(keys, pass);
    const NSModalSession session = [NSApp beginModalSessionForWindow:shown.window()];
    [NSApp postEvent:key(@"j") atStart:NO];
    [NSApp runModalSession:session];
    [NSApp endModalSession:session];

    EXPECT_EQ(trace, (Strings { "1 j", "window j" }));
}
