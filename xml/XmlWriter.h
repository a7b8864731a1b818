#pragma once

#include "xml/SimpleXMLElement.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace xml {

// Writes a tree as XML text, or only measures it.
//
// A start tag holds its attributes as ` name = "value" `, so it ends in a space where it has some.
// An element without children stands on one line with its value; otherwise children take a line
// each, a tab deeper, and the value is left out.
//
// Threads: one at a time. Holds the locks of the elements on the way down to the one it writes.
class CXmlWriter
{
public:
    // Appends to `output`; null only measures.
    CXmlWriter(std::string_view rootIndent, std::string* output);

    // Returns the length of the text in bytes.
    std::uint64_t Write(const SimpleXMLElement& root);

private:
    // An element whose start tag is written.
    struct OpenElement
    {
        explicit OpenElement(const SimpleXMLElement& opened) : element(opened), lock(opened.section)
        {}

        const SimpleXMLElement& element;
        VnOSAL::VnCriticalSectionLock lock;
        std::size_t nextChild = 0;
    };

    void Open(const SimpleXMLElement& element);
    void Close();
    void WriteIndent(std::size_t depth);
    void Append(std::string_view piece);

    const std::string_view indent;
    std::string* const text;
    std::uint64_t length = 0;
    std::deque<OpenElement> path; // from the root down
};

} // namespace xml
