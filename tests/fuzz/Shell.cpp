#include "tests/fuzz/Shell.hpp"

#include "tests/fuzz/FuzzedText.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wordexp.h>

namespace
{

constexpr std::size_t oneIn = 1024;
constexpr uid_t unprivilegedUser = 65534;

/// Repeats a system call while the fuzzer's timer interrupts it.
template <typename Call> auto withoutInterruption(const Call &call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

void limit(__rlimit_resource resource)
{
    const rlimit none { 0, 0 };
    if (setrlimit(resource, &none) != 0) {
        _exit(99);
    }
}

/// Replaces this process by a /bin/sh that can only write to its standard output.
[[noreturn]] void becomeShell(int input, int output)
{
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    // RLIMIT_NPROC prevents a fork. It does not prevent exec, but the limits also apply to the next program.
    limit(RLIMIT_FSIZE);
    limit(RLIMIT_CORE);
    if (geteuid() == 0 && (setgid(unprivilegedUser) != 0 || setuid(unprivilegedUser) != 0)) {
        _exit(99);
    }
    limit(RLIMIT_NPROC);
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        _exit(99);
    }
    char name[] = "sh", path[] = "PATH=/nonexistent";
    char *arguments[] = { name, nullptr };
    char *environment[] = { path, nullptr };
    execve("/bin/sh", arguments, environment);
    _exit(99);
}

}

std::optional<std::string> wordAsShellReadsIt(const std::string &word)
{
    // The C library reads an empty string at the start of a word as a separate word. POSIX reads it as nothing. So it
    // is removed here. The real shell gets it.
    const bool startsEmpty = word.starts_with("''") && word.size() > 2;
    wordexp_t words {};
    const int result = wordexp(word.c_str() + (startsEmpty ? 2 : 0), &words, WRDE_NOCMD | WRDE_UNDEF);
    if (result == WRDE_NOSPACE) {
        wordfree(&words);
        return std::nullopt;
    }
    expect(result == 0, "a quoted text is a word for a POSIX shell");
    expect(words.we_wordc == 1, "a quoted text is one word");
    std::string text = words.we_wordv[0];
    wordfree(&words);
    return text;
}

std::string_view quotedWordAtStart(std::string_view text)
{
    std::size_t end = 0;
    while (text.substr(end).starts_with('\'')) {
        const auto closing = text.find('\'', end + 1);
        if (closing == text.npos) {
            return {};
        }
        end = closing + 1;
        if (!text.substr(end).starts_with("\\''")) {
            break;
        }
        end += 2;
    }
    return text.substr(0, end);
}

ShellRun runShell(const std::string &script)
{
    const int input = memfd_create("script", MFD_CLOEXEC);
    expect(write(input, script.data(), script.size()) == static_cast<ssize_t>(script.size()),
        "the script fits into memory");
    lseek(input, 0, SEEK_SET);
    int ends[2];
    expect(pipe2(ends, O_CLOEXEC) == 0, "a pipe can be made");
    const pid_t process = fork();
    expect(process >= 0, "a process can be started");
    if (process == 0) {
        becomeShell(input, ends[1]);
    }
    close(input);
    close(ends[1]);
    ShellRun run {};
    std::array<char, 4096> buffer;
    for (ssize_t count;
        (count = withoutInterruption([&] { return read(ends[0], buffer.data(), buffer.size()); })) > 0;) {
        run.output.append(buffer.data(), static_cast<std::size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    expect(
        withoutInterruption([&] { return waitpid(process, &status, 0); }) == process, "the shell's end can be awaited");
    run.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

bool isSample(std::string_view text)
{
    return std::hash<std::string_view> {}(text) % oneIn == 0;
}
