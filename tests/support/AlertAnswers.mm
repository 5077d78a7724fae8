#import "tests/support/AlertAnswers.hpp"

#import "platform/gnustep/Swizzling.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace
{
/// What answers a panel. Empty if nothing does.
std::function<void(NSWindow *)> answerPanel;
}

@interface NSApplication (AlertAnswers)
@end

@implementation NSApplication (AlertAnswers)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(beginModalSessionForWindow:), @selector(beginAnsweredModalSessionForWindow:));
}

/// Replaces `beginModalSessionForWindow:`. The panel is answered when its session first handles events.
- (NSModalSession)beginAnsweredModalSessionForWindow:(NSWindow *)window
{
    const NSModalSession session = [self beginAnsweredModalSessionForWindow:window];
    if (answerPanel) { // Else a session that handles no events would keep its panel.
        [self performSelector:@selector(answerModalPanel:)
                   withObject:window
                   afterDelay:0
                      inModes:@[ NSModalPanelRunLoopMode ]];
    }
    return session;
}

- (void)answerModalPanel:(NSWindow *)panel
{
    if (answerPanel && [self modalWindow] == panel) {
        answerPanel(panel);
        wakeModalLoop(); // A press without a mouse makes no event.
    }
}

@end

namespace
{

/// Appends the visible labels and buttons in a view, at any depth.
void collect(NSView *view, std::vector<NSControl *> &controls)
{
    if ([view isHidden]) {
        return;
    }
    if ([view isKindOfClass:[NSButton class]] || [view isKindOfClass:[NSTextField class]]) {
        controls.push_back(static_cast<NSControl *>(view));
    }
    for (NSView *subview in [view subviews]) {
        collect(subview, controls);
    }
}

/// The top and the right edge of a view in its window.
std::pair<double, double> corner(NSView *view)
{
    const NSRect frame = [view convertRect:[view bounds] toView:nil];
    return { NSMaxY(frame), NSMaxX(frame) };
}

}

AlertAnswers::AlertAnswers(std::vector<std::string> titles, std::function<void(std::size_t)> onPanel) :
    _titles(std::move(titles)), _onPanel(std::move(onPanel))
{
    answerPanel = [this](NSWindow *panel) { answer(panel); };
}

AlertAnswers::~AlertAnswers()
{
    answerPanel = nullptr;
}

void AlertAnswers::answer(NSWindow *panel)
{
    const std::size_t number = _seen.size();
    std::vector<NSControl *> controls;
    collect([panel contentView], controls);
    // From top to bottom, and then from right to left: the button that was added first is at the right.
    std::ranges::sort(controls, std::greater(), corner);
    SeenPanel seen;
    NSButton *wanted = nil;
    for (NSControl *control : controls) {
        if ([control isKindOfClass:[NSTextField class]]) {
            seen.texts.push_back(utf8([control stringValue]));
        } else if (NSButton *button = static_cast<NSButton *>(control);[button imagePosition] != NSImageOnly) {
            // The alert's icon is a button too.
            seen.buttons.push_back(utf8([button title]));
            if (number < _titles.size() && seen.buttons.back() == _titles[number]) {
                wanted = button;
            }
        }
    }
    std::erase(seen.texts, "");
    std::erase(seen.buttons, "");
    _seen.push_back(seen);
    if (_onPanel) {
        _onPanel(number);
    }
    if (wanted) {
        [wanted performClick:nil];
    } else {
        ADD_FAILURE() << "an unexpected panel opened: " << testing::PrintToString(seen);
        // abortModal would not work: the run loop catches its exception.
        [NSApp stopModalWithCode:NSRunAbortedResponse];
    }
}

void PrintTo(const SeenPanel &panel, std::ostream *stream)
{
    *stream << testing::PrintToString(panel.texts) << " with the buttons " << testing::PrintToString(panel.buttons);
}
