// Records which functions of the slice a run enters, with a breakpoint on the first instruction of each.
#include "Machine.hpp"
#include "Slice.hpp"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <sys/mman.h>

namespace
{

int record; // The file.
std::uint64_t slide;
std::map<std::uint8_t *, std::vector<std::uint8_t>> firstInstructions; // By the functions.

void write(std::uint8_t *function, std::span<const std::uint8_t> instruction)
{
    std::ranges::copy(instruction, function);
    __builtin___clear_cache(
        reinterpret_cast<char *>(function), reinterpret_cast<char *>(function) + instruction.size());
}

void handleBreakpoint(int, siginfo_t *, void *context)
{
    auto *function = machine::takeBreakpoint(*static_cast<ucontext_t *>(context));
    write(function, firstInstructions.at(function));
    dprintf(record, "%016lx\n", reinterpret_cast<std::uint64_t>(function) - slide);
}

}

void recordCoverage(const Image &image, const std::filesystem::path &folder)
{
    record = open((folder / "Coverage").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (record < 0) {
        return;
    }
    slide = image.slide;
    struct sigaction action = {};
    action.sa_sigaction = handleBreakpoint;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGTRAP, &action, nullptr);
    const auto code = image.section<std::uint8_t>("__text");
    mprotect(image.header, &*code.end() - image.header, PROT_READ | PROT_WRITE | PROT_EXEC);
    std::ifstream functions(folder / "Functions");
    for (std::uint64_t address = 0; functions >> std::hex >> address;) {
        auto *function = image.at(address);
        firstInstructions[function] = { function, function + machine::breakpoint.size() };
        write(function, machine::breakpoint);
    }
}
