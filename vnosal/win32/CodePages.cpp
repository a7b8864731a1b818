#include "vnosal/CodePages.h"

#include <windows.h>

#include <climits>

namespace VnOSAL {
namespace {

EConversion ReadFailure(std::uint32_t page) noexcept
{
    return ::IsValidCodePage(page) ? EConversion::OutOfMemory : EConversion::UnknownCodePage;
}

bool IsKnown(std::uint32_t page) noexcept { return page <= codePageOem || ::IsValidCodePage(page); }

// Some code pages do not tell whether they replaced anything: reading back does.
bool ReadsBack(std::wstring_view text, std::uint32_t page, std::string_view bytes) noexcept
{
    VnString back;
    std::size_t length = 0;
    DecodeCodePage(bytes, page, nullptr, length);
    if (wchar_t* const units = back.OpenBuffer(length))
    {
        DecodeCodePage(bytes, page, units, length);
        back.CloseBuffer(length);
    }
    return back == text;
}

EConversion EncodeWithoutReport(std::wstring_view text, std::uint32_t page, char* out,
                                std::size_t& length) noexcept
{
    const int units = static_cast<int>(text.size());
    const int needed =
        ::WideCharToMultiByte(page, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    VnString room;
    char* bytes = out;
    if (!bytes)
        bytes = reinterpret_cast<char*>(
            room.OpenBuffer(static_cast<std::size_t>(needed) / sizeof(wchar_t) + 1));
    if (needed <= 0 || !bytes)
        return ReadFailure(page);
    ::WideCharToMultiByte(page, 0, text.data(), units, bytes, needed, nullptr, nullptr);
    length = static_cast<std::size_t>(needed);
    return ReadsBack(text, page, {bytes, length}) ? EConversion::Exact : EConversion::Replaced;
}

} // namespace

EConversion EncodeCodePage(std::wstring_view text, std::uint32_t page, char* out,
                           std::size_t& length) noexcept
{
    if (!IsKnown(page))
        return EConversion::UnknownCodePage;
    if (text.empty())
        return EConversion::Exact;
    if (text.size() > INT_MAX)
        return EConversion::OutOfMemory;
    BOOL replaced = FALSE;
    const int done = ::WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, text.data(),
                                           static_cast<int>(text.size()), out,
                                           out ? static_cast<int>(length) : 0, nullptr, &replaced);
    if (done <= 0)
        return EncodeWithoutReport(text, page, out, length);
    length = static_cast<std::size_t>(done);
    return replaced ? EConversion::Replaced : EConversion::Exact;
}

EConversion DecodeCodePage(std::string_view bytes, std::uint32_t page, wchar_t* out,
                           std::size_t& length) noexcept
{
    if (!IsKnown(page))
        return EConversion::UnknownCodePage;
    if (bytes.empty())
        return EConversion::Exact;
    if (bytes.size() > INT_MAX)
        return EConversion::OutOfMemory;
    const int count = static_cast<int>(bytes.size());
    const int room = out ? static_cast<int>(length) : 0;
    EConversion conversion = EConversion::Exact;
    int done = ::MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), count, out, room);
    if (done <= 0)
    {
        const bool invalid = ::GetLastError() == ERROR_NO_UNICODE_TRANSLATION;
        conversion = invalid ? EConversion::Replaced : EConversion::Exact;
        done = ::MultiByteToWideChar(page, 0, bytes.data(), count, out, room);
    }
    if (done <= 0)
        return ReadFailure(page);
    length = static_cast<std::size_t>(done);
    return conversion;
}

} // namespace VnOSAL
