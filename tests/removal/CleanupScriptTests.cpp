#include "removal/CleanupScript.hpp"

#include <gtest/gtest.h>

/// The whole script for a home directory that is written like this between the shell's quotes.
static std::u16string scriptFor(std::u16string_view home)
{
    std::u16string script =
        u"set -e\n"
        u"/bin/launchctl stop com.vendrel.QuorlenAgent 2>/dev/null || true\n"
        u"/usr/bin/pkill -f com.vendrel.QuorlenAgent 2>/dev/null || true\n"
        u"/bin/launchctl stop com.vendrel.QuorlenDaemon 2>/dev/null || true\n"
        u"/bin/launchctl bootout system /Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist 2>/dev/null || true\n"
        u"/bin/launchctl remove com.vendrel.QuorlenDaemon 2>/dev/null || true\n"
        u"/usr/bin/pkill -f com.vendrel.QuorlenDaemon 2>/dev/null || true\n"
        u"/bin/rm -rf '/Applications/Quorlen.app' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Library/PrivilegedHelperTools/com.vendrel.QuorlenDaemon' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Application Support/Quorlen' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Application Support/com.vendrel.QuorlenAgent' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Application Support/Vendrel' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Preferences/com.vendrel.Quorlen3.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Preferences/com.vendrel.Quorlen.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Caches/com.vendrel.Quorlen3' 2>/dev/null || true\n"
        u"/bin/rm -rf 'HOME/Library/Logs/Quorlen' 2>/dev/null || true\n"
        u"/usr/bin/sfltool resetbtm 2>/dev/null || true\n"
        u"exit 0";
    const std::u16string_view placeholder = u"HOME";
    for (std::size_t place; (place = script.find(placeholder)) != script.npos;) {
        script.replace(place, placeholder.size(), home);
    }
    return script;
}

TEST(CleanupScript, HasItsTwentyLinesInOrderAndNoLineFeedAtTheEnd)
{
    EXPECT_EQ(cleanupScript(u"/Users/ann"), scriptFor(u"/Users/ann"));
}

TEST(CleanupScript, EscapesTheQuoteInAHomeInEachOfItsEightPaths)
{
    EXPECT_EQ(cleanupScript(u"/Users/o'neil"), scriptFor(uR"(/Users/o'\''neil)"));
}

TEST(CleanupScript, JoinsPathsToTheHomeByOneSlash)
{
    EXPECT_EQ(cleanupScript(u"/Users/ann/"), scriptFor(u"/Users/ann"));
    EXPECT_EQ(cleanupScript(u"/"), scriptFor(u""));
    EXPECT_EQ(cleanupScript(u"/Users/a b "), scriptFor(u"/Users/a b "));
}
