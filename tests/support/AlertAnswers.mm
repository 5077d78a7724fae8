#import "tests/support/AlertAnswers.hpp"

#import "tests/support/Stage.hpp"

#import <objc/runtime.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <ostream>

namespace
{

/// The number of modal sessions that have begun. It distinguishes a panel from the next one, which may have the same
/// address: a panel stays modal for a moment after its button is pressed.
unsigned sessionsBegun;
NSModalSession (*beginSession)(id, SEL, NSWindow *);

NSModalSession beginCountedSession(id application, SEL selector, NSWindow *window)
{
    // The panel is up now.
    const NSModalSession session = beginSession(application, selector, window);
    ++sessionsBegun;
    return session;
}

void countSessions()
{
    const Method method = class_getInstanceMethod([NSApplication class], @selector(beginModalSessionForWindow:));
    const auto counting = reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(beginCountedSession));
    beginSession = reinterpret_cast<decltype(beginSession)>(
        reinterpret_cast<void (*)()>(method_setImplementation(method, counting)));
}

}

@interface PanelWatch : NSObject {
    std::function<void(NSWindow *)> _answer;
    unsigned _answered;
}
- (id)initWithAnswer:(std::function<void(NSWindow *)>)answer;
- (void)look:(NSTimer *)timer;
@end

@implementation PanelWatch

- (id)initWithAnswer:(std::function<void(NSWindow *)>)answer
{
    if ((self = [super init])) {
        _answer = std::move(answer);
        _answered = sessionsBegun;
    }
    return self;
}

- (void)look:(NSTimer *)timer
{
    NSWindow *panel = [NSApp modalWindow];
    if (_answered != sessionsBegun && [panel isVisible]) {
        _answered = sessionsBegun;
        _answer(panel);
        wakeModalLoop(); // A press without a mouse makes no event.
    }
}

@end

namespace
{

void collect(NSView *view, NSMutableArray *texts, NSMutableArray *buttons)
{
    if ([view isHidden]) {
        return;
    }
    if ([view isKindOfClass:[NSButton class]]) {
        // The alert's icon is a button too.
        if ([(NSButton *)view imagePosition] != NSImageOnly && [[(NSButton *)view title] length] > 0) {
            [buttons addObject:view];
        }
    } else if ([view isKindOfClass:[NSTextField class]] && [[(NSTextField *)view stringValue] length] > 0) {
        [texts addObject:view];
    }
    for (NSView *subview in [view subviews]) {
        collect(subview, texts, buttons);
    }
}

double top(NSView *view)
{
    return NSMaxY([view convertRect:[view bounds] toView:nil]);
}

double right(NSView *view)
{
    return NSMaxX([view convertRect:[view bounds] toView:nil]);
}

}

AlertAnswers::AlertAnswers(std::vector<std::string> titles, std::function<void(std::size_t)> onPanel) :
    _titles(std::move(titles)), _onPanel(std::move(onPanel))
{
    static std::once_flag counting;
    std::call_once(counting, countSessions);
    PanelWatch *watch = [[[PanelWatch alloc] initWithAnswer:[this](NSWindow *panel) { answer(panel); }] autorelease];
    _timer = [[NSTimer timerWithTimeInterval:0.01 target:watch selector:@selector(look:) userInfo:nil
                                     repeats:YES] retain];
    [[NSRunLoop currentRunLoop] addTimer:_timer forMode:NSModalPanelRunLoopMode];
}

AlertAnswers::~AlertAnswers()
{
    [_timer invalidate];
    [_timer release];
}

void AlertAnswers::answer(NSWindow *panel)
{
    NSMutableArray *texts = [NSMutableArray array];
    NSMutableArray *buttons = [NSMutableArray array];
    collect([panel contentView], texts, buttons);
    SeenPanel seen;
    std::vector<NSView *> fields;
    for (NSView *field in texts) {
        fields.push_back(field);
    }
    std::sort(fields.begin(), fields.end(), [](NSView *a, NSView *b) { return top(a) > top(b); });
    for (NSView *field : fields) {
        seen.texts.push_back(utf8([(NSTextField *)field stringValue]));
    }
    // The button that was added first is at the right.
    std::vector<NSButton *> row;
    for (NSButton *button in buttons) {
        row.push_back(button);
    }
    std::sort(row.begin(), row.end(), [](NSView *a, NSView *b) { return right(a) > right(b); });
    for (NSButton *button : row) {
        seen.buttons.push_back(utf8([button title]));
    }
    const std::size_t number = _seen.size();
    _seen.push_back(seen);
    if (_onPanel) {
        _onPanel(number);
    }
    if (number < _titles.size()) {
        for (NSButton *button : row) {
            if (utf8([button title]) == _titles[number]) {
                [button performClick:nil];
                return;
            }
        }
    }
    ADD_FAILURE() << "an unexpected panel opened: " << (seen.texts.empty() ? "" : seen.texts.front());
    // abortModal would not work: the timer catches its exception.
    [NSApp stopModalWithCode:NSRunAbortedResponse];
}

void PrintTo(const SeenPanel &panel, std::ostream *stream)
{
    *stream << testing::PrintToString(panel.texts) << " with the buttons " << testing::PrintToString(panel.buttons);
}
