/// Events and the modifier keys.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSUInteger, NSEventType) {
    NSEventTypeMouseMoved = 5,
    NSEventTypeKeyDown = 10,
    NSEventTypeFlagsChanged = 12,
};

typedef NS_OPTIONS(unsigned long long, NSEventMask) {
    NSEventMaskMouseMoved = 1ULL << NSEventTypeMouseMoved,
    NSEventMaskKeyDown = 1ULL << NSEventTypeKeyDown,
    NSEventMaskFlagsChanged = 1ULL << NSEventTypeFlagsChanged,
};

typedef NS_OPTIONS(NSUInteger, NSEventModifierFlags) {
    NSEventModifierFlagShift = 1 << 17,
};

@interface NSEvent : NSObject

@property (class, readonly) NSEventModifierFlags modifierFlags API_AVAILABLE(macos(10.6));

+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent *_Nullable (^)(NSEvent *event))block
    API_AVAILABLE(macos(10.6));
+ (void)removeMonitor:(id)eventMonitor API_AVAILABLE(macos(10.6));

@end

NS_ASSUME_NONNULL_END
