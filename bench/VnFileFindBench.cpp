#include "zotracker/vnosal/VnFileFind.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

// Walking a tree and taking each item's path and kind; the floor is std::filesystem. The argument
// is the number of files, 100 to a folder.
namespace {

namespace fs = std::filesystem;

class CTree
{
public:
    explicit CTree(std::int64_t files) : root(fs::temp_directory_path() / "VnFileFindBench")
    {
        fs::remove_all(root);
        for (std::int64_t i = 0; i < files; ++i)
        {
            const fs::path folder = root / std::to_string(i / 1000) / std::to_string(i / 100 % 10);
            if (i % 100 == 0)
                fs::create_directories(folder);
            std::ofstream(folder / ("file-" + std::to_string(i) + ".dat"));
        }
    }
    ~CTree() { fs::remove_all(root); }
    CTree(const CTree&) = delete;
    CTree& operator=(const CTree&) = delete;

    const fs::path root;
};

void WalkTree(benchmark::State& state)
{
    const CTree tree(state.range(0));
    const VnOSAL::VnPath root(tree.root.wstring());
    std::int64_t files = 0;
    for (auto _ : state)
    {
        files = 0;
        VnOSAL::VnFileFind find(root, L"*", {.recursive = true});
        while (find.Next())
        {
            benchmark::DoNotOptimize(find.GetPath());
            files += find.GetKind() == VnOSAL::EItemKind::File;
        }
    }
    if (files != state.range(0))
        state.SkipWithError("the walk has missed files");
}

void WalkTreeFloor(benchmark::State& state)
{
    const CTree tree(state.range(0));
    std::int64_t files = 0;
    for (auto _ : state)
    {
        files = 0;
        for (const auto& entry : fs::recursive_directory_iterator(tree.root))
        {
            benchmark::DoNotOptimize(entry.path());
            files += entry.is_regular_file();
        }
    }
    if (files != state.range(0))
        state.SkipWithError("the walk has missed files");
}

BENCHMARK(WalkTree)->Arg(50'000)->Unit(benchmark::kMillisecond);
BENCHMARK(WalkTreeFloor)->Arg(50'000)->Unit(benchmark::kMillisecond);

} // namespace
