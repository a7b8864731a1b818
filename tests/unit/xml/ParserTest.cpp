#include "tests/unit/xml/ReferenceParser.h"
#include "xml/SimpleXMLElement.h"
#include "xml/XmlParser.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

using xml::SimpleXMLElement;

namespace {

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

} // namespace

// What the writer makes of the tree that the parser read, behind the declaration.
TEST(Parser, ReadsDocuments)
{
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    const std::tuple<const char*, const char*, std::string> cases[] = {
        {"text between children", "<?xml version=\"1.0\"?>\n<r>x<a>1\r</a>y<b></b></r>",
         "<r>\n\t<a>1\r</a>\n\t<b></b>\n</r>\n"},
        {"tabs and line feeds", "<r>\n\t<a>1\t\n2</a>\r\n</r>", "<r>\n\t<a>12</a>\n</r>\n"},
        {"empty name with value", "<>x</>", "<SimpleXMLElement>x</SimpleXMLElement>\n"},
        {"no element", "1\n< 13", "<SimpleXMLElement>1#_#lbr#_#< 13</SimpleXMLElement>\n"},
        {"attributes as written", "<r a = \"1\"  b = \"&lt;\" ></r>",
         "<r a = \"1\"  b = \"&lt;\" ></r>\n"},
        {"same name inside", "<r><a><a x=\"1\">2</a>3</a><b>4</b></r>",
         "<r>\n\t<a>\n\t\t<a x = \"1\" >2</a>\n\t</a>\n\t<b>4</b>\n</r>\n"},
        {"sections", "<r><![CDATA[a<b & \"c\" 'd'>]]>-<![CDATA[>]]></r>",
         "<r>a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;-&gt;</r>\n"},
        {"section without end", "<r><![CDATA[a]]><![CDATA[\tb</r>", "<r>a<![CDATA[b</r>\n"},
        {"section's mark with a tab in it", "<r><![CDA\tTA[x]]></r>", "<r><![CDATA[x]]></r>\n"},
        {"section made by another", "<r><![CDA<![CDATA[TA[]]>&]]></r>", "<r><![CDATA[&]]></r>\n"},
    };
    for (const auto& [what, text, expected] : cases)
        EXPECT_EQ(SimpleXMLElement(text, false).ToString(""), declaration + expected) << what;
    EXPECT_EQ(SimpleXMLElement("12 < 13", false).GetValueAsInteger(), 12);
    EXPECT_EQ(SimpleXMLElement("<r>x<a>1</a></r>", false).GetValue(), "");
}

TEST(Parser, AgreesWithTheReference)
{
    const auto expectAgreement = [](std::string text) {
        xml::PrepareDocument(text);
        ASSERT_EQ(SimpleXMLElement(text, true).ToString(" "), reference::ReadAndWrite(text, " "))
            << text;
    };
    for (const char* surprise :
         {"<r><a ></a></r>", "<r><<a>x</<a><a>y</a></r>", "<r></a></<//a></r>", "<r>< ></></r>",
          "<a><a x><a></a></a></a>", "<r><a><a <a></a></a></a></r>", "<r><//a></a><///a></r>"})
        expectAgreement(surprise);

    const std::vector<std::string> pieces = {
        "<",   ">",     "</",  "a",    "b",     "ab",          " ",    "=",   "\"",   "/",
        "<a>", "</a>",  "<b>", "</b>", "<a x>", "<a b=\"1\">", "</r>", "<r>", "<<a>", "</<a>",
        "<a ", "<//a>", "</",  "<>",   "</>",   "<![CDATA[",   "]]>",  "&"};
    std::mt19937 random(20120906);
    for (int round = 0; round < 60000 && !testing::Test::HasFatalFailure(); ++round)
    {
        // A few kinds of pieces at a time, so that tags meet their counterparts.
        std::vector<std::string> chosen;
        for (int i = 0; i < 6; ++i)
            chosen.push_back(pieces[random() % pieces.size()]);
        std::string text;
        for (std::size_t length = random() % 30; length > 0; --length)
            text += chosen[random() % chosen.size()];
        expectAgreement(round % 2 == 0 ? "<r>" + text + "</r>" : text);
    }
}

// Texts that would take a recursive or searching parser minutes, gigabytes or its stack. The
// program's own time limit is the check on the time.
TEST(Parser, TakesLittleTimeAndStackForHostileText)
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

TEST(Writer, NeedsNoRecursionAndSavesNoTextThatIsTooLong)
{
    const SimpleXMLElement root("<r>" + Nest(5'000, "a") + "</r>", false);
    const std::string text = root.ToString("");
    EXPECT_EQ(text.size(), 25'045'047u); // depth * (depth + 9) + 47
    EXPECT_EQ(SimpleXMLElement(text, false).ToString(""), text);
    const SimpleXMLElement deep("<r>" + Nest(levels, "a") + "</r>", false);
    EXPECT_FALSE(deep.Save(L"C:\\deep.xml")); // its indents would fill ten gigabytes
}
