#include "StringModel.h"

#include <algorithm>

namespace vnosal_test {
namespace {

using VnOSAL::VnString;

constexpr std::size_t maxModelLength = 3000;

std::size_t ReplaceAll(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t count = 0;
    std::size_t at = what.empty() ? std::wstring::npos : text.find(what);
    for (; at != std::wstring::npos; at = text.find(what, at + with.size()), ++count)
        text.replace(at, what.size(), with);
    return count;
}

} // namespace

std::string CStringModel::Run()
{
    while (!rest.empty())
    {
        const bool agreed = Step();
        for (std::size_t slot = 0; slot < slots; ++slot)
            if (!agreed || !Check(slot))
                return "operation " + std::to_string(operation) + " with " +
                       std::to_string(rest.size()) + " bytes left";
    }
    return {};
}

bool CStringModel::Check(std::size_t slot) const
{
    const VnString& text = tested[slot];
    return text.IsValid() && text == model[slot] && text.GetText()[text.GetLength()] == 0 &&
           text.GetCapacity() >= text.GetLength();
}

std::uint8_t CStringModel::TakeByte()
{
    if (rest.empty())
        return 0;
    const std::uint8_t byte = rest[0];
    rest = rest.subspan(1);
    return byte;
}

std::size_t CStringModel::TakePosition()
{
    const std::uint8_t byte = TakeByte();
    if (byte < 200)
        return byte % 40;
    const std::size_t edges[] = {62, 63, 64, 127, 128, 255, 256, 511, 512, 1000};
    return byte == 255 ? VnString::npos : edges[byte % std::size(edges)];
}

std::wstring CStringModel::TakeText()
{
    const std::size_t length = std::min<std::size_t>(TakePosition(), 600);
    const std::uint8_t seed = TakeByte();
    std::wstring text;
    for (std::size_t i = 0; i < length; ++i)
        text += static_cast<wchar_t>(L'a' + (seed + i * (seed % 5)) % 3);
    return text;
}

bool CStringModel::Step()
{
    operation = TakeByte() % 13;
    const std::size_t slot = TakeByte() % slots;
    const std::size_t other = TakeByte() % slots;
    VnString& text = tested[slot];
    std::wstring& expected = model[slot];
    if (expected.size() > maxModelLength)
    {
        text.Clear();
        expected.clear();
    }
    const std::size_t position = std::min(TakePosition(), expected.size());
    const std::size_t count = TakePosition();
    const std::wstring argument = TakeText();
    switch (operation)
    {
    case 0:
        text = tested[other];
        expected = model[other];
        return true;
    case 1:
        text = std::wstring_view(argument);
        expected = argument;
        return true;
    case 2:
        text.Append(argument);
        expected.append(argument);
        return true;
    case 3:
        text.Replace(position, count, argument);
        expected.replace(position, count, argument);
        return true;
    case 4:
        text.SetAt(position, L'z');
        if (position < expected.size())
            expected[position] = L'z';
        return true;
    case 5:
        return text.Reserve(std::min<std::size_t>(count, 2000));
    case 6: // a part of itself
        text.Insert(position, std::wstring_view(text).substr(0, count));
        expected.insert(position, std::wstring(expected.substr(0, count)));
        return true;
    case 7:
        text = std::wstring_view(text).substr(position, count);
        expected = std::wstring(expected.substr(position, count));
        return true;
    case 8:
        return text.ReplaceAll(argument.substr(0, 2), model[other].substr(0, 9)) ==
               ReplaceAll(expected, argument.substr(0, 2), model[other].substr(0, 9));
    case 9:
        return text.Find(argument.substr(0, 3), position) ==
                   expected.find(argument.substr(0, 3), position) &&
               text.FindLast(argument.substr(0, 3), position) ==
                   expected.rfind(argument.substr(0, 3), position);
    case 10:
        return text.FindAnyOf(L"bx", count) == expected.find_first_of(L"bx", count) &&
               text.FindLastAnyOf(L"bx", count) == expected.find_last_of(L"bx", count) &&
               text.FindNoneOf(L"ab", count) == expected.find_first_not_of(L"ab", count) &&
               text.FindLastNoneOf(L"ab", count) == expected.find_last_not_of(L"ab", count);
    case 11:
        return (text.Compare(tested[other]) < 0) == (expected < model[other]) &&
               (text == tested[other]) == (expected == model[other]) &&
               text.StartsWith(argument) == expected.starts_with(argument) &&
               text.EndsWith(argument) == expected.ends_with(argument);
    default:
        return text.GetMid(position, count) == expected.substr(position, count) &&
               text.GetRight(count) ==
                   expected.substr(expected.size() - std::min(count, expected.size()));
    }
}

} // namespace vnosal_test
