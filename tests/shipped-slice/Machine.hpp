/// The differences between the machines of the slices. Each machine's folder defines all of these declarations.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <ucontext.h>
#include <vector>

namespace machine
{

/// DWARF's columns of the frame pointer and the return address. A frame's address is the frame pointer + 16. The return
/// address and the caller's frame pointer are right below it.
extern const std::uint8_t framePointer, returnAddress;
/// Returns DWARF's rules for the registers that a function saves, from its compact unwind encoding. Returns nothing for
/// a function through which no exception passes. Refuses an encoding without a frame pointer.
std::optional<std::vector<std::uint8_t>> savedRegisters(std::uint32_t encoding);

/// The instruction that raises SIGTRAP.
extern const std::span<const std::uint8_t> breakpoint;
/// Returns the address of the breakpoint of a signal handler's call, and lets the program continue there.
std::uint8_t *takeBreakpoint(ucontext_t &context);

/// Registers a selector (a SEL) of the slice for its message sends. Refuses the name of a variadic platform method that
/// needs a bridge and has none.
void noteSelector(std::string_view name, const void *selector);

/// Returns the address of this machine's bridge to the import `found`, or `found` if it needs none.
std::uintptr_t bridgedImport(std::string_view name, std::uintptr_t found);

}

/// Message sends with the interface of Apple's runtime, in Sends.S. A message to nil returns zero: a number, a pointer,
/// or a structure of two of them. A structure that is returned in memory is not supported.
extern "C" const char sendMessage, sendSuper;
