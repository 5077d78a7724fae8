// Makes the slice's frames known to GCC's unwinder. Reads compact unwind information as Apple's
// <mach-o/compact_unwind_encoding.h> documents it, and writes DWARF's: Linux Standard Base, "Exception
// Frames".
#include "Machine.hpp"
#include "Slice.hpp"

#include <fstream>

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

void registerFrames(const Image &image, const std::filesystem::path &folder)
{
    auto &frames = *new std::vector<Frame>; // The unwinder uses them until the program ends.
    std::ifstream file(folder / "Frames");
    // The last two are 0 in a function without handlers.
    std::uint32_t function = 0, end = 0, encoding = 0, personality = 0, handlers = 0;
    while (file >> std::hex >> function >> end >> encoding >> personality >> handlers) {
        const auto rules = machine::savedRegisters(encoding);
        if (!rules) {
            continue;
        }
        Frame &frame = frames.emplace_back();
        frame.function = image.header + function;
        frame.functionSize = end - function;
        frame.personality = personality ? *reinterpret_cast<const std::uint64_t *>(image.header + personality) : 0;
        frame.handlers = handlers ? image.header + handlers : nullptr;
        std::ranges::copy(*rules, frame.savedRegisters.begin());
    }
    frames.emplace_back().commonSize = 0; // The end marker.
    registerEntries(frames.data());
}
