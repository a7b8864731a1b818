#include "platform/TraceMessage.h"

#include "platform/DebugOutput.h"

#include <algorithm>
#include <exception>

namespace platform {

namespace {

constexpr std::size_t textLimit = 1024;

} // namespace

void WriteTrace(int level, std::wstring_view format,
                std::initializer_list<text::CFormatArgument> arguments) noexcept
{
    try
    {
        std::wstring line = text::FormatText(L"ZoTracker %d ", level);
        const std::size_t start = line.size();
        text::AppendFormatted(line, format, arguments);
        line.resize(std::min(line.size(), start + textLimit));
        line += L'\n';
        platform::WriteDebugOutput(line);
    }
    catch (const std::exception&)
    {
        // Out of memory: tracing is the first thing to do without.
    }
}

} // namespace platform
