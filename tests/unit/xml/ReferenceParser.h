#pragma once

#include <string>
#include <utility>
#include <vector>

// The parser's and the writer's rules taken literally: by searches on copies of the text and by
// recursion, at any cost. What SimpleXMLElement has to agree with.
namespace reference {

struct Element
{
    std::string name;
    std::string value;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<Element> children;
};

// What the constructor from text makes of it.
Element Read(const std::string& given, bool nested);

std::string Write(const Element& element, const std::string& indent);

} // namespace reference
