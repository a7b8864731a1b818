#include "tests/unit/xml/ReferenceParser.h"
#include "xml/SimpleXMLElement.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using xml::SimpleXMLElement;

const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// The document that the writer makes of what the parser read, without the declaration.
std::string Reread(const std::string& text)
{
    return SimpleXMLElement(text, false).ToString("").substr(declaration.size());
}

struct ParserCase
{
    const char* what;
    const char* text;
    const char* expected;
};

void ExpectReread(const std::vector<ParserCase>& cases)
{
    for (const auto& c : cases)
        EXPECT_EQ(Reread(c.text), c.expected) << c.what;
}

} // namespace

TEST(Parser, ReadsElementsAndValues)
{
    ExpectReread({
        {"value", "<r>x</r>", "<r>x</r>\n"},
        {"declaration", "<?xml version=\"1.0\"?>\n<r>x</r>\n", "<r>x</r>\n"},
        {"children", "<r><a>1</a><b></b></r>", "<r>\n\t<a>1</a>\n\t<b></b>\n</r>\n"},
        {"text between children", "<r>x<a>1</a>y</r>", "<r>\n\t<a>1</a>\n</r>\n"},
        {"tabs and line feeds", "<r>\n\t<a>1\t\n2</a>\r\n</r>", "<r>\n\t<a>12</a>\n</r>\n"},
        {"entities", "<r>&lt;&#65;#_#lbr#_#</r>", "<r>&lt;&#65;#_#lbr#_#</r>\n"},
        {"spaces in the closing tag", "<r>x</ r >", "<r>x</r>\n"},
        {"longer name first", "<row>x</r>", "<r>x</r>\n"},
        {"text behind the root", "<r>x</r> tail", "<r>x</r>\n"},
        {"empty name with value", "<>x</>", "<SimpleXMLElement>x</SimpleXMLElement>\n"},
    });
}

TEST(Parser, ReadsAttributesAsTheyStand)
{
    ExpectReread({
        {"one", "<r a=\"1\">x</r>", "<r a = \"1\" >x</r>\n"},
        {"as written", "<r a = \"1\"  b = \"&lt;\" ></r>", "<r a = \"1\"  b = \"&lt;\" ></r>\n"},
        {"twice", "<r a=\"1\" a=\"2\"></r>", "<r a = \"1\"  a = \"2\" ></r>\n"},
        {"without space between", "<r a=\"1\"b=\"2\"></r>", "<r a = \"1\"  b = \"2\" ></r>\n"},
        {"equals sign inside", "<r a=\"b=c\"></r>", "<r a = \"b=c\" ></r>\n"},
        {"no quotes", "<r a=1></r>", "<r></r>\n"},
        {"one quote", "<r a=\"1></r>", "<r></r>\n"},
        {"two words", "<r a b=\"1\"></r>", "<r a b = \"1\" ></r>\n"},
        {"end of a longer name", "<row a=\"1\"></r>", "<r a = \"1\" ></r>\n"},
        {"of a child", "<r><a b=\"1\">x</a></r>", "<r>\n\t<a b = \"1\" >x</a>\n</r>\n"},
    });
}

TEST(Parser, FindsTheClosingTagOfEachChild)
{
    ExpectReread({
        {"same name inside", "<r><a>1<a>2</a></a><b>3</b></r>",
         "<r>\n\t<a>\n\t\t<a>2</a>\n\t</a>\n\t<b>3</b>\n</r>\n"},
        {"same name with attributes inside", "<r><a><a x=\"1\">2</a>3</a><b>4</b></r>",
         "<r>\n\t<a>\n\t\t<a x = \"1\" >2</a>\n\t</a>\n\t<b>4</b>\n</r>\n"},
        {"never closed", "<r><a><b>1</b></r>", "<r>\n\t<b>1</b>\n</r>\n"},
        {"closed outside the parent", "<r><b><a>1</b></a></r>", "<r>\n\t<b><a>1</b>\n</r>\n"},
        {"closed inside its own start tag", "<r><a </a><b>1</b></r>", "<r>\n\t<b>1</b>\n</r>\n"},
        {"opened inside its own start tag", "<r><a <a>1</a>2</a></r>", "<r>\n\t<a>1</a>\n</r>\n"},
        {"closed by itself", "<r><a/><b>1</b></r>", "<r>\n\t<b>1</b>\n</r>\n"},
        {"no child at all", "<r><a>1</r>", "<r><a>1</r>\n"},
        {"stray closing tag", "<r></a><b>1</b></r>", "<r>\n\t<b>1</b>\n</r>\n"},
        {"name with a tag in it", "<r><<b>1</<b></r>",
         "<r>\n\t<SimpleXMLElement>1</</SimpleXMLElement>\n</r>\n"},
    });
}

TEST(Parser, TurnsSectionsIntoEscapedText)
{
    ExpectReread({
        {"markup", "<r><![CDATA[a<b & \"c\" 'd'>]]></r>",
         "<r>a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;</r>\n"},
        {"two", "<r><![CDATA[<]]>-<![CDATA[>]]></r>", "<r>&lt;-&gt;</r>\n"},
        {"no end", "<r><a>1</a></r><![CDATA[",
         "<SimpleXMLElement><r><a>1</a></r><![CDATA["
         "</SimpleXMLElement>\n"},
        {"marker inside", "<r><![CDATA[<![CDATA[]]></r>", "<r>&lt;![CDATA[</r>\n"},
        {"marker made by what a section held", "<r><![CDA<![CDATA[TA[]]>&]]></r>",
         "<r><![CDATA[&]]></r>\n"},
    });
    EXPECT_EQ(SimpleXMLElement("<r><![CDATA[<]]></r>", true).GetValue(), "<![CDATA[<]]>");
}

TEST(Parser, KeepsATextWithoutElementAsValue)
{
    for (const std::string text : {"plain", "12 < 13", "<", "x<", "<a", "<a>", "a<b>", "<a></b>",
                                   "</a>", "x</a>", "<a</a", "<>", "\t\xFF\x01"})
    {
        const SimpleXMLElement element(text, false);
        EXPECT_EQ(element.GetName(), L"SimpleXMLElement") << text;
        EXPECT_EQ(element.GetValue(), text);
        EXPECT_EQ(element.GetChildCount(), 0u) << text;
    }
    EXPECT_EQ(SimpleXMLElement("1\n2", false).GetValue(), "1#_#lbr#_#2");
    EXPECT_EQ(SimpleXMLElement("", false).GetValue(), "");
    EXPECT_EQ(SimpleXMLElement("12 < 13", false).GetValueAsInteger(), 12);
}

// Texts that once disagreed or that hold every rule at once.
TEST(Parser, AgreesWithTheReferenceOnPastSurprises)
{
    for (const std::string text :
         {"<r><a ></a></r>", "<r><<a>x</<a><a>y</a></r>", "<r></a></<//a></r>", "<r>< ></></r>",
          "<a><a x><a></a></a></a>", "<r><a><a <a></a></a></a></r>", "<r><//a></a><///a></r>"})
        EXPECT_EQ(reference::Describe(SimpleXMLElement(text, false)),
                  reference::Describe(reference::Read(text, false)))
            << text;
}

TEST(Parser, AgreesWithTheReferenceOnRandomTexts)
{
    const std::vector<std::string> pieces = {
        "<",    ">",     "</",    "a",         "b",     "ab", " ",   "=",           "\"",   "/",
        "<a>",  "</a>",  "<b>",   "</b>",      "<a x>", "\t", "\n",  "<a b=\"1\">", "</r>", "<r>",
        "<<a>", "</<a>", "<//a>", "<![CDATA[", "]]>",   "&",  "<a ", "</",          "<>",   "</>"};
    std::mt19937 random(20120906);
    for (int round = 0; round < 60000; ++round)
    {
        // A few kinds of pieces at a time, so that tags meet their counterparts.
        std::vector<std::string> chosen;
        for (int i = 0; i < 6; ++i)
            chosen.push_back(pieces[random() % pieces.size()]);
        std::string text;
        for (std::size_t length = random() % 30; length > 0; --length)
            text += chosen[random() % chosen.size()];
        if (round % 2 == 0)
            text = "<r>" + text + "</r>";
        const bool nested = round % 7 == 0;

        const SimpleXMLElement element(text, nested);
        const reference::Element expected = reference::Read(text, nested);
        ASSERT_EQ(reference::Describe(element), reference::Describe(expected)) << text;
        ASSERT_EQ(element.ToString(""), reference::Write(expected, "")) << text;
    }
}
