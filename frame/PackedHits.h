#pragma once

#include "frame/TrackingHit.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>

namespace frame {

// One hit out of its block: a copy of its record.
struct PackedHit
{
    struct Head
    {
        std::array<std::uint32_t, 5> lengths; // of field1 to field5, in units
        std::uint8_t type;
        bool onceOnly;
    };

    Head head;
    std::array<wchar_t, 256> texts;       // field1 to field5, without separators
    std::unique_ptr<wchar_t[]> longTexts; // in place of `texts` where those have no room

    TrackingHit Unpack() const;
};

// Hits one behind the other in blocks of memory, oldest first. A record is
//
//   PackedHit::Head   type, flag, five lengths
//   wchar_t[]         the units of the five texts
//
// and lies in one block, of 16 KiB, or of its own size when it is larger. So most appends allocate
// nothing. A block whose records are all taken is freed; one is kept for the hits to come.
//
// Threads: one at a time.
class CPackedHits
{
public:
    bool IsEmpty() const noexcept { return full.empty() && newest.used == 0; }

    // Appends a copy of the hit. Throws std::bad_alloc, and has appended nothing then.
    void Append(const HitView& hit);

    // Takes the oldest hit; there must be one. Throws std::bad_alloc, and has taken nothing then.
    void TakeOldest(PackedHit& hit);

private:
    struct Block
    {
        std::unique_ptr<wchar_t[]> units;
        std::size_t size = 0;
        std::size_t used = 0;
    };

    wchar_t* Extend(std::size_t units);
    void LeaveEmptiedBlock() noexcept;

    Block newest;          // takes what is appended
    std::list<Block> full; // the older ones
    std::size_t taken = 0; // units of the oldest one
};

} // namespace frame
