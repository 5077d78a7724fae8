#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

std::string utf8(NSString *text)
{
    return text ? std::string([text UTF8String]) : std::string();
}

NSString *ns(const std::string &text)
{
    return [NSString stringWithUTF8String:text.c_str()];
}

CommandOutput run(const std::vector<std::string> &command)
{
    std::vector<char *> arguments;
    for (const auto &word : command) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);

    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0) << strerror(errno);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    CommandOutput result { -1, contents("/proc/self/fd/" + std::to_string(ends[0])) };
    close(ends[0]);
    if (failure != 0) {
        ADD_FAILURE() << command.front() << ": " << strerror(failure);
        return result;
    }
    waitpid(child, &result.status, 0);
    result.status = WIFEXITED(result.status) ? WEXITSTATUS(result.status) : 128 + WTERMSIG(result.status);
    return result;
}

void stage(const std::vector<std::string> &verb)
{
    std::vector<std::string> command { "pkexec", "/opt/practice/stage" };
    command.insert(command.end(), verb.begin(), verb.end());
    EXPECT_EQ(run(command).status, 0) << "staging failed: " << verb.front();
}

std::filesystem::path home()
{
    return utf8(NSHomeDirectory());
}

std::string contents(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream.good()) << "cannot read " << file;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

void write(const std::filesystem::path &file, const std::string &bytes)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << bytes;
    stream.close();
    EXPECT_TRUE(stream.good()) << "cannot write " << file;
}

bool handleEventsUntil(const std::function<bool()> &condition)
{
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:20];
    while (!condition()) {
        if ([limit timeIntervalSinceNow] < 0) {
            return false;
        }
        @autoreleasepool {
            NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                                untilDate:[NSDate dateWithTimeIntervalSinceNow:0.01]
                                                   inMode:NSDefaultRunLoopMode
                                                  dequeue:YES];
            if (event) {
                [NSApp sendEvent:event];
            }
        }
    }
    return true;
}

NSEvent *keyEvent(NSEventType type, NSString *characters, NSInteger window)
{
    return [NSEvent keyEventWithType:type
                            location:NSZeroPoint
                       modifierFlags:0
                           timestamp:0
                        windowNumber:window
                             context:nil
                          characters:characters
         charactersIgnoringModifiers:characters
                           isARepeat:NO
                             keyCode:0];
}

NSEvent *otherEvent(NSEventType type, NSInteger window, short subtype)
{
    return [NSEvent otherEventWithType:type
                              location:NSZeroPoint
                         modifierFlags:0
                             timestamp:0
                          windowNumber:window
                               context:nil
                               subtype:subtype
                                 data1:0
                                 data2:0];
}

void wakeModalLoop()
{
    [NSApp postEvent:otherEvent(NSApplicationDefined) atStart:NO];
}
