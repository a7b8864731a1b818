#include "zotracker/vnosal/VnPath.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

// Taking a path apart; the floor is std::filesystem::path. The argument is the number of folders.
namespace {

std::string MakePath(std::int64_t folders)
{
    std::string path = "/";
    for (std::int64_t i = 0; i < folders; ++i)
        path += "folder-" + std::to_string(i) + "/";
    return path + "some-file.txt";
}

void SplitPath(benchmark::State& state)
{
    const std::string narrow = MakePath(state.range(0));
    const std::wstring text(narrow.begin(), narrow.end());
    for (auto _ : state)
    {
        const VnOSAL::VnPath path{std::wstring_view(text)};
        benchmark::DoNotOptimize(path.GetRoot());
        benchmark::DoNotOptimize(path.GetParent());
        benchmark::DoNotOptimize(path.GetFileName());
        benchmark::DoNotOptimize(path.GetTitle());
        benchmark::DoNotOptimize(path.GetExtension());
    }
}

void SplitPathFloor(benchmark::State& state)
{
    const std::string text = MakePath(state.range(0));
    for (auto _ : state)
    {
        const std::filesystem::path path(text);
        benchmark::DoNotOptimize(path.root_path());
        benchmark::DoNotOptimize(path.parent_path());
        benchmark::DoNotOptimize(path.filename());
        benchmark::DoNotOptimize(path.stem());
        benchmark::DoNotOptimize(path.extension());
    }
}

void NormalisePath(benchmark::State& state)
{
    const std::string narrow = MakePath(state.range(0)) + "/../other.txt";
    const std::wstring text(narrow.begin(), narrow.end());
    for (auto _ : state)
        benchmark::DoNotOptimize(VnOSAL::VnPath(std::wstring_view(text)).Normalise());
}

void NormalisePathFloor(benchmark::State& state)
{
    const std::string text = MakePath(state.range(0)) + "/../other.txt";
    for (auto _ : state)
        benchmark::DoNotOptimize(std::filesystem::path(text).lexically_normal());
}

BENCHMARK(SplitPath)->Arg(1)->Arg(4)->Arg(16);
BENCHMARK(SplitPathFloor)->Arg(1)->Arg(4)->Arg(16);
BENCHMARK(NormalisePath)->Arg(4)->Arg(16);
BENCHMARK(NormalisePathFloor)->Arg(4)->Arg(16);

} // namespace
