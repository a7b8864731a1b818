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
        const wchar_t* what;
        std::wstring text;
        std::wstring expected;
    } cases[] = {
        {L"all five", L"&amp;&quot;&lt;&gt;&apos;", L"&\"<>'"},
        {L"ampersand later than these", L"&amp;lt;&amp;gt;&amp;quot;", L"&lt;&gt;&quot;"},
        {L"ampersand earlier than these", L"&amp;apos;&amp;#65;", L"'A"},
        {L"doubled ampersand", L"&amp;amp;", L"&amp;"},
        {L"unknown and unfinished", L"&nbsp;&AMP;&amp &", L"&nbsp;&AMP;&amp &"},
        {L"decimal and hexadecimal", L"&#65;&#x20ac;&#X20AC;&#0065;",
         L"A\x20AC\x20AC"
         L"A"},
        {L"beyond 16 bits", L"&#xFFFF;&#x10000;&#x10FFFF;", L"\xFFFF\xD800\xDC00\xDBFF\xDFFF"},
        {L"no character", L"&#0;&#xD800;&#x110000;&#99999999999999999999;",
         L"&#0;&#xD800;&#x110000;&#99999999999999999999;"},
        {L"no number", L"&#;&#x;&#6a;&#-1;&#65 ;&#65", L"&#;&#x;&#6a;&#-1;&#65 ;&#65"},
        {L"one behind another", L"&#&#65;", L"&#A"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(xml::UnescapeXml(c.text), c.expected)
            << std::string(c.what, c.what + wcslen(c.what));
}
