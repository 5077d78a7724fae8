/// Foundation's basic types and the macros that its headers are written with.
#pragma once

#import <objc/objc.h>
#include <stddef.h>

@class NSString;

typedef long NSInteger;
typedef unsigned long NSUInteger;

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")

#define NS_ENUM(type, name)                                                                                            \
    enum name : type name;                                                                                             \
    enum name : type
#define NS_OPTIONS(type, name)                                                                                         \
    type name;                                                                                                         \
    enum : type
#define NS_FORMAT_FUNCTION(text, first) __attribute__((format(__NSString__, text, first)))

#define FOUNDATION_EXPORT extern "C"
#define APPKIT_EXTERN extern "C" __attribute__((visibility("default")))

// API_AVAILABLE(macos(10.6)), API_DEPRECATED("what to use instead", macos(10.0, 12.0)): using what the lowest system
// aimed at does not have yet is an error.
#define API_PLATFORM_AVAILABLE_macos(first) macos, introduced = first
#define API_PLATFORM_DEPRECATED_macos(first, last) macos, introduced = first, deprecated = last
#define API_AVAILABLE(platform) __attribute__((availability(API_PLATFORM_AVAILABLE_##platform)))
#define API_DEPRECATED(text, platform) __attribute__((availability(API_PLATFORM_DEPRECATED_##platform, message = text)))
#define API_TO_BE_DEPRECATED 100000
