#pragma once

#include "text/Format.h"

#include <initializer_list>
#include <string_view>

namespace platform {

// Writes one line of the form "ZoTracker 3 text" to the process's debugger output.
void WriteTrace(int level, std::wstring_view format,
                std::initializer_list<text::CFormatArgument> arguments) noexcept;

// Tells a developer or tester what happened; the text is cut after 1,024 units. Level 3 is an
// error, 6 a hit on its way out, 9 chatter. Formats as text::FormatText. Any thread; never fails.
template <class... Values>
void TraceMessage(int level, std::wstring_view format, const Values&... values) noexcept
{
    WriteTrace(level, format, {text::CFormatArgument(values)...});
}

} // namespace platform
