#include "xml/DecimalText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

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
        {"17", 17, 17},
        {" \t\r\n\v\f-17 18", -17, -17},
        {"+5", 5, 5},
        {"+-5", 0, 0},
        {"- 5", 0, 0},
        {"0012x", 12, 12},
        {"3,5", 3, 3},
        {"0x10", 0, 0},
        {"2147483647", 2147483647, 2147483647},
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

TEST(DecimalText, ReadsLeadingNumbersWithPointOrComma)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const struct
    {
        const char* text;
        double expected;
    } cases[] = {
        {"", 0},
        {"x", 0},
        {".", 0},
        {"-", 0},
        {"3.5", 3.5},
        {"3,5", 3.5},
        {" -0,25x", -.25},
        {"+1", 1},
        {"1,234.5", 1.234},
        {"1.2.3", 1.2},
        {".5", .5},
        {"5.", 5},
        {"1e3", 1000},
        {"1,5E-2", 0.015},
        {"1e", 1},
        {"1e+", 1},
        {"0x10", 0},
        {"inf", 0},
        {"nan", 0},
        {"1e999", infinity},
        {"-1e999", -infinity},
        {"1e-999", 0},
        {"0.1", 0.1},
        {"9007199254740993", 9007199254740992},
    };
    for (const auto& c : cases)
        EXPECT_EQ(xml::ReadNumber(c.text), c.expected) << c.text;
}

TEST(DecimalText, ReadsNumbersAlikeInEveryLocale)
{
    const char* set = nullptr;
    for (const char* locale : {"de_DE.UTF-8", "de_DE.utf8", "de-DE", "German"})
        if (set == nullptr)
            set = std::setlocale(LC_NUMERIC, locale);
    if (set == nullptr)
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(xml::ReadNumber("2.5"), 2.5);
    EXPECT_EQ(xml::ReadNumber("2,5"), 2.5);
    std::setlocale(LC_NUMERIC, "C");
}
