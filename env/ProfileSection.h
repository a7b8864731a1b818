#pragma once

#include <string>
#include <string_view>

namespace env {

// The text of an initialisation file: UTF-16 behind its byte order mark (low byte first), else the
// system's default code page. Any thread.
std::wstring DecodeProfile(std::string_view bytes);

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

    // Takes the next key and its value, both without blanks around them, the value also without a
    // pair of quotes. False at the end of the section. Where a key comes twice, the first counts.
    bool TakeEntry(std::wstring_view& key, std::wstring_view& value);

private:
    bool TakeLine(std::wstring_view& line);

    std::wstring_view rest;
};

// Whether two names are the same to the system's reader.
bool IsSameProfileName(std::wstring_view one, std::wstring_view other);

} // namespace env
