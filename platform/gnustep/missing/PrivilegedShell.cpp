#include "platform/gnustep/missing/PrivilegedShell.hpp"

#include "platform/gnustep/missing/ChildProcess.hpp"
#include "platform/gnustep/missing/FileDescriptor.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace
{

using Outcome = ShellResult::Outcome;

// A fixed path, because the caller controls the search path.
constexpr const char *pkexecPath = "/usr/bin/pkexec";
// The shell reads the whole text before it runs any of it, so that the commands in the text cannot read the rest as
// their input.
constexpr const char *readAndRun = "eval \"$(/bin/cat)\"";
// pkexec(1), "Return value".
constexpr int pkexecDismissed = 126;
constexpr int pkexecRefusedOrFailed = 127;
constexpr std::string_view pkexecNotAuthorized = "Not authorized";
// Shells report a signal as this status plus its number.
constexpr int signalStatusBase = 128;

ShellResult systemError(std::string call, int number)
{
    return { .outcome = Outcome::SystemError, .code = number, .output = {}, .error = std::move(call) };
}

/// Writes a text into sealed memory, which no process can change. Reading begins at the start of the text. If a call
/// fails, the result is not open, `failed` names the call, and errno says why.
FileDescriptor sealedText(std::string_view text, const char *&failed)
{
    failed = "memfd_create";
    FileDescriptor memory(memfd_create("shell-text", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.isOpen()) {
        return {};
    }
    failed = "write";
    while (!text.empty()) {
        const ssize_t written = write(memory.number(), text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return {};
        }
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    failed = "fcntl(F_ADD_SEALS)";
    if (fcntl(memory.number(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) < 0) {
        return {};
    }
    failed = "lseek";
    if (lseek(memory.number(), 0, SEEK_SET) < 0) {
        return {};
    }
    return memory;
}

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;

    [[nodiscard]] bool open()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) < 0) {
            return false;
        }
        readEnd = FileDescriptor(ends[0]);
        writeEnd = FileDescriptor(ends[1]);
        return true;
    }
};

/// Reads two streams in parallel until both have ended. Returns 0, or the error number of the failed call.
int drain(FileDescriptor &output, std::string &outputText, FileDescriptor &error, std::string &errorText)
{
    std::array<char, 4096> buffer;
    while (output.isOpen() || error.isOpen()) {
        // A closed stream has a negative descriptor, and poll ignores negative descriptors.
        pollfd streams[] = { { output.number(), POLLIN, 0 }, { error.number(), POLLIN, 0 } };
        if (poll(streams, std::size(streams), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        for (const pollfd &stream : streams) {
            if (!stream.revents) {
                continue;
            }
            const bool isOutput = stream.fd == output.number();
            const ssize_t count = read(stream.fd, buffer.data(), buffer.size());
            if (count > 0) {
                (isOutput ? outputText : errorText).append(buffer.data(), static_cast<std::size_t>(count));
            } else if (count == 0) {
                (isOutput ? output : error).close();
            } else if (errno != EINTR) {
                return errno;
            }
        }
    }
    return 0;
}

/// This process's environment without SHELL: pkexec refuses to serve a caller whose SHELL is not in /etc/shells.
std::vector<std::string> environmentForPkexec()
{
    std::vector<std::string> environment = currentEnvironment();
    std::erase_if(environment, [](const std::string &entry) { return entry.starts_with("SHELL="); });
    return environment;
}

Outcome outcomeOf(const ProcessEnd &end, bool shellBegan, const std::string &error)
{
    if (shellBegan) {
        return !end.bySignal && end.value == 0 ? Outcome::Succeeded : Outcome::Failed;
    }
    if (end.bySignal) {
        return Outcome::NotStarted;
    }
    if (end.value == pkexecDismissed) {
        return Outcome::Refused;
    }
    if (end.value == pkexecRefusedOrFailed && error.find(pkexecNotAuthorized) != std::string::npos) {
        return Outcome::Refused;
    }
    return Outcome::NotStarted;
}

}

ShellResult runAsRoot(std::string_view text)
{
    // The added line feed has no effect in the shell. It makes the input non-empty, so that the file position below
    // shows whether the shell has read it, even if the text is empty.
    const char *failed = nullptr;
    const FileDescriptor input = sealedText(std::string(text) + '\n', failed);
    if (!input.isOpen()) {
        return systemError(failed, errno);
    }
    Pipe output, error;
    if (!output.open() || !error.open()) {
        return systemError("pipe2", errno);
    }

    const StandardStreams streams {
        .input = input.number(), .output = output.writeEnd.number(), .error = error.writeEnd.number()
    };
    pid_t process = 0;
    if (const int number = startProcess(pkexecPath, { "--disable-internal-agent", "/bin/sh", "-c", readAndRun },
            environmentForPkexec(), streams, process)) {
        return systemError(pkexecPath, number);
    }
    output.writeEnd.close();
    error.writeEnd.close();

    ShellResult run {};
    const int drainError = drain(output.readEnd, run.output, error.readEnd, run.error);
    // If reading failed, the child must not block on a full pipe.
    output.readEnd.close();
    error.readEnd.close();
    ProcessEnd end;
    const int waitError = waitForEnd(process, end);
    if (drainError) {
        return systemError("poll or read", drainError);
    }
    if (waitError) {
        return systemError("waitpid", waitError);
    }

    // The shell and this process share one file position. If the position is not 0, the shell has begun to read the
    // text.
    const off_t position = lseek(input.number(), 0, SEEK_CUR);
    if (position < 0) {
        return systemError("lseek", errno);
    }
    run.outcome = outcomeOf(end, position > 0, run.error);
    run.code = end.bySignal ? signalStatusBase + end.value : end.value;
    return run;
}
