#include "tests/simulated/VersionResource.h"

#include "platform/VersionResource.h"
#include "tests/simulated/UpperCase.h"

#include <cstring>
#include <mutex>
#include <tuple>

namespace simulated {

namespace {

struct VersionResources
{
    std::vector<VersionInfo> contents;               // all that were ever set
    std::map<std::wstring, std::size_t> indexOfFile; // by upper-case path
    std::size_t reads = 0;
};

std::mutex mutex;
VersionResources resources; // guarded by `mutex`

// A resource's block holds nothing but the index of its contents, which stay as they were read.
std::vector<std::uint8_t> BlockOf(std::size_t index)
{
    std::vector<std::uint8_t> block(sizeof(index));
    std::memcpy(block.data(), &index, sizeof(index));
    return block;
}

const VersionInfo* ContentsOf(const std::vector<std::uint8_t>& block)
{
    std::size_t index = 0;
    if (block.size() != sizeof(index))
        return nullptr;
    std::memcpy(&index, block.data(), sizeof(index));
    return index < resources.contents.size() ? &resources.contents[index] : nullptr;
}

} // namespace

void SetVersionInfo(const std::wstring& path, const VersionInfo& info)
{
    VersionInfo filed{info.translations, {}};
    for (const auto& [name, text] : info.texts)
        filed.texts[UpperCase(name)] = text;
    const std::scoped_lock lock(mutex);
    resources.indexOfFile[UpperCase(path)] = resources.contents.size();
    resources.contents.push_back(filed);
}

void RemoveVersionInfo(const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    resources.indexOfFile.erase(UpperCase(path));
}

std::size_t CountVersionResourceReads()
{
    const std::scoped_lock lock(mutex);
    return resources.reads;
}

void ResetVersionResource()
{
    const std::scoped_lock lock(mutex);
    resources = {};
}

} // namespace simulated

namespace platform {

CVersionResource::CVersionResource(const std::wstring& filePath)
{
    const std::scoped_lock lock(simulated::mutex);
    ++simulated::resources.reads;
    const auto found = simulated::resources.indexOfFile.find(simulated::UpperCase(filePath));
    if (found != simulated::resources.indexOfFile.end())
        block = simulated::BlockOf(found->second);
}

bool CVersionResource::QueryFirstTranslation(std::uint16_t& language, std::uint16_t& codePage) const
{
    const std::scoped_lock lock(simulated::mutex);
    const simulated::VersionInfo* info = simulated::ContentsOf(block);
    if (info == nullptr || info->translations.empty())
        return false;
    std::tie(language, codePage) = info->translations.front();
    return true;
}

std::wstring CVersionResource::QueryText(const std::wstring& path) const
{
    const std::scoped_lock lock(simulated::mutex);
    const simulated::VersionInfo* info = simulated::ContentsOf(block);
    if (info == nullptr)
        return {};
    const auto found = info->texts.find(simulated::UpperCase(path));
    return found == info->texts.end() ? std::wstring() : found->second;
}

} // namespace platform
