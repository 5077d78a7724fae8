/// What the tests of detection, removal and licence start from, and their eyes.
#pragma once

#import "app/AppDelegate.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

#include <array>

using Strings = std::vector<std::string>;

/// The product's eleven locations, as absolute paths for this user.
std::array<std::filesystem::path, 11> locations();

/// The licence file's path.
std::filesystem::path licence();

/// What a scan logs that finds nothing.
extern const Strings nothingFoundLines;

/// Keeps a state of the practice Mac staged while it lives.
class Staged
{
public:
    /// @param verb Staged now, as `stage` takes it.
    /// @param back Staged at the end.
    Staged(const Strings &verb, Strings back);
    ~Staged();
    Staged(const Staged &) = delete;
    Staged &operator=(const Staged &) = delete;

private:
    const Strings _back;
};

/// Until the end of the block the user refuses administrator rights.
struct RightsRefused : Staged {
    RightsRefused() : Staged({ "rights", "refused" }, { "rights", "granted" }) { }
};

/// Until the end of the block the archiver is another: "missing", "not-a-program", "fails", "silent" (success without a
/// file) or "dies".
struct Archiver : Staged {
    explicit Archiver(const std::string &mode) : Staged({ "tool", "ditto", mode }, { "tool", "ditto", "real" }) { }
};

/// Until the end of the block the Desktop is "missing", "read-only" or "full".
struct Desktop : Staged {
    explicit Desktop(const std::string &state) : Staged({ "desktop", state }, { "desktop", "normal" }) { }
};

/// A practice Mac on which nothing of the product is left, with none of the tool's files on the Desktop and in the
/// temporary folder, and a controller with its window.
class RoomTest : public testing::Test
{
protected:
    /// @param type The controller's class.
    explicit RoomTest(Class type = [AppDelegate class]) :
        controller(adopt(static_cast<AppDelegate *>([[type alloc] init])))
    {
    }
    void SetUp() override;
    void TearDown() override;

    /// The whole activity log.
    std::string log() const;
    /// The log's lines since the test began.
    Strings newLines() const;
    std::string statusLine() const;
    /// Whether the remove button, then the override button is enabled.
    std::pair<bool, bool> enabled() const;

    const Retained<AppDelegate> controller;

private:
    std::size_t _oldLog = 0;
};

std::filesystem::path desktop();
/// The names of the tool's files on the Desktop, in order.
Strings filesOfTheToolOnTheDesktop();
/// The one archive on the Desktop; a test failure when there is none or are several.
std::filesystem::path onlyArchive();
/// The names of the tool's folders in the temporary folder, in order.
Strings temporaryFolders();
/// The platform's temporary folder.
std::filesystem::path temporaryFolder();
/// What the licence holds in an archive, whatever folder of it the entry lies in; a test failure unless there is
/// exactly one entry of the name and it can be read.
std::string licenceInside(const std::filesystem::path &archive);
/// The arguments of each call of a tool of the practice Mac ("/usr/bin/ditto") since it came up.
std::vector<Strings> callsOf(const std::string &tool);
