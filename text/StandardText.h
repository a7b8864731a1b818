#pragma once

#include "zotracker/vnosal/VnAString.h"

#include <new>
#include <string>

// The string library's texts for code that keeps its own in the standard library's strings. Both
// throw std::bad_alloc where there was no memory, be it for the text handed over. Any thread.
namespace text {

inline std::wstring ToStandard(const VnOSAL::VnString& text)
{
    if (!text.IsValid())
        throw std::bad_alloc();
    return std::wstring(std::wstring_view(text));
}

inline std::string ToStandard(const VnOSAL::VnAString& text)
{
    if (text.GetConversion() == VnOSAL::EConversion::OutOfMemory)
        throw std::bad_alloc();
    return std::string(std::string_view(text));
}

} // namespace text
