// Writing and reading a tree of 100,000 keys, the size of a large project:
// 1,000 object blocks of 100 keys each, saved to and loaded from a disk file.

#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>

namespace {

std::unique_ptr<qvrCTreeData> makeLargeTree() {
    auto root = std::make_unique<qvrCTreeData>("qvrTessarine database", "V1.10");
    qvrCTreeData* project = root->CreateChild("Project");
    for (int object = 0; object < 1000; ++object) {
        qvrCTreeData* block = project->CreateChild(qvrFormat("Object %04d", object));
        for (int key = 0; key < 100; ++key)
            block->SetText(qvrFormat("Key%03d", key), qvrFormat("%d.%03d,%d", object, key, key * 7));
    }
    return root;
}

std::string benchFile() {
    return (std::filesystem::temp_directory_path() / "qvr_tree_bench.tsp").string();
}

void TreeWrite100kKeys(benchmark::State& state) {
    auto tree = makeLargeTree();
    for (auto _ : state) {
        qvrCDiskTextFile file(benchFile(), qvrCDiskTextFile::Mode::Write);
        tree->Save(file, "   ", nullptr);
        file.Close();
    }
}
BENCHMARK(TreeWrite100kKeys)->Unit(benchmark::kMillisecond);

void TreeRead100kKeys(benchmark::State& state) {
    {
        qvrCDiskTextFile file(benchFile(), qvrCDiskTextFile::Mode::Write);
        makeLargeTree()->Save(file, "   ", nullptr);
        file.Close();
    }
    for (auto _ : state) {
        qvrCDiskTextFile file(benchFile(), qvrCDiskTextFile::Mode::Read);
        qvrCTreeData root;
        long lines = 0;
        root.Load(file, lines, false, nullptr);
        benchmark::DoNotOptimize(root.GetChildCount());
    }
    std::remove(benchFile().c_str());
}
BENCHMARK(TreeRead100kKeys)->Unit(benchmark::kMillisecond);

} // namespace
