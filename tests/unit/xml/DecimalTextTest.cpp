#include "xml/DecimalText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

TEST(DecimalText, ReadsLeadingNumbersWithPointOrComma)
{
    const struct
    {
        const char* text;
        double expected;
    } cases[] = {
        {".", 0},           {"-", 0},
        {"3.5", 3.5},       {" -0,25x", -.25},
        {"1,234.5", 1.234}, {".5", .5},
        {"1,5E-2", 0.015},  {"1e+", 1},
        {"inf", 0},         {"-1e999", -std::numeric_limits<double>::infinity()},
    };
    for (const char* locale : {"de_DE.UTF-8", "de-DE", "German", "C"})
    {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        for (const auto& c : cases)
            EXPECT_EQ(xml::ReadNumber(c.text), c.expected) << c.text;
    }
}
