#include "tests/fuzz/FuzzInput.h"
#include "tests/unit/xml/ReferenceParser.h"
#include "xml/SimpleXMLElement.h"
#include "xml/XmlParser.h"

#include <vector>

// Any text must give the tree that the reference parser gives, and any tree whose texts hold no
// markup must read back as it was written.
namespace fuzz {

namespace {

void CheckText(const std::string& text, bool nested)
{
    const xml::SimpleXMLElement read(text, nested);
    std::string prepared = text;
    xml::PrepareDocument(prepared);
    Require(xml::SimpleXMLElement(prepared, true).ToString(" ") ==
                reference::ReadAndWrite(prepared, " "),
            "tree of a text");
}

// Builds the tree that the bytes tell to build: one step each.
void CheckTree(std::string_view steps)
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
    Require(xml::SimpleXMLElement(written, false).ToString("") == written, "tree read back");
}

} // namespace

// Most texts get a root, so that they are not refused at once.
void Check(FuzzInput input)
{
    const int what = input.TakeByte() % 8;
    if (what < 2)
        CheckText(std::string(input.rest), what == 1);
    else if (what == 2)
        CheckTree(input.rest);
    else
        CheckText("<r>" + std::string(input.rest) + "</r>", false);
}

} // namespace fuzz
