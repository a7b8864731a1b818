#include "tests/unit/xml/ReferenceParser.h"

#include <algorithm>

namespace reference {

namespace {

constexpr std::size_t none = std::string::npos;

void ReplaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != none; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::string Escape(std::string text)
{
    ReplaceAll(text, "&", "&amp;");
    ReplaceAll(text, "\"", "&quot;");
    ReplaceAll(text, "<", "&lt;");
    ReplaceAll(text, ">", "&gt;");
    ReplaceAll(text, "'", "&apos;");
    return text;
}

std::string Trim(std::string text)
{
    while (text.starts_with(' '))
        text.erase(0, 1);
    while (text.ends_with(' '))
        text.pop_back();
    return text;
}

// From `begin` up to `end`, as far as the text reaches.
std::string Between(const std::string& text, std::size_t begin, std::size_t end)
{
    begin = std::min(begin, text.size());
    return end < begin ? "" : text.substr(begin, end - begin);
}

void Prepare(std::string& text)
{
    for (std::size_t at = text.find("<![CDATA["); at != none;)
    {
        const std::size_t end = text.find("]]>", at + 9);
        if (end == none)
            break;
        const std::string contents = Escape(Between(text, at + 9, end));
        text.replace(at, end + 3 - at, contents);
        at = text.find("<![CDATA[", at + contents.size());
    }
    ReplaceAll(text, "\t", "");
    ReplaceAll(text, "\n", "");
}

void ReadAttributes(Element& element, std::string area)
{
    for (std::size_t equals; (equals = area.find('=', 1)) != none;)
    {
        const std::string before = Between(area, 0, equals);
        const std::size_t first = area.find('"', equals);
        const std::size_t second = first == none ? none : area.find('"', first + 1);
        if (second == none)
            return;
        const std::size_t space = before.find(' ');
        element.attributes.emplace_back(
            Trim(space == none ? before : Between(before, space + 1, none)),
            Between(area, first + 1, second));
        area.erase(0, second + 1);
    }
}

// Reads the child at `at`, if there is one, and returns where to look for the next.
std::size_t ReadChild(Element& parent, const std::string& text, std::size_t at)
{
    const std::string name = Between(text, at + 1, text.find_first_of(" >", at));
    const std::string closing = "</" + name + ">";
    const std::string opening = "<" + name + ">";
    const std::size_t tagEnd = text.find('>', at);
    if (tagEnd == none)
        return none;
    std::size_t close = text.find(closing, at);
    std::size_t open = text.find(opening, tagEnd);
    while (close != none && open < close)
    {
        close = text.find(closing, close + 1);
        open = text.find(opening, open + 1);
    }
    if (close == none || close < tagEnd)
        return tagEnd + 1;
    parent.children.push_back(Read(Between(text, at, close + closing.size()), true));
    return close + closing.size();
}

void Parse(Element& element, std::string text, bool nested)
{
    if (!nested)
        Prepare(text);
    const std::size_t last = text.rfind('<');
    if (last == none || last == 0)
        return;
    element.name = Trim(Between(text, last + 2, text.find('>', last + 2)));
    const std::size_t start = text.find("<" + element.name);
    const std::size_t area = start + 1 + element.name.size();
    const std::size_t tagEnd = start == none ? none : text.find('>', area);
    if (tagEnd == none)
    {
        element.name.clear();
        return;
    }
    ReadAttributes(element, Between(text, area, tagEnd));
    for (std::size_t at = text.find('<', tagEnd); at < last;)
    {
        const std::size_t next = ReadChild(element, text, at);
        at = next == none ? none : text.find('<', next);
    }
    if (element.children.empty())
        element.value = Between(text, tagEnd + 1, last);
    ReplaceAll(element.value, "\n", "#_#lbr#_#");
}

} // namespace

Element Read(const std::string& given, bool nested)
{
    Element element;
    Parse(element, given, nested);
    if (!element.name.empty())
        return element;
    element.name = "SimpleXMLElement";
    if (element.value.empty() && element.children.empty() && element.attributes.empty())
    {
        element.value = given;
        ReplaceAll(element.value, "\n", "#_#lbr#_#");
    }
    return element;
}

std::string Write(const Element& element, const std::string& indent)
{
    std::string text = indent.empty() ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" : indent;
    text += "<" + element.name;
    for (const auto& [name, value] : element.attributes)
        text += " " + name + " = \"" + value + "\" ";
    text += ">";
    if (element.children.empty())
        text += element.value;
    else
        text += "\n";
    for (const Element& child : element.children)
        text += Write(child, indent + "\t");
    if (!element.children.empty())
        text += indent;
    return text + "</" + element.name + ">\n";
}

} // namespace reference
