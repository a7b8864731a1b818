#pragma once

#include <optional>
#include <string>
#include <string_view>

// The text of an initialisation file as the system's own reader understands it. Pure; any thread.
namespace platform {

// UTF-16 behind its byte order mark (low byte first), else the system's default code page.
std::wstring DecodeProfile(std::string_view bytes);

// The name of the section that a line begins, without blanks around it.
std::optional<std::wstring_view> ReadProfileHeader(std::wstring_view line);

// Key and value of a line, both without blanks around them, the value also without a pair of
// quotes. False when the line is a comment, a header or has no "=".
bool ReadProfileEntry(std::wstring_view line, std::wstring_view& key, std::wstring_view& value);

// Reads all keys of one section in one pass: the first section of that name, section and key names
// without regard to case, as the system's own reader has it. That one goes through the whole file
// for every key, which takes too long where there are thousands.
//
// Threads: one at a time.
class CProfileSection
{
public:
    // `wholeText` must outlive this object.
    CProfileSection(std::wstring_view wholeText, std::wstring_view section);

    // Takes the next key and its value. False at the end of the section. Where a key comes twice,
    // the first counts.
    bool TakeEntry(std::wstring_view& key, std::wstring_view& value);

private:
    bool TakeLine(std::wstring_view& line);

    std::wstring_view rest;
};

} // namespace platform
