// The parts for the Intel slice. Columns: System V x86-64 psABI, 3.6.2.
#include "../Machine.hpp"

#include "../Slice.hpp"

namespace machine
{

const std::string_view name = "x86_64";
const std::uint32_t processor = 0x01000007;
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

extern "C" const char sendMessageForStructure; // In Sends.S. This machine returns large structures differently.

std::uintptr_t bridgedImport(std::string_view name, std::uintptr_t found)
{
    return name == "_objc_msgSend_stret" ? reinterpret_cast<std::uintptr_t>(&sendMessageForStructure) : found;
}

void noteSelector(const Image &, std::string_view, const void *) { } // Variadic calls are the same on both systems.

}
