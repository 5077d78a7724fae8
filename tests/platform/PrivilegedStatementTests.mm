#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

/// The result of running a source: a text, or an error record.
struct Outcome {
    bool succeeded;
    std::string text;
    int number = 0;
    std::string message = {};
};

Outcome runSource(NSString *source)
{
    const auto script = adopt([[NSAppleScript alloc] initWithSource:source]);
    NSDictionary *record = nil;
    NSAppleEventDescriptor *result = [script.get() executeAndReturnError:&record];
    if (result) {
        EXPECT_FALSE(record) << "there is both a result and an error record";
        return { .succeeded = true, .text = utf8([result stringValue]) };
    }
    EXPECT_EQ(utf8([record objectForKey:NSAppleScriptErrorBriefMessage]),
        utf8([record objectForKey:NSAppleScriptErrorMessage]));
    return { .succeeded = false,
        .text = {},
        .number = [[record objectForKey:NSAppleScriptErrorNumber] intValue],
        .message = utf8([record objectForKey:NSAppleScriptErrorMessage]) };
}

/// Runs a shell text through the privileged statement. This function quotes the text for AppleScript.
Outcome runShell(const std::string &text)
{
    NSString *quoted = ns(text);
    for (NSArray *pair in @[ @[ @"\\", @"\\\\" ], @[ @"\"", @"\\\"" ] ]) {
        quoted = [quoted stringByReplacingOccurrencesOfString:[pair objectAtIndex:0] withString:[pair objectAtIndex:1]];
    }
    return runSource([NSString stringWithFormat:@"do shell script \"%@\" with administrator privileges", quoted]);
}

std::size_t openDescriptors()
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

/// An unused file name in a folder that every user may write.
fs::path unusedFile()
{
    static int number = 0;
    return fs::temp_directory_path() / ("privileged-" + std::to_string(getpid()) + "-" + std::to_string(number++));
}

struct PrivilegedStatement : testing::Test {
    PrivilegedStatement() { stage({ "rights", "granted" }); }
};

}

TEST_F(PrivilegedStatement, RunsItsTextAsRoot)
{
    EXPECT_NE(getuid(), 0U) << "these tests must run as an ordinary user";
    const Outcome run = runShell("id -ru; id -u");
    EXPECT_TRUE(run.succeeded) << run.message;
    EXPECT_EQ(run.text, "0\r0");
}

TEST_F(PrivilegedStatement, ReturnsStandardOutputWithTheLineEndsOfAMac)
{
    EXPECT_EQ(runShell("printf 'one\\ntwo\\n'; echo unheard >&2").text, "one\rtwo");
    EXPECT_EQ(runShell("printf 'one\\n\\n'").text, "one\r");
    EXPECT_EQ(runShell("printf one").text, "one");
    EXPECT_EQ(runShell("true").text, "");
    EXPECT_EQ(runShell("printf '\\303\\251'").text, "\u00e9");
    EXPECT_EQ(runShell("printf '\\351'").text, "\u00e9") << "output that is not UTF-8 is read as Latin-1";
}

TEST_F(PrivilegedStatement, FailsWithTheShellsStatusAndItsErrorOutput)
{
    const Outcome run = runShell("echo half; echo 'no luck' >&2; exit 3");
    EXPECT_FALSE(run.succeeded);
    EXPECT_EQ(run.number, 3);
    EXPECT_EQ(run.message, "no luck");
    EXPECT_EQ(runShell("exit 1").message, "The command exited with a non-zero status.");
    EXPECT_EQ(runShell("kill -KILL $$").number, 128 + 9);
    EXPECT_EQ(runShell("if").number, 2) << "a shell syntax error";
}

TEST_F(PrivilegedStatement, DoesNotReportAShellsOwn126And127AsARefusal)
{
    EXPECT_EQ(runShell("exit 126").number, 126);
    EXPECT_EQ(runShell("exit 127").number, 127);
    EXPECT_EQ(runShell("echo 'Not authorized' >&2; exit 127").number, 127);
}

TEST_F(PrivilegedStatement, IsCanceledWhenTheRightsAreRefused)
{
    for (const char *refusal : { "refused", "dismissed" }) {
        stage({ "rights", refusal });
        const fs::path trace = unusedFile();
        const Outcome run = runShell("echo >'" + trace.string() + "'");
        EXPECT_FALSE(run.succeeded) << refusal;
        EXPECT_EQ(run.number, -128) << refusal << ": " << run.message;
        EXPECT_EQ(run.message, "User canceled.") << refusal;
        EXPECT_FALSE(fs::exists(trace)) << refusal;
    }
}

TEST_F(PrivilegedStatement, HidesItsTextFromCommandLines)
{
    // If the marker were on the shell's command line, pkill would kill the shell.
    EXPECT_EQ(runShell("/usr/bin/pkill -f no-such-agent-marker; echo survived").text, "survived");
}

TEST_F(PrivilegedStatement, KeepsItsTextInSealedMemory)
{
    EXPECT_EQ(runShell("readlink /proc/$$/fd/0").text.rfind("/memfd:", 0), 0U);
    EXPECT_EQ(runShell("echo more 2>/dev/null >>/proc/$$/fd/0 && echo changed || echo sealed").text, "sealed");
}

TEST_F(PrivilegedStatement, GivesItsCommandsAnEmptyInput)
{
    // Longer than the buffer of any shell for its script.
    std::string text = "echo before\ncat\n";
    for (int line = 0; line < 10000; ++line) {
        text += ": padding\n";
    }
    EXPECT_EQ(runShell(text + "echo after").text, "before\rafter");
}

TEST_F(PrivilegedStatement, PassesTheTextToTheShellByteForByte)
{
    EXPECT_EQ(runShell("printf '%s' 'a\\b\"c\td \u00e9\u4e16 $(x)` '\\''q'").text, "a\\b\"c\td \u00e9\u4e16 $(x)` 'q");
}

TEST_F(PrivilegedStatement, ReadsALargeOutputOnBothStreams)
{
    const Outcome run = runShell("for i in 1 2 3 4; do head -c 200000 /dev/zero | tr '\\0' o; "
                                 "head -c 200000 /dev/zero | tr '\\0' e >&2; done");
    EXPECT_EQ(run.text, std::string(800000, 'o'));
}

TEST_F(PrivilegedStatement, ReturnsWhileADetachedCommandStillRuns)
{
    const fs::path note = unusedFile();
    const Outcome run = runShell("/bin/sh -c 'echo $$ >" + note.string() + "; exec /bin/sleep 1000' >/dev/null 2>&1 &");
    EXPECT_TRUE(run.succeeded) << run.message;
    EXPECT_TRUE(handleEventsUntil([&] { return fs::exists(note) && fs::file_size(note) > 0; }));
    EXPECT_TRUE(runShell("kill $(cat '" + note.string() + "') && rm '" + note.string() + "'").succeeded)
        << "the detached command no longer runs";
}

TEST_F(PrivilegedStatement, WorksForAUserWithAShellThatIsNotInEtcShells)
{
    const std::string before = getenv("SHELL") ? getenv("SHELL") : "";
    setenv("SHELL", "/no/such/shell", 1);
    const Outcome run = runShell("echo done");
    setenv("SHELL", before.c_str(), 1);
    EXPECT_EQ(run.text, "done") << run.message;
}

TEST_F(PrivilegedStatement, LeavesNoDescriptorOpen)
{
    runShell("true");
    const std::size_t before = openDescriptors();
    runShell("true");
    runShell("exit 1");
    runSource(@"beep");
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PrivilegedStatement, ReportsACompileErrorForAnyOtherSource)
{
    const Outcome run = runSource(@"do shell script \"rm x\" & y with administrator privileges");
    EXPECT_FALSE(run.succeeded);
    EXPECT_EQ(run.number, -2741);
    EXPECT_EQ(run.message, "The source is not a shell statement with administrator privileges.");
}

TEST_F(PrivilegedStatement, RefusesATextThatCannotReachTheShellUnchanged)
{
    const unichar null = 0;
    NSString *source = [NSString stringWithFormat:@"do shell script \"echo a%@b\" with administrator privileges",
        [NSString stringWithCharacters:&null length:1]];
    const Outcome run = runSource(source);
    EXPECT_FALSE(run.succeeded);
    EXPECT_EQ(run.number, -1700) << run.message;
}

TEST_F(PrivilegedStatement, MayBeRunWithoutAskingForTheErrorRecord)
{
    const auto script = adopt([[NSAppleScript alloc] initWithSource:@"beep"]);
    EXPECT_FALSE([script.get() executeAndReturnError:nullptr]);
}

TEST_F(PrivilegedStatement, MayBeRunTwice)
{
    const auto script =
        adopt([[NSAppleScript alloc] initWithSource:@"do shell script \"echo again\" with administrator privileges"]);
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(utf8([[script.get() executeAndReturnError:nullptr] stringValue]), "again");
    }
}
