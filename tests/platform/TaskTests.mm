#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

namespace
{

/// A temporary folder that the test removes. It is the working folder during the test.
struct Tasks : testing::Test {
    const fs::path before = fs::current_path();
    const fs::path folder = [] {
        std::string pattern = fs::temp_directory_path() / "task-tests.XXXXXX";
        return fs::path(mkdtemp(pattern.data()));
    }();

    Tasks() { fs::current_path(folder); }
    ~Tasks() override
    {
        fs::current_path(before);
        fs::remove_all(folder);
    }
};

/// A task whose path and arguments the caller's objects no longer have.
Retained<NSTask> task(const std::string &path, const Strings &arguments = {})
{
    NSMutableString *callersPath = [NSMutableString stringWithString:ns(path)];
    NSMutableArray *callersArguments = [NSMutableArray array];
    for (const std::string &argument : arguments) {
        [callersArguments addObject:ns(argument)];
    }
    auto made = adopt([[NSTask alloc] init]);
    [made.get() setLaunchPath:callersPath];
    [made.get() setArguments:callersArguments];
    [callersPath setString:@"/bin/false"];
    [callersArguments removeAllObjects];
    return made;
}

int statusOf(const Retained<NSTask> &made)
{
    [made.get() launch];
    [made.get() waitUntilExit];
    return [made.get() terminationStatus];
}

int statusOfShell(const std::string &text)
{
    return statusOf(task("/bin/sh", { "-c", text }));
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
    return "nothing was raised";
}

std::ptrdiff_t openDescriptors()
{
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

}

TEST_F(Tasks, ReportTheExitStatusOrTheSignal)
{
    const auto before = openDescriptors();
    for (const auto &[text, status] :
        { std::pair { "exit 0", 0 }, { "exit 3", 3 }, { "exit 255", 255 }, { "kill -TERM $$", SIGTERM } }) {
        EXPECT_EQ(statusOfShell(text), status) << text;
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process was not waited for";
}

TEST_F(Tasks, PassArgumentsUnchanged)
{
    const Strings arguments { "", "a b", "'\"$(x)`\\", "o\u2019n\u00e9 \u4e16", "-c", "a\nb" };
    Strings words { "-c", "printf '<%s>' \"$@\" >noted", "sh" };
    words.insert(words.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(statusOf(task("/bin/sh", words)), 0);
    EXPECT_EQ(contents(folder / "noted"), "<><a b><'\"$(x)`\\><o\u2019n\u00e9 \u4e16><-c><a\nb>");
    const auto without = task("/bin/true");
    [without.get() setArguments:nil];
    EXPECT_EQ(statusOf(without), 0);
}

TEST_F(Tasks, InheritEnvironmentFolderAndStandardStreamsButNoSignalOrDescriptor)
{
    setenv("TASK_TEST", "a value", 1);
    const int open = ::open("/dev/null", O_RDONLY); // Without close-on-exec, as some libraries open files.
    const auto handler = signal(SIGPIPE, SIG_IGN);  // GNUstep does this too.
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    EXPECT_EQ(statusOfShell("test \"$TASK_TEST\" = 'a value'"), 0);
    EXPECT_EQ(statusOfShell("test \"$PWD\" = '" + folder.string() + "'"), 0);
    EXPECT_EQ(statusOfShell("test -e /dev/fd/1 && test ! -e /dev/fd/" + std::to_string(open)), 0);
    EXPECT_EQ(statusOfShell("kill -PIPE $$"), SIGPIPE);
    EXPECT_EQ(statusOfShell("kill -USR1 $$"), SIGUSR1);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    signal(SIGPIPE, handler);
    close(open);
    unsetenv("TASK_TEST");
}

TEST_F(Tasks, RaiseForAProgramThatCannotBeStartedAndLeaveThisProcessAsItWas)
{
    write(folder / "plain", "text");
    write(folder / "garbage", "no program\n");
    fs::permissions(folder / "garbage", fs::perms::owner_all);
    const std::pair<fs::path, std::string> rows[] = {
        { "/no/such program", "No such file or directory" },
        { folder / "plain", "Permission denied" },
        { folder, "Permission denied" },
        { folder / "garbage", "Exec format error" },
    };
    for (const auto &[path, cause] : rows) {
        const auto made = task(path);
        NSTask *const unretained = made.get();
        EXPECT_EQ(reasonRaisedBy(^{ [unretained launch]; }),
            "could not start the launch path (" + path.string() + "): " + cause);
        // GNUstep's NSTask damages the parent here: its string literals are empty afterwards.
        NSArray *literal = @[ @"a", @"b", @"c" ];
        EXPECT_EQ(utf8([literal componentsJoinedByString:@","]), "a,b,c") << path;
        [unretained setLaunchPath:@"/bin/true"];
        EXPECT_EQ(statusOf(made), 0) << "it may be launched again: " << path;
    }
}
