#pragma once

#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnString.h"

namespace VnOSAL {

// Wide text as the system's own wide interfaces take it: UTF-16 on Windows, where it shares the
// block of the string it was made from, UTF-32 elsewhere. Never changes; copies share the text. An
// unpaired surrogate stays what it is; a value that is no character becomes U+FFFD.
//
// Threads and errors: as VnString.
class ZO_VNOSAL_API VnWString
{
public:
    VnWString() noexcept = default;
    explicit VnWString(const VnString& text) noexcept;
    explicit VnWString(const VnAString& narrow) noexcept;

    // Takes text of the system's own wide form; null is empty.
    static VnWString FromWide(const wchar_t* text) noexcept;

    // Zero-terminated; valid as long as the object.
    const wchar_t* GetText() const noexcept { return wide.GetText(); }
    std::size_t GetLength() const noexcept { return wide.GetLength(); } // in wchar_t
    bool IsEmpty() const noexcept { return wide.IsEmpty(); }

    VnString ToString() const noexcept;

private:
    VnString wide;
};

} // namespace VnOSAL
