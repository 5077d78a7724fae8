// Makes the slice's frames known to GCC's unwinder. Reads compact unwind information as Apple's
// <mach-o/compact_unwind_encoding.h> documents it, and writes DWARF's: Linux Standard Base, "Exception
// Frames".
#include "Machine.hpp"
#include "Slice.hpp"

void registerEntries(const void *entries) __asm__("__register_frame"); // libgcc

namespace
{

/// A function's frame in DWARF: its own common information entry, followed by the frame description entry.
struct [[gnu::packed]] Frame {
    // Version 1, "zPLR", code alignment 1, data alignment -8, the return address's column, absolute pointers.
    std::uint32_t commonSize = 36, commonId = 0;
    std::array<std::uint8_t, 11> common { 1, 'z', 'P', 'L', 'R', 0, 1, 0x78, machine::returnAddress, 11, 0 };
    std::uint64_t personality = 0;
    std::array<std::uint8_t, 13> rules { 0, 0, 0x0c, machine::framePointer, 16, savedAt(machine::returnAddress), 1,
        savedAt(machine::framePointer), 2 };

    std::uint32_t size = 84, distanceToCommon = 44;
    const std::uint8_t *function = nullptr;
    std::uint64_t functionSize = 0;
    std::uint8_t handlersSize = 8;
    const std::uint8_t *handlers = nullptr;
    std::array<std::uint8_t, 55> savedRegisters {};

    static std::uint8_t savedAt(std::uint8_t column) { return 0x80 | column; }
};

}

void registerFrames(const Image &image)
{
    const auto table = image.section<std::uint8_t>("__unwind_info");
    const auto array = [&]<typename T>(std::size_t offset, T) { return reinterpret_cast<const T *>(&table[offset]); };
    const auto words = [&](std::size_t offset) { return array(offset, std::uint32_t {}); };
    const auto [version, commonOffset, commonCount, personalitiesOffset, personalityCount, pagesOffset, pageCount] =
        *array(0, std::array<std::uint32_t, 7> {});
    // For each page: its first function, the offset of its content, the offset of its functions' handlers. The last
    // page only marks the end of the functions.
    const auto *pages = array(pagesOffset, std::array<std::uint32_t, 3> {});
    // For each function with handlers: the function and its handlers.
    const auto *handlers = array(pages[0][2], std::array<std::uint32_t, 2> {});

    auto &frames = *new std::vector<Frame>; // The unwinder uses them until the program ends.
    for (std::uint32_t p = 0; p + 1 < pageCount; ++p) {
        const auto [page, content, firstHandlers] = pages[p];
        const auto [kind, zero, entriesOffset, entryCount, encodingsOffset, encodingCount] =
            *array(content, std::array<std::uint16_t, 6> {});
        if (kind != 3) {
            refuse("unwind information is not compressed");
        }
        // An entry has the number of its encoding in the high byte, and below it the function's offset in the page.
        const auto *entries = words(content + entriesOffset);
        for (std::uint32_t i = 0; i < entryCount; ++i) {
            const auto number = entries[i] >> 24;
            const auto encoding = number < commonCount ? words(commonOffset)[number]
                                                       : words(content + encodingsOffset)[number - commonCount];
            const auto rules = machine::savedRegisters(encoding);
            if (!rules) {
                continue;
            }
            const auto function = page + (entries[i] & 0xffffff);
            const auto end = i + 1 < entryCount ? page + (entries[i + 1] & 0xffffff) : pages[p + 1][0];
            Frame &frame = frames.emplace_back();
            frame.function = image.header + function;
            frame.functionSize = end - function;
            if (const auto personality = encoding >> 28 & 3) {
                const auto *bound = image.header + words(personalitiesOffset)[personality - 1];
                frame.personality = *reinterpret_cast<const std::uint64_t *>(bound);
            }
            if (encoding & 0x40000000) {
                for (; (*handlers)[0] < function; ++handlers) { }
                frame.handlers = image.header + (*handlers)[1];
            }
            std::ranges::copy(*rules, frame.savedRegisters.begin());
        }
    }
    frames.emplace_back().commonSize = 0; // The end marker.
    registerEntries(frames.data());
}
