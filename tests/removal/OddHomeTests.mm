// A real removal for a user whose home directory's name has characters that are special to a shell.

#import "removal/AppDelegate+RemovalFlow.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/RoomTest.hpp"

namespace fs = std::filesystem;

namespace
{

using OddHome = RoomTest;

/// Every entry in the folders of the product and of its neighbours, with its attributes. A folder has no time here: the
/// time changes with the folder's contents.
std::string inventory()
{
    return run({ "find", "/Users", "/Applications", "/Library", "-type", "d", "-printf", "%p %m\n", "-o", "-name",
                   "Quorlen-*", "-o", "-printf", "%p %y %s %T@ %m\n" })
        .output;
}

}

TEST_F(OddHome, LosesOnlyTheElevenLocationsAndKeepsABackupOfTheLicence)
{
    const auto nothingInstalled = inventory();
    stage({ "plant", "--no-agent", "--no-daemon" });
    const auto installedLicence = contents(licence());

    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });
    [controller.get() removeQuorlen3:nil];

    for (const auto &location : locations()) {
        EXPECT_FALSE(fs::exists(location)) << location;
    }
    EXPECT_EQ(licenceInside(onlyArchive()), installedLicence);
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.");
    EXPECT_EQ(filesOfTheToolOnTheDesktop().size(), 2u) << "the log file and the archive";
    EXPECT_EQ(inventory(), nothingInstalled);
}
