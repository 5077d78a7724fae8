#include "platform/gnustep/missing/ChildProcess.hpp"

#include "platform/gnustep/missing/FileDescriptor.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

namespace
{

/// An argument list or environment in the system's form. It points into `strings`.
std::vector<char *> asPointers(const std::vector<std::string> &strings)
{
    std::vector<char *> pointers;
    for (const std::string &string : strings) {
        pointers.push_back(const_cast<char *>(string.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// The settings of posix_spawn for a child's descriptors and signals.
struct SpawnSettings {
    SpawnSettings(const StandardStreams &streams, short flags)
    {
        sigset_t all, none;
        sigfillset(&all);
        sigemptyset(&none);
        note(posix_spawnattr_init(&attributes));
        note(posix_spawnattr_setsigdefault(&attributes, &all));
        note(posix_spawnattr_setsigmask(&attributes, &none));
        note(posix_spawnattr_setflags(
            &attributes, static_cast<short>(flags | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK)));
        note(posix_spawn_file_actions_init(&files));
        note(posix_spawn_file_actions_adddup2(&files, streams.input, STDIN_FILENO));
        note(posix_spawn_file_actions_adddup2(&files, streams.output, STDOUT_FILENO));
        note(posix_spawn_file_actions_adddup2(&files, streams.error, STDERR_FILENO));
        note(posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1));
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;
    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }

    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t files;
    int error = 0; ///< The first that occurred, or 0.

private:
    void note(int result)
    {
        if (!error) {
            error = result;
        }
    }
};

}

int startProcess(const std::string &path, std::vector<std::string> arguments,
    const std::vector<std::string> &environment, const StandardStreams &streams, pid_t &process, short flags)
{
    const SpawnSettings settings(streams, flags);
    if (settings.error) {
        return settings.error;
    }
    arguments.insert(arguments.begin(), path);
    return posix_spawn(&process, path.c_str(), &settings.files, &settings.attributes, asPointers(arguments).data(),
        asPointers(environment).data());
}

int waitForEnd(pid_t process, ProcessEnd &end)
{
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    if (WIFSIGNALED(status)) {
        end = { .bySignal = true, .value = WTERMSIG(status) };
    } else {
        end = { .bySignal = false, .value = WEXITSTATUS(status) };
    }
    return 0;
}

int startDetached(const std::string &path, const std::vector<std::string> &arguments)
{
    const FileDescriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!null.isOpen()) {
        return errno;
    }
    const StandardStreams silence { .input = null.number(), .output = null.number(), .error = null.number() };
    pid_t process = 0;
    if (const int error = startProcess(path, arguments, currentEnvironment(), silence, process, POSIX_SPAWN_SETSID)) {
        return error;
    }
    std::thread([process] {
        ProcessEnd end;
        [[maybe_unused]] const int error = waitForEnd(process, end); // Only so that it does not stay a zombie.
    }).detach();
    return 0;
}

std::vector<std::string> currentEnvironment()
{
    std::vector<std::string> environment;
    for (char **entry = environ; *entry; ++entry) {
        environment.emplace_back(*entry);
    }
    return environment;
}
