#import "tests/support/RoomTest.hpp"

#import "ui/AppDelegate+MainWindow.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;

const Strings nothingFoundLines {
    "No Quorlen 3 files detected in the standard locations.",
    "Removal is disabled. Hold Shift to show Override Cleanup if Vendrel Support directs you to proceed.",
};

namespace
{

/// The entries of a folder that are named like the tool's files. Empty if the folder does not exist.
Strings filesOfTheTool(const fs::path &folder)
{
    Strings names;
    std::error_code missing;
    for (const auto &entry : fs::directory_iterator(folder, missing)) {
        const auto name = entry.path().filename().string();
        if (name.starts_with("Quorlen-")) {
            names.push_back(name);
        }
    }
    std::ranges::sort(names);
    return names;
}

void removeProduct()
{
    Strings command { "pkexec", "/bin/rm", "-rf" };
    std::ranges::copy_if(locations(), std::back_inserter(command), [](const fs::path &location) {
        std::error_code absent;
        return fs::symlink_status(location, absent).type() != fs::file_type::not_found;
    });
    if (command.size() > 3) {
        EXPECT_EQ(run(command).status, 0);
    }
}

}

std::array<fs::path, 11> locations()
{
    const auto library = home() / "Library";
    return {
        "/Applications/Quorlen.app",
        "/Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist",
        "/Library/PrivilegedHelperTools/com.vendrel.QuorlenDaemon",
        library / "Application Support/Quorlen",
        library / "Application Support/com.vendrel.QuorlenAgent",
        library / "Application Support/Vendrel",
        library / "LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist",
        library / "Preferences/com.vendrel.Quorlen3.plist",
        library / "Preferences/com.vendrel.Quorlen.plist",
        library / "Caches/com.vendrel.Quorlen3",
        library / "Logs/Quorlen",
    };
}

fs::path licence()
{
    return home() / "Library/Application Support/Quorlen/.licence";
}

void RoomTest::SetUp()
{
    ASSERT_TRUE(fs::exists("/opt/practice/stage")) << "this program runs only in a practice Mac";
    removeProduct();
    for (const auto &folder : { desktop(), temporaryFolder() }) {
        for (const auto &name : filesOfTheTool(folder)) {
            fs::remove_all(folder / name);
        }
    }
    [controller.get() buildWindow];
    _oldLog = log().size();
}

void RoomTest::TearDown()
{
    [[controller.get() window] close];
}

std::string RoomTest::log() const
{
    return utf8([[controller.get() logView] string]);
}

Strings RoomTest::newLines() const
{
    Strings lines;
    std::istringstream stream(log().substr(_oldLog));
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string RoomTest::statusLine() const
{
    return utf8([[controller.get() statusLabel] stringValue]);
}

std::pair<bool, bool> RoomTest::enabled() const
{
    return { [[controller.get() removeButton] isEnabled], [[controller.get() overrideButton] isEnabled] };
}

fs::path desktop()
{
    return home() / "Desktop";
}

Strings filesOfTheToolOnTheDesktop()
{
    return filesOfTheTool(desktop());
}

fs::path onlyArchive()
{
    Strings archives = filesOfTheToolOnTheDesktop();
    std::erase_if(archives, [](const std::string &name) { return !name.ends_with(".zip"); });
    EXPECT_EQ(archives.size(), 1u) << "the archives on the Desktop";
    return archives.empty() ? fs::path() : desktop() / archives.front();
}

Strings temporaryFolders()
{
    return filesOfTheTool(temporaryFolder());
}

fs::path temporaryFolder()
{
    return utf8(NSTemporaryDirectory());
}

std::string licenceInside(const fs::path &archive)
{
    const auto listing = run({ "/usr/bin/bsdtar", "-tf", archive });
    EXPECT_TRUE(std::regex_match(listing.output, std::regex("(.*/\n)*(.*/)?\\.licence\n"))) << listing.output;
    return run({ "/usr/bin/bsdtar", "-xOf", archive }).output;
}

std::vector<Strings> callsOf(const std::string &tool)
{
    const auto report = run({ "pkexec", "/opt/practice/stage", "report", "--json" });
    EXPECT_EQ(report.status, 0);
    NSData *bytes = [ns(report.output) dataUsingEncoding:NSUTF8StringEncoding];
    NSDictionary *facts = [NSJSONSerialization JSONObjectWithData:bytes options:0 error:NULL];
    std::vector<Strings> calls;
    for (NSDictionary *call in [facts objectForKey:@"calls"]) {
        if (utf8([call objectForKey:@"tool"]) == tool) {
            Strings arguments;
            for (NSString *argument in [call objectForKey:@"arguments"]) {
                arguments.push_back(utf8(argument));
            }
            calls.push_back(arguments);
        }
    }
    return calls;
}
