#include "platform/gnustep/PrivilegedShell.hpp"

#include "platform/gnustep/ChildProcess.hpp"
#include "platform/gnustep/Descriptor.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace
{

using Outcome = PrivilegedRun::Outcome;

// A fixed path: the search path is the caller's to choose.
constexpr const char *Pkexec = "/usr/bin/pkexec";
// The shell reads the whole text before it runs any of it, so that the text's own commands can't read the rest as their
// input.
constexpr const char *ReadAndRun = "eval \"$(/bin/cat)\"";
// pkexec(1), "Return value".
constexpr int PkexecDismissed = 126;
constexpr int PkexecRefusedOrFailed = 127;
constexpr std::string_view PkexecNotAuthorized = "Not authorized";
// As shells tell a signal in a status.
constexpr int SignalStatusBase = 128;

PrivilegedRun systemError(std::string call, int number)
{
    return { .outcome = Outcome::SystemError, .code = number, .output = {}, .error = std::move(call) };
}

/// Puts a text into memory that nobody can change any more, to be read from its start. An unopened result means that
/// `failed` says what failed and errno why.
Descriptor sealedText(std::string_view text, const char *&failed)
{
    failed = "memfd_create";
    Descriptor memory(memfd_create("shell-text", MFD_CLOEXEC | MFD_ALLOW_SEALING));
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
    Descriptor readEnd;
    Descriptor writeEnd;

    [[nodiscard]] bool open()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) < 0) {
            return false;
        }
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
        return true;
    }
};

/// Reads two streams side by side until both have ended. The result is 0, or the error number of what failed.
int drain(Descriptor &output, std::string &outputText, Descriptor &error, std::string &errorText)
{
    std::array<char, 4096> buffer;
    while (output.isOpen() || error.isOpen()) {
        // poll passes over negative descriptors, which is what a closed stream's is.
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
    if (end.value == PkexecDismissed) {
        return Outcome::Refused;
    }
    if (end.value == PkexecRefusedOrFailed && error.find(PkexecNotAuthorized) != std::string::npos) {
        return Outcome::Refused;
    }
    return Outcome::NotStarted;
}

} // namespace

PrivilegedRun runAsSuperuser(std::string_view text)
{
    // A line end changes nothing for the shell, and makes even an empty text one that can be seen to have been read.
    const char *failed = nullptr;
    const Descriptor input = sealedText(std::string(text) + '\n', failed);
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
    if (const int number = startProcess(Pkexec, { "--disable-internal-agent", "/bin/sh", "-c", ReadAndRun },
            environmentForPkexec(), streams, process)) {
        return systemError(Pkexec, number);
    }
    output.writeEnd.close();
    error.writeEnd.close();

    PrivilegedRun run {};
    const int drainError = drain(output.readEnd, run.output, error.readEnd, run.error);
    // Should draining fail, the child must not be held up by what nobody reads any more.
    output.readEnd.close();
    error.readEnd.close();
    ProcessEnd end;
    const int waitError = waitForEnd(process, end);
    if (drainError) {
        return systemError("poll", drainError);
    }
    if (waitError) {
        return systemError("waitpid", waitError);
    }

    // The shell shares the position in its input with this process: it has moved as soon as the shell has read any of
    // the text.
    const off_t position = lseek(input.number(), 0, SEEK_CUR);
    if (position < 0) {
        return systemError("lseek", errno);
    }
    run.outcome = outcomeOf(end, position > 0, run.error);
    run.code = end.bySignal ? SignalStatusBase + end.value : end.value;
    return run;
}
