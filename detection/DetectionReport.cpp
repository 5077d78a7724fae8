#include "detection/DetectionReport.hpp"

#include <array>
#include <charconv>
#include <limits>

namespace
{

std::u16string decimal(std::size_t number)
{
    std::array<char, std::numeric_limits<std::size_t>::digits10 + 1> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return { digits.data(), end };
}

}

DetectionReport detectionReport(std::size_t presentLocations, bool licencePresent)
{
    DetectionReport report;
    if (presentLocations > 0) {
        const auto count = decimal(presentLocations);
        report.statusLine = u"Quorlen 3 detected. " + count + u" related item(s) found.";
        report.logLines = { u"Detected " + count + u" Quorlen 3 item(s)." };
    } else {
        report.statusLine = u"Quorlen 3 was not detected.";
        report.logLines = {
            u"No Quorlen 3 files detected in the standard locations.",
            u"Removal is disabled. Hold Shift to show Override Cleanup if Vendrel Support directs you to proceed.",
        };
    }
    if (licencePresent) {
        report.statusLine += u" License detected.";
        report.logLines.emplace_back(u"License detected.");
    }
    return report;
}
