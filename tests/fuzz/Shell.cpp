#include "tests/fuzz/Shell.hpp"

#include "tests/fuzz/FuzzedText.hpp"

#include <array>
#include <cstdio>
#include <functional>
#include <sys/mman.h>
#include <unistd.h>
#include <wordexp.h>

namespace
{

constexpr std::size_t oneIn = 1024;

/// The command of a /bin/sh that can only write to its standard output. It cannot fork, because it is allowed no
/// process. It could only replace itself by another program, to which the same limits apply.
std::string confinedShell()
{
    const std::string user = geteuid() == 0 ? "--reuid=65534 --regid=65534 --clear-groups " : "";
    return "exec prlimit --fsize=0 --core=0 setpriv --no-new-privs " + user +
        "prlimit --nproc=0 env -i PATH=/nonexistent /bin/sh";
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
    constexpr std::string_view escapedQuote = R"('\'')";
    auto end = text.starts_with('\'') ? text.find('\'', 1) : text.npos;
    while (end != text.npos && text.substr(end).starts_with(escapedQuote)) {
        end = text.find('\'', end + escapedQuote.size());
    }
    return end == text.npos ? std::string_view() : text.substr(0, end + 1);
}

ShellRun runShell(const std::string &script)
{
    const int input = memfd_create("script", 0);
    expect(write(input, script.data(), script.size()) == static_cast<ssize_t>(script.size()),
        "the script fits into memory");
    FILE *shell = popen((confinedShell() + " </proc/self/fd/" + std::to_string(input)).c_str(), "re");
    expect(shell != nullptr, "a process can be started");
    ShellRun run {};
    std::array<char, 4096> buffer;
    // The fuzzer's timer interrupts calls.
    for (ssize_t count; (count = TEMP_FAILURE_RETRY(read(fileno(shell), buffer.data(), buffer.size()))) > 0;) {
        run.output.append(buffer.data(), static_cast<std::size_t>(count));
    }
    run.succeeded = pclose(shell) == 0;
    close(input);
    return run;
}

bool isSample(std::string_view text)
{
    return std::hash<std::string_view> {}(text) % oneIn == 0;
}
