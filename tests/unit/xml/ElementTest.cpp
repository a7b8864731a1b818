#include "tests/simulated/Files.h"
#include "xml/SimpleXMLElement.h"
#include "xml/XmlEscaping.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <tuple>

using xml::SimpleXMLElement;

namespace {

const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const wchar_t* const path = L"C:\\content\\tallyhive.xml";

// Puts the key before the text, and takes it away again.
struct CPrefix : xml::IXmlTransformer
{
    std::string Encode(const std::string& key, const std::string& text) override
    {
        return key + text;
    }
    std::string Decode(const std::string& key, const std::string& text) override
    {
        return text.substr(key.size());
    }
};

} // namespace

TEST(Escaping, ReplacesTheFiveCharacters)
{
    EXPECT_EQ(xml::EscapeXml(std::wstring_view(L"&\"<>'&amp;\v\t\x20AC")),
              L"&amp;&quot;&lt;&gt;&apos;&amp;amp; \t\x20AC");
}

TEST(Escaping, UnescapesEntitiesInOrderThenReferences)
{
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"&amp;lt;&amp;gt;&amp;quot;", L"&lt;&gt;&quot;"}, // the ampersand later than these
        {L"&amp;apos;&amp;#65;", L"'A"},                    // and earlier than these
        {L"&amp;&quot;&lt;&gt;&apos;&nbsp;&AMP;&amp &", L"&\"<>'&nbsp;&AMP;&amp &"},
        {L"&#65;&#x20ac;&#X20AC;&#0066;", L"A\x20AC\x20AC\x42"},
        {L"&#xFFFF;&#x10000;&#x10FFFF;", L"\xFFFF\xD800\xDC00\xDBFF\xDFFF"},
        {L"&#0;&#xD800;&#x110000;&#99999999999999999999;", // no characters
         L"&#0;&#xD800;&#x110000;&#99999999999999999999;"},
        {L"&#;&#x;&#6a;&#-1;&#65 ;&#65", L"&#;&#x;&#6a;&#-1;&#65 ;&#65"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(xml::UnescapeXml(text), expected);
}

TEST(Element, KeepsNamesEscapedAndShowsThemPlain)
{
    EXPECT_EQ(SimpleXMLElement().GetName(), L"SimpleXMLElement");
    const SimpleXMLElement element(L"R&D\xE9 &lt;", 1);
    EXPECT_EQ(element.GetName(), L"R&D\xE9 &lt;");
    EXPECT_EQ(element.ToString(" "), " <R&amp;D\xC3\xA9 &amp;lt;>1</R&amp;D\xC3\xA9 &amp;lt;>\n");
}

TEST(Element, ReadsTheNumberThatItsValueBeginsWith)
{
    const std::tuple<const char*, std::int32_t, double> cases[] = {
        {".", 0, 0},          {"-", 0, 0},          {"inf", 0, 0},
        {"3.5", 3, 3.5},      {" -0,25x", 0, -.25}, {"1,234.5", 1, 1.234},
        {".5", 0, .5},        {"1,5E-2", 1, .015},  {"1e+", 1, 1},
        {"5#_#lbr#_#", 5, 5}, {"#_#lbr#_#5", 0, 0}, {"-1e999", -1, -HUGE_VAL},
    };
    SimpleXMLElement element;
    for (const auto& [value, integer, number] : cases)
    {
        element.SetValue(value);
        EXPECT_EQ(element.GetValueAsInteger(), integer) << value;
        EXPECT_EQ(element.GetValueAsInteger64(), integer) << value;
        EXPECT_EQ(element.GetValueAsNumber(), number) << value;
    }
    element.SetValue("5\n\n");
    EXPECT_EQ(element.GetValue(), "5#_#lbr#_##_#lbr#_#");
    element.SetValue(-7);
    EXPECT_EQ(element.GetValue(), "-7");
    EXPECT_EQ(element.GetValueAsInteger(), -7);
    EXPECT_EQ(element.GetValueAsInteger64(), -7);
    EXPECT_EQ(element.GetValueAsNumber(), -7);
}

TEST(Element, FindsChildrenWithoutRegardToCase)
{
    SimpleXMLElement root("<r><one>1</one><R&amp;D>2</R&amp;D><&#x41;b>3</&#x41;b>"
                          "<\xC3\x89t\xC3\xA9>4</\xC3\x89t\xC3\xA9><ONE>5</ONE></r>",
                          false);
    const std::pair<std::wstring, std::int32_t> cases[] = {
        {L"oNe", 1},  {L"r&d", 2},     {L"aB", 3},        {L"on", 0}, // 0: none
        {L"onee", 0}, {L"r&amp;d", 0}, {L"\xE9T\xC9", 4}, {L"one", 1}};
    for (const auto& [name, value] : cases)
    {
        const SimpleXMLElement* found = root.FindChild(name);
        EXPECT_EQ(found == nullptr ? 0 : found->GetValueAsInteger(), value) << name;
    }
}

TEST(Element, ReusesAChildOnlyWhenAsked)
{
    SimpleXMLElement root;
    for (const std::wstring name : {L"z", L"a\vb", L"&apos;", L"&#65;", L"\xD800", L"<>", L" x "})
    {
        SimpleXMLElement* first = root.AddChild(name, 1, false);
        EXPECT_EQ(root.AddChild(name, 2, true), first) << name;
        EXPECT_EQ(first->GetValueAsInteger(), 2);
        EXPECT_EQ(root.AddChild(name, true, false)->GetValue(), "1");
    }
    EXPECT_EQ(root.GetChildCount(), 14u);
}

TEST(Element, RemembersTheLastHitByItsIndex)
{
    SimpleXMLElement root;
    EXPECT_EQ(root.FindChild(L""), nullptr);
    for (const wchar_t* name : {L"a", L"b"})
        root.AddChild(name, 1, false);
    EXPECT_EQ(root.FindChild(L""), root.GetChild(0)); // nothing was searched yet
    EXPECT_EQ(root.FindChild(L"b"), root.GetChild(1));
    EXPECT_EQ(root.FindChild(L"missing"), nullptr);
    root.Clear();
    EXPECT_EQ(root.FindChild(L"B"), nullptr); // out of range
    for (const wchar_t* name : {L"c", L"d"})
        root.AddChild(name, 1, false);
    EXPECT_EQ(root.FindChild(L"b"), root.GetChild(1));
    EXPECT_EQ(root.FindChild(L"c"), root.GetChild(0));
    EXPECT_EQ(root.FindChild(L"b"), nullptr);
}

TEST(Element, AppendsAttributes)
{
    SimpleXMLElement element("<r>kept</r>", false);
    EXPECT_TRUE(element.SetAttribute("  a b ", " 1 "));
    EXPECT_TRUE(element.SetAttribute("a b", "2"));
    EXPECT_EQ(element.ToString(" "), " <r a b = \" 1 \"  a b = \"2\" >kept</r>\n");
    element.AddChild(L"c", 1, false)->AddChild(L"d", 2, false);
    element.Clear();
    EXPECT_EQ(element.ToString(" "), " <r>kept</r>\n");
}

TEST(Element, IsWrittenToAFileAndReadBackThroughATransformer)
{
    simulated::Reset();
    simulated::PutFolder(L"C:\\content");
    SimpleXMLElement root("<r a=\"1\"><c>x</c></r>", false);
    root.SetAttribute("b", "<");
    root.GetChild(0)->AddChild(L"d", 5, false);
    EXPECT_EQ(root.GetChild(0)->ToString("  "), "  <c>\n  \t<d>5</d>\n  </c>\n");
    const std::string text =
        declaration + "<r a = \"1\"  b = \"<\" >\n\t<c>\n\t\t<d>5</d>\n\t</c>\n</r>\n";
    EXPECT_FALSE(root.Load(path)) << "there is none yet";
    EXPECT_FALSE(root.Save(L"C:\\nowhere\\tallyhive.xml"));
    ASSERT_TRUE(root.Save(path));
    EXPECT_EQ(simulated::ReadFileBytes(path), text);
    CPrefix prefix;
    ASSERT_TRUE(root.Save(path, &prefix, "key"));
    simulated::SetReadOnly(path, true);
    EXPECT_FALSE(root.Save(path));
    EXPECT_EQ(simulated::ReadFileBytes(path), "key" + text);
    SimpleXMLElement loaded;
    ASSERT_TRUE(loaded.Load(path, &prefix, "key"));
    EXPECT_EQ(loaded.ToString(""), text);
}

TEST(Element, AddsAFileToWhatItHolds)
{
    simulated::Reset();
    const std::pair<const char*, const char*> cases[] = {
        {"no root</x>", "< o = \"1\" >\n\t<c>1</c>\n</>\n"},
        {"<s p=\"2\"><d>2</d></s>", "<s o = \"1\"  p = \"2\" >\n\t<c>1</c>\n\t<d>2</d>\n</s>\n"},
    };
    for (const auto& [file, expected] : cases)
    {
        simulated::PutFile(path, file);
        SimpleXMLElement root("<r o=\"1\"><c>1</c></r>", false);
        EXPECT_TRUE(root.Load(path)) << file;
        EXPECT_EQ(root.ToString(""), declaration + expected) << file;
    }
}

// Run with ThreadSanitizer, shows that every operation takes the lock.
TEST(Element, IsSharedByThreads)
{
    SimpleXMLElement root;
    SimpleXMLElement* shared = root.AddChild(L"shared", 0, false);
    const auto use = [&root, shared](const std::wstring& own) {
        for (int i = 0; i < 500; ++i)
        {
            root.AddChild(own, i, true);
            root.AddChild(L"shared", i, true);
            root.FindChild(own)->GetValueAsInteger();
            shared->SetAttribute("a", "1");
            shared->GetValueAsNumber();
            root.ToString("");
            if (i % 100 == 0)
                shared->Clear();
        }
    };
    std::thread other(use, L"one");
    use(L"two");
    other.join();
    EXPECT_EQ(root.GetChildCount(), 3u);
    EXPECT_EQ(root.FindChild(L"one")->GetValueAsInteger(), 499);
}
