#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

/// A temporary folder that the test removes.
struct Tasks : testing::Test {
    fs::path folder = [] {
        std::string pattern = fs::temp_directory_path() / "task-tests.XXXXXX";
        return fs::path(mkdtemp(pattern.data()));
    }();
    ~Tasks() override { fs::remove_all(folder); }

    /// Makes an executable file with these bytes.
    fs::path program(const std::string &name, const std::string &bytes) const
    {
        const fs::path file = folder / name;
        write(file, bytes);
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }
};

Retained<NSTask> task(const fs::path &path, NSArray *arguments)
{
    auto made = adopt([[NSTask alloc] init]);
    [made.get() setLaunchPath:ns(path)];
    [made.get() setArguments:arguments];
    return made;
}

/// Runs a shell text and waits for its end.
Retained<NSTask> ranShell(NSString *text)
{
    auto made = task("/bin/sh", @[ @"-c", text ]);
    [made.get() launch];
    [made.get() waitUntilExit];
    return made;
}

/// The reason of the exception that the work raises. It must be an NSInvalidArgumentException.
std::string reasonRaisedBy(void (^work)(void))
{
    @try {
        work();
    } @catch (NSException *exception) {
        EXPECT_EQ(utf8([exception name]), "NSInvalidArgumentException");
        return utf8([exception reason]);
    }
    ADD_FAILURE() << "nothing was raised";
    return {};
}

std::string reasonOfLaunching(const fs::path &path)
{
    const auto made = task(path, @[]);
    NSTask *const unretained = made.get();
    return reasonRaisedBy(^{ [unretained launch]; });
}

std::size_t openDescriptors()
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

}

TEST_F(Tasks, ReportTheExitStatus)
{
    for (const int status : { 0, 1, 3, 127, 255 }) {
        const auto ended = ranShell([NSString stringWithFormat:@"exit %d", status]);
        EXPECT_EQ([ended.get() terminationStatus], status);
    }
}

TEST_F(Tasks, ReportTheSignalThatEndedTheProgram)
{
    const auto ended = ranShell(@"kill -TERM $$");
    EXPECT_EQ([ended.get() terminationStatus], SIGTERM);
}

TEST_F(Tasks, RaiseForAMissingProgramNamingIt)
{
    EXPECT_EQ(reasonOfLaunching("/no/such program"),
        "could not start the launch path (/no/such program): No such file or directory");
}

TEST_F(Tasks, RaiseForAFileThatMayNotBeRun)
{
    write(folder / "plain", "text");
    EXPECT_EQ(reasonOfLaunching(folder / "plain"),
        "could not start the launch path (" + (folder / "plain").string() + "): Permission denied");
    EXPECT_EQ(
        reasonOfLaunching(folder), "could not start the launch path (" + folder.string() + "): Permission denied");
}

TEST_F(Tasks, RaiseForAnExecutableThatIsNotAProgramAndDoNotDamageTheParent)
{
    const fs::path garbage = program("garbage", "no program\n");
    EXPECT_EQ(
        reasonOfLaunching(garbage), "could not start the launch path (" + garbage.string() + "): Exec format error");
    // GNUstep's NSTask damages the parent here: its string literals are empty afterwards.
    NSArray *literal = @[ @"a", @"b", @"c" ];
    EXPECT_EQ(utf8([literal componentsJoinedByString:@","]), "a,b,c");
    EXPECT_EQ([ranShell(@"exit 5").get() terminationStatus], 5);
}

TEST_F(Tasks, MayBeLaunchedAgainAfterALaunchThatFailed)
{
    const auto made = task(folder / "later", @[]);
    NSTask *const unretained = made.get();
    reasonRaisedBy(^{ [unretained launch]; });
    program("later", "#!/bin/sh\nexit 4\n");
    [made.get() launch];
    [made.get() waitUntilExit];
    EXPECT_EQ([made.get() terminationStatus], 4);
}

TEST_F(Tasks, RaiseWhenTheyAreUsedInTheWrongOrder)
{
    const auto made = adopt([[NSTask alloc] init]);
    NSTask *const unretained = made.get();
    EXPECT_EQ(reasonRaisedBy(^{ [unretained launch]; }), "must provide a launch path");
    [unretained setLaunchPath:@"/bin/cat"];
    EXPECT_EQ(reasonRaisedBy(^{ [unretained waitUntilExit]; }), "task not launched");
    EXPECT_EQ(reasonRaisedBy(^{ [unretained terminationStatus]; }), "task not launched");
    [unretained setLaunchPath:@"/bin/true"];
    [unretained launch];
    EXPECT_EQ(reasonRaisedBy(^{ [unretained terminationStatus]; }), "task still running");
    EXPECT_EQ(reasonRaisedBy(^{ [unretained launch]; }), "task already launched");
    [unretained waitUntilExit];
    [unretained waitUntilExit];
    EXPECT_EQ([unretained terminationStatus], 0);
}

TEST_F(Tasks, PassArgumentsUnchanged)
{
    const fs::path noted = folder / "noted";
    const fs::path noting = program("noting", "#!/bin/sh\nprintf '<%s>' \"$@\" >'" + noted.string() + "'\n");
    const auto made = task(noting, @[ @"", @"a b", @"'\"$(x)`\\", @"o\u2019n\u00e9 \u4e16", @"-c", @"a\nb" ]);
    [made.get() launch];
    [made.get() waitUntilExit];
    EXPECT_EQ(contents(noted), "<><a b><'\"$(x)`\\><o\u2019n\u00e9 \u4e16><-c><a\nb>");
}

TEST_F(Tasks, AcceptNilAsNoArguments)
{
    const auto made = task(program("counting", "#!/bin/sh\nexit $#\n"), nil);
    [made.get() launch];
    [made.get() waitUntilExit];
    EXPECT_EQ([made.get() terminationStatus], 0);
}

TEST_F(Tasks, KeepTheirOwnCopiesOfPathAndArguments)
{
    const auto path = Retained<NSMutableString>::adopting([[NSMutableString alloc] initWithString:@"/bin/sh"]);
    const auto arguments = Retained<NSMutableArray>::adopting([[NSMutableArray alloc] init]);
    [arguments.get() setArray:@[ @"-c", @"exit 6" ]];
    const auto made = adopt([[NSTask alloc] init]);
    [made.get() setLaunchPath:path.get()];
    [made.get() setArguments:arguments.get()];
    [path.get() setString:@"/bin/false"];
    [arguments.get() removeAllObjects];
    [made.get() launch];
    [made.get() waitUntilExit];
    EXPECT_EQ([made.get() terminationStatus], 6);
}

TEST_F(Tasks, InheritEnvironmentAndWorkingFolder)
{
    setenv("TASK_TEST", "a value", 1);
    char before[PATH_MAX];
    ASSERT_TRUE(getcwd(before, sizeof before));
    ASSERT_EQ(chdir(folder.c_str()), 0);
    ranShell(@"printf '%s' \"$TASK_TEST\" >value");
    ASSERT_EQ(chdir(before), 0);
    unsetenv("TASK_TEST");
    EXPECT_EQ(contents(folder / "value"), "a value");
}

TEST_F(Tasks, InheritOnlyTheStandardStreams)
{
    const int open = ::open("/dev/null", O_RDONLY); // Without close-on-exec, as some libraries open files.
    const auto ended = ranShell([NSString stringWithFormat:@"test -e /dev/fd/1 && test ! -e /dev/fd/%d", open]);
    close(open);
    EXPECT_EQ([ended.get() terminationStatus], 0);
}

TEST_F(Tasks, StartWithNoSignalIgnoredOrBlocked)
{
    const auto handler = signal(SIGPIPE, SIG_IGN); // GNUstep does this too.
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    const auto ignoring = ranShell(@"kill -PIPE $$");
    const auto blocking = ranShell(@"kill -USR1 $$");
    sigprocmask(SIG_SETMASK, &before, nullptr);
    signal(SIGPIPE, handler);
    EXPECT_EQ([ignoring.get() terminationStatus], SIGPIPE);
    EXPECT_EQ([blocking.get() terminationStatus], SIGUSR1);
}

TEST_F(Tasks, LeaveNoDescriptorAndNoChildInAThousandRuns)
{
    const std::size_t before = openDescriptors();
    for (int number = 0; number < 1000; ++number) {
        @autoreleasepool {
            const auto made = task("/bin/true", @[]);
            [made.get() launch];
            [made.get() waitUntilExit];
            ASSERT_EQ([made.get() terminationStatus], 0) << "run " << number;
        }
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process was not waited for";
    EXPECT_EQ(errno, ECHILD);
}
