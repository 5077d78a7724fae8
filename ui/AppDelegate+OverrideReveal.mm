#import "ui/AppDelegate+OverrideReveal.h"

@implementation AppDelegate (OverrideReveal)

- (void)installModifierMonitor
{
    _liveness = std::make_shared<AppDelegate *>(self);
    const std::weak_ptr<AppDelegate *> weakController = _liveness;
    NSEvent * (^const handler)(NSEvent *) = ^(NSEvent *event) {
        if (const auto controller = weakController.lock()) {
            [*controller updateOverrideButtonVisibility];
        }
        return event;
    };
    const NSEventMask mask = NSEventMaskMouseMoved | NSEventMaskKeyDown | NSEventMaskFlagsChanged;
    [self setModifierMonitor:[NSEvent addLocalMonitorForEventsMatchingMask:mask handler:handler]];
}

- (void)updateOverrideButtonVisibility
{
    const bool shiftHeld = ([NSEvent modifierFlags] & NSEventModifierFlagShift) != 0;
    const bool reveal = shiftHeld && ![self quorlenDetected];
    [[self overrideButton] setHidden:!reveal];
    [[self removeButton] setHidden:reveal];
}

@end
