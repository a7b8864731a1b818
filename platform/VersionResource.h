#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// The version information of one executable file, read once at construction.
//
// Threads: one at a time.
class CVersionResource
{
public:
    explicit CVersionResource(const std::wstring& filePath);

    bool IsEmpty() const noexcept { return block.empty(); }

    // The language and code page of the first translation. False when the file's block names none.
    bool QueryFirstTranslation(std::uint16_t& language, std::uint16_t& codePage) const;

    // A text of the block by its path, for example L"\\StringFileInfo\\040904b0\\ProductName";
    // empty when there is none.
    std::wstring QueryText(const std::wstring& path) const;

private:
    std::vector<std::uint8_t> block;
};

} // namespace platform
