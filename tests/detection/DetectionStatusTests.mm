#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+DetectionStatus.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"
#import "ui/AppDelegate+OverrideReveal.h"

namespace fs = std::filesystem;

namespace
{

class DetectionStatus : public RoomTest
{
protected:
    /// Scans, and expects what the user then sees. `lines` are all log lines of the scans of this test so far.
    void expectScan(bool detected, const std::string &status, const Strings &lines)
    {
        SCOPED_TRACE(status);
        for (const bool overrideEnabled : { false, true }) {
            [[controller.get() removeButton] setEnabled:!detected];
            [[controller.get() overrideButton] setEnabled:overrideEnabled];

            [controller.get() updateDetectionStatus];

            EXPECT_EQ([controller.get() quorlenDetected], detected);
            EXPECT_EQ(enabled(), std::pair(detected, overrideEnabled));
            EXPECT_EQ(statusLine(), status);
            _lines.insert(_lines.end(), lines.begin(), lines.end());
            EXPECT_EQ(newLines(), _lines);
        }
    }

private:
    Strings _lines;
};

}

TEST_F(DetectionStatus, ShowsAndLogsWhatEachScanFinds)
{
    expectScan(false, "Quorlen 3 was not detected.", nothingFoundLines);

    write(licence(), "a licence");
    write(locations()[7], "preferences");
    fs::create_directories(locations()[10]);
    expectScan(true, "Quorlen 3 detected. 3 related item(s) found. License detected.",
        { "Detected 3 Quorlen 3 item(s).", "License detected." });

    fs::remove_all(locations()[3]);
    fs::remove_all(locations()[7]);
    expectScan(true, "Quorlen 3 detected. 1 related item(s) found.", { "Detected 1 Quorlen 3 item(s)." });

    fs::remove_all(locations()[10]);
    expectScan(false, "Quorlen 3 was not detected.", nothingFoundLines);
}

TEST_F(DetectionStatus, DoesNotCountALicenceAlone)
{
    // No real disk can have that: the licence is in a known location.
    const SwizzledMethod locations([AppDelegate class], @selector(existingQuorlenPaths), +[](id, SEL) { return @[]; });
    write(licence(), "a licence");

    expectScan(false, "Quorlen 3 was not detected. License detected.",
        { nothingFoundLines[0], nothingFoundLines[1], "License detected." });
}

TEST_F(DetectionStatus, ShowsTheStatusThenLogsThenChoosesTheVisibleButton)
{
    static Strings events;
    const SwizzledMethod log(
        [AppDelegate class], @selector(appendLog:), +[](AppDelegate *tool, SEL, NSString *line) {
            events.push_back(utf8([[tool statusLabel] stringValue]) + " Logs: " + utf8(line));
        });
    const SwizzledMethod choose(
        [AppDelegate class], @selector(updateOverrideButtonVisibility), +[](AppDelegate *tool, SEL) {
            events.push_back([tool quorlenDetected] ? "Chooses the button for a detection." : "Chooses too early.");
        });
    write(licence(), "a licence");

    [controller.get() updateDetectionStatus];

    const std::string status = "Quorlen 3 detected. 1 related item(s) found. License detected.";
    EXPECT_EQ(events,
        (Strings { status + " Logs: Detected 1 Quorlen 3 item(s).", status + " Logs: License detected.",
            "Chooses the button for a detection." }));
}

TEST_F(DetectionStatus, WithOnlyALogStillDecidesAndLogs)
{
    const auto half = adopt([[AppDelegate alloc] init]);
    [half.get() setLogView:[controller.get() logView]];
    write(licence(), "a licence");

    [half.get() updateDetectionStatus];

    EXPECT_TRUE([half.get() quorlenDetected]);
    EXPECT_EQ(newLines(), (Strings { "Detected 1 Quorlen 3 item(s).", "License detected." }));
}
