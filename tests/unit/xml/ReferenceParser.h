#pragma once

#include "xml/TrimSpaces.h"

#include <algorithm>
#include <string>

// What the writer makes of the tree that the parser makes of prepared text: the rules of both taken
// literally, by searches on copies of the text and by recursion, at any cost.
namespace reference {

std::string ReadAndWrite(const std::string& text, const std::string& indent);

inline constexpr std::size_t none = std::string::npos;

// From `begin` up to `end`, as far as the text reaches.
inline std::string Between(const std::string& text, std::size_t begin, std::size_t end)
{
    begin = std::min(begin, text.size());
    return end < begin ? "" : text.substr(begin, end - begin);
}

// An element's parts as they are written.
struct Element
{
    std::string name, attributes, value, children;
};

inline void ReadAttributes(Element& element, std::string area)
{
    for (std::size_t equals; (equals = area.find('=', 1)) != none;)
    {
        const std::size_t first = area.find('"', equals);
        const std::size_t second = first == none ? none : area.find('"', first + 1);
        if (second == none)
            return;
        const std::string before = Between(area, 0, equals);
        element.attributes.append(" ").append(
            xml::TrimSpaces(before.substr(before.find(' ') + 1))); // none + 1 is 0
        element.attributes += " = " + Between(area, first, second + 1) + " ";
        area.erase(0, second + 1);
    }
}

// Reads the child at `at`, if there is one, and returns where to look for the next.
inline std::size_t ReadChild(Element& parent, const std::string& text, std::size_t at,
                             const std::string& indent)
{
    const std::string name = Between(text, at + 1, text.find_first_of(" >", at));
    const std::string closing = "</" + name + ">";
    const std::size_t tagEnd = text.find('>', at);
    if (tagEnd == none)
        return none;
    std::size_t close = text.find(closing, at);
    std::size_t open = text.find("<" + name + ">", tagEnd);
    while (close != none && open < close)
    {
        close = text.find(closing, close + 1);
        open = text.find("<" + name + ">", open + 1);
    }
    if (close == none || close < tagEnd)
        return tagEnd + 1;
    parent.children += ReadAndWrite(Between(text, at, close + closing.size()), indent + "\t");
    return close + closing.size();
}

inline Element Read(const std::string& text, const std::string& indent)
{
    Element element;
    const std::size_t last = text.rfind('<');
    if (last == none || last == 0)
        return {};
    element.name = xml::TrimSpaces(Between(text, last + 2, text.find('>', last + 2)));
    const std::size_t start = text.find("<" + element.name);
    const std::size_t area = start + 1 + element.name.size();
    const std::size_t tagEnd = start == none ? none : text.find('>', area);
    if (tagEnd == none)
        return {};
    ReadAttributes(element, Between(text, area, tagEnd));
    for (std::size_t at = text.find('<', tagEnd); at < last;)
    {
        const std::size_t next = ReadChild(element, text, at, indent);
        at = next == none ? none : text.find('<', next);
    }
    element.value = Between(text, tagEnd + 1, last);
    return element;
}

inline std::string ReadAndWrite(const std::string& text, const std::string& indent)
{
    Element element = Read(text, indent);
    if (element.name.empty())
    {
        element.name = "SimpleXMLElement";
        if ((element.value + element.children + element.attributes).empty())
            element.value = text;
    }
    const bool isLeaf = element.children.empty();
    return indent + "<" + element.name + element.attributes + ">" +
           (isLeaf ? element.value : "\n" + element.children + indent) + "</" + element.name +
           ">\n";
}

} // namespace reference
