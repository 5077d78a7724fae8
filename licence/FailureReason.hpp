/// What the log says of a failure.
#pragma once

#import <Cocoa/Cocoa.h>

/// The reason that the platform gives, or "unknown error" when it gives none (nil). Never nil.
[[nodiscard]] inline NSString *failureReason(NSString *reason)
{
    return reason ?: @"unknown error";
}
