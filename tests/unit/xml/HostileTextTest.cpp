#include "xml/SimpleXMLElement.h"

#include <gtest/gtest.h>

#include <string>

// Texts that would take a recursive or searching parser minutes, gigabytes or its stack. The
// program's own time limit is the check on the time.
namespace {

using xml::SimpleXMLElement;

constexpr std::size_t large = 2 << 20;
constexpr std::size_t levels = 100'000;

std::string Repeat(const std::string& piece, std::size_t count)
{
    std::string text;
    for (; count > 0; --count)
        text += piece;
    return text;
}

std::string Fill(const std::string& piece) { return Repeat(piece, large / piece.size()); }

std::string Nest(std::size_t depth, const std::string& name)
{
    return Repeat("<" + name + ">", depth) + Repeat("</" + name + ">", depth);
}

TEST(HostileText, TakesLittleTimeAndStack)
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
        std::string contents;
        std::size_t children, depth;
    } cases[] = {
        {"deep, same name", Nest(levels, "a"), 1, levels},
        {"deep, names with a tag in them", Nest(levels, "<a"), 1, levels},
        {"less-than signs before one tag", Fill("<") + "a></a>", 0, 0},
        {"never closed, one name after another", Fill("<a><b><ab><c>"), 0, 0},
        {"closed too late", Fill("<a>") + "</a>", 1, 1},
        {"many children", Fill("<></>"), large / 5, 1},
        {"a name of tags", Fill("<a") + "></" + Fill("<a").substr(1) + ">", 1, 1},
        {"names within names", known + Fill(longest + ">"), 500, 1},
        {"sections without end", Fill("<![CDATA["), 0, 0},
    };
    for (const auto& c : cases)
    {
        const SimpleXMLElement root("<r>" + c.contents + "</r>", false);
        EXPECT_EQ(root.GetChildCount(), c.children) << c.what;
        std::size_t depth = 0;
        for (const SimpleXMLElement* next = &root; (next = next->GetChild(0)) != nullptr;)
            ++depth;
        EXPECT_EQ(depth, c.depth) << c.what;
    }
    EXPECT_EQ(SimpleXMLElement("<r " + Fill("a=") + "></r>", false).GetAttributes().size(), 0u);
    const SimpleXMLElement wide("<r" + Fill(" a=\"1\"") + ">x</r>", false);
    EXPECT_EQ(wide.GetAttributes().size(), large / 6);
    EXPECT_EQ(wide.GetValue(), "x");
}

TEST(HostileText, IsWrittenWithoutRecursionUnlessItIsTooLong)
{
    const SimpleXMLElement root("<r>" + Nest(5'000, "a") + "</r>", false);
    const std::string text = root.ToString("");
    EXPECT_EQ(text.size(), 25'045'047u); // depth * (depth + 9) + 47
    EXPECT_EQ(SimpleXMLElement(text, false).ToString(""), text);
    const SimpleXMLElement deep("<r>" + Nest(levels, "a") + "</r>", false);
    EXPECT_FALSE(deep.Save(L"C:\\deep.xml")); // its indents would fill ten gigabytes
}

} // namespace
