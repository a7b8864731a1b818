#include "zotracker/vnosal/VnFile.h"
#include "zotracker/vnosal/VnFileSystemItem.h"

#include "vnosal/FileSystem.h"
#include "vnosal/TextView.h"

// A shell library is an XML file of the library description schema: its folders stand in
// libraryDescription/searchConnectorDescriptionList/searchConnectorDescription/simpleLocation/url.
namespace VnOSAL {
namespace {

constexpr std::size_t largestLibrary = 1 << 20; // bytes; the shell writes a few thousand
constexpr std::wstring_view knownFolderScheme = L"knownfolder:";

// Reads the tags of an XML text one after the other.
class CTagReader
{
public:
    explicit CTagReader(std::wstring_view xml) noexcept : rest(xml) {}

    // Goes behind the next tag; false when there is none. Comments, declarations and what they hold
    // are no tags.
    bool Next() noexcept
    {
        for (;;)
        {
            const std::size_t open = rest.find(L'<');
            if (open == VnString::npos)
                return false;
            text = Part(rest, 0, open);
            rest.remove_prefix(open);
            if (rest.starts_with(L"<!--"))
                SkipTo(L"-->");
            else if (rest.starts_with(L"<![CDATA["))
                SkipTo(L"]]>");
            else if (rest.starts_with(L"<!") || rest.starts_with(L"<?"))
                SkipTo(L">");
            else
                return TakeTag();
        }
    }

    // The tag's name without its namespace prefix; the name of an end tag begins with "/".
    bool Is(std::wstring_view wanted) const noexcept
    {
        return EqualTexts(name, wanted, ECase::Respect);
    }
    std::wstring_view GetTextBefore() const noexcept { return text; }

private:
    void SkipTo(std::wstring_view end) noexcept
    {
        const std::size_t found = rest.find(end);
        rest = found == VnString::npos ? std::wstring_view() : Part(rest, found + end.size());
    }

    bool TakeTag() noexcept
    {
        const std::size_t close = rest.find(L'>');
        const VnString tag(Part(rest, 1, close == VnString::npos ? close : close - 1));
        const bool isEnd = tag[0] == L'/';
        const VnString full = tag.GetMid(isEnd ? 1 : 0, tag.FindAnyOf(L" \t\r\n/", 1));
        name = VnString(isEnd ? L"/" : L"") + full.GetMid(full.Find(L":") + 1);
        rest = Part(rest, close == VnString::npos ? rest.size() : close + 1);
        return close != VnString::npos;
    }

    std::wstring_view rest;
    std::wstring_view text;
    VnString name;
};

VnString DecodeEntities(VnString text) noexcept
{
    static constexpr struct
    {
        std::wstring_view entity;
        std::wstring_view stands;
    } entities[] = {
        {L"&lt;", L"<"}, {L"&gt;", L">"}, {L"&quot;", L"\""}, {L"&apos;", L"'"}, {L"&amp;", L"&"}};
    for (const auto& known : entities)
        text.ReplaceAll(known.entity, known.stands);
    return text.Trim();
}

VnString ResolveFolder(const VnString& url) noexcept
{
    if (url.StartsWith(knownFolderScheme, ECase::Ignore))
    {
        const VnString known = ResolveKnownFolder(url.GetMid(knownFolderScheme.size()));
        return known.IsEmpty() ? url : known;
    }
    VnPath path(url);
    path.MakeFilePath();
    return path.GetText();
}

bool ReadFolders(std::wstring_view xml, VnStringList& folders) noexcept
{
    CTagReader reader(xml);
    if (!reader.Next() || !reader.Is(L"libraryDescription"))
        return false;
    for (bool isLocation = false; reader.Next();)
    {
        if (reader.Is(L"simpleLocation") || reader.Is(L"/simpleLocation"))
            isLocation = reader.Is(L"simpleLocation");
        else if (isLocation && reader.Is(L"/url"))
            folders.Append(ResolveFolder(DecodeEntities(VnString(reader.GetTextBefore()))));
    }
    return true;
}

} // namespace

bool VnFileSystemItem::IsLibrary() const noexcept
{
    VnStringList ignored;
    return static_cast<bool>(ReadLibraryFolders(ignored));
}

VnResult VnFileSystemItem::ReadLibraryFolders(VnStringList& folders) const noexcept
{
    if (!EqualTexts(path.GetExtension(), L".library-ms", ECase::Ignore))
        return {EError::NotSupported, path.GetText()};
    VnString xml;
    VnResult read = VnFile::ReadText(path, xml, largestLibrary);
    if (!read)
        return read;
    folders.Clear();
    return ReadFolders(xml, folders) ? VnResult() : VnResult(EError::NotSupported, path.GetText());
}

} // namespace VnOSAL
