// The script and the quoted texts that the controller returns, and the script's run where nothing is installed.

#import "removal/AppDelegate+CleanupScript.h"

#include "platform/gnustep/missing/PrivilegedShell.hpp"
#import "platform/Text.hpp"
#include "removal/CleanupScript.hpp"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/RoomTest.hpp"

#include <sstream>

namespace fs = std::filesystem;

namespace
{

class UsersScript : public RoomTest
{
protected:
    std::string script() const { return utf8([controller.get() cleanupShellScript]); }
    /// The paths that the script deletes, as they are written in it.
    Strings deleted() const
    {
        Strings words;
        std::istringstream lines(script());
        for (std::string line; std::getline(lines, line);) {
            const std::string before = "/bin/rm -rf ", after = " 2>/dev/null || true";
            if (line.starts_with(before) && line.ends_with(after)) {
                words.push_back(line.substr(before.size(), line.size() - before.size() - after.size()));
            }
        }
        return words;
    }
};

/// Every entry in the product's folders, with its attributes.
Strings inventory()
{
    return { run({ "find", "/Applications", "/Library", home(), "-printf", "%p %y %s %T@ %m %u\n" }).output };
}

}

TEST_F(UsersScript, IsMadeForTheHomeOfTheUserWhoRunsTheTool)
{
    EXPECT_EQ(script(), utf8(nsString(cleanupScript(u"/Users/ann"))));
}

TEST_F(UsersScript, AsksForTheHomeOncePerCall)
{
    for (const std::string home : { "/Users/bob", "/Users/eve" }) {
        const ReportedHome reported(home);

        EXPECT_EQ(deleted()[10], "'" + home + "/Library/Logs/Quorlen'");
        EXPECT_EQ(reported.timesAsked(), 1);
    }
}

TEST_F(UsersScript, QuotesStringsOfThePlatform)
{
    NSString *text = ns("o'neil \"\\ \n\U0001F600");

    EXPECT_EQ(utf8([controller.get() shellQuotedString:text]), "'o'\\''neil \"\\ \n\U0001F600'");
    EXPECT_EQ(utf8([controller.get() appleScriptQuotedString:text]), "\"o'neil \\\"\\\\ \\n\U0001F600\"");
}

TEST_F(UsersScript, DeletesNothingPrintsNoErrorAndSucceedsIfNothingIsInstalled)
{
    const auto before = inventory();

    const auto end = runAsRoot(script());

    EXPECT_EQ(end.outcome, ShellResult::Outcome::Succeeded);
    EXPECT_EQ(end.code, 0);
    EXPECT_EQ(end.error, "");
    EXPECT_EQ(inventory(), before);
}
