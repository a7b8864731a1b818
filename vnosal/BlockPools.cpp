#include "vnosal/BlockPools.h"

#include <bit>
#include <cstdlib>
#include <new>

namespace VnOSAL {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;     // no block, and the origin of blocks from the heap
constexpr std::uint32_t firstChunkBlocks = 32; // each further chunk has twice as many
constexpr std::uint32_t maxChunks = 12;        // 131,040 blocks of each size

// Blocks of one size, handed out from a stack of free ones. A free block's count holds the number
// of the next one. The stack's head carries a change counter beside that number, so that a thread
// which was overtaken between reading the head and replacing it notices.
struct Pool
{
    std::size_t units;
    std::atomic<std::uint64_t> head{none};
    std::atomic<std::byte*> chunks[maxChunks]{};
    std::atomic<std::uint32_t> chunkCount{0};
    std::uint32_t blocksInUse = 0; // counted once the library is closing
};

constinit Pool pools[] = {{64}, {128}, {256}, {512}};
constinit std::atomic<bool> closed{false};

constexpr std::size_t BlockBytes(std::size_t units)
{
    return sizeof(VnStringBlock) + units * sizeof(wchar_t);
}

constexpr std::uint64_t NextHead(std::uint64_t head, std::uint32_t number)
{
    return (((head >> 32) + 1) << 32) | number;
}

constexpr std::uint32_t BlocksOf(std::uint32_t chunk) { return firstChunkBlocks << chunk; }

// The number of a chunk's first block.
constexpr std::uint32_t FirstOf(std::uint32_t chunk)
{
    return firstChunkBlocks * ((1u << chunk) - 1);
}

VnStringBlock* At(Pool& pool, std::uint32_t number) noexcept
{
    const auto chunk =
        static_cast<std::uint32_t>(std::bit_width(number / firstChunkBlocks + 1) - 1);
    std::byte* const memory = pool.chunks[chunk].load(std::memory_order_acquire);
    return reinterpret_cast<VnStringBlock*>(memory +
                                            (number - FirstOf(chunk)) * BlockBytes(pool.units));
}

VnStringBlock* Construct(void* memory, std::size_t units, std::uint32_t origin) noexcept
{
    return new (memory) VnStringBlock{1, 0, static_cast<std::uint32_t>(units - 1), origin};
}

// Pushes the blocks from `first` to `last`, already linked to each other.
void Push(Pool& pool, std::uint32_t first, VnStringBlock* last) noexcept
{
    std::uint64_t head = pool.head.load(std::memory_order_relaxed);
    do
    {
        last->references.store(static_cast<std::uint32_t>(head), std::memory_order_relaxed);
    } while (!pool.head.compare_exchange_weak(
        head, NextHead(head, first), std::memory_order_acq_rel, std::memory_order_relaxed));
}

// Adds a chunk, keeps its first block for the caller and frees the others.
VnStringBlock* Grow(Pool& pool) noexcept
{
    if (pool.chunkCount.load(std::memory_order_relaxed) >= maxChunks)
        return nullptr;
    const std::uint32_t chunkNumber = pool.chunkCount.fetch_add(1, std::memory_order_relaxed);
    if (chunkNumber >= maxChunks)
        return nullptr;
    const std::size_t bytes = BlockBytes(pool.units);
    const std::uint32_t blocks = BlocksOf(chunkNumber);
    auto* const chunk = static_cast<std::byte*>(std::malloc(bytes * blocks));
    if (!chunk)
        return nullptr;

    const std::uint32_t first = FirstOf(chunkNumber);
    for (std::uint32_t i = 0; i < blocks; ++i)
        Construct(chunk + i * bytes, pool.units, first + i)
            ->references.store(first + i + 1, std::memory_order_relaxed);
    pool.chunks[chunkNumber].store(chunk, std::memory_order_release);
    Push(pool, first + 1, At(pool, first + blocks - 1));
    return At(pool, first);
}

VnStringBlock* Pop(Pool& pool) noexcept
{
    std::uint64_t head = pool.head.load(std::memory_order_acquire);
    while (static_cast<std::uint32_t>(head) != none)
    {
        VnStringBlock* const block = At(pool, static_cast<std::uint32_t>(head));
        const std::uint32_t next = block->references.load(std::memory_order_relaxed);
        if (pool.head.compare_exchange_weak(head, NextHead(head, next), std::memory_order_acq_rel,
                                            std::memory_order_acquire))
            return block;
    }
    return Grow(pool);
}

VnStringBlock* TakePooled(Pool& pool) noexcept
{
    VnStringBlock* const block = closed.load(std::memory_order_relaxed) ? nullptr : Pop(pool);
    if (block)
    {
        block->length = 0;
        block->references.store(1, std::memory_order_relaxed);
    }
    return block;
}

VnStringBlock* TakeFromHeap(std::size_t units) noexcept
{
    void* const memory = std::malloc(BlockBytes(units));
    return memory ? Construct(memory, units, none) : nullptr;
}

void FreeChunks(Pool& pool) noexcept
{
    for (auto& chunk : pool.chunks)
        std::free(chunk.exchange(nullptr, std::memory_order_acq_rel));
}

std::uint32_t CountBlocksInUse(Pool& pool) noexcept
{
    std::uint32_t blocks = 0;
    for (std::uint32_t i = 0; i < maxChunks; ++i)
        blocks += pool.chunks[i].load(std::memory_order_acquire) ? BlocksOf(i) : 0;
    auto number = static_cast<std::uint32_t>(pool.head.load(std::memory_order_acquire));
    for (; number != none; number = At(pool, number)->references.load(std::memory_order_relaxed))
        --blocks;
    return blocks;
}

void ClosePools() noexcept
{
    closed = true;
    for (Pool& pool : pools)
    {
        pool.blocksInUse = CountBlocksInUse(pool);
        if (pool.blocksInUse == 0)
            FreeChunks(pool);
    }
}

// Static strings of other files may go later than this one: the pools outlast them.
const struct CCloser
{
    ~CCloser() { ClosePools(); }
} closer;

} // namespace

VnStringBlock* TakeBlock(std::size_t capacity) noexcept
{
    for (Pool& pool : pools)
        if (capacity < pool.units)
        {
            VnStringBlock* const block = TakePooled(pool);
            return block ? block : TakeFromHeap(pool.units);
        }
    return TakeFromHeap(capacity + 1);
}

void GiveBlock(VnStringBlock* block) noexcept
{
    if (block->origin == none)
    {
        std::free(block);
        return;
    }
    for (Pool& pool : pools)
        if (block->capacity + 1 == pool.units)
        {
            if (!closed.load(std::memory_order_relaxed))
                Push(pool, block->origin, block);
            else if (--pool.blocksInUse == 0)
                FreeChunks(pool);
            return;
        }
}

} // namespace VnOSAL
