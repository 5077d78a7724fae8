/// The sizes of push buttons, in points.
#pragma once

#import <AppKit/AppKit.h>

#include <algorithm>
#include <cmath>

inline constexpr CGFloat pushButtonHeight = 28;
inline constexpr CGFloat leastPushButtonWidth = 84;

/// The width of a button: its title with space on both sides, at least `leastPushButtonWidth`.
[[nodiscard]] inline CGFloat pushButtonWidth(NSButton *button)
{
    constexpr CGFloat titlePadding = 16;
    return std::max(leastPushButtonWidth, std::ceil([[button attributedTitle] size].width) + 2 * titlePadding);
}
