#include "xml/SimpleXMLElement.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using xml::SimpleXMLElement;

TEST(Element, KeepsNamesEscapedAndShowsThemPlain)
{
    EXPECT_EQ(SimpleXMLElement().GetName(), L"SimpleXMLElement");
    for (const std::wstring name : {L"plain", L"R&D <\"'>", L"\xE9\x20AC\xD83D\xDE00", L"&lt;"})
        EXPECT_EQ(SimpleXMLElement(name, 1).GetName(), name);
    EXPECT_EQ(SimpleXMLElement(L"R&D\xE9", 1).ToString(" "),
              " <R&amp;D\xC3\xA9>1</R&amp;D\xC3\xA9>\n");
}

TEST(Element, ReadsItsValueAsNumbers)
{
    SimpleXMLElement element;
    const auto expectValue = [&element](const char* text, std::int32_t integer, double number) {
        EXPECT_EQ(element.GetValue(), text);
        EXPECT_EQ(element.GetValueAsInteger(), integer);
        EXPECT_EQ(element.GetValueAsInteger64(), integer);
        EXPECT_EQ(element.GetValueAsNumber(), number);
    };
    element.SetValue("3,5");
    expectValue("3,5", 3, 3.5);
    element.SetValue(-7);
    expectValue("-7", -7, -7);
    element.SetValue("\n5");
    expectValue("#_#lbr#_#5", 0, 0);
    element.SetValue("5\n\n");
    expectValue("5#_#lbr#_##_#lbr#_#", 5, 5);
}

TEST(Element, ReusesAChildOnlyWhenAsked)
{
    SimpleXMLElement root;
    SimpleXMLElement* first = root.AddChild(L"a", 1, false);
    EXPECT_EQ(root.AddChild(L"A", 2, true), first);
    EXPECT_EQ(first->GetValueAsInteger(), 2);
    EXPECT_EQ(root.AddChild(L"a", true, false)->GetValue(), "1");
    EXPECT_EQ(root.GetChildCount(), 2u);
    EXPECT_EQ(root.GetChild(0), first);
    EXPECT_EQ(root.GetChild(2), nullptr);
}

TEST(Element, FindsChildrenWithoutRegardToCase)
{
    SimpleXMLElement root("<r><one>1</one><R&amp;D>2</R&amp;D><&#x41;b>3</&#x41;b>"
                          "<\xC3\x89t\xC3\xA9>4</\xC3\x89t\xC3\xA9><ONE>5</ONE></r>",
                          false);
    ASSERT_EQ(root.GetChildCount(), 5u);
    const struct
    {
        const wchar_t* name;
        std::int32_t expected; // 0: none
    } cases[] = {{L"oNe", 1},  {L"r&d", 2},     {L"aB", 3},        {L"on", 0},
                 {L"onee", 0}, {L"r&amp;d", 0}, {L"\xE9T\xC9", 4}, {L"one", 1}};
    for (const auto& c : cases)
    {
        const SimpleXMLElement* found = root.FindChild(c.name);
        EXPECT_EQ(found == nullptr ? 0 : found->GetValueAsInteger(), c.expected)
            << testing::PrintToString(std::wstring(c.name));
    }
    for (const wchar_t* name : {L"a\vb", L"&apos;", L"&#65;", L"\xD800", L"<>", L" x "})
    {
        SimpleXMLElement* added = root.AddChild(name, 1, false);
        EXPECT_EQ(root.AddChild(name, 2, true), added)
            << testing::PrintToString(std::wstring(name));
    }
}

TEST(Element, RemembersTheLastHitByItsIndex)
{
    SimpleXMLElement root;
    EXPECT_EQ(root.FindChild(L""), nullptr);
    root.AddChild(L"a", 1, false);
    EXPECT_EQ(root.FindChild(L""), root.GetChild(0)); // nothing was searched yet
    SimpleXMLElement* b = root.AddChild(L"b", 2, false);
    EXPECT_EQ(root.FindChild(L"b"), b);
    EXPECT_EQ(root.FindChild(L"missing"), nullptr);

    root.Clear();
    EXPECT_EQ(root.FindChild(L"B"), nullptr); // out of range
    SimpleXMLElement* c = root.AddChild(L"c", 3, false);
    SimpleXMLElement* d = root.AddChild(L"d", 4, false);
    EXPECT_EQ(root.FindChild(L"b"), d);
    EXPECT_EQ(root.FindChild(L"c"), c);
    EXPECT_EQ(root.FindChild(L"b"), nullptr);
}

TEST(Element, AppendsAttributes)
{
    SimpleXMLElement element("<r>kept</r>", false);
    EXPECT_TRUE(element.SetAttribute("  a b ", " 1 "));
    EXPECT_TRUE(element.SetAttribute("a b", "2"));
    const std::vector<SimpleXMLElement::Attribute> attributes = element.GetAttributes();
    ASSERT_EQ(attributes.size(), 2u);
    EXPECT_EQ(attributes[0].name, attributes[1].name);
    EXPECT_EQ(attributes[0].value, " 1 ");
    element.AddChild(L"c", 1, false)->AddChild(L"d", 2, false);
    element.Clear();
    EXPECT_TRUE(element.GetAttributes().empty());
    EXPECT_EQ(element.GetChildCount(), 0u);
    EXPECT_EQ(element.GetValue(), "kept");
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
