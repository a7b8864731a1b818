#include "xml/SimpleXMLElement.h"
#include "xml/XmlEscaping.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>
#include <thread>

using xml::SimpleXMLElement;

TEST(Escaping, ReplacesTheFiveCharacters)
{
    EXPECT_EQ(xml::EscapeXml(std::string_view("a&b\"c<d>e'f\v\xC3\xA9")),
              "a&amp;b&quot;c&lt;d&gt;e&apos;f\v\xC3\xA9");
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
    EXPECT_EQ(SimpleXMLElement(L"R&D\xE9 &lt;", 1).GetName(), L"R&D\xE9 &lt;");
    EXPECT_EQ(SimpleXMLElement(L"R&D\xE9", 1).ToString(" "),
              " <R&amp;D\xC3\xA9>1</R&amp;D\xC3\xA9>\n");
}

TEST(Element, ReadsTheNumberThatItsValueBeginsWith)
{
    const struct
    {
        const char* value;
        std::int32_t integer;
        double number; // with a decimal point or comma
    } cases[] = {
        {".", 0, 0},          {"-", 0, 0},          {"inf", 0, 0},
        {"3.5", 3, 3.5},      {" -0,25x", 0, -.25}, {"1,234.5", 1, 1.234},
        {".5", 0, .5},        {"1,5E-2", 1, .015},  {"1e+", 1, 1},
        {"5#_#lbr#_#", 5, 5}, {"#_#lbr#_#5", 0, 0}, {"-1e999", -1, -HUGE_VAL},
    };
    SimpleXMLElement element;
    const auto expectNumbers = [&element](std::int32_t integer, double number) {
        EXPECT_EQ(element.GetValueAsInteger(), integer) << element.GetValue();
        EXPECT_EQ(element.GetValueAsInteger64(), integer) << element.GetValue();
        EXPECT_EQ(element.GetValueAsNumber(), number) << element.GetValue();
    };
    for (const char* locale : {"de_DE.UTF-8", "German", "C"})
    {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        for (const auto& c : cases)
        {
            element.SetValue(c.value);
            expectNumbers(c.integer, c.number);
        }
    }
    element.SetValue("5\n\n");
    EXPECT_EQ(element.GetValue(), "5#_#lbr#_##_#lbr#_#");
    element.SetValue(-7);
    EXPECT_EQ(element.GetValue(), "-7");
    expectNumbers(-7, -7);
}

TEST(Element, ReusesAChildOnlyWhenAsked)
{
    SimpleXMLElement root;
    SimpleXMLElement* first = root.AddChild(L"a", 1, false);
    EXPECT_EQ(root.AddChild(L"A", 2, true), first);
    EXPECT_EQ(first->GetValueAsInteger(), 2);
    EXPECT_EQ(root.AddChild(L"a", true, false)->GetValue(), "1");
    EXPECT_EQ(root.GetChildCount(), 2u);
    EXPECT_EQ(root.GetChild(2), nullptr);
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
    for (const std::wstring name : {L"a\vb", L"&apos;", L"&#65;", L"\xD800", L"<>", L" x "})
    {
        SimpleXMLElement* added = root.AddChild(name, 1, false);
        EXPECT_EQ(root.AddChild(name, 2, true), added) << name;
    }
}

TEST(Element, RemembersTheLastHitByItsIndex)
{
    SimpleXMLElement root;
    EXPECT_EQ(root.FindChild(L""), nullptr);
    SimpleXMLElement* a = root.AddChild(L"a", 1, false);
    EXPECT_EQ(root.FindChild(L""), a); // nothing was searched yet
    SimpleXMLElement* b = root.AddChild(L"b", 2, false);
    EXPECT_EQ(root.FindChild(L"b"), b);
    EXPECT_EQ(root.FindChild(L"missing"), nullptr);
    root.Clear();
    EXPECT_EQ(root.FindChild(L"B"), nullptr); // out of range
    root.AddChild(L"c", 3, false);
    SimpleXMLElement* d = root.AddChild(L"d", 4, false);
    EXPECT_EQ(root.FindChild(L"b"), d);
    EXPECT_EQ(root.FindChild(L"c"), root.GetChild(0));
    EXPECT_EQ(root.FindChild(L"b"), nullptr);
}

TEST(Element, AppendsAttributes)
{
    SimpleXMLElement element("<r>kept</r>", false);
    EXPECT_TRUE(element.SetAttribute("  a b ", " 1 "));
    EXPECT_TRUE(element.SetAttribute("a b", "2"));
    EXPECT_EQ(element.ToString(" "), " <r a b = \" 1 \"  a b = \"2\" >kept</r>\n");
    EXPECT_EQ(element.GetAttributes().at(1).valueAsNumber, 0); // never filled
    element.AddChild(L"c", 1, false)->AddChild(L"d", 2, false);
    element.Clear();
    EXPECT_EQ(element.ToString(" "), " <r>kept</r>\n");
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
