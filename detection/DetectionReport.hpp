/// The texts for the result of a scan: the status line and the log lines. Plain C++.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The texts for one scan.
struct DetectionReport {
    /// Replaces the window's status line.
    std::u16string statusLine;
    /// Appended to the activity log, in this order; without line feeds.
    std::vector<std::u16string> logLines;
};

/// Makes the texts for one scan.
/// @param presentLocations How many of the known locations exist; 0 means that the product is not detected.
/// @param licencePresent Whether the licence file exists.
[[nodiscard]] DetectionReport detectionReport(std::size_t presentLocations, bool licencePresent);
