#include "platform/gnustep/missing/Blocks.hpp"

#include <cstdlib>
#include <cstring>
#include <new>

/// Clang names this as the class of a block that captures nothing. gnustep-base has its sibling for other blocks, but
/// not this one. No message is ever sent to it.
// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the name is the compiler's.
extern "C" {
extern void *_NSConcreteGlobalBlock[32];
void *_NSConcreteGlobalBlock[32] = {};
}
// NOLINTEND(clang-diagnostic-reserved-identifier)

namespace
{

constexpr int hasCopyAndDispose = 1 << 25;

struct BlockDescriptor {
    unsigned long reserved;
    unsigned long size;
    // These two are there only when the block's flags say hasCopyAndDispose.
    void (*copy)(void *destination, const void *source);
    void (*dispose)(const void *block);
};

struct BlockLayout {
    void *isa;
    int flags;
    int reserved;
    void (*invoke)(void *, ...);
    const BlockDescriptor *descriptor;
};

}

BlockCopy::BlockCopy(const void *block)
{
    const auto *source = static_cast<const BlockLayout *>(block);
    _block = std::malloc(source->descriptor->size);
    if (!_block) {
        throw std::bad_alloc();
    }
    std::memcpy(_block, block, source->descriptor->size);
    if (source->flags & hasCopyAndDispose) {
        source->descriptor->copy(_block, block);
    }
}

BlockCopy::~BlockCopy()
{
    const auto *block = static_cast<const BlockLayout *>(_block);
    if (block->flags & hasCopyAndDispose) {
        block->descriptor->dispose(_block);
    }
    std::free(_block);
}
