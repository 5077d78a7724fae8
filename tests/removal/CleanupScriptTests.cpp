#include "removal/CleanupScript.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace
{

std::vector<std::u16string> lines(std::u16string_view text)
{
    std::vector<std::u16string> result;
    for (;;) {
        const auto end = text.find(u'\n');
        result.emplace_back(text.substr(0, end));
        if (end == text.npos) {
            return result;
        }
        text.remove_prefix(end + 1);
    }
}

}

TEST(CleanupScript, HasItsTwentyLinesInOrderAndNoLineFeedAtTheEnd)
{
    EXPECT_EQ(cleanupScript(u"/Users/ann"),
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
        u"/bin/rm -rf '/Users/ann/Library/Application Support/Quorlen' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/Application Support/com.vendrel.QuorlenAgent' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/Application Support/Vendrel' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/Preferences/com.vendrel.Quorlen3.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/Preferences/com.vendrel.Quorlen.plist' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/Caches/com.vendrel.Quorlen3' 2>/dev/null || true\n"
        u"/bin/rm -rf '/Users/ann/Library/Logs/Quorlen' 2>/dev/null || true\n"
        u"/usr/bin/sfltool resetbtm 2>/dev/null || true\n"
        u"exit 0");
}

TEST(CleanupScript, EscapesTheQuoteInAHomeInEachOfItsEightPaths)
{
    const auto script = lines(cleanupScript(u"/Users/o'neil"));

    ASSERT_EQ(script.size(), 20u);
    EXPECT_EQ(script[17], uR"(/bin/rm -rf '/Users/o'\''neil/Library/Logs/Quorlen' 2>/dev/null || true)");
    for (std::size_t index = 10; index < 18; ++index) {
        EXPECT_TRUE(script[index].starts_with(uR"(/bin/rm -rf '/Users/o'\''neil/Library/)")) << "line " << index + 1;
    }
}

TEST(CleanupScript, JoinsPathsToTheHomeByOneSlash)
{
    for (const auto &[home, deleted] : std::vector<std::pair<std::u16string, std::u16string>> {
             { u"/Users/ann", u"'/Users/ann/Library/Logs/Quorlen'" },
             { u"/Users/ann/", u"'/Users/ann/Library/Logs/Quorlen'" },
             { u"/", u"'/Library/Logs/Quorlen'" },
             { u"/Users/a b ", u"'/Users/a b /Library/Logs/Quorlen'" },
         }) {
        EXPECT_EQ(lines(cleanupScript(home))[17], u"/bin/rm -rf " + deleted + u" 2>/dev/null || true");
    }
}
