#pragma once

#include "zotracker/vnosal/VnString.h"

// Where the blocks of strings come from: blocks of 64, 128, 256 and 512 units from fixed pools,
// larger ones, and those that find their pool exhausted, from the heap. A block of 64 units holds a
// text of 63, for the terminating zero stands in it, too.
//
// The memory of the pools goes when the library is unloaded, or with the last block in use
// afterwards. Any thread; no operation waits for another thread.
namespace VnOSAL {

// A block for at least `capacity` units, with one reference and no text; null without memory.
VnStringBlock* TakeBlock(std::size_t capacity) noexcept;

// Takes back a block that nobody refers to.
void GiveBlock(VnStringBlock* block) noexcept;

} // namespace VnOSAL
