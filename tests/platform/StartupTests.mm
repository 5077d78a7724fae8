#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <unistd.h>

namespace fs = std::filesystem;

TEST(Startup, DoesNotChangeABackslashInAPath)
{
    EXPECT_EQ(utf8([@"/Users/a\\b" stringByAppendingPathComponent:@"c"]), "/Users/a\\b/c");
    EXPECT_EQ(utf8([@"/Users/a\\b/c" lastPathComponent]), "c");
    EXPECT_EQ(utf8([@"/Users/a\\b/c" stringByDeletingLastPathComponent]), "/Users/a\\b");
}

TEST(Startup, ShowsNoTileForTheProgram)
{
    EXPECT_FALSE([[NSApp iconWindow] isVisible]);
}

TEST(Startup, MakesOnlyTheDefaultsFolderInTheHome)
{
    [[NSWorkspace sharedWorkspace] notificationCenter];
    const std::set<std::string> forced { "GNUstep", "GNUstep/Defaults", "GNUstep/Defaults/.lck" };
    for (const auto &entry : fs::recursive_directory_iterator(home())) {
        const std::string name = entry.path().lexically_relative(home());
        if (name.rfind("GNUstep", 0) == 0) {
            EXPECT_TRUE(forced.count(name)) << name;
        }
    }
}

TEST(Startup, StartsNoProcessThatOutlivesTheProgram)
{
    [[NSWorkspace sharedWorkspace] notificationCenter];
    for (const char *helper : { "gdnc", "make_services" }) {
        EXPECT_EQ(run({ "pgrep", "-u", std::to_string(getuid()), "-x", helper }).output, "") << helper;
    }
}

TEST(Startup, OpensNoPortForCommandsOfOtherPrograms)
{
    EXPECT_FALSE(fs::exists(fs::path(utf8(NSTemporaryDirectory())) / "NSMessagePort"));
}
