#include "env/RegistryValues.h"

#include "platform/Files.h"
#include "text/Decimal.h"
#include "text/Format.h"
#include "text/Units.h"

#include <algorithm>

namespace env {

namespace {

constexpr std::size_t unitSize = 2; // bytes
constexpr std::size_t firstBufferUnits = 16'383;
constexpr std::size_t bufferGrowthUnits = 4'096;
constexpr std::size_t textLimitUnits = 1 << 20;

std::wstring CutAtZero(std::wstring text)
{
    text.resize(std::min(text.find(L'\0'), text.size()));
    return text;
}

// A text value up to its terminator, if it has one.
std::wstring ReadText(const platform::CRegistryKey& key, const std::wstring& name)
{
    for (std::size_t units = firstBufferUnits; units <= textLimitUnits; units += bufferGrowthUnits)
    {
        std::vector<std::uint8_t> buffer(units * unitSize);
        std::size_t size = 0;
        switch (key.Query(name, buffer, size))
        {
        case platform::ERegistryQuery::Done:
            return CutAtZero(
                text::DecodeUnits(std::span(buffer).first(std::min(size, buffer.size()))));
        case platform::ERegistryQuery::MoreData:
            break;
        case platform::ERegistryQuery::Failed:
            return {};
        }
    }
    return {};
}

std::uint32_t ReadNumber(const platform::CRegistryKey& key, const std::wstring& name)
{
    std::vector<std::uint8_t> bytes(4);
    std::size_t size = 0;
    if (key.Query(name, bytes, size) != platform::ERegistryQuery::Done || size != bytes.size())
        return 0;
    std::uint32_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8 | bytes[i];
    return number;
}

} // namespace

std::int32_t RegWriteString(platform::ERegistryRoot root, const std::wstring& subKey,
                            const std::wstring& valueName, const std::wstring& value,
                            bool use64BitView)
{
    const auto view =
        use64BitView ? platform::ERegistryView::View64 : platform::ERegistryView::View32;
    bool existed = false;
    auto key = platform::CRegistryKey::Create(root, subKey, view, existed);
    const std::wstring_view terminated(value.c_str(), value.size() + 1);
    if (!key || !key.Set(valueName, platform::registrySz, text::EncodeUnits(terminated)))
        return -1;
    return existed ? 1 : 0;
}

std::wstring RegReadString(const platform::CRegistryKey& openKey, const std::wstring& valueName)
{
    std::uint32_t type = 0;
    if (!openKey.QueryType(valueName, type))
        return {};
    if (type == platform::registryDword)
        return text::FormatText(L"%lu", ReadNumber(openKey, valueName));
    if (type != platform::registrySz && type != platform::registryExpandSz)
        return {};

    std::wstring text = ReadText(openKey, valueName);
    std::wstring expanded;
    if (type == platform::registryExpandSz &&
        platform::ExpandEnvironment(text, textLimitUnits, expanded))
        return expanded;
    return text;
}

std::uint32_t RegReadDword(const platform::CRegistryKey& openKey, const std::wstring& valueName)
{
    std::uint32_t type = 0;
    if (!openKey.QueryType(valueName, type))
        return 0;
    if (type == platform::registryDword)
        return ReadNumber(openKey, valueName);
    if (type == platform::registrySz)
        return static_cast<std::uint32_t>(text::ReadDecimal(ReadText(openKey, valueName)));
    return 0;
}

} // namespace env
