// The life of a cell store: store on a cold heap, look up what is there and what is not, walk in order, destroy.

#include "benchmarks/CellStores.h"
#include "benchmarks/Harness.h"

#include <optional>

namespace om_bench {

namespace {

constexpr std::size_t UsualCells = 1'000'000;
/// Texts that the stored cells are cloned from, taken in turn; few enough to stay in the cache.
constexpr std::size_t Prototypes = 4096;

template <typename Store>
std::size_t CountPresent(Store const& store, Positions const& positions) {
    std::size_t found = 0;
    std::vector<int> index(positions.Dimensions());
    for (std::size_t i = 0; i < positions.Size(); ++i) {
        positions.Read(i, index);
        found += store.Has(index) ? 1U : 0U;
    }
    return found;
}

std::uint64_t ExpectedOrder(Positions const& positions) {
    std::vector<std::uint64_t> keys;
    std::vector<int> index(positions.Dimensions());
    for (std::size_t i = 0; i < positions.Size(); ++i) {
        positions.Read(i, index);
        keys.push_back(Pack(index));
    }
    std::sort(keys.begin(), keys.end());
    SequenceHash hash;
    for (std::uint64_t const key : keys) {
        hash.Add(key);
    }
    return hash.Value();
}

template <typename Store>
void CheckEveryCell(benchmark::State& state, Store const& store, Positions const& stored,
                    std::vector<std::string> const& words) {
    if (store.OrderHash() != ExpectedOrder(stored)) {
        Fail(state, "cells walked in another order");
    }
    std::vector<int> index(stored.Dimensions());
    for (std::size_t i = 0; i < stored.Size(); ++i) {
        stored.Read(i, index);
        if (store.At(index) != words[i % words.size()]) {
            return Fail(state, "another text in cell " + std::to_string(i));
        }
    }
}

template <typename Store, Order order>
void Live(benchmark::State& state) {
    std::size_t const count = Count(UsualCells);
    CellInputs const inputs = MakeCells(order, count);
    std::vector<std::string> const words = Words(Prototypes, 1);
    auto const texts = Store::Texts(words);
    Walked expected;
    for (std::size_t i = 0; i < count; ++i) {
        expected.bytes += words[i % Prototypes].size();
    }
    expected.cells = count;

    Phases phases(state);
    TrimHeap();
    std::size_t const before = HeapInUse();
    std::optional<Store> store;
    phases.Time("store", count, [&] {
        store.emplace(inputs.stored.Dimensions());
        std::vector<int> index(inputs.stored.Dimensions());
        for (std::size_t i = 0; i < count; ++i) {
            inputs.stored.Read(i, index);
            store->Put(index, texts[i % Prototypes]);
        }
    });
    phases.Record("bytes", static_cast<double>(HeapInUse() - before) / static_cast<double>(count));

    // Look-ups are timed when they have run once: the first round pays for what the stores before it left in the
    // caches.
    std::size_t hits = CountPresent(*store, inputs.present);
    phases.Time("hit", count, [&] { hits = CountPresent(*store, inputs.present); });
    std::size_t misses = count - CountPresent(*store, inputs.absent);
    phases.Time("miss", count, [&] { misses = count - CountPresent(*store, inputs.absent); });
    Walked walked;
    phases.Time("walk", count, [&] { walked = store->Walk(); });

    ExpectEqual(state, "present cells", hits, count);
    ExpectEqual(state, "absent cells", misses, count);
    ExpectEqual(state, "cells walked", walked.cells, expected.cells);
    ExpectEqual(state, "bytes walked", walked.bytes, expected.bytes);
    if (IsSmall(count)) {
        CheckEveryCell(state, *store, inputs.stored, words);
    }

    // The memory is to be back with the system, so trimming is part of the work on either side.
    phases.Time("destroy", count, [&] {
        store.reset();
        TrimHeap();
    });
    phases.Finish();
}

template <Order order>
void RegisterSides(std::string const& workload) {
    Register(workload, "ours", Live<OurStore, order>);
    Register(workload, "boost", Live<FlatStore, order>);
    Register(workload, "btree", Live<BtreeStore, order>);
}

[[maybe_unused]] bool const registered = [] {
    RegisterSides<Order::Dense>("cells-dense");
    RegisterSides<Order::Ordered>("cells-ordered");
    RegisterSides<Order::Shuffled>("cells-shuffled");
    RegisterSides<Order::Sparse>("cells-sparse");
    return true;
}();

} // namespace

} // namespace om_bench
