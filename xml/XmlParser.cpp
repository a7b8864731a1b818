#include "xml/XmlParser.h"

#include "xml/TrimSpaces.h"
#include "xml/XmlEscaping.h"

#include <algorithm>
#include <memory>

namespace xml {

namespace {

constexpr std::size_t none = std::string_view::npos;

std::string ExpandSections(std::string_view text)
{
    const std::string_view opening = "<![CDATA[";
    const std::string_view closing = "]]>";
    std::string expanded;
    for (std::size_t begin = text.find(opening); begin != none; begin = text.find(opening))
    {
        const std::size_t contents = begin + opening.size();
        const std::size_t end = text.find(closing, contents);
        if (end == none)
            break;
        expanded += text.substr(0, begin);
        expanded += EscapeXml(text.substr(contents, end - contents));
        text.remove_prefix(end + closing.size());
    }
    return expanded.append(text);
}

// The text from `begin` to the next `delimiter`, or to the end where there is none.
std::string_view Until(std::string_view text, std::size_t begin, char delimiter)
{
    const std::string_view rest = text.substr(std::min(begin, text.size()));
    return rest.substr(0, rest.find(delimiter));
}

// One attribute taken from the front of a start tag's attributes.
struct AttributeText
{
    std::string_view name;
    std::string_view value;
};

// False when there is none left.
bool TakeAttribute(std::string_view& area, AttributeText& attribute)
{
    const std::size_t equals = area.find('=', 1);
    const std::size_t opening = equals == none ? none : area.find('"', equals);
    const std::size_t closing = opening == none ? none : area.find('"', opening + 1);
    if (closing == none)
        return false;
    attribute.name = area.substr(0, equals);
    attribute.name.remove_prefix(attribute.name.find(' ') + 1); // none + 1 is 0
    attribute.value = area.substr(opening + 1, closing - opening - 1);
    area.remove_prefix(closing + 1);
    return true;
}

} // namespace

void PrepareDocument(std::string& text)
{
    text = ExpandSections(text);
    std::erase_if(text, [](char unit) { return unit == '\t' || unit == '\n'; });
}

void CXmlParser::Fill(SimpleXMLElement& root)
{
    if (!Open(root, 0, text.size()))
        return;
    pairs.emplace(text, path.back().contents);
    while (!path.empty())
        if (!OpenNextChild())
            Close();
}

bool CXmlParser::Open(SimpleXMLElement& element, std::size_t begin, std::size_t end)
{
    const std::string_view own = text.substr(begin, end - begin);
    const std::size_t lastTag = own.rfind('<');
    if (lastTag == none || lastTag == 0)
        return false;
    element.name = TrimSpaces(Until(own, lastTag + 2, '>'));

    const std::string opening = "<" + element.name;
    const std::size_t startTag = own.find(opening);
    const std::size_t area = startTag + opening.size();
    const std::size_t areaEnd = startTag == none ? none : own.find('>', area);
    if (areaEnd == none)
    {
        element.name.clear();
        return false;
    }
    std::string_view attributes = own.substr(area, areaEnd - area);
    for (AttributeText attribute; TakeAttribute(attributes, attribute);)
        element.AppendAttribute(attribute.name, attribute.value);

    const std::size_t contents = begin + areaEnd + 1;
    path.push_back({element, begin, end, contents, begin + lastTag, contents, false});
    return true;
}

// Goes on with the next child of the innermost open element. False when there is none left.
bool CXmlParser::OpenNextChild()
{
    OpenElement& parent = path.back();
    while (parent.next < parent.lastTag)
    {
        const std::size_t begin = text.find('<', parent.next);
        const std::size_t tagEnd = text.find('>', begin);
        if (begin == parent.lastTag || tagEnd == none)
            return false;
        const std::size_t end = pairs->FindEnd(begin);
        if (end == none || end > parent.end)
        {
            parent.next = tagEnd + 1;
            continue;
        }
        parent.next = end;
        parent.hasChildren = true;
        auto& siblings = parent.element.children;
        siblings.emplace_back(new SimpleXMLElement(SimpleXMLElement::Unnamed()));
        SimpleXMLElement& child = *siblings.back();
        if (!Open(child, begin, end))
            child.NameUnlessNamed(text.substr(begin, end - begin));
        return true;
    }
    return false;
}

void CXmlParser::Close()
{
    const OpenElement closed = path.back();
    path.pop_back();
    const std::size_t valueEnd = std::max(closed.contents, closed.lastTag);
    if (!closed.hasChildren)
        closed.element.StoreValue(text.substr(closed.contents, valueEnd - closed.contents));
    if (!path.empty())
        closed.element.NameUnlessNamed(text.substr(closed.begin, closed.end - closed.begin));
}

} // namespace xml
