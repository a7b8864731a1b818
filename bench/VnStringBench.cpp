#include "zotracker/vnosal/VnString.h"

#include <benchmark/benchmark.h>

#include <string>

// The floor of each operation is the same on std::wstring; the argument is the length in units.
namespace {

using VnOSAL::VnString;

template <class Text>
Text MakeText(std::size_t length)
{
    return Text(length, L'x');
}

template <class Text>
void CopyText(benchmark::State& state)
{
    const auto original = MakeText<Text>(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
    {
        Text copy = original;
        benchmark::DoNotOptimize(copy);
    }
}

template <class Text>
void AppendPieces(benchmark::State& state)
{
    const std::wstring_view piece = L"piece of text ";
    for (auto _ : state)
    {
        Text text;
        for (std::int64_t length = 0; length < state.range(0); length += 14)
            text += piece;
        benchmark::DoNotOptimize(text);
    }
}

template <class Text>
void AppendUnits(benchmark::State& state)
{
    for (auto _ : state)
    {
        Text text;
        for (std::int64_t length = 0; length < state.range(0); ++length)
            text += L'x';
        benchmark::DoNotOptimize(text);
    }
}

std::size_t Locate(const VnString& text, std::wstring_view what) { return text.Find(what); }
std::size_t Locate(const std::wstring& text, std::wstring_view what) { return text.find(what); }

template <class Text>
void FindPiece(benchmark::State& state)
{
    auto text = MakeText<Text>(static_cast<std::size_t>(state.range(0)));
    text += std::wstring_view(L"xy needle");
    for (auto _ : state)
        benchmark::DoNotOptimize(Locate(text, L"y needle"));
}

void Substitute(VnString& text, std::wstring_view what, std::wstring_view with)
{
    text.ReplaceAll(what, with);
}
void Substitute(std::wstring& text, std::wstring_view what, std::wstring_view with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::wstring::npos; at += with.size())
        text.replace(at, what.size(), with);
}

template <class Text>
void ReplacePieces(benchmark::State& state)
{
    Text original;
    while (static_cast<std::int64_t>(std::wstring_view(original).size()) < state.range(0))
        original += std::wstring_view(L"some text with a %1 in it, ");
    for (auto _ : state)
    {
        Text text = original;
        Substitute(text, L"%1", L"replacement");
        benchmark::DoNotOptimize(text);
    }
}

#define COMPARE(operation, low, high)                                                              \
    BENCHMARK(operation<VnString>)->Name(#operation)->RangeMultiplier(4)->Range(low, high);        \
    BENCHMARK(operation<std::wstring>)                                                             \
        ->Name(#operation "Floor")                                                                 \
        ->RangeMultiplier(4)                                                                       \
        ->Range(low, high)

COMPARE(CopyText, 16, 4096);
COMPARE(AppendPieces, 64, 4096);
COMPARE(AppendUnits, 64, 4096);
COMPARE(FindPiece, 64, 4096);
COMPARE(ReplacePieces, 64, 4096);

} // namespace
