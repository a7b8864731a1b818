#include "trackers/classic/ClassicIdentity.h"

#include "env/Text.h"
#include "text/Format.h"

namespace trackers {

namespace {

constexpr std::size_t hashedDigits = 10;
constexpr std::size_t hashLength = 9;

std::wstring FormatCharacterCodes(std::wstring_view text)
{
    std::wstring codes;
    for (const wchar_t unit : text)
        text::AppendFormat(codes, L"%d", static_cast<std::uint16_t>(unit));
    return codes;
}

} // namespace

std::wstring MakeDomainHash(const std::wstring& trackingId)
{
    const std::wstring digest = env::Md5OfText(trackingId);
    return FormatCharacterCodes(digest.substr(0, hashedDigits)).substr(0, hashLength);
}

std::wstring MakeVisitorNumber(const std::wstring& productUserId)
{
    return FormatCharacterCodes(productUserId);
}

} // namespace trackers
