// Records which functions of the slice a run enters, with a breakpoint on the first instruction of each.
#include "Machine.hpp"
#include "Slice.hpp"

#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

std::vector<std::uint8_t *> functions;
std::vector<std::vector<std::uint8_t>> firstInstructions;
std::uint8_t *entered; // The mapped file.

void write(std::uint8_t *function, std::span<const std::uint8_t> instruction)
{
    std::ranges::copy(instruction, function);
    __builtin___clear_cache(
        reinterpret_cast<char *>(function), reinterpret_cast<char *>(function) + instruction.size());
}

void handleBreakpoint(int, siginfo_t *, void *context)
{
    auto *function = machine::takeBreakpoint(*static_cast<ucontext_t *>(context));
    const auto index = std::ranges::lower_bound(functions, function) - functions.begin();
    write(function, firstInstructions[index]);
    entered[index] = 1;
}

}

void recordCoverage(const Image &image, const std::string &path)
{
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    functions = image.functions;
    void *bytes = ftruncate(file, static_cast<off_t>(functions.size())) == 0
        ? mmap(nullptr, functions.size(), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0)
        : MAP_FAILED;
    if (bytes == MAP_FAILED) {
        refuse("cannot write " + path);
    }
    entered = static_cast<std::uint8_t *>(bytes);
    struct sigaction action = {};
    action.sa_sigaction = handleBreakpoint;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGTRAP, &action, nullptr);
    const auto code = image.section<std::uint8_t>("__text");
    mprotect(image.header, &*code.end() - image.header, PROT_READ | PROT_WRITE | PROT_EXEC);
    for (auto *function : functions) {
        firstInstructions.emplace_back(function, function + machine::breakpoint.size());
        write(function, machine::breakpoint);
    }
}
