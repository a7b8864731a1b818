#include "StringModel.h"
#include "zotracker/vnosal/VnString.h"

#include <algorithm>
#include <iterator>

namespace vnosal_test {
namespace {

using VnOSAL::VnString;

std::size_t ReplaceAll(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t count = 0;
    std::size_t at = what.empty() ? std::wstring::npos : text.find(what);
    for (; at != std::wstring::npos; at = text.find(what, at + with.size()), ++count)
        text.replace(at, what.size(), with);
    return count;
}

struct Slot
{
    VnString text;
    std::wstring model;
};

// Around the edges of short texts and of the pools' blocks.
std::size_t TakePosition(fuzz::FuzzInput& script)
{
    const std::uint8_t byte = script.TakeByte();
    const std::size_t edges[] = {62, 63, 64, 127, 128, 255, 256, 511, 512, 1000};
    return byte < 200 ? byte % 40 : byte == 255 ? VnString::npos : edges[byte % 10];
}

std::wstring TakeText(fuzz::FuzzInput& script)
{
    std::wstring text(std::min<std::size_t>(TakePosition(script), 600), L' ');
    const std::uint8_t seed = script.TakeByte();
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<wchar_t>(L'a' + (seed + i * (seed % 5)) % 3);
    return text;
}

// One operation; whether the answers were the same.
bool Step(fuzz::FuzzInput& script, Slot (&slots)[4])
{
    const int operation = script.TakeByte() % 13;
    auto& [text, model] = slots[script.TakeByte() % 4];
    const auto& [otherText, otherModel] = slots[script.TakeByte() % 4];
    if (model.size() > 3000)
    {
        text.Clear();
        model.clear();
    }
    const std::size_t position = std::min(TakePosition(script), model.size());
    const std::size_t count = TakePosition(script);
    const std::wstring argument = TakeText(script);
    const std::wstring word = argument.substr(0, 2);
    switch (operation)
    {
    case 0:
        text = otherText;
        model = otherModel;
        return true;
    case 1:
        text = std::wstring_view(argument);
        model = argument;
        return true;
    case 2:
        text.Append(argument);
        model.append(argument);
        return true;
    case 3:
        text.Replace(position, count, argument);
        model.replace(position, count, argument);
        return true;
    case 4:
        text.SetAt(position, L'z');
        if (position < model.size())
            model[position] = L'z';
        return true;
    case 5:
        return text.Reserve(std::min<std::size_t>(count, 2000));
    case 6: // a part of itself
        text.Insert(position, std::wstring_view(text).substr(0, count));
        model.insert(position, std::wstring(model.substr(0, count)));
        return true;
    case 7:
        text = std::wstring_view(text).substr(position, count);
        model = model.substr(position, count);
        return true;
    case 8:
        return text.ReplaceAll(word, otherModel.substr(0, 9)) ==
               ReplaceAll(model, word, otherModel.substr(0, 9));
    case 9:
        return text.Find(word, position) == model.find(word, position) &&
               text.FindLast(word, position) == model.rfind(word, position);
    case 10:
        return text.FindAnyOf(L"bx", count) == model.find_first_of(L"bx", count) &&
               text.FindLastAnyOf(L"bx", count) == model.find_last_of(L"bx", count) &&
               text.FindNoneOf(L"ab", count) == model.find_first_not_of(L"ab", count) &&
               text.FindLastNoneOf(L"ab", count) == model.find_last_not_of(L"ab", count);
    case 11:
        return (text.Compare(otherText) < 0) == (model < otherModel) &&
               (text == otherText) == (model == otherModel) &&
               text.StartsWith(argument) == model.starts_with(argument) &&
               text.EndsWith(argument) == model.ends_with(argument);
    default:
        return text.GetMid(position, count) == model.substr(position, count) &&
               text.GetRight(count) == model.substr(model.size() - std::min(count, model.size()));
    }
}

} // namespace

std::string CompareWithModel(fuzz::FuzzInput script)
{
    Slot slots[4];
    const auto agrees = [](const Slot& slot) {
        const VnString& text = slot.text;
        return text.IsValid() && text == slot.model && text.GetText()[text.GetLength()] == 0 &&
               text.GetCapacity() >= text.GetLength();
    };
    for (int step = 1; !script.rest.empty(); ++step)
        if (!Step(script, slots) || !std::all_of(slots, std::end(slots), agrees))
            return "step " + std::to_string(step);
    return {};
}

} // namespace vnosal_test
