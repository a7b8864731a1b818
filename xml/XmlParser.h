#pragma once

#include "xml/SimpleXMLElement.h"
#include "xml/TagPairs.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xml {

// Makes a whole document ready for the parser: CDATA sections become escaped text, tabs and line
// feeds go. What a section held is never taken for markup again; a section without an end stays,
// with all that follows it.
void PrepareDocument(std::string& text);

// Reads back what CXmlWriter writes, and whatever else looks enough like it:
//
// - An element's name is that of the last tag of its text; its start tag is the first "<" followed
//   by that name, longer names included. What stands before the start tag is ignored.
// - A child runs from its start tag to the closing tag of its name; children of the same name
//   inside it count only if their start tags have no attributes. A start tag without closing tag
//   is skipped.
// - The value of an element without children is the text between its tags; entities stay.
// - A child that is not understood itself is named "SimpleXMLElement" and has its text as value.
//
// Takes time and memory in proportion to the text, whatever it holds, and a constant depth of
// stack. The element must be locked by the caller.
//
// Threads: one at a time.
class CXmlParser
{
public:
    // The text must outlive the parser.
    explicit CXmlParser(std::string_view wholeText) : text(wholeText) {}

    // Reads the text's root into `root`. A text without any tag changes nothing; one whose root has
    // no start tag leaves it without a name.
    void Fill(SimpleXMLElement& root);

private:
    // An element whose start tag has been read. All positions are offsets into the whole text.
    struct OpenElement
    {
        SimpleXMLElement& element;
        std::size_t begin;    // of the element's text
        std::size_t end;      // of the element's text
        std::size_t contents; // behind the start tag
        std::size_t lastTag;  // the last "<"
        std::size_t next;     // where to look for the next child
        bool hasChildren;
    };

    bool Open(SimpleXMLElement& element, std::size_t begin, std::size_t end);
    bool OpenNextChild();
    void Close();

    const std::string_view text;
    std::optional<CTagPairs> pairs;
    std::vector<OpenElement> path; // from the root down
};

} // namespace xml
