#include "xml/DecimalText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

TEST(DecimalText, ReadsLeadingIntegers)
{
    const struct
    {
        const char* text;
        std::int32_t expected;
        std::int64_t expected64;
    } cases[] = {
        {"", 0, 0},
        {"x1", 0, 0},
        {" \t\r\n\v\f-17 18", -17, -17},
        {"+5", 5, 5},
        {"+-5", 0, 0},
        {"3,5", 3, 3},
        {"2147483648", 2147483647, 2147483648},
        {"-2147483649", -2147483647 - 1, -2147483649},
        {"9223372036854775808", 2147483647, std::numeric_limits<std::int64_t>::max()},
        {"-99999999999999999999", -2147483647 - 1, std::numeric_limits<std::int64_t>::min()},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(xml::ReadInteger(c.text), c.expected) << c.text;
        EXPECT_EQ(xml::ReadInteger64(c.text), c.expected64) << c.text;
    }
}

// Also where the host has set a locale with a decimal comma, if the system has one.
TEST(DecimalText, ReadsLeadingNumbersWithPointOrComma)
{
    const struct
    {
        const char* text;
        double expected;
    } cases[] = {
        {"", 0},
        {".", 0},
        {"-", 0},
        {"3.5", 3.5},
        {" -0,25x", -.25},
        {"+1", 1},
        {"1,234.5", 1.234},
        {".5", .5},
        {"5.", 5},
        {"1,5E-2", 0.015},
        {"1e+", 1},
        {"0x10", 0},
        {"inf", 0},
        {"-1e999", -std::numeric_limits<double>::infinity()},
        {"1e-999", 0},
    };
    for (const char* locale : {"de_DE.UTF-8", "de-DE", "German", "C"})
    {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        for (const auto& c : cases)
            EXPECT_EQ(xml::ReadNumber(c.text), c.expected) << c.text;
    }
}
