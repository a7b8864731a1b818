#pragma once

#include "xml/IXmlTransformer.h"
#include "zotracker/vnosal/VnCriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace xml {

// An element of the module's own XML documents: name, value, attributes, owned children. A root
// element is the document.
//
// Names and values are UTF-8. Names given as wide text are escaped; values and attributes are
// kept, written and read as they stand, so their owner escapes what needs it. A line feed inside a
// value is kept and written as "#_#lbr#_#".
//
// Nothing that a document holds can make an operation fail: neither depth nor size is bounded by
// anything but memory.
//
// Threads: any. Each operation holds the lock of its element only, not those of its children; a
// child belongs to its parent, and a pointer to it is good until the parent is cleared or gone.
class SimpleXMLElement
{
public:
    // The readings are for the owner's use; nothing here fills them.
    struct Attribute
    {
        std::string name;
        std::string value;
        std::int64_t valueAsInteger64 = 0;
        std::int32_t valueAsInteger = 0;
        double valueAsNumber = 0;
    };

    // An element named "SimpleXMLElement".
    SimpleXMLElement();

    SimpleXMLElement(const std::wstring& newName, std::int32_t newValue);

    // What `xmlText` holds. A text that is no element becomes the value of one named
    // "SimpleXMLElement". `nested` says that the text is a part of a document, whose CDATA
    // sections, tabs and line feeds have been dealt with.
    SimpleXMLElement(const std::string& xmlText, bool nested);

    ~SimpleXMLElement();
    SimpleXMLElement(const SimpleXMLElement&) = delete;
    SimpleXMLElement& operator=(const SimpleXMLElement&) = delete;

    // Appends a child. With `reuse` the first child of that name, if there is one, gets the value
    // instead. Returns the child.
    SimpleXMLElement* AddChild(const std::wstring& childName, std::int32_t childValue, bool reuse);
    SimpleXMLElement* AddChild(const std::wstring& childName, bool childValue, bool reuse);

    // The first child of that name, or null. Names compare as GetName() gives them, without regard
    // to case. The last hit is remembered by its index: asking for the same name again gives
    // whatever child stands there by then, and the empty name, asked for first, the child at 0.
    SimpleXMLElement* FindChild(const std::wstring& searchedName);

    SimpleXMLElement* GetChild(std::size_t index) const; // null when out of range
    std::size_t GetChildCount() const;

    std::wstring GetName() const; // without escapes
    std::string GetValue() const; // as it is stored
    std::int32_t GetValueAsInteger() const;
    std::int64_t GetValueAsInteger64() const;
    double GetValueAsNumber() const;
    std::vector<Attribute> GetAttributes() const;

    // Appends an attribute, also where there is one of that name. The name loses the spaces at its
    // ends. Returns true.
    bool SetAttribute(const std::string& attributeName, const std::string& attributeValue);

    // The readings are what the stored text begins with, as in xml/DecimalText.h.
    void SetValue(const std::string& newValue);
    void SetValue(std::int32_t newValue);

    // Removes attributes and children; name and value stay.
    void Clear();

    // The element as XML text, indented by `indent` and one tab more for each level. An element
    // without indent is a document and begins with the XML declaration.
    std::string ToString(const std::string& indent) const;

    // Writes the document to a file in one step, so that the file holds either its old contents or
    // all of the new ones. False when the file cannot be written, or when the text would be longer
    // than Load() takes.
    bool Save(const std::wstring& filePath, IXmlTransformer* transformer = nullptr,
              const std::string& key = {}) const;

    // Reads a document's root into this element: sets its name, and its value unless the root has
    // children; appends attributes and children to those that are there. A text without a root
    // leaves the name empty or, if it has no tag at all, everything as it was. False, with nothing
    // changed, when the file cannot be read or is longer than 2^32 - 3 bytes.
    bool Load(const std::wstring& filePath, IXmlTransformer* transformer = nullptr,
              const std::string& key = {});

private:
    friend class CXmlParser;
    friend class CXmlWriter;
    struct Unnamed
    {};

    explicit SimpleXMLElement(Unnamed) {}

    // These leave the locking to their callers.
    void Parse(std::string& text, bool nested);
    void NameUnlessNamed(std::string_view givenText);
    void AppendAttribute(std::string_view attributeName, std::string_view attributeValue);
    void StoreValue(std::string_view newValue);
    void StoreValue(std::int32_t newValue);

    std::vector<Attribute> attributes;
    std::vector<std::unique_ptr<SimpleXMLElement>> children;
    std::string name;
    std::string value;
    std::int64_t valueAsInteger64 = 0;
    std::int32_t valueAsInteger = 0;
    double valueAsNumber = 0;
    std::wstring lastSearchedName;
    std::uint32_t lastFoundIndex = 0;
    mutable VnOSAL::VnCriticalSection section;
    SimpleXMLElement* nextDoomed = nullptr; // while the parent is being cleared
};

} // namespace xml
