#include "detection/DetectionReport.hpp"

#include <gtest/gtest.h>

#include <cstdint>

TEST(DetectionReport, SaysHowManyItemsAndWhetherALicenceWasFound)
{
    static_assert(sizeof(std::size_t) == sizeof(std::uint64_t));
    for (const auto &[count, digits] : std::initializer_list<std::pair<std::size_t, std::u16string>> {
             { 1, u"1" }, { 2, u"2" }, { 10, u"10" }, { 11, u"11" }, { SIZE_MAX, u"18446744073709551615" } }) {
        const auto status = u"Quorlen 3 detected. " + digits + u" related item(s) found.";
        const auto line = u"Detected " + digits + u" Quorlen 3 item(s).";

        EXPECT_EQ(detectionReport(count, false).statusLine, status);
        EXPECT_EQ(detectionReport(count, false).logLines, std::vector { line });
        EXPECT_EQ(detectionReport(count, true).statusLine, status + u" License detected.");
        EXPECT_EQ(detectionReport(count, true).logLines, (std::vector<std::u16string> { line, u"License detected." }));
    }
}

TEST(DetectionReport, SaysInTwoLinesThatNothingWasFoundAndWhetherALicenceWas)
{
    std::vector<std::u16string> lines {
        u"No Quorlen 3 files detected in the standard locations.",
        u"Removal is disabled. Hold Shift to show Override Cleanup if Vendrel Support directs you to proceed.",
    };
    EXPECT_EQ(detectionReport(0, false).statusLine, u"Quorlen 3 was not detected.");
    EXPECT_EQ(detectionReport(0, false).logLines, lines);

    lines.emplace_back(u"License detected.");
    EXPECT_EQ(detectionReport(0, true).statusLine, u"Quorlen 3 was not detected. License detected.");
    EXPECT_EQ(detectionReport(0, true).logLines, lines);
}
