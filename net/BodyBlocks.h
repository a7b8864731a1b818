#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace net {

// A body while it arrives. It is kept in blocks of one size and joined at the end, so that neither
// a length that nobody knows nor one that a server makes up decides how much memory is asked for:
// twice the body at the most, and every byte is copied twice.
//
// Threads: one at a time.
class CBodyBlocks
{
public:
    void Append(const char* bytes, std::size_t count);
    std::size_t GetSize() const noexcept { return size; }

    // The whole body; this is empty afterwards.
    std::string Join();

private:
    std::vector<std::unique_ptr<char[]>> blocks; // all full but the last
    std::size_t size = 0;
};

} // namespace net
