#include "tests/simulated/VersionResource.h"

#include "platform/VersionResource.h"
#include "text/Units.h"

#include <tuple>

namespace simulated {

CState<VersionResources> versionResources;

namespace {

// A resource's block holds nothing but the path of its file.
VersionInfo ContentsOf(const std::vector<std::uint8_t>& block)
{
    return versionResources->files[text::DecodeUnits(block)];
}

} // namespace

} // namespace simulated

namespace platform {

using namespace simulated;

CVersionResource::CVersionResource(const std::wstring& filePath)
{
    const auto held = versionResources.Hold();
    ++held->reads;
    if (held->files.contains(filePath))
        block = text::EncodeUnits(filePath);
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
    return ContentsOf(block).texts[path];
}

} // namespace platform
