// The parts for the Intel slice. Columns: System V x86-64 psABI, 3.6.2.
#include "../Machine.hpp"

#include "../Slice.hpp"

namespace machine
{

const std::uint8_t framePointer = 6, returnAddress = 16;

std::optional<std::vector<std::uint8_t>> savedRegisters(std::uint32_t encoding)
{
    if ((encoding >> 24 & 0xf) != 1) {
        refuse("a function keeps no frame pointer");
    }
    constexpr std::uint8_t columns[] { 0, 3, 12, 13, 14, 15, 0, 0 }; // None, rbx, r12 to r15.
    std::vector<std::uint8_t> rules;
    for (std::uint32_t i = 0, depth = encoding >> 16 & 0xff; i < 5; ++i) {
        if (const auto column = columns[encoding >> 3 * i & 7]) {
            rules.push_back(0x80 | column);
            rules.push_back(static_cast<std::uint8_t>(2 + depth - i));
        }
    }
    return rules;
}

constexpr std::uint8_t int3[] { 0xcc };
const std::span<const std::uint8_t> breakpoint = int3;

std::uint8_t *takeBreakpoint(ucontext_t &context)
{
    return reinterpret_cast<std::uint8_t *>(--context.uc_mcontext.gregs[REG_RIP]); // It points after the instruction.
}

// Constructors, destructors and variadic calls are the same on both systems.
std::uintptr_t bridgedImport(std::string_view, std::uintptr_t found)
{
    return found;
}

void noteSelector(std::string_view, const void *) { }

}
