#include "detection/DetectionReport.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace
{
const std::vector<std::u16string> nothingFoundLines {
    u"No Quorlen 3 files detected in the standard locations.",
    u"Removal is disabled. Hold Shift to show Override Cleanup if Vendrel Support directs you to proceed.",
};
}

TEST(DetectionReport, SaysItemsInBracketsForOneAndForMany)
{
    for (const auto &[count, digits] : { std::pair { 1ul, u"1" }, { 2ul, u"2" }, { 10ul, u"10" }, { 11ul, u"11" } }) {
        const auto report = detectionReport(count, false);

        EXPECT_EQ(report.statusLine, std::u16string(u"Quorlen 3 detected. ") + digits + u" related item(s) found.");
        EXPECT_EQ(report.logLines, std::vector { std::u16string(u"Detected ") + digits + u" Quorlen 3 item(s)." });
    }
}

TEST(DetectionReport, WritesTheLargestCountInFull)
{
    static_assert(sizeof(std::size_t) == sizeof(std::uint64_t));

    EXPECT_EQ(detectionReport(SIZE_MAX, false).statusLine,
        u"Quorlen 3 detected. 18446744073709551615 related item(s) found.");
}

TEST(DetectionReport, MentionsTheLicenceLast)
{
    const auto report = detectionReport(3, true);

    EXPECT_EQ(report.statusLine, u"Quorlen 3 detected. 3 related item(s) found. License detected.");
    EXPECT_EQ(
        report.logLines, (std::vector<std::u16string> { u"Detected 3 Quorlen 3 item(s).", u"License detected." }));
}

TEST(DetectionReport, SaysInTwoLinesThatNothingWasFound)
{
    const auto report = detectionReport(0, false);

    EXPECT_EQ(report.statusLine, u"Quorlen 3 was not detected.");
    EXPECT_EQ(report.logLines, nothingFoundLines);
}

TEST(DetectionReport, MentionsALicenceEvenIfNothingWasFound)
{
    const auto report = detectionReport(0, true);

    EXPECT_EQ(report.statusLine, u"Quorlen 3 was not detected. License detected.");
    auto lines = nothingFoundLines;
    lines.push_back(u"License detected.");
    EXPECT_EQ(report.logLines, lines);
}
