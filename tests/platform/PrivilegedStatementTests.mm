#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

Retained<NSAppleScript> script(NSString *source)
{
    return adopt([[NSAppleScript alloc] initWithSource:source]);
}

/// The result of a source: its text, or "error NUMBER: MESSAGE".
std::string resultOf(NSString *source)
{
    NSDictionary *record = nil;
    NSAppleEventDescriptor *text = [script(source).get() executeAndReturnError:&record];
    if (text) {
        EXPECT_FALSE(record) << "there is both a result and an error record";
        return utf8([text stringValue]);
    }
    // By the values of the keys on macOS, because the log shows them.
    NSString *message = [record objectForKey:@"NSAppleScriptErrorMessage"];
    EXPECT_EQ(utf8([record objectForKey:@"NSAppleScriptErrorBriefMessage"]), utf8(message));
    NSNumber *number = [record objectForKey:@"NSAppleScriptErrorNumber"];
    return utf8([NSString stringWithFormat:@"error %@: %@", number, message]);
}

NSString *privileged(const std::string &text)
{
    const std::string quoted = std::regex_replace(text, std::regex(R"([\\"])"), R"(\$&)");
    return ns("do shell script \"" + quoted + "\" with administrator privileges");
}

std::string resultOfShell(const std::string &text)
{
    return resultOf(privileged(text));
}

std::ptrdiff_t openDescriptors()
{
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

struct PrivilegedStatement : testing::Test {
    PrivilegedStatement() { stage({ "rights", "granted" }); }
};

}

TEST_F(PrivilegedStatement, GivesTheOutputOrTheFailureOfARootShell)
{
    const std::string noWords = "The command exited with a non-zero status.";
    // Longer than the buffer of any shell for its script.
    std::string padding;
    for (int line = 0; line < 10000; ++line) {
        padding += ": padding\n";
    }
    const std::pair<std::string, std::string> rows[] = {
        { "id -ru; id -u", "0\r0" },
        { "printf 'one\\ntwo\\n'; echo unheard >&2", "one\rtwo" },
        { "printf 'one\\n\\n'", "one\r" },
        { "printf one", "one" },
        { "", "" },
        { "printf '\\303\\251'", "\u00e9" },
        { "printf '\\351'", "\u00e9" }, // not UTF-8, so it is read as Latin-1
        { "printf '%s' 'a\\b\"c\td \u00e9\u4e16 $(x)` '\\''q'", "a\\b\"c\td \u00e9\u4e16 $(x)` 'q" },
        { "echo half; echo 'no luck' >&2; exit 3", "error 3: no luck" },
        { "exit 1", "error 1: " + noWords },
        { "kill -KILL $$", "error 137: " + noWords },
        // The two statuses by which pkexec reports a refusal.
        { "exit 126", "error 126: " + noWords },
        { "echo 'Not authorized' >&2; exit 127", "error 127: Not authorized" },
        // If the marker were on the shell's command line, pkill would kill the shell.
        { "/usr/bin/pkill -f no-such-agent-marker; echo survived", "survived" },
        { "readlink /proc/$$/fd/0", "/memfd:shell-text (deleted)" },
        { "echo more 2>/dev/null >>/proc/$$/fd/0 && echo changed || echo sealed", "sealed" },
        { "/bin/sleep infinity >/dev/null 2>&1 & echo 'not waited for'", "not waited for" },
        // The commands get an empty input.
        { "echo before\ncat\n" + padding + "echo after", "before\rafter" },
        { "for i in 1 2 3 4; do head -c 200000 /dev/zero | tr '\\0' o; head -c 200000 /dev/zero | tr '\\0' e >&2; done",
            std::string(800000, 'o') },
    };
    ASSERT_NE(getuid(), 0U) << "these tests must run as an ordinary user";
    setenv("SHELL", "/no/such/shell", 1); // pkexec itself serves only callers whose shell is in /etc/shells.
    resultOfShell("true");
    const auto before = openDescriptors();
    for (const auto &[text, result] : rows) {
        EXPECT_EQ(resultOfShell(text), result) << text;
    }
    EXPECT_EQ(openDescriptors(), before);
    unsetenv("SHELL");
}

TEST_F(PrivilegedStatement, IsCanceledWhenTheRightsAreRefused)
{
    const fs::path trace = fs::temp_directory_path() / "refused";
    for (const char *refusal : { "refused", "dismissed" }) {
        stage({ "rights", refusal });
        EXPECT_EQ(resultOfShell("echo >'" + trace.string() + "'"), "error -128: User canceled.") << refusal;
        EXPECT_FALSE(fs::exists(trace)) << refusal;
    }
}

TEST_F(PrivilegedStatement, RefusesAnyOtherSource)
{
    EXPECT_EQ(resultOf(@"beep"), "error -2741: The source is not a shell statement with administrator privileges.");
    NSMutableString *withNull = [NSMutableString stringWithString:privileged("echo a0b")];
    const unichar null = 0;
    [withNull replaceCharactersInRange:[withNull rangeOfString:@"0"]
                            withString:[NSString stringWithCharacters:&null length:1]];
    EXPECT_EQ(resultOf(withNull), "error -1700: The command holds a character that no shell can be given.");
}

TEST_F(PrivilegedStatement, MayBeRunTwiceAndWithoutAnErrorRecord)
{
    const auto again = script(privileged("echo again"));
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(utf8([[again.get() executeAndReturnError:nullptr] stringValue]), "again");
    }
    EXPECT_FALSE([script(@"beep").get() executeAndReturnError:nullptr]);
}
