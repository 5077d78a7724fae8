/// Ranges.
#pragma once

#import <Foundation/NSObjCRuntime.h>

NS_ASSUME_NONNULL_BEGIN

typedef struct _NSRange {
    NSUInteger location;
    NSUInteger length;
} NSRange;

inline NSRange NSMakeRange(NSUInteger location, NSUInteger length)
{
    return { location, length };
}

NS_ASSUME_NONNULL_END
