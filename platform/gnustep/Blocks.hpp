/// Keeping a block beyond the call that received it.
///
/// gnustep-base's `_Block_copy` copies only blocks that carry a flag which clang does not set: it hands the stack block
/// back, and messaging a block crashes. So blocks are copied and dropped here by their published layout (clang's "Block
/// Implementation Specification"); captured C++ objects are copied and destroyed with them.
#pragma once

/// Owns a copy of a block that outlives the frame in which the block was written.
class BlockCopy
{
public:
    /// Copies a block, its captured values included. `block` must not be null.
    explicit BlockCopy(const void *block);
    BlockCopy(const BlockCopy &) = delete;
    BlockCopy &operator=(const BlockCopy &) = delete;
    ~BlockCopy();

    /// The copy, to be cast to the block's type and called. It stays owned here.
    [[nodiscard]] void *get() const { return _block; }

private:
    void *_block;
};
