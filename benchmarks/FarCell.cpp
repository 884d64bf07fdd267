// What one cell at a very large subscript takes.

#include "benchmarks/CellStores.h"
#include "benchmarks/Harness.h"

namespace om_bench {

namespace {

constexpr std::size_t FarSubscript = 2'000'000'000;

void Far(benchmark::State& state) {
    Phases phases(state);
    std::size_t const before = HeapInUse();
    OurStore store(2);
    int const far = static_cast<int>(Count(FarSubscript));
    std::vector<int> const index = {far, far};
    phases.Time("store", 1, [&] { store.Put(index, OmStringCell("far away")); });
    phases.Record("bytes", static_cast<double>(HeapInUse() - before));
    ExpectEqual(state, "the far cell", store.Has(index) ? 1 : 0, 1);
    ExpectEqual(state, "cells walked", store.Walk().cells, 1);
    phases.Finish();
}

[[maybe_unused]] bool const registered = [] {
    Register("far-cell", "ours", Far);
    return true;
}();

} // namespace

} // namespace om_bench
