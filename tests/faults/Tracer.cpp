// Makes one system call of a program fail, or kills the program before one call. A number selects the call.
//
//   tracer PROGRAM [ARGUMENT]...                The program itself selects the call (FaultWindow.hpp).
//   tracer --kill CALL PROGRAM [ARGUMENT]...    Kills the program and its children before that call of its window. If
//                                               CALL is 0, it kills nothing and prints "calls N" as its last line.
//
// It uses ptrace(2), so it also reaches the calls that the C library makes internally (posix_spawn, stdio) and those of
// the programs that the program starts. Children that start outside a window, and programs that gain rights (pkexec),
// run untraced. If QUORLEN_FAULTS_PRINT is set, it prints each fault on standard error.
#include "tests/faults/FaultWindow.hpp"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

/// A kind of call and its faults.
struct Kind {
    const char *name;
    std::vector<int> calls;
    std::vector<int> faults;
    bool takesDescriptor = false;
};

const std::vector<Kind> kinds {
    { "open", { SYS_open, SYS_openat, SYS_openat2, SYS_creat }, { ENOSPC, EACCES, EIO, EINTR, EMFILE } },
    { "read", { SYS_read, SYS_pread64 }, { EIO, EINTR }, true },
    { "write", { SYS_write, SYS_pwrite64, SYS_writev, SYS_sendfile, SYS_copy_file_range }, { ENOSPC, EIO, EINTR },
        true },
    { "rename", { SYS_rename, SYS_renameat, SYS_renameat2, SYS_link, SYS_linkat }, { ENOSPC, EACCES, EIO } },
    { "mkdir", { SYS_mkdir, SYS_mkdirat }, { ENOSPC, EACCES, EIO } },
    { "unlink", { SYS_unlink, SYS_unlinkat, SYS_rmdir }, { EACCES, EIO } },
    { "fork", { SYS_fork, SYS_vfork, SYS_clone, SYS_clone3 }, { EAGAIN, ENOMEM } },
    { "exec", { SYS_execve, SYS_execveat }, { EACCES, EIO, EMFILE } },
    { "wait", { SYS_wait4, SYS_waitid }, { EINTR } },
};

/// A call in a window.
struct Call {
    const Kind *kind;
    bool ofChild;
};

const Kind *kindOf(long call)
{
    static const auto byCall = [] {
        std::map<long, const Kind *> all;
        for (const auto &kind : kinds) {
            for (const int number : kind.calls) {
                all[number] = &kind;
            }
        }
        return all;
    }();
    const auto found = byCall.find(call);
    return found == byCall.end() ? nullptr : found->second;
}

std::string linkTarget(const std::string &path)
{
    char target[4096];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    return length < 0 ? std::string() : std::string(target, static_cast<std::size_t>(length));
}

/// Whether a descriptor of a process is a regular file or folder. The tracer ignores terminals, pipes and sockets.
bool isFile(pid_t process, unsigned long descriptor)
{
    const auto target = linkTarget("/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor));
    return target.starts_with('/') && !target.starts_with("/dev/");
}

std::string programOf(pid_t process)
{
    return linkTarget("/proc/" + std::to_string(process) + "/exe");
}

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "tracer: %s: %s\n", what, std::strerror(errno));
    std::exit(2);
}

class Tracer
{
public:
    Tracer(pid_t program, bool kills, unsigned long killAt) :
        _program(program), _kills(kills), _target(kills ? killAt : noCall)
    {
    }

    /// Runs the program to its end and returns its exit status.
    int run()
    {
        for (;;) {
            int status = 0;
            const pid_t process = waitpid(-1, &status, __WALL);
            if (process < 0) {
                if (errno == EINTR) {
                    continue;
                }
                fail("waitpid");
            }
            if (WIFEXITED(status) || WIFSIGNALED(status)) {
                _traced.erase(process);
                if (process == _program) {
                    return ended(status);
                }
            } else if (WIFSTOPPED(status)) {
                stopped(process, status);
            }
        }
    }

private:
    int ended(int status)
    {
        if (_kills) {
            std::printf("calls %lu\n", _seen.size());
        }
        if (WIFSIGNALED(status) && _windowOpen && !_killed) {
            std::fprintf(stderr, "tracer: signal %d ended the program while call %lu had fault %lu\n", WTERMSIG(status),
                _target, _fault);
        }
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    void stopped(pid_t process, int status)
    {
        const int signal = WSTOPSIG(status);
        const int event = status >> 16;
        if (signal == (SIGTRAP | 0x80)) {
            passCall(process);
        } else if (event == PTRACE_EVENT_EXEC && programOf(process).ends_with("/pkexec")) {
            letGo(process);
        } else if (signal == SIGSTOP && !_traced.contains(process)) {
            // A new child that has not run yet.
            if (_windowOpen) {
                goOn(process, 0);
            } else {
                letGo(process);
            }
        } else {
            goOn(process, event ? 0 : signal);
        }
    }

    void goOn(pid_t process, int signal)
    {
        _traced.insert(process);
        ptrace(PTRACE_SYSCALL, process, nullptr, signal);
    }

    void letGo(pid_t process)
    {
        _traced.erase(process);
        ptrace(PTRACE_DETACH, process, nullptr, 0);
    }

    void passCall(pid_t process)
    {
        __ptrace_syscall_info info {};
        ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info);
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            enterCall(process, static_cast<long>(info.entry.nr), info.entry.args);
        } else if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
            leaveCall(process);
        }
        if (!_killed) {
            goOn(process, 0);
        }
    }

    void enterCall(pid_t process, long call, const std::uint64_t (&arguments)[6])
    {
        if (process == _program && call == SYS_prctl && static_cast<int>(arguments[0]) == tracerRequest) {
            _answer = answer(static_cast<TracerVerb>(arguments[1]), arguments[2], arguments[3]);
            return;
        }
        const Kind *kind = _windowOpen ? kindOf(call) : nullptr;
        if (!kind || (kind->takesDescriptor && !isFile(process, arguments[0]))) {
            return;
        }
        _seen.push_back({ kind, process != _program });
        if (_seen.size() != _target) {
            return;
        }
        if (_kills) {
            killAll();
        } else if (_fault < kind->faults.size()) {
            if (std::getenv("QUORLEN_FAULTS_PRINT")) {
                std::fprintf(stderr, "%lu %s %s of %s\n", _target, strerrorname_np(kind->faults[_fault]), kind->name,
                    programOf(process).c_str());
            }
            ++_made;
            _failing = process;
            _failure = kind->faults[_fault];
            changeRegister(process, &user_regs_struct::orig_rax, -1); // No call has this number, so none is made.
        }
    }

    void leaveCall(pid_t process)
    {
        if (process == _program && _answer) {
            changeRegister(process, &user_regs_struct::rax, *_answer);
            _answer.reset();
        } else if (process == _failing) {
            changeRegister(process, &user_regs_struct::rax, -_failure);
            _failing = 0;
        }
    }

    static void changeRegister(pid_t process, unsigned long long user_regs_struct::*which, long value)
    {
        user_regs_struct registers {};
        ptrace(PTRACE_GETREGS, process, nullptr, &registers);
        registers.*which = static_cast<unsigned long long>(value);
        ptrace(PTRACE_SETREGS, process, nullptr, &registers);
    }

    long answer(TracerVerb verb, unsigned long first, unsigned long second)
    {
        switch (verb) {
        case TracerVerb::Begin:
            _windowOpen = true;
            _seen.clear();
            _made = 0;
            if (!_kills) {
                _target = first;
                _fault = second;
            }
            return 0;
        case TracerVerb::End:
            _windowOpen = false;
            return static_cast<long>(_target == noCall ? _seen.size() : _made);
        case TracerVerb::FaultsOfCall:
            return first >= 1 && first <= _seen.size() ? static_cast<long>(_seen[first - 1].kind->faults.size())
                                                       : -EINVAL;
        case TracerVerb::IsOfChild:
            return first >= 1 && first <= _seen.size() ? _seen[first - 1].ofChild : -EINVAL;
        }
        return -EINVAL;
    }

    void killAll()
    {
        _killed = true;
        for (const pid_t process : _traced) {
            kill(process, SIGKILL);
        }
    }

    const pid_t _program;
    const bool _kills;
    std::set<pid_t> _traced;
    std::vector<Call> _seen; // the calls of the window, in order
    unsigned long _target;
    unsigned long _fault = 0;
    unsigned long _made = 0;
    bool _windowOpen = false;
    bool _killed = false;
    std::optional<long> _answer; // the result of the program's request, set at the call's entry, used at its exit
    pid_t _failing = 0;
    int _failure = 0;
};

}

int main(int argc, char **argv)
{
    char **command = argv + 1;
    const bool kills = argc > 3 && std::string_view(argv[1]) == "--kill";
    const unsigned long killAt = kills ? std::strtoul(argv[2], nullptr, 10) : 0;
    if (kills) {
        command += 2;
    }
    if (!*command) {
        std::fputs("usage: tracer [--kill CALL] PROGRAM [ARGUMENT]...\n", stderr);
        return 2;
    }
    const pid_t program = fork();
    if (program == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            fail("ptrace");
        }
        raise(SIGSTOP);
        execv(command[0], command);
        fail(command[0]);
    }
    int status = 0;
    if (program < 0 || waitpid(program, &status, 0) != program) {
        fail("fork");
    }
    constexpr long options = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE |
        PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
    if (ptrace(PTRACE_SETOPTIONS, program, nullptr, options) != 0) {
        fail("ptrace");
    }
    Tracer tracer(program, kills, killAt);
    ptrace(PTRACE_SYSCALL, program, nullptr, 0);
    return tracer.run();
}
