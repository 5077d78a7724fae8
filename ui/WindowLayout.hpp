/// The frames, texts, image names and font sizes of the window's views. Plain C++.
///
/// Frames are in points, in the content view's coordinates: the origin is the bottom left corner, y points upwards.
#pragma once

#include <string_view>

namespace layout
{

/// A view's rectangle.
struct Frame {
    double x;
    double y;
    double width;
    double height;
};

/// A button's frame and texts.
struct Button {
    Frame frame;
    std::u16string_view title;
    /// Empty when the button has no tool tip.
    std::u16string_view toolTip;
};

/// The window's title, and the title line inside it.
inline constexpr std::u16string_view toolName = u"Quorlen 3 Removal Tool";

inline constexpr Frame content { 0, 0, 560, 430 };

inline constexpr Frame icon { 36, 286, 104, 104 };
inline constexpr std::u16string_view iconImage = u"icon_removal_2024";
/// Shown when the application has no image named `iconImage`.
inline constexpr std::u16string_view fallbackIconImage = u"icon_2024";

inline constexpr Frame wordmark { 154, 332, 330, 52 };
inline constexpr std::u16string_view wordmarkImage = u"quorlen-typeface_1024";

inline constexpr Frame title { 154, 296, 360, 28 };
inline constexpr double titleFontSize = 20;

inline constexpr Frame description { 36, 248, 488, 32 };
inline constexpr double descriptionFontSize = 14;
inline constexpr std::u16string_view descriptionText =
    u"This tool removes Quorlen 3 and related support files from this Mac.";

inline constexpr Frame status { 36, 215, 488, 22 };
inline constexpr double statusFontSize = 13;
inline constexpr std::u16string_view statusText = u"Checking for Quorlen 3...";

inline constexpr Frame log { 36, 82, 488, 120 };
inline constexpr double logFontSize = 11;

inline constexpr Button support { { 36, 30, 30, 30 }, u"?", u"Open Vendrel Support" };
inline constexpr Button restoreLicence { { 78, 28, 132, 36 }, u"Restore License",
    u"Restore a Quorlen 3 license backup" };
inline constexpr Button remove { { 242, 28, 180, 36 }, u"Remove Quorlen 3", u"" };
/// Has the remove button's frame: exactly one of the two is visible at a time.
inline constexpr Button overrideCleanup { remove.frame, u"Override Cleanup",
    u"Run cleanup even though Quorlen 3 was not detected" };
inline constexpr Button cancel { { 434, 28, 90, 36 }, u"Cancel", u"" };

}
