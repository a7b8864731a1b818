#include "tests/unit/xml/ReferenceParser.h"
#include "xml/SimpleXMLElement.h"
#include "xml/XmlEscaping.h"
#include "xml/XmlParser.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// Any text must give the tree that the reference parser gives, and any tree whose texts hold no
// markup must read back as it was written.
namespace {

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

void CheckText(const std::string& text, bool nested)
{
    const xml::SimpleXMLElement read(text, nested);
    std::string prepared = text;
    xml::PrepareDocument(prepared);
    Require(xml::SimpleXMLElement(prepared, true).ToString(" ") ==
            reference::ReadAndWrite(prepared, " "));
}

// Builds the tree that the bytes tell to build: one step each.
void CheckTree(const std::string& steps)
{
    xml::SimpleXMLElement root;
    std::vector<xml::SimpleXMLElement*> path = {&root};
    for (const char step : steps)
    {
        const int what = step & 3;
        const std::string word(1, "abcdefghijklmnopqrstuvwxyz.,;0123"[(step >> 2) & 31]);
        if (what == 0 && path.size() > 1)
            path.pop_back();
        else if (what == 1)
            path.back()->SetAttribute("a", word);
        else if (what == 2)
            path.back()->SetValue(word + "\n");
        else // a name for each depth: a child of its parent's name and with attributes ends it
            path.push_back(path.back()->AddChild(L"n" + std::to_wstring(path.size()), step, false));
    }
    const std::string written = root.ToString("");
    Require(xml::SimpleXMLElement(written, false).ToString("") == written);
}

void CheckEscaping(const std::string& text)
{
    std::wstring wide;
    for (const char byte : text)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    xml::UnescapeXml(wide);
    std::replace(wide.begin(), wide.end(), L'\v', L' ');
    if (wide.find(L'&') == wide.npos)
        Require(xml::UnescapeXml(xml::EscapeXml(wide)) == wide);
}

} // namespace

// The first byte chooses what is made of the others. Most texts get a root, so that they are not
// refused at once.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || size > 4000)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 8)
    {
    case 0:
        CheckText(text, false);
        break;
    case 1:
        CheckText(text, true);
        break;
    case 2:
        CheckTree(text);
        break;
    case 3:
        CheckEscaping(text);
        break;
    default:
        CheckText("<r>" + text + "</r>", false);
        break;
    }
    return 0;
}
