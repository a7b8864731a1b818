#include "vnosal/SpecialFolders.h"

#include "zotracker/vnosal/VnAString.h"

#include <cstdlib>

namespace VnOSAL {
namespace {

VnString ReadEnvironment(const char* name) noexcept
{
    const char* const value = std::getenv(name);
    return value ? VnAString::FromBytes(value, codePageUtf8).ToString() : VnString();
}

// A folder that the XDG base directory standard names, or its default below the home folder.
VnString ReadFolder(const char* name, const wchar_t* defaultBelowHome) noexcept
{
    VnString folder = ReadEnvironment(name);
    if (folder[0] == L'/')
        return folder;
    const VnString home = ReadEnvironment("HOME");
    return home.IsEmpty() ? home : home + defaultBelowHome;
}

} // namespace

VnString QuerySpecialFolder(int number) noexcept
{
    static constexpr struct
    {
        int number;
        const char* variable;
        const wchar_t* belowHome;
    } folders[] = {
        {0x00, "XDG_DESKTOP_DIR", L"/Desktop"},     // desktop
        {0x05, "XDG_DOCUMENTS_DIR", L"/Documents"}, // documents
        {0x0D, "XDG_MUSIC_DIR", L"/Music"},         // music
        {0x0E, "XDG_VIDEOS_DIR", L"/Videos"},       // videos
        {0x10, "XDG_DESKTOP_DIR", L"/Desktop"},     // desktop as a folder
        {0x15, "XDG_TEMPLATES_DIR", L"/Templates"}, // templates
        {0x1A, "XDG_CONFIG_HOME", L"/.config"},     // roaming application data
        {0x1C, "XDG_DATA_HOME", L"/.local/share"},  // local application data
        {0x27, "XDG_PICTURES_DIR", L"/Pictures"},   // pictures
        {0x28, "HOME", L""},                        // the user's profile
    };
    for (const auto& folder : folders)
        if (folder.number == (number & 0xFF))
            return ReadFolder(folder.variable, folder.belowHome);
    return (number & 0xFF) == 0x23 ? VnString(L"/usr/local/share") : VnString();
}

} // namespace VnOSAL
