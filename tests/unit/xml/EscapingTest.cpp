#include "xml/XmlEscaping.h"

#include <gtest/gtest.h>

#include <string>

TEST(Escaping, ReplacesTheFiveCharacters)
{
    EXPECT_EQ(xml::EscapeXml(std::string_view("a&b\"c<d>e'f\v\xC3\xA9")),
              "a&amp;b&quot;c&lt;d&gt;e&apos;f\v\xC3\xA9");
    EXPECT_EQ(xml::EscapeXml(std::wstring_view(L"&\"<>'&amp;\v\t\x20AC")),
              L"&amp;&quot;&lt;&gt;&apos;&amp;amp; \t\x20AC");
}

TEST(Escaping, UnescapesEntitiesInOrderThenReferences)
{
    const struct
    {
        const char* what;
        std::wstring text, expected;
    } cases[] = {
        {"ampersand later than these", L"&amp;lt;&amp;gt;&amp;quot;", L"&lt;&gt;&quot;"},
        {"ampersand earlier than these", L"&amp;apos;&amp;#65;", L"'A"},
        {"all five, unknown and unfinished", L"&amp;&quot;&lt;&gt;&apos;&nbsp;&AMP;&amp &",
         L"&\"<>'&nbsp;&AMP;&amp &"},
        {"decimal and hexadecimal", L"&#65;&#x20ac;&#X20AC;&#0066;", L"A\x20AC\x20AC\x42"},
        {"beyond 16 bits", L"&#xFFFF;&#x10000;&#x10FFFF;", L"\xFFFF\xD800\xDC00\xDBFF\xDFFF"},
        {"no character", L"&#0;&#xD800;&#x110000;&#99999999999999999999;",
         L"&#0;&#xD800;&#x110000;&#99999999999999999999;"},
        {"no number", L"&#;&#x;&#6a;&#-1;&#65 ;&#65", L"&#;&#x;&#6a;&#-1;&#65 ;&#65"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(xml::UnescapeXml(c.text), c.expected) << c.what;
}
