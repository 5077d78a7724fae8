/// Runs a slice of a Mac executable on Debian with GNUstep instead of AppKit. These are the steps, in order.
///
/// Each step handles what our compiler and linker write for macOS. It refuses everything else before any code of the
/// slice runs. Machine.hpp has the differences between the machines.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Prints what the loader does not support, and ends the program with status 2.
[[noreturn]] void refuse(const std::string &what);

/// Returns the address of an imported name (with its leading underscore), or refuses the name.
std::uintptr_t addressOfImport(std::string_view name);

/// The slice in memory. It stays there until the program ends.
struct Image {
    /// Maps the file "Slice" to another address than its link address, and changes each pointer of the file "Fixups".
    explicit Image(const std::filesystem::path &folder);

    /// The place of a link address.
    std::uint8_t *at(std::uint64_t address) const { return reinterpret_cast<std::uint8_t *>(address + slide); }
    /// A section as an array; empty if there is no such section.
    template <typename T> std::span<T> section(std::string_view name) const
    {
        const auto found = sections.find(name);
        const auto bytes = found == sections.end() ? std::span<std::uint8_t> {} : found->second;
        return { reinterpret_cast<T *>(bytes.data()), bytes.size() / sizeof(T) };
    }
    bool contains(const void *address) const { return address >= header && address < end; }

    std::uint8_t *header, *end, *entry; // The file's offsets count from the header. The entry is main().
    std::uint64_t slide;                // The distance from the link address.
    std::map<std::string, std::span<std::uint8_t>, std::less<>> sections; // By name.
};

/// Registers the frames of the functions in the file "Frames" with the unwinder, so that exceptions pass through them.
void registerFrames(const Image &image, const std::filesystem::path &folder);
/// Registers the slice's classes and categories with the Objective-C runtime, and links the slice to the runtime's.
void connectMetadata(const Image &image);
/// Calls `load` of the slice's categories, as a Mac's runtime does before main().
void callLoadMethods(const Image &image);
/// Writes the first address of each function that is entered to the file "Coverage", in the order of the first entry.
/// Does nothing without the file.
void recordCoverage(const Image &image, const std::filesystem::path &folder);
