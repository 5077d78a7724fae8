#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+DetectionStatus.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "tests/support/RoomTest.hpp"
#import "ui/AppDelegate+OverrideReveal.h"

namespace fs = std::filesystem;

/// Reports a licence file and no known location. No real disk can have that: the licence is in a known location.
@interface ControllerOfALoneLicence : AppDelegate
@end

@implementation ControllerOfALoneLicence
- (NSArray<NSString *> *)existingQuorlenPaths
{
    return @[];
}
- (BOOL)licenseExists
{
    return YES;
}
@end

/// Records what the user sees when the scan writes to the log, and when the scan chooses which removal button to show.
@interface ControllerThatShowsLast : AppDelegate {
@public
    std::string _statusWhenLogging;
    std::string _statusThen;
    std::string _logThen;
    bool _detectedThen;
    int _times;
}
@end

@implementation ControllerThatShowsLast
- (void)appendLog:(NSString *)message
{
    _statusWhenLogging = utf8([[self statusLabel] stringValue]);
    [super appendLog:message];
}
- (void)updateOverrideButtonVisibility
{
    ++_times;
    _statusThen = utf8([[self statusLabel] stringValue]);
    _logThen = utf8([[self logView] string]);
    _detectedThen = [self quorlenDetected];
    [super updateOverrideButtonVisibility];
}
@end

namespace
{

class DetectionStatus : public RoomTest
{
protected:
    using RoomTest::RoomTest;
    void scan() { [controller.get() updateDetectionStatus]; }
    bool detected() const { return [controller.get() quorlenDetected]; }
};

class DetectionStatusOfALoneLicence : public DetectionStatus
{
protected:
    DetectionStatusOfALoneLicence() : DetectionStatus([ControllerOfALoneLicence class]) { }
};

class DetectionStatusAndButtons : public DetectionStatus
{
protected:
    DetectionStatusAndButtons() : DetectionStatus([ControllerThatShowsLast class]) { }
};

}

TEST_F(DetectionStatus, NothingInstalledDisablesRemovalAndSaysSo)
{
    scan();

    EXPECT_FALSE(detected());
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.");
    EXPECT_EQ(newLines(), nothingFoundLines);
    EXPECT_FALSE(enabled().first);
}

TEST_F(DetectionStatus, ThreeItemsAndALicenceAreCountedAndEnableRemoval)
{
    write(licence(), "a licence");
    write(locations()[7], "preferences");
    fs::create_directories(locations()[10]);
    [[controller.get() removeButton] setEnabled:NO];

    scan();

    EXPECT_TRUE(detected());
    EXPECT_EQ(statusLine(), "Quorlen 3 detected. 3 related item(s) found. License detected.");
    EXPECT_EQ(newLines(), (Strings { "Detected 3 Quorlen 3 item(s).", "License detected." }));
    EXPECT_TRUE(enabled().first);
}

TEST_F(DetectionStatus, OneItemStillSaysItems)
{
    write(locations()[8], "preferences");

    scan();

    EXPECT_EQ(statusLine(), "Quorlen 3 detected. 1 related item(s) found.");
    EXPECT_EQ(newLines(), Strings { "Detected 1 Quorlen 3 item(s)." });
}

TEST_F(DetectionStatusOfALoneLicence, IsNotDetectedAndMentionsTheLicence)
{
    scan();

    EXPECT_FALSE(detected()) << "the licence does not count";
    EXPECT_FALSE(enabled().first);
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected. License detected.");
    auto lines = nothingFoundLines;
    lines.push_back("License detected.");
    EXPECT_EQ(newLines(), lines);
}

TEST_F(DetectionStatus, RepeatedWithoutAChangeRepeatsOnlyTheLog)
{
    write(licence(), "a licence");
    scan();
    const auto status = statusLine();
    const auto once = newLines();

    scan();

    EXPECT_EQ(statusLine(), status);
    EXPECT_TRUE(enabled().first);
    auto twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(newLines(), twice);
}

TEST_F(DetectionStatus, ForgetsTheProductOnceItIsGone)
{
    write(licence(), "a licence");
    scan();
    ASSERT_TRUE(detected());

    fs::remove_all(locations()[3]);
    scan();

    EXPECT_FALSE(detected());
    EXPECT_FALSE(enabled().first);
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.") << "a part of the earlier text is left";
}

TEST_F(DetectionStatus, LeavesTheOverrideButtonsStateAlone)
{
    for (const BOOL enabledBefore : { NO, YES }) {
        [[controller.get() overrideButton] setEnabled:enabledBefore];

        scan();

        EXPECT_EQ(enabled().second, enabledBefore == YES);
    }
}

TEST_F(DetectionStatusAndButtons, ShowsTheStatusThenLogsThenChoosesTheVisibleButton)
{
    write(licence(), "a licence");
    [[controller.get() removeButton] setHidden:YES];
    [[controller.get() overrideButton] setHidden:NO];

    scan();

    EXPECT_FALSE([[controller.get() removeButton] isHidden]);
    EXPECT_TRUE([[controller.get() overrideButton] isHidden]);
    const auto *noted = static_cast<ControllerThatShowsLast *>(controller.get());
    EXPECT_EQ(noted->_times, 1);
    EXPECT_TRUE(noted->_detectedThen);
    EXPECT_EQ(noted->_statusWhenLogging, statusLine());
    EXPECT_EQ(noted->_statusThen, statusLine());
    EXPECT_EQ(noted->_logThen, log());
}

TEST_F(DetectionStatus, WithoutAWindowStillDecides)
{
    const auto blind = adopt([[AppDelegate alloc] init]);
    write(licence(), "a licence");

    [blind.get() updateDetectionStatus];

    EXPECT_TRUE([blind.get() quorlenDetected]);
}

TEST_F(DetectionStatus, WithOnlyALogStillLogs)
{
    const auto half = adopt([[AppDelegate alloc] init]);
    [half.get() setLogView:[controller.get() logView]];

    [half.get() updateDetectionStatus];

    EXPECT_EQ(newLines(), nothingFoundLines);
}
