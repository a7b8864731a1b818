#include "xml/SimpleXMLElement.h"

#include "env/Text.h"
#include "platform/Files.h"
#include "text/Case.h"
#include "text/Decimal.h"
#include "xml/DecimalText.h"
#include "xml/TrimSpaces.h"
#include "xml/XmlEscaping.h"
#include "xml/XmlParser.h"
#include "xml/XmlWriter.h"

#include <algorithm>
#include <utility>

namespace xml {

using VnOSAL::VnCriticalSectionLock;

namespace {

const char* const defaultName = "SimpleXMLElement";
const std::string_view storedLineBreak = "#_#lbr#_#";
constexpr std::uint64_t longestFile = 0xFFFFFFFD;

std::string StoredName(std::wstring_view name) { return env::Utf16ToUtf8(EscapeXml(name)); }

std::wstring ShownName(const std::string& stored) { return UnescapeXml(env::Utf8ToUtf16(stored)); }

std::wstring Fold(std::wstring name)
{
    text::MakeLower(name);
    return name;
}

char FoldAscii(char unit)
{
    return unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + ('a' - 'A')) : unit;
}

// Whether a stored name reads as `folded`. Most names differ early and in plain ASCII, so nothing
// is converted before a byte demands it.
bool ReadsAs(const std::string& stored, const std::wstring& folded)
{
    std::size_t i = 0;
    for (; i < stored.size(); ++i)
    {
        if (stored[i] == '&' || static_cast<unsigned char>(stored[i]) >= 0x80)
            return Fold(ShownName(stored)) == folded;
        if (i == folded.size() || static_cast<wchar_t>(FoldAscii(stored[i])) != folded[i])
            return false;
    }
    return i == folded.size();
}

} // namespace

SimpleXMLElement::SimpleXMLElement() : name(defaultName) {}

SimpleXMLElement::SimpleXMLElement(const std::wstring& newName, std::int32_t newValue)
    : name(StoredName(newName))
{
    StoreValue(newValue);
}

SimpleXMLElement::SimpleXMLElement(const std::string& xmlText, bool nested)
{
    std::string text = xmlText;
    if (!text.empty())
        Parse(text, nested);
    NameUnlessNamed(xmlText);
}

SimpleXMLElement::~SimpleXMLElement() { Clear(); }

SimpleXMLElement* SimpleXMLElement::AddChild(const std::wstring& childName, std::int32_t childValue,
                                             bool reuse)
{
    VnCriticalSectionLock lock(section);
    if (SimpleXMLElement* found = reuse ? FindChild(childName) : nullptr)
    {
        lock.Leave();
        found->SetValue(childValue);
        return found;
    }
    children.push_back(std::make_unique<SimpleXMLElement>(childName, childValue));
    return children.back().get();
}

SimpleXMLElement* SimpleXMLElement::AddChild(const std::wstring& childName, bool childValue,
                                             bool reuse)
{
    return AddChild(childName, std::int32_t{childValue}, reuse);
}

SimpleXMLElement* SimpleXMLElement::FindChild(const std::wstring& searchedName)
{
    const VnCriticalSectionLock lock(section);
    const std::wstring folded = Fold(ShownName(StoredName(searchedName)));
    if (folded == lastSearchedName)
        return GetChild(lastFoundIndex);
    const auto isSearched = [&folded](const auto& child) { return ReadsAs(child->name, folded); };
    const auto found = std::find_if(children.begin(), children.end(), isSearched);
    if (found == children.end())
        return nullptr;
    lastSearchedName = folded;
    lastFoundIndex = static_cast<std::uint32_t>(found - children.begin());
    return found->get();
}

SimpleXMLElement* SimpleXMLElement::GetChild(std::size_t index) const
{
    const VnCriticalSectionLock lock(section);
    return index < children.size() ? children[index].get() : nullptr;
}

std::size_t SimpleXMLElement::GetChildCount() const
{
    const VnCriticalSectionLock lock(section);
    return children.size();
}

std::wstring SimpleXMLElement::GetName() const
{
    const VnCriticalSectionLock lock(section);
    return ShownName(name);
}

std::string SimpleXMLElement::GetValue() const
{
    const VnCriticalSectionLock lock(section);
    return value;
}

std::int32_t SimpleXMLElement::GetValueAsInteger() const
{
    const VnCriticalSectionLock lock(section);
    return valueAsInteger;
}

std::int64_t SimpleXMLElement::GetValueAsInteger64() const
{
    const VnCriticalSectionLock lock(section);
    return valueAsInteger64;
}

double SimpleXMLElement::GetValueAsNumber() const
{
    const VnCriticalSectionLock lock(section);
    return valueAsNumber;
}

std::vector<SimpleXMLElement::Attribute> SimpleXMLElement::GetAttributes() const
{
    const VnCriticalSectionLock lock(section);
    return attributes;
}

bool SimpleXMLElement::SetAttribute(const std::string& attributeName,
                                    const std::string& attributeValue)
{
    const VnCriticalSectionLock lock(section);
    AppendAttribute(attributeName, attributeValue);
    return true;
}

void SimpleXMLElement::SetValue(const std::string& newValue)
{
    const VnCriticalSectionLock lock(section);
    StoreValue(newValue);
}

void SimpleXMLElement::SetValue(std::int32_t newValue)
{
    const VnCriticalSectionLock lock(section);
    StoreValue(newValue);
}

// Takes the tree apart through a list instead of its depth, and without memory that might be
// missing.
void SimpleXMLElement::Clear()
{
    const VnCriticalSectionLock lock(section);
    attributes.clear();
    SimpleXMLElement* doomed = nullptr;
    const auto doom = [&doomed](auto& owned) {
        for (auto& child : owned)
        {
            child->nextDoomed = doomed;
            doomed = child.release();
        }
        owned.clear();
    };
    doom(children);
    while (doomed != nullptr)
    {
        const std::unique_ptr<SimpleXMLElement> next(doomed);
        doomed = next->nextDoomed;
        doom(next->children);
    }
}

std::string SimpleXMLElement::ToString(const std::string& indent) const
{
    const VnCriticalSectionLock lock(section);
    std::string text;
    CXmlWriter(indent, &text).Write(*this);
    return text;
}

bool SimpleXMLElement::Save(const std::wstring& filePath, IXmlTransformer* transformer,
                            const std::string& key) const
{
    const VnCriticalSectionLock lock(section);
    // The indents of a deep tree take the square of its depth: look before writing them.
    if (CXmlWriter({}, nullptr).Write(*this) > longestFile)
        return false;
    std::string text = ToString({});
    if (transformer != nullptr)
        text = transformer->Encode(key, text);
    return platform::ReplaceFileContents(filePath, text);
}

bool SimpleXMLElement::Load(const std::wstring& filePath, IXmlTransformer* transformer,
                            const std::string& key)
{
    const VnCriticalSectionLock lock(section);
    std::string text;
    if (!platform::ReadWholeFile(filePath, longestFile, text))
        return false;
    if (transformer != nullptr)
        text = transformer->Decode(key, text);
    Parse(text, false);
    return true;
}

void SimpleXMLElement::Parse(std::string& text, bool nested)
{
    if (!nested)
        PrepareDocument(text);
    CXmlParser(text).Fill(*this);
}

void SimpleXMLElement::NameUnlessNamed(std::string_view givenText)
{
    if (!name.empty())
        return;
    name = defaultName;
    if (value.empty() && children.empty() && attributes.empty())
        StoreValue(givenText);
}

void SimpleXMLElement::AppendAttribute(std::string_view attributeName,
                                       std::string_view attributeValue)
{
    attributes.push_back(
        {std::string(TrimSpaces(attributeName)), std::string(attributeValue), 0, 0, 0});
}

void SimpleXMLElement::StoreValue(std::string_view newValue)
{
    value.clear();
    for (std::size_t end = newValue.find('\n'); end != newValue.npos; end = newValue.find('\n'))
    {
        value.append(newValue.substr(0, end)).append(storedLineBreak);
        newValue.remove_prefix(end + 1);
    }
    value.append(newValue);
    valueAsInteger = text::ReadDecimal(value);
    valueAsInteger64 = text::ReadDecimal64(value);
    valueAsNumber = ReadNumber(value);
}

void SimpleXMLElement::StoreValue(std::int32_t newValue)
{
    value = std::to_string(newValue);
    valueAsInteger = newValue;
    valueAsInteger64 = newValue;
    valueAsNumber = newValue;
}

} // namespace xml
