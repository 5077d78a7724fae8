/// What a scan of the disk says: the status line and the log lines. Plain C++.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The status line's first sentence when nothing was found, and the message of the alert that then stands in a
/// removal's way.
inline constexpr std::u16string_view notDetectedText = u"Quorlen 3 was not detected.";
/// Logged when the licence file exists: by a scan, and before it is backed up. Ends the status line too.
inline constexpr std::u16string_view licenceDetectedText = u"License detected.";

/// The words for one scan.
struct DetectionReport {
    /// Replaces the window's status line.
    std::u16string statusLine;
    /// Appended to the activity log, in this order; without line feeds.
    std::vector<std::u16string> logLines;
};

/// Words a scan.
/// @param presentLocations How many of the known locations exist; none means that the product is not detected.
/// @param licencePresent Whether the licence file exists.
[[nodiscard]] DetectionReport detectionReport(std::size_t presentLocations, bool licencePresent);
