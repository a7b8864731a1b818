#include "tests/simulated/VersionResource.h"

#include "platform/VersionResource.h"
#include "tests/simulated/UpperCase.h"

#include <tuple>

namespace simulated {

CState<VersionResources> versionResources;

namespace {

// A resource's block holds nothing but the index of its contents, which stay as they were read.
VersionInfo ContentsOf(const std::vector<std::uint8_t>& block)
{
    return block.empty() ? VersionInfo{} : versionResources->contents.at(block[0]);
}

} // namespace

void SetVersionInfo(const std::wstring& path, const VersionInfo& info)
{
    const auto held = versionResources.Hold();
    held->indexOfFile[UpperCase(path)] = static_cast<std::uint8_t>(held->contents.size());
    VersionInfo& filed = held->contents.emplace_back(VersionInfo{info.translations, {}});
    for (const auto& [name, text] : info.texts)
        filed.texts[UpperCase(name)] = text;
}

} // namespace simulated

namespace platform {

using namespace simulated;

CVersionResource::CVersionResource(const std::wstring& filePath)
{
    const auto held = versionResources.Hold();
    ++held->reads;
    const auto found = held->indexOfFile.find(UpperCase(filePath));
    if (found != held->indexOfFile.end())
        block = {found->second};
}

bool CVersionResource::QueryFirstTranslation(std::uint16_t& language, std::uint16_t& codePage) const
{
    const VersionInfo info = ContentsOf(block);
    if (!info.translations.empty())
        std::tie(language, codePage) = info.translations.front();
    return !info.translations.empty();
}

std::wstring CVersionResource::QueryText(const std::wstring& path) const
{
    return ContentsOf(block).texts[UpperCase(path)];
}

} // namespace platform
