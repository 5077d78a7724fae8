#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <unistd.h>

namespace fs = std::filesystem;

TEST(Startup, ShowsNoTileStartsNoProcessAndMakesOnlyTheDefaultsFolder)
{
    [[NSWorkspace sharedWorkspace] notificationCenter];
    EXPECT_FALSE([[NSApp iconWindow] isVisible]);
    for (const char *helper : { "gdnc", "make_services" }) {
        EXPECT_EQ(run({ "pgrep", "-u", std::to_string(getuid()), "-x", helper }).output, "") << helper;
    }
    EXPECT_FALSE(fs::exists(fs::path(utf8(NSTemporaryDirectory())) / "NSMessagePort"))
        << "a port for commands of other programs";
    const fs::path folder = home() / "GNUstep";
    EXPECT_EQ(run({ "find", home(), "-path", folder.string() + "*", "-not", "-path", folder, "-not", "-path",
                      folder / "Defaults", "-not", "-path", folder / "Defaults/.lck" })
                  .output,
        "");
}

TEST(Startup, KeepsAClosedStandardStreamFromItsConnections)
{
    if (std::getenv("INPUT_WAS_CLOSED")) {
        EXPECT_EQ(fs::read_symlink("/proc/self/fd/0"), "/dev/null");
        return;
    }
    const char *again = "INPUT_WAS_CLOSED=1 exec \"$0\" --gtest_filter=Startup.KeepsAClosedStandardStream* <&-";
    EXPECT_EQ(run({ "sh", "-c", again, fs::read_symlink("/proc/self/exe") }).status, 0);
}
