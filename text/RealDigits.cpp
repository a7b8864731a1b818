#include "text/RealDigits.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <ranges>
#include <vector>

namespace text {

namespace {

// A natural number of any size. The runtime's own formatting is exact, too, but five times the size
// of this, and asks the host's locale.
class CNatural
{
public:
    explicit CNatural(std::uint64_t value) : limbs{Low(value), Low(value >> 32)} {}

    bool IsZero() const
    {
        return std::all_of(limbs.begin(), limbs.end(),
                           [](std::uint32_t limb) { return limb == 0; });
    }
    bool IsOdd() const { return limbs.front() % 2 != 0; }

    void Add(std::uint32_t carry) { MultiplyAndAdd(1, carry); }
    void Multiply(std::uint32_t factor) { MultiplyAndAdd(factor, 0); }

    // Returns the remainder.
    std::uint32_t Divide(std::uint32_t divisor)
    {
        std::uint64_t rest = 0;
        for (std::uint32_t& limb : std::views::reverse(limbs))
        {
            rest = rest << 32 | limb;
            limb = Low(rest / divisor);
            rest %= divisor;
        }
        return Low(rest);
    }

private:
    static std::uint32_t Low(std::uint64_t value) { return static_cast<std::uint32_t>(value); }

    void MultiplyAndAdd(std::uint32_t factor, std::uint64_t carry)
    {
        for (std::uint32_t& limb : limbs)
        {
            carry += std::uint64_t{limb} * factor;
            limb = Low(carry);
            carry >>= 32;
        }
        if (carry != 0)
            limbs.push_back(Low(carry));
    }

    std::vector<std::uint32_t> limbs; // least significant first
};

// Divides by 2 to the power of `exponent`, rounding to nearest, ties to even.
void HalveAndRound(CNatural& number, int exponent)
{
    bool half = false;
    bool more = false; // than what `half` stands for
    for (; exponent > 0; --exponent)
    {
        more = more || half;
        half = number.Divide(2) != 0;
    }
    if (half && (more || number.IsOdd()))
        number.Add(1);
}

} // namespace

// IEEE 754: a fraction of 52 bits, 11 bits of exponent, the sign.
std::wstring MakeRealDigits(double value, std::size_t precision)
{
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int biased = static_cast<int>(bits >> 52 & 0x7FF);
    const std::uint64_t fraction = bits & 0xFFFFFFFFFFFFF;
    CNatural number(biased == 0 ? fraction : fraction | std::uint64_t{1} << 52);
    for (std::size_t i = 0; i < precision; ++i)
        number.Multiply(10);
    int exponent = std::max(biased, 1) - 1075;
    for (; exponent > 0; --exponent)
        number.Multiply(2);
    HalveAndRound(number, -exponent);

    std::wstring digits;
    while (!number.IsZero() || digits.size() <= precision)
        digits += static_cast<wchar_t>(L'0' + number.Divide(10));
    std::reverse(digits.begin(), digits.end());
    return digits;
}

} // namespace text
