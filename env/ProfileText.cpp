#include "env/ProfileText.h"

#include "platform/ProfileFile.h"

#include <vector>

namespace env {

namespace {

constexpr std::size_t firstSize = 255;
constexpr std::size_t sizeLimit = firstSize << 10;

} // namespace

std::wstring ReadProfileText(const std::wstring& section, const std::wstring& key,
                             const std::wstring& defaultValue, const std::wstring& path)
{
    for (std::size_t size = firstSize;; size *= 2)
    {
        std::vector<wchar_t> buffer(size);
        const std::size_t length =
            platform::CopyProfileText(section, key, defaultValue, buffer, path);
        if (length != size - 1 || size >= sizeLimit)
            return buffer.data();
    }
}

} // namespace env
