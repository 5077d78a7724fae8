// Maps, rebases and binds the slice. Reads Mach-O as Apple's <mach-o/loader.h> documents it. slices.py has checked with
// LLVM's tools that the file is whole.
#include "Machine.hpp"
#include "Slice.hpp"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sys/mman.h>

namespace
{

struct Section {
    char name[16], segment[16];
    std::uint64_t address, size;
    std::uint32_t fileOffset, alignment, relocations, relocationCount, flags, reserved[3];
};

struct Segment {
    std::uint32_t command, commandSize;
    char name[16];
    std::uint64_t address, size, fileOffset, fileSize;
    std::uint32_t highestProtection, protection, sectionCount, flags;
    Section sections[];
};

}

void refuse(const std::string &what)
{
    std::cerr << "shipped-slice: " << what << ". Nothing of the slice has run.\n";
    std::exit(2);
}

Image::Image(const std::filesystem::path &folder)
{
    std::ifstream stream(folder / "Slice", std::ios::binary);
    const std::vector<char> file(std::istreambuf_iterator<char>(stream), {});
    const auto word = [&file](std::size_t offset) { return *reinterpret_cast<const std::uint32_t *>(&file[offset]); };

    // The load commands. The idle ones have no effect here: symbols, dylibs, dyld, UUID, signature, fixups, versions,
    // function starts, data in code.
    enum : std::uint32_t { segmentKind = 0x19, mainKind = 0x80000028 };
    constexpr std::uint32_t idle[] { 0x2, 0xb, 0xc, 0xe, 0x1b, 0x1d, 0x24, 0x26, 0x29, 0x32, 0x80000022 };
    std::vector<const Segment *> segments;
    std::size_t entryOffset = 0, command = 32;
    for (auto count = word(16); count > 0; --count, command += word(command + 4)) {
        if (word(command) == segmentKind) {
            segments.push_back(reinterpret_cast<const Segment *>(&file[command]));
        } else if (word(command) == mainKind) {
            entryOffset = word(command + 8);
        } else if (!std::ranges::count(idle, word(command))) {
            refuse("the slice has load command " + std::to_string(word(command)) + ", which is not known");
        }
    }

    const auto *first = segments[1], *last = segments.back(); // Before the first is the page at address 0.
    const auto size = last->address + last->size - first->address;
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    header = static_cast<std::uint8_t *>(memory);
    end = header + size;
    slide = reinterpret_cast<std::uint64_t>(header) - first->address;
    entry = header + entryOffset;
    for (const auto *segment : segments) {
        std::ranges::copy_n(
            &file[segment->fileOffset], static_cast<std::ptrdiff_t>(segment->fileSize), at(segment->address));
        for (const auto &section : std::span(segment->sections, segment->sectionCount)) {
            if ((section.flags & 0xff) == 0x9) {
                refuse("the slice has static initialisers");
            }
            sections[{ section.name, strnlen(section.name, sizeof section.name) }] = { at(section.address),
                section.size };
        }
    }

    std::ifstream fixups(folder / "Fixups");
    std::uint64_t address = 0, addend = 0;
    for (std::string symbol; fixups >> std::hex >> address >> std::dec >> addend >> symbol;) {
        auto &pointer = *reinterpret_cast<std::uintptr_t *>(at(address));
        pointer = symbol == "pointer" ? pointer + slide : addressOfImport(symbol) + addend;
    }
    for (const auto *segment : std::span(segments).subspan(1)) {
        mprotect(at(segment->address), segment->size, static_cast<int>(segment->protection));
    }
}
