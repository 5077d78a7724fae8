/// Running a slice of a Mac executable on Debian, with GNUstep in AppKit's place: the steps of it, in order.
///
/// Each step knows what our compiler and linker write for macOS; what differs between the machines is in Machine.hpp.
/// Whatever else it meets it refuses, before anything of the slice has run.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Says what of the slice is not understood, and ends the program with status 2.
[[noreturn]] void refuse(const std::string &what);

/// Gives the address of an imported name (with its leading underscore), or refuses the name.
std::uintptr_t addressOfImport(std::string_view name);

/// The slice in memory. It stays there until the program ends.
struct Image {
    /// Maps this machine's slice of an executable at another address than it was linked for, and binds its
    /// imports.
    explicit Image(const std::string &path);

    /// A section as an array; empty where there is none.
    template <typename T> std::span<T> section(std::string_view name) const
    {
        const auto found = sections.find(name);
        const auto bytes = found == sections.end() ? std::span<std::uint8_t> {} : found->second;
        return { reinterpret_cast<T *>(bytes.data()), bytes.size() / sizeof(T) };
    }
    bool contains(const void *address) const { return address >= header && address < end; }

    std::uint8_t *header, *end, *entry;    // The file's offsets count from the header. The entry is main().
    std::vector<std::uint8_t *> functions; // Where each one begins, in order.
    std::map<std::string, std::span<std::uint8_t>, std::less<>> sections; // By name; those that hold something.
};

/// Makes the slice's frames known to the unwinder, so that exceptions pass through them.
void registerFrames(const Image &image);
/// Makes the slice's classes and categories known to the Objective-C runtime, and the runtime's to the slice.
void connectMetadata(const Image &image);
/// Sends the categories of the slice their `load`, as the runtime of a Mac does before main().
void callLoadMethods(const Image &image);
/// Has the byte of each function in a file turn to 1 when the function is first entered. No file, no record.
void recordCoverage(const Image &image, const std::string &path);
