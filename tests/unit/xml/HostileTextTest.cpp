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
    const auto expectTree = [](const std::string& text, std::size_t children, std::size_t depth) {
        const SimpleXMLElement root("<r>" + text + "</r>", false);
        EXPECT_EQ(root.GetChildCount(), children) << text.substr(0, 20);
        std::size_t reached = 0;
        for (const SimpleXMLElement* next = &root; (next = next->GetChild(0)) != nullptr;)
            ++reached;
        EXPECT_EQ(reached, depth) << text.substr(0, 20);
    };
    expectTree(Nest(levels, "a"), 1, levels);
    expectTree(Nest(levels, "<a"), 1, levels); // names with a tag in them
    expectTree(Fill("<") + "a></a>", 0, 0);
    expectTree(Fill("<a><b><ab><c>"), 0, 0); // never closed
    expectTree(Fill("<a>") + "</a>", 1, 1);  // closed too late
    expectTree(Fill("<></>"), large / 5, 1);
    expectTree(Fill("<a") + "></" + Fill("<a").substr(1) + ">", 1, 1); // a name of tags
    expectTree(Fill("<![CDATA["), 0, 0);                               // sections without end

    // Each stretch ends in a thousand names, all of them known; every second one closes the one
    // before it.
    std::string known;
    std::string longest = "a";
    for (int i = 0; i < 1000; ++i)
    {
        known += "<" + longest + ">";
        longest = "</" + longest;
    }
    expectTree(known + Fill(longest + ">"), 500, 1);

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
