#import "tests/support/RoomTest.hpp"

#import "ui/AppDelegate+MainWindow.h"

#include <algorithm>
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
    const auto all = locations();
    Strings systemWide { "pkexec", "/bin/rm", "-rf" };
    for (const auto &location : all) {
        std::error_code absent;
        if (fs::symlink_status(location, absent).type() == fs::file_type::not_found) {
            continue;
        }
        if (std::find(all.begin(), all.begin() + 3, location) != all.begin() + 3) {
            systemWide.push_back(location);
        } else {
            fs::remove_all(location);
        }
    }
    if (systemWide.size() > 3) {
        EXPECT_EQ(run(systemWide).status, 0);
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

Staged::Staged(const Strings &verb, Strings back) : _back(std::move(back))
{
    stage(verb);
}

Staged::~Staged()
{
    stage(_back);
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
    std::istringstream text(log().substr(_oldLog));
    for (std::string line; std::getline(text, line);) {
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
    fs::path archive;
    for (const auto &name : filesOfTheToolOnTheDesktop()) {
        if (name.ends_with(".zip")) {
            EXPECT_TRUE(archive.empty()) << "a second archive: " << name;
            archive = desktop() / name;
        }
    }
    EXPECT_FALSE(archive.empty()) << "there is no archive on the Desktop";
    return archive;
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
    EXPECT_EQ(listing.status, 0) << archive << " is not an archive";
    Strings entries;
    std::istringstream names(listing.output);
    for (std::string name; std::getline(names, name);) {
        if (!name.ends_with('/')) {
            entries.push_back(name);
        }
    }
    EXPECT_EQ(entries.size(), 1u) << listing.output;
    EXPECT_EQ(entries.empty() ? fs::path() : fs::path(entries[0]).filename(), ".licence");
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
