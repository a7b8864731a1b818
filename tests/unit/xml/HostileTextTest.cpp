#include "xml/SimpleXMLElement.h"

#include <gtest/gtest.h>

#include <string>

// Texts that would take a recursive or searching parser minutes, gigabytes or its stack. The
// program's own time limit is the check on the time.
namespace {

using xml::SimpleXMLElement;

constexpr std::size_t large = 2 << 20;

std::string Repeat(const std::string& piece, std::size_t count)
{
    std::string text;
    text.reserve(piece.size() * count);
    for (; count > 0; --count)
        text += piece;
    return text;
}

std::string Fill(const std::string& piece) { return Repeat(piece, large / piece.size()); }

std::string InRoot(const std::string& contents) { return "<r>" + contents + "</r>"; }

std::size_t DepthOf(const SimpleXMLElement& root)
{
    std::size_t depth = 0;
    for (const SimpleXMLElement* next = root.GetChild(0); next != nullptr; next = next->GetChild(0))
        ++depth;
    return depth;
}

} // namespace

TEST(HostileText, MayBeDeep)
{
    const std::size_t levels = 100'000;
    std::string different;
    for (std::size_t i = 0; i < levels; ++i)
        different += "<e" + std::to_string(i) + ">";
    for (std::size_t i = levels; i-- > 0;)
        different += "</e" + std::to_string(i) + ">";
    const struct
    {
        const char* what;
        std::string contents;
        std::size_t expected;
    } cases[] = {
        {"same name", Repeat("<a>", levels) + Repeat("</a>", levels), levels},
        {"different names", different, levels},
        {"names with a tag in them", Repeat("<<a>", levels) + Repeat("</<a>", levels), levels},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DepthOf(SimpleXMLElement(InRoot(c.contents), false)), c.expected) << c.what;

    const SimpleXMLElement root(InRoot(cases[0].contents), false);
    EXPECT_FALSE(root.Save(L"C:\\deep.xml")); // its indents would fill ten gigabytes
}

TEST(HostileText, OfDepthIsWrittenWithoutRecursion)
{
    const std::size_t levels = 5'000;
    const SimpleXMLElement root(InRoot(Repeat("<a>", levels) + Repeat("</a>", levels)), false);
    const std::string text = root.ToString("");
    EXPECT_EQ(text.size(), 25'045'047u); // levels * (levels + 9) + 47
    EXPECT_EQ(SimpleXMLElement(text, false).ToString(""), text);
}

TEST(HostileText, MayBeLarge)
{
    // Each of these stretches ends in a thousand names, all of them known. Every second one closes
    // the one before it.
    std::string known;
    std::string longest = "a";
    for (int i = 0; i < 1000; ++i)
    {
        known += "<" + longest + ">";
        longest = "</" + longest;
    }
    const struct
    {
        const char* what;
        std::string text;
        std::size_t expectedChildren;
    } cases[] = {
        {"less-than signs before one tag", InRoot(Fill("<") + "a></a>"), 0},
        {"never closed, one name after another", InRoot(Fill("<a><b><ab><c>")), 0},
        {"closed too late", InRoot(Fill("<a>") + "</a>"), 1},
        {"many children", InRoot(Fill("<></>")), large / 5},
        {"a name of tags", InRoot(Fill("<a") + "></" + Fill("<a").substr(1) + ">"), 1},
        {"names within names", InRoot(known + Fill(longest + ">")), 500},
        {"an attribute without end", "<r " + Fill("a=") + "></r>", 0},
        {"sections without end", InRoot(Fill("<![CDATA[")), 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SimpleXMLElement(c.text, false).GetChildCount(), c.expectedChildren) << c.what;

    const std::size_t count = 1'000'000;
    const SimpleXMLElement root("<r" + Repeat(" a=\"1\"", count) + ">x</r>", false);
    EXPECT_EQ(root.GetAttributes().size(), count);
    EXPECT_EQ(root.GetValue(), "x");
}
