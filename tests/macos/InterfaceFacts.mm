/// Known facts about the platform's interface. The compiler checks them in each build of the Mac app: on Debian against
/// platform/macos/headers/, on a Mac against the SDK. The methods' types are in interface-facts.txt.
#import <Cocoa/Cocoa.h>

#include <cstddef>
#include <type_traits>

namespace
{

template <typename Type, typename... Others> constexpr bool allAre = (std::is_same_v<Others, Type> && ...);

template <typename Type, typename... Enumerations>
constexpr bool allConsistOf = (std::is_same_v<std::underlying_type_t<Enumerations>, Type> && ...);

// The basic types. On Arm a BOOL is not an integer of one byte.
#if defined(__x86_64__)
static_assert(allAre<signed char, BOOL>);
#else
static_assert(allAre<bool, BOOL>);
#endif
static_assert(allAre<long, NSInteger, NSModalResponse>);
static_assert(allAre<unsigned long, NSUInteger, NSStringEncoding, NSSearchPathDomainMask, NSWindowStyleMask,
    NSEventModifierFlags, decltype(NSRange::length)>);
static_assert(allAre<unsigned long long, NSEventMask>);
static_assert(allAre<double, CGFloat>);
static_assert(allAre<unsigned short, unichar>);
static_assert(allConsistOf<NSUInteger, NSSearchPathDirectory, NSBackingStoreType, NSImageScaling, NSLineBreakMode,
    NSBezelStyle, NSBorderType, NSEventType>);
static_assert(allConsistOf<NSInteger, NSTextAlignment>);

// The structures.
static_assert(sizeof(NSRange) == 16 && offsetof(NSRange, length) == 8);
static_assert(sizeof(NSRect) == 32 && offsetof(NSRect, size) == 16);
static_assert(offsetof(NSRect, origin.y) == 8 && offsetof(NSRect, size.height) == 24);
static_assert(sizeof(NSFastEnumerationState) == 64 && offsetof(NSFastEnumerationState, itemsPtr) == 8 &&
    offsetof(NSFastEnumerationState, mutationsPtr) == 16 && offsetof(NSFastEnumerationState, extra) == 24);

// The constants.
static_assert(NSDesktopDirectory == 12 && NSUserDomainMask == 1);
static_assert(NSWindowStyleMaskTitled == 1 && NSWindowStyleMaskClosable == 2 && NSWindowStyleMaskMiniaturizable == 4);
static_assert(NSBackingStoreBuffered == 2 && NSImageScaleProportionallyUpOrDown == 3);
static_assert(NSLineBreakByWordWrapping == 0 && NSTextAlignmentLeft == 0);
static_assert(NSBezelStyleRounded == 1 && NSBezelStyleCircular == 7 && NSBezelBorder == 2);
static_assert(NSEventTypeMouseMoved == 5 && NSEventTypeKeyDown == 10 && NSEventTypeFlagsChanged == 12);
static_assert((NSEventMaskMouseMoved | NSEventMaskKeyDown | NSEventMaskFlagsChanged) == 0x1420);
static_assert(NSEventModifierFlagShift == 0x20000 && NSEventModifierFlagOption == 0x80000 &&
    NSEventModifierFlagCommand == 0x100000);
static_assert(NSUTF8StringEncoding == 4 && NSModalResponseOK == 1 && NSAlertFirstButtonReturn == 1000);

// The functions and variables.
static_assert(std::is_same_v<decltype(NSApplicationMain), int(int, const char **)>);
static_assert(std::is_same_v<decltype(NSApp), __kindof NSApplication *>);
static_assert(allAre<NSString *, NSNotificationName, decltype(NSApplicationWillFinishLaunchingNotification)>);
static_assert(allAre<NSString *(), decltype(NSHomeDirectory), decltype(NSTemporaryDirectory)>);
static_assert(std::is_same_v<decltype(NSSearchPathForDirectoriesInDomains),
    NSArray<NSString *> *(NSSearchPathDirectory, NSSearchPathDomainMask, BOOL)>);
static_assert(std::is_same_v<decltype(NSMakeRange(0, 0)), NSRange>);
static_assert(std::is_same_v<decltype(NSMakeRect(0, 0, 0, 0)), NSRect>);

}
