#include "net/BodyBlocks.h"

#include <algorithm>
#include <utility>

namespace net {

namespace {

constexpr std::size_t blockSize = 65'536;

} // namespace

void CBodyBlocks::Append(const char* bytes, std::size_t count)
{
    while (count > 0)
    {
        const std::size_t used = size % blockSize;
        if (used == 0)
            blocks.push_back(std::make_unique_for_overwrite<char[]>(blockSize));
        const std::size_t part = std::min(count, blockSize - used);
        std::copy_n(bytes, part, blocks.back().get() + used);
        bytes += part;
        count -= part;
        size += part;
    }
}

std::string CBodyBlocks::Join()
{
    std::string body;
    body.reserve(size);
    for (std::unique_ptr<char[]>& block : blocks)
    {
        body.append(block.get(), std::min(size - body.size(), blockSize));
        block.reset(); // what is copied is not needed while the rest is
    }
    blocks.clear();
    size = 0;
    return body;
}

} // namespace net
