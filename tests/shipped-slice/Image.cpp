// Maps, rebases and binds the slice. Reads Mach-O as Apple's <mach-o/fat.h> and <mach-o/loader.h> document it.
#include "Machine.hpp"
#include "Slice.hpp"

#include <cstdlib>
#include <cstring>
#include <endian.h>
#include <fstream>
#include <iostream>
#include <sys/mman.h>

namespace
{

using Bytes = std::span<const std::uint8_t>;

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

Bytes part(Bytes file, std::size_t offset, std::size_t size)
{
    if (offset > file.size() || size > file.size() - offset) {
        refuse("the file is cut off or no Mach-O executable");
    }
    return file.subspan(offset, size);
}

template <typename T> const T &at(Bytes file, std::size_t offset)
{
    return *reinterpret_cast<const T *>(part(file, offset, sizeof(T)).data());
}

/// Reads a LEB128 number at the front of a table. A negative number wraps around, which gives the right sum.
std::uint64_t takeNumber(Bytes &table, bool isSigned = false)
{
    std::uint64_t number = 0, next = 0x80;
    int shift = 0;
    for (; next & 0x80; shift += 7, table = table.subspan(1)) {
        next = at<std::uint8_t>(table, 0);
        number |= (next & 0x7f) << shift;
    }
    return isSigned && next & 0x40 ? number | ~0ULL << shift : number;
}

/// The state machine of dyld's opcodes. It goes from pointer to pointer and changes each.
struct Fixer {
    Bytes table;
    const std::vector<std::uint8_t *> &segments;
    const Image &image;
    std::uintptr_t slide;                  // The amount that rebasing adds; 0 for binding.
    std::uintptr_t symbol = 0, addend = 0; // The value that binding writes.
    std::uint8_t *place = nullptr;

    std::uint64_t number() { return takeNumber(table); }
    void write(std::uint64_t times, std::uint64_t gap = 0)
    {
        for (; times > 0; --times, place += sizeof symbol + gap) {
            if (!image.contains(place)) {
                refuse("a fixup lies outside the slice");
            }
            auto &pointer = *reinterpret_cast<std::uintptr_t *>(place);
            pointer = slide ? pointer + slide : symbol + addend;
        }
    }
};

// An opcode's high four bits select the step. The low four bits are the step's operand.
using Step = void (*)(Fixer &fixer, std::uint64_t operand);
constexpr Step nothing = [](Fixer &, std::uint64_t) { };
constexpr Step skipNumber = [](Fixer &f, std::uint64_t) { f.number(); };
constexpr Step setType = [](Fixer &, std::uint64_t type) { type == 1 ? void() : refuse("a fixup is no pointer"); };
constexpr Step setSymbol = [](Fixer &f, std::uint64_t) {
    const std::string_view name = reinterpret_cast<const char *>(f.table.data());
    f.table = f.table.subspan(name.size() + 1);
    f.symbol = addressOfImport(name);
};
constexpr Step setAddend = [](Fixer &f, std::uint64_t) { f.addend = takeNumber(f.table, true); };
constexpr Step setPlace = [](Fixer &f, std::uint64_t index) { f.place = f.segments.at(index) + f.number(); };
constexpr Step advance = [](Fixer &f, std::uint64_t) { f.place += f.number(); };
constexpr Step advanceSlots = [](Fixer &f, std::uint64_t count) { f.place += count * sizeof f.symbol; };
constexpr Step write = [](Fixer &f, std::uint64_t) { f.write(1); };
constexpr Step writeSlots = [](Fixer &f, std::uint64_t count) { f.write(count); };
constexpr Step writeMany = [](Fixer &f, std::uint64_t) { f.write(f.number()); };
constexpr Step writeThenAdvance = [](Fixer &f, std::uint64_t) { f.write(1, f.number()); };
constexpr Step writeThenAdvanceSlots = [](Fixer &f, std::uint64_t count) { f.write(1, count * sizeof f.symbol); };
constexpr Step writeManyApart = [](Fixer &f, std::uint64_t) {
    const auto times = f.number();
    f.write(times, f.number());
};
using Steps = std::array<Step, 16>;
constexpr Steps rebasing { nothing, setType, setPlace, advance, advanceSlots, writeSlots, writeMany, writeThenAdvance,
    writeManyApart };
constexpr Steps binding { nothing, nothing, skipNumber, nothing, setSymbol, setType, setAddend, setPlace, advance,
    write, writeThenAdvance, writeThenAdvanceSlots, writeManyApart };

void fixUp(Fixer fixer, const Steps &steps)
{
    while (!fixer.table.empty()) {
        const auto opcode = fixer.table.front();
        fixer.table = fixer.table.subspan(1);
        if (!steps[opcode >> 4]) {
            refuse("a fixup opcode is not known");
        }
        steps[opcode >> 4](fixer, opcode & 0xf);
    }
}

/// This machine's slice, as a Mach-O file. A universal file begins with a big-endian table: its magic number, the
/// number of slices, and for each slice processor, processor subtype, offset, size and alignment.
Bytes ownSlice(Bytes file)
{
    constexpr std::uint32_t universal = 0xcafebabe, machO = 0xfeedfacf, executable = 2;
    const auto word = [whole = file](std::size_t index) { return be32toh(at<std::uint32_t>(whole, index * 4)); };
    for (std::size_t slice = 2; word(0) == universal && slice < 2 + 5 * std::size_t { word(1) }; slice += 5) {
        file = word(slice) == machine::processor ? part(file, word(slice + 2), word(slice + 3)) : file;
    }
    const auto [mark, processor, processorKind, fileKind] = at<std::array<std::uint32_t, 4>>(file, 0);
    if (mark != machO || processor != machine::processor || fileKind != executable) {
        refuse("the file is no Mach-O executable for " + std::string(machine::name));
    }
    return file;
}

}

void refuse(const std::string &what)
{
    std::cerr << "shipped-slice: " << what << ". Nothing of the slice has run.\n";
    std::exit(2);
}

Image::Image(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    const std::vector<std::uint8_t> content(std::istreambuf_iterator<char>(stream), {});
    const Bytes file = ownSlice(content);

    // The load commands. The idle ones have no effect here: symbols, dylibs, dyld, UUID, signature, versions, data in
    // code.
    enum : std::uint32_t { segmentKind = 0x19, startsKind = 0x26, fixupKind = 0x80000022, mainKind = 0x80000028 };
    constexpr std::uint32_t chained = 0x80000034, idle[] { 0x2, 0xb, 0xc, 0xe, 0x1b, 0x1d, 0x24, 0x29, 0x2a, 0x32 };
    std::map<std::uint32_t, std::size_t> commands { { startsKind, 0 }, { fixupKind, 0 }, { mainKind, 0 } };
    std::vector<const Segment *> segments;
    std::size_t offset = 32;
    for (auto count = at<std::uint32_t>(file, 16); count > 0; --count) {
        const auto [kind, size] = at<std::array<std::uint32_t, 2>>(file, offset);
        if (kind == segmentKind) {
            segments.push_back(&at<Segment>(part(file, offset, size), 0));
        } else if (commands.contains(kind)) {
            commands[kind] = offset;
        } else if (!std::ranges::count(idle, kind)) {
            refuse(kind == chained ? "the slice has chained fixups, and only dyld's opcodes are understood"
                                   : "the slice has load command " + std::to_string(kind) + ", which is not known");
        }
        offset += size;
    }
    const auto table = [&](std::uint32_t kind, std::size_t index) {
        const auto [start, size] = at<std::array<std::uint32_t, 2>>(file, commands[kind] + 8 + 8 * index);
        return commands[kind] ? part(file, start, size) : Bytes {};
    };

    const auto mapped = [](const Segment *segment) { return segment->fileSize > 0; };
    const auto *first = *std::ranges::find_if(segments, mapped), *last = segments.back();
    const auto size = last->address + last->size - first->address;
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    header = static_cast<std::uint8_t *>(memory);
    const auto slide = reinterpret_cast<std::uint64_t>(header) - first->address;
    end = header + size;
    entry = header + at<std::uint64_t>(file, commands[mainKind] + 8);

    std::vector<std::uint8_t *> starts;
    for (const auto *segment : segments) {
        starts.push_back(reinterpret_cast<std::uint8_t *>(segment->address + slide));
        std::ranges::copy(part(file, segment->fileOffset, segment->fileSize), starts.back());
        for (const auto &section : std::span(segment->sections, segment->sectionCount)) {
            const auto kind = section.flags & 0xff;
            if (kind == 0x9 || (kind >= 0x11 && kind <= 0x16)) {
                refuse("the slice has static initialisers or thread-local variables");
            }
            sections[{ section.name, strnlen(section.name, sizeof section.name) }] = {
                reinterpret_cast<std::uint8_t *>(section.address + slide), section.size
            };
        }
    }
    fixUp({ table(fixupKind, 0), starts, *this, slide }, rebasing);
    for (const std::size_t index : { 1, 2, 3 }) { // Ordinary, weak and lazy symbols: all are bound now.
        fixUp({ table(fixupKind, index), starts, *this, 0 }, binding);
    }
    for (std::size_t i = 0; i < segments.size(); ++i) {
        mprotect(starts[i], mapped(segments[i]) ? segments[i]->size : 0, static_cast<int>(segments[i]->protection));
    }

    auto *function = header;
    for (auto distances = table(startsKind, 0); !distances.empty() && distances.front() != 0;) {
        functions.push_back(function += takeNumber(distances));
    }
}
