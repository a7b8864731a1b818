#include "xml/XmlWriter.h"

namespace xml {

CXmlWriter::CXmlWriter(std::string_view rootIndent, std::string* output)
    : indent(rootIndent), text(output)
{}

std::uint64_t CXmlWriter::Write(const SimpleXMLElement& root)
{
    if (indent.empty())
        Append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    Open(root);
    while (!path.empty())
    {
        OpenElement& parent = path.back();
        if (parent.nextChild < parent.element.children.size())
            Open(*parent.element.children[parent.nextChild++]);
        else
            Close();
    }
    return length;
}

void CXmlWriter::Open(const SimpleXMLElement& element)
{
    WriteIndent(path.size());
    path.emplace_back(element);
    Append("<");
    Append(element.name);
    for (const SimpleXMLElement::Attribute& attribute : element.attributes)
    {
        Append(" ");
        Append(attribute.name);
        Append(" = \"");
        Append(attribute.value);
        Append("\" ");
    }
    Append(">");
    Append(element.children.empty() ? std::string_view(element.value) : "\n");
}

void CXmlWriter::Close()
{
    const OpenElement& closed = path.back();
    if (closed.nextChild > 0)
        WriteIndent(path.size() - 1);
    Append("</");
    Append(closed.element.name);
    Append(">\n");
    path.pop_back();
}

void CXmlWriter::WriteIndent(std::size_t depth)
{
    Append(indent);
    length += depth;
    if (text != nullptr)
        text->append(depth, '\t');
}

void CXmlWriter::Append(std::string_view piece)
{
    length += piece.size();
    if (text != nullptr)
        text->append(piece);
}

} // namespace xml
