#include "zotracker/vnosal/VnFile.h"

#include "vnosal/FileSystem.h"
#include "vnosal/TextView.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace VnOSAL {
namespace {

// The text of UTF-16 bytes; an odd byte at the end is no unit.
VnString JoinUnits(std::string_view bytes, bool lowFirst) noexcept
{
    VnString text;
    const std::size_t length = bytes.size() / 2;
    wchar_t* const units = length != 0 ? text.OpenBuffer(length) : nullptr;
    if (!units)
        return text;
    for (std::size_t i = 0; i < length; ++i)
    {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        units[i] = static_cast<wchar_t>(lowFirst ? second << 8 | first : first << 8 | second);
    }
    text.CloseBuffer(length);
    return text;
}

VnString DecodeText(std::string_view bytes, std::uint32_t page) noexcept
{
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        return JoinUnits({bytes.data() + 2, bytes.size() - 2}, bytes[0] == '\xFF');
    if (bytes.starts_with("\xEF\xBB\xBF"))
        return VnAString::FromBytes({bytes.data() + 3, bytes.size() - 3}, codePageUtf8).ToString();
    return VnAString::FromBytes(bytes, page).ToString();
}

} // namespace

VnFile::VnFile(VnFile&& other) noexcept
    : openPath(std::move(other.openPath)), handle(std::exchange(other.handle, closed))
{}

VnFile& VnFile::operator=(VnFile&& other) noexcept
{
    std::swap(openPath, other.openPath);
    std::swap(handle, other.handle);
    return *this;
}

VnFile::~VnFile() { Close(); }

void VnFile::Close() noexcept
{
    if (IsOpen())
        CloseFile(std::exchange(handle, closed));
}

VnResult VnFile::Report(std::uint32_t error) const noexcept { return {error, openPath.GetText()}; }

VnResult VnFile::Open(const VnPath& path, EAccess access, EOpen mode, ESharing sharing) noexcept
{
    Close();
    openPath = path;
    return Report(OpenFile(path.GetText(), access, mode, sharing, handle));
}

VnResult VnFile::Read(void* buffer, std::size_t size, std::size_t& done) noexcept
{
    done = 0;
    return Report(ReadFile(handle, buffer, size, done));
}

VnResult VnFile::Write(const void* bytes, std::size_t size) noexcept
{
    const auto* next = static_cast<const char*>(bytes);
    SystemError error = 0;
    while (size != 0 && error == 0)
    {
        std::size_t done = 0;
        error = WriteFile(handle, next, size, done);
        next += done;
        size -= done;
    }
    return Report(error);
}

VnResult VnFile::Seek(std::int64_t offset, ESeek origin, std::uint64_t* position) noexcept
{
    std::uint64_t reached = 0;
    const SystemError error = SeekFile(handle, offset, origin, reached);
    if (position && error == 0)
        *position = reached;
    return Report(error);
}

VnResult VnFile::ReadSize(std::uint64_t& size) noexcept
{
    return Report(ReadFileSize(handle, size));
}
VnResult VnFile::SetSize(std::uint64_t size) noexcept { return Report(SetFileSize(handle, size)); }
VnResult VnFile::Flush() noexcept { return Report(FlushFile(handle)); }

// The size is only a first guess: some files tell none, others grow while they are read.
VnResult VnFile::ReadBytes(VnAString& bytes, std::size_t limit) noexcept
{
    std::uint64_t size = 0;
    SystemError error = ReadFileSize(handle, size);
    std::size_t room = static_cast<std::size_t>(std::min<std::uint64_t>(size, limit)) + 1;
    auto* buffer = error == 0 ? static_cast<char*>(std::malloc(room)) : nullptr;
    if (error == 0 && !buffer)
        error = NumberOf(EError::OutOfMemory);
    std::size_t length = 0;
    std::size_t done = 1;
    while (error == 0 && done != 0)
    {
        error = ReadFile(handle, buffer + length, room - length, done);
        length += done;
        if (error == 0 && length > limit)
            error = NumberOf(EError::TooLarge);
        if (error == 0 && length == room)
        {
            auto* const larger = static_cast<char*>(std::realloc(buffer, room * 2));
            buffer = larger ? larger : buffer;
            room = larger ? room * 2 : room;
            error = larger ? 0 : NumberOf(EError::OutOfMemory);
        }
    }
    if (error == 0)
        bytes = VnAString::FromBytes({buffer, length}, codePageUtf8);
    std::free(buffer);
    return Report(error);
}

VnResult VnFile::ReadText(const VnPath& path, VnString& text, std::size_t limit,
                          std::uint32_t page) noexcept
{
    VnFile file;
    VnAString bytes;
    VnResult result = file.Open(path, EAccess::Read);
    if (result)
        result = file.ReadBytes(bytes, limit);
    if (result)
        text = DecodeText(bytes, page);
    return result;
}

// Writes beside the file and takes its place when everything is on the device, if that is wanted.
VnResult VnFile::ReplaceContents(const VnPath& path, std::string_view bytes,
                                 EDurability durability) noexcept
{
    VnFile file;
    VnString name;
    SystemError error = CreateTemporary(name, [&](const VnString& made) noexcept {
        return file
            .Open(VnPath(path).ReplaceFileName(made), EAccess::Write, EOpen::New, ESharing::None)
            .GetSystemError();
    });
    if (error != 0)
        return {error, path.GetText()};
    VnResult written = file.Write(bytes.data(), bytes.size());
    if (written && durability == EDurability::Flushed)
        written = file.Flush();
    file.Close();
    const VnString& temporary = file.GetPath().GetText();
    error = written.GetSystemError();
    if (error == 0)
        error = MoveItem(temporary, path.GetText(), EReplace::Existing);
    if (error != 0)
        RemoveItem(temporary);
    return {error, path.GetText()};
}

VnResult VnFile::ReplaceText(const VnPath& path, std::wstring_view text,
                             std::uint32_t page) noexcept
{
    const VnAString bytes(text, page);
    if (bytes.GetConversion() == EConversion::UnknownCodePage)
        return {EError::NotSupported, path.GetText()};
    if (bytes.GetConversion() == EConversion::OutOfMemory)
        return {EError::OutOfMemory, path.GetText()};
    return ReplaceContents(path, bytes);
}

} // namespace VnOSAL
