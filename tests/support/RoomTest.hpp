/// The fixture of the tests of the product's folders, and functions that read the practice Mac's state.
#pragma once

#import "app/AppDelegate.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

#include <array>

using Strings = std::vector<std::string>;

/// The strings of both lists, in this order.
inline Strings operator+(Strings first, const Strings &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The product's eleven locations, as absolute paths for this user.
std::array<std::filesystem::path, 11> locations();

/// The licence file's path.
std::filesystem::path licence();

/// The log lines of a scan that finds nothing.
extern const Strings nothingFoundLines;

/// Changes the state of the practice Mac for its own lifetime.
class Staged
{
public:
    /// @param verb The words for /opt/practice/stage that set the state now.
    /// @param back The words that restore the state at the end.
    Staged(const Strings &verb, Strings back) : _back(std::move(back)) { stage(verb); }
    ~Staged() { stage(_back); }
    Staged(Staged &&) = delete;

private:
    const Strings _back;
};

/// Until the end of the block the user refuses administrator rights.
struct RightsRefused : Staged {
    RightsRefused() : Staged({ "rights", "refused" }, { "rights", "granted" }) { }
};

/// Until the end of the block the archiver has this mode: "missing", "not-a-program", "fails", "silent" (success
/// without a file) or "dies".
struct Archiver : Staged {
    explicit Archiver(const std::string &mode) : Staged({ "tool", "ditto", mode }, { "tool", "ditto", "real" }) { }
};

/// Until the end of the block the Desktop is "missing", "read-only" or "full".
struct Desktop : Staged {
    explicit Desktop(const std::string &state) : Staged({ "desktop", state }, { "desktop", "normal" }) { }
};

/// A controller with its window, on a practice Mac without the product and without files of the tool on the Desktop and
/// in the temporary folder.
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
    /// Whether the remove button is enabled (first) and whether the override button is enabled (second).
    std::pair<bool, bool> enabled() const;

    const Retained<AppDelegate> controller;

private:
    std::size_t _oldLog = 0;
};

std::filesystem::path desktop();
/// The names of the tool's files on the Desktop, in order.
Strings filesOfTheToolOnTheDesktop();
/// The one archive on the Desktop. The test fails if there is none or more than one.
std::filesystem::path onlyArchive();
/// The names of the tool's folders in the temporary folder, in order.
Strings temporaryFolders();
/// The platform's temporary folder.
std::filesystem::path temporaryFolder();
/// The content of the licence in an archive, in whichever folder it is. The test fails unless the archive has exactly
/// one readable entry of that name.
std::string licenceInside(const std::filesystem::path &archive);
/// The arguments of each call of a tool of the practice Mac ("/usr/bin/ditto") since it came up.
std::vector<Strings> callsOf(const std::string &tool);
