// Forty stores side by side, filled and looked up by turns: as many cells, as much memory and as few of them in the
// processor's caches as in one store of forty times the size. What is left between the two is what the structure itself
// makes of a larger number of cells.

#include "benchmarks/CellStores.h"
#include "benchmarks/Harness.h"

namespace om_bench {

namespace {

constexpr std::size_t Stores = 40;
constexpr std::size_t UsualCellsEach = 100'000;
constexpr std::size_t Prototypes = 4096;

/// Calls `act(store, position)` for every position and store. Whoever works in the order of the box does so table by
/// table; random orders lead from one store to the next.
template <typename Act>
void ByTurns(Order order, std::size_t positions, Act const& act) {
    if (order == Order::Ordered) {
        for (std::size_t store = 0; store < Stores; ++store) {
            for (std::size_t i = 0; i < positions; ++i) {
                act(store, i);
            }
        }
    } else {
        for (std::size_t i = 0; i < positions; ++i) {
            for (std::size_t store = 0; store < Stores; ++store) {
                act(store, i);
            }
        }
    }
}

template <Order order>
void Live(benchmark::State& state) {
    std::size_t const each = Count(UsualCellsEach);
    std::size_t const count = Stores * each;
    CellInputs const inputs = MakeCells(order, each);
    std::deque<OmStringCell> const texts = OurTexts(Words(Prototypes, 1));

    Phases phases(state);
    TrimHeap();
    std::vector<std::unique_ptr<OurStore>> stores(Stores);
    std::vector<int> index(inputs.stored.Dimensions());
    phases.Time("store", count, [&] {
        for (std::unique_ptr<OurStore>& store : stores) {
            store = std::make_unique<OurStore>(inputs.stored.Dimensions());
        }
        ByTurns(order, each, [&](std::size_t store, std::size_t i) {
            inputs.stored.Read(i, index);
            stores[store]->Put(index, texts[i % texts.size()]);
        });
    });
    std::size_t hits = 0;
    phases.Time("hit", count, [&] {
        ByTurns(order, each, [&](std::size_t store, std::size_t i) {
            inputs.present.Read(i, index);
            hits += stores[store]->Has(index) ? 1U : 0U;
        });
    });
    ExpectEqual(state, "present cells", hits, count);
    phases.Finish();
}

[[maybe_unused]] bool const registered = [] {
    Register("forty-ordered", "ours", Live<Order::Ordered>);
    Register("forty-shuffled", "ours", Live<Order::Shuffled>);
    Register("forty-sparse", "ours", Live<Order::Sparse>);
    return true;
}();

} // namespace

} // namespace om_bench
