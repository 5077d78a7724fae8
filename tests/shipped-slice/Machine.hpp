/// What differs between the machines whose slices run here. Each machine's folder defines all of it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <ucontext.h>
#include <vector>

struct Image;

namespace machine
{

/// Apple's name of the machine, and its number in a Mach-O file.
extern const std::string_view name;
extern const std::uint32_t processor;

/// DWARF's columns of the frame pointer and the return address. A frame's address is the frame pointer + 16, and right
/// below it lie the return address and the caller's frame pointer.
extern const std::uint8_t framePointer, returnAddress;
/// Gives DWARF's rules for the registers that a function saves, by its compact unwind encoding; nothing for a function
/// that no exception passes. Refuses an encoding without a frame pointer.
std::optional<std::vector<std::uint8_t>> savedRegisters(std::uint32_t encoding);

/// The instruction that raises SIGTRAP.
extern const std::span<const std::uint8_t> breakpoint;
/// Gives the address of the breakpoint that a signal handler was called for, and lets the program go on there.
std::uint8_t *takeBreakpoint(ucontext_t &context);

/// Tells the sends of a selector (a SEL) of the slice. Refuses the name of a variadic method of the platform's that
/// needs a bridge and has none.
void noteSelector(const Image &slice, std::string_view name, const void *selector);

/// Gives the address of an import that only this machine has, or for which it has a bridge of its own to the address
/// `found`; otherwise `found`.
std::uintptr_t bridgedImport(std::string_view name, std::uintptr_t found);

}

extern "C" {
/// Sends as Apple's runtime has them, in Sends.S. A message to nil returns zero, of whatever type.
extern const char sendMessage, sendSuper;
}
