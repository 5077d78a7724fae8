#include "removal/CleanupScript.hpp"

#include "detection/KnownLocations.hpp"
#include "removal/Quoting.hpp"

#include <array>

namespace
{

constexpr std::u16string_view firstLines =
    u"set -e\n"
    u"/bin/launchctl stop com.vendrel.QuorlenAgent 2>/dev/null || true\n"
    u"/usr/bin/pkill -f com.vendrel.QuorlenAgent 2>/dev/null || true\n"
    u"/bin/launchctl stop com.vendrel.QuorlenDaemon 2>/dev/null || true\n"
    u"/bin/launchctl bootout system /Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist 2>/dev/null || true\n"
    u"/bin/launchctl remove com.vendrel.QuorlenDaemon 2>/dev/null || true\n"
    u"/usr/bin/pkill -f com.vendrel.QuorlenDaemon 2>/dev/null || true\n";

// The script's own list of what it deletes. It stands here, next to the commands that root runs, and is not taken from
// the detection's list.
constexpr std::array<std::u16string_view, 3> absolutePaths {
    u"/Applications/Quorlen.app",
    u"/Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist",
    u"/Library/PrivilegedHelperTools/com.vendrel.QuorlenDaemon",
};

constexpr std::array<std::u16string_view, 8> homeRelativePaths {
    u"Library/Application Support/Quorlen",
    u"Library/Application Support/com.vendrel.QuorlenAgent",
    u"Library/Application Support/Vendrel",
    u"Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist",
    u"Library/Preferences/com.vendrel.Quorlen3.plist",
    u"Library/Preferences/com.vendrel.Quorlen.plist",
    u"Library/Caches/com.vendrel.Quorlen3",
    u"Library/Logs/Quorlen",
};

static_assert(absolutePaths == known_locations::absolute && homeRelativePaths == known_locations::homeRelative,
    "The locations that are detected and deleted differ: change both lists.");

constexpr std::u16string_view lastLines = u"/usr/bin/sfltool resetbtm 2>/dev/null || true\n"
                                          u"exit 0";

std::u16string pathInHome(std::u16string_view homeDirectory, std::u16string_view relativePath)
{
    std::u16string path { homeDirectory };
    if (!path.ends_with(u'/')) {
        path += u'/';
    }
    return path += relativePath;
}

void appendRemoval(std::u16string &script, std::u16string_view path)
{
    script += u"/bin/rm -rf ";
    script += shellQuoted(path);
    script += u" 2>/dev/null || true\n";
}

}

std::u16string cleanupScript(std::u16string_view homeDirectory)
{
    std::u16string script { firstLines };
    for (const auto path : absolutePaths) {
        appendRemoval(script, path);
    }
    for (const auto path : homeRelativePaths) {
        appendRemoval(script, pathInHome(homeDirectory, path));
    }
    return script += lastLines;
}
