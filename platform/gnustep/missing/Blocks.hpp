/// GNUstep cannot keep a block beyond the call that received it: its `_Block_copy` returns clang's stack blocks
/// uncopied, and a message to a block crashes. This file is unnecessary when `_Block_copy` copies clang's blocks.
///
/// This copies and destroys blocks by their published layout (clang's "Block Implementation Specification"), with the
/// C++ objects that they capture.
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
