/// Known facts about the platform's interface. The compiler checks them in each build of the Mac app: on Debian against
/// platform/macos/headers/, on a Mac against the SDK. The methods' types are in interface-facts.txt.
#import <Cocoa/Cocoa.h>

#include <cstddef>
#include <type_traits>

namespace
{

// The basic types. On Arm a BOOL is not an integer of one byte.
#if defined(__x86_64__)
static_assert(std::is_same_v<BOOL, signed char>);
#else
static_assert(std::is_same_v<BOOL, bool>);
#endif
static_assert(std::is_same_v<NSInteger, long>);
static_assert(std::is_same_v<NSUInteger, unsigned long>);
static_assert(std::is_same_v<CGFloat, double>);
static_assert(std::is_same_v<unichar, unsigned short>);
static_assert(std::is_same_v<NSStringEncoding, NSUInteger>);
static_assert(std::is_same_v<NSModalResponse, NSInteger>);

// The structures.
static_assert(sizeof(NSRange) == 16 && offsetof(NSRange, length) == 8);
static_assert(std::is_same_v<decltype(NSRange::length), NSUInteger>);
static_assert(sizeof(NSRect) == 32 && offsetof(NSRect, size) == 16);
static_assert(offsetof(NSRect, origin.y) == 8 && offsetof(NSRect, size.height) == 24);
static_assert(sizeof(NSFastEnumerationState) == 64 && offsetof(NSFastEnumerationState, itemsPtr) == 8 &&
    offsetof(NSFastEnumerationState, mutationsPtr) == 16 && offsetof(NSFastEnumerationState, extra) == 24);

// The enumerations: their underlying types and values.
static_assert(std::is_same_v<std::underlying_type_t<NSSearchPathDirectory>, NSUInteger>);
static_assert(NSDesktopDirectory == 12);
static_assert(std::is_same_v<NSSearchPathDomainMask, NSUInteger>);
static_assert(NSUserDomainMask == 1);
static_assert(std::is_same_v<NSWindowStyleMask, NSUInteger>);
static_assert(NSWindowStyleMaskTitled == 1);
static_assert(NSWindowStyleMaskClosable == 2);
static_assert(NSWindowStyleMaskMiniaturizable == 4);
static_assert(std::is_same_v<std::underlying_type_t<NSBackingStoreType>, NSUInteger>);
static_assert(NSBackingStoreBuffered == 2);
static_assert(std::is_same_v<std::underlying_type_t<NSImageScaling>, NSUInteger>);
static_assert(NSImageScaleProportionallyUpOrDown == 3);
static_assert(std::is_same_v<std::underlying_type_t<NSLineBreakMode>, NSUInteger>);
static_assert(NSLineBreakByWordWrapping == 0);
static_assert(std::is_same_v<std::underlying_type_t<NSTextAlignment>, NSInteger>);
static_assert(NSTextAlignmentLeft == 0);
static_assert(std::is_same_v<std::underlying_type_t<NSBezelStyle>, NSUInteger>);
static_assert(NSBezelStyleRounded == 1);
static_assert(NSBezelStyleCircular == 7);
static_assert(std::is_same_v<std::underlying_type_t<NSBorderType>, NSUInteger>);
static_assert(NSBezelBorder == 2);
static_assert(std::is_same_v<std::underlying_type_t<NSEventType>, NSUInteger>);
static_assert(NSEventTypeMouseMoved == 5);
static_assert(NSEventTypeKeyDown == 10);
static_assert(NSEventTypeFlagsChanged == 12);
static_assert(std::is_same_v<NSEventMask, unsigned long long>);
static_assert((NSEventMaskMouseMoved | NSEventMaskKeyDown | NSEventMaskFlagsChanged) == 0x1420);
static_assert(std::is_same_v<NSEventModifierFlags, NSUInteger>);
static_assert(NSEventModifierFlagShift == 0x20000);
static_assert(NSEventModifierFlagOption == 0x80000);
static_assert(NSEventModifierFlagCommand == 0x100000);

// The other constants.
static_assert(NSUTF8StringEncoding == 4);
static_assert(NSModalResponseOK == 1);
static_assert(NSAlertFirstButtonReturn == 1000);

// The functions and variables.
static_assert(std::is_same_v<decltype(NSApplicationMain), int(int, const char **)>);
static_assert(std::is_same_v<decltype(NSApp), __kindof NSApplication *>);
static_assert(std::is_same_v<NSNotificationName, NSString *>);
static_assert(std::is_same_v<decltype(NSApplicationWillFinishLaunchingNotification), NSNotificationName>);
static_assert(std::is_same_v<decltype(NSHomeDirectory), NSString *()>);
static_assert(std::is_same_v<decltype(NSTemporaryDirectory), NSString *()>);
static_assert(std::is_same_v<decltype(NSSearchPathForDirectoriesInDomains),
    NSArray<NSString *> *(NSSearchPathDirectory, NSSearchPathDomainMask, BOOL)>);
static_assert(std::is_same_v<decltype(NSMakeRange(0, 0)), NSRange>);
static_assert(std::is_same_v<decltype(NSMakeRect(0, 0, 0, 0)), NSRect>);

}
