// Which layers, columns and rows of the sparse table hold a cell: the three headings beside a user's own loop over the
// cells of a map. Layers: dimension 3, columns: dimension 2, rows: dimensions 1 and 0, 1 varying fastest. Columns and
// rows are those of the first layer that holds a cell.

#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "benchmarks/CellStores.h"
#include "benchmarks/Harness.h"

#include <numeric>

namespace om_bench {

namespace {

constexpr std::size_t UsualCells = 1'000'000;

using Numbers = std::vector<unsigned long long>;

struct NonEmpty {
    Numbers layers;
    Numbers columns;
    Numbers rows;

    friend bool operator==(NonEmpty const&, NonEmpty const&) = default;
};

void SortUnique(Numbers& numbers) {
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

unsigned long long RowNumber(std::uint64_t dimension0, std::uint64_t dimension1) {
    return dimension0 * static_cast<std::uint64_t>(SparseExtents[1]) + dimension1;
}

/// What both sides are checked against, made from the positions themselves.
NonEmpty Expected(Positions const& stored) {
    NonEmpty expected;
    std::vector<int> index(stored.Dimensions());
    for (std::size_t i = 0; i < stored.Size(); ++i) {
        stored.Read(i, index);
        expected.layers.push_back(static_cast<unsigned long long>(index[3]));
    }
    SortUnique(expected.layers);
    for (std::size_t i = 0; i < stored.Size(); ++i) {
        stored.Read(i, index);
        if (static_cast<unsigned long long>(index[3]) == expected.layers.front()) {
            expected.columns.push_back(static_cast<unsigned long long>(index[2]));
            expected.rows.push_back(
                RowNumber(static_cast<std::uint64_t>(index[0]), static_cast<std::uint64_t>(index[1])));
        }
    }
    SortUnique(expected.columns);
    SortUnique(expected.rows);
    return expected;
}

template <typename Store>
void StoreAll(Store& store, Positions const& stored) {
    typename Store::Text const text("a text cell");
    std::vector<int> index(stored.Dimensions());
    for (std::size_t i = 0; i < stored.Size(); ++i) {
        stored.Read(i, index);
        store.Put(index, text);
    }
}

void AddCategories(OmPivotTable& table) {
    for (std::size_t k = 0; k < SparseExtents.size(); ++k) {
        OmDimension& dimension = table.Dimension(static_cast<int>(k));
        for (int i = 0; i < SparseExtents[k]; ++i) {
            dimension.AddNewChild(dimension.Root(), OmStringCell(std::to_string(i)), static_cast<unsigned long long>(i),
                                  false);
        }
    }
}

/// The layers in a heading are counted, not listed; entering each one gives its category.
Numbers LayersOf(OmDisplayLayerHeading& layers) {
    Numbers numbers;
    for (int i = 0; layers.SwitchLayer(i); ++i) {
        numbers.push_back(static_cast<unsigned long long>(layers.getCurrentCellIndex()[3]));
    }
    return numbers;
}

void Ours(benchmark::State& state) {
    CellInputs const inputs = MakeCells(Order::Sparse, Count(UsualCells));
    OurStore store(inputs.stored.Dimensions());
    AddCategories(store.Table());
    store.Table().Layers().push_back(3);
    store.Table().Columns().push_back(2);
    store.Table().Rows().push_back(1);
    store.Table().Rows().push_back(0);
    StoreAll(store, inputs.stored);

    Phases phases(state);
    NonEmpty found;
    std::unique_ptr<OmDisplayLayerHeading> layers;
    phases.Time("time", inputs.stored.Size(), [&] {
        layers = std::make_unique<OmDisplayLayerHeading>(store.Table(), true);
        layers->SwitchLayer(0);
        OmDisplayColumnHeading const columns(*layers, true);
        OmDisplayRowHeading const rows(*layers, true, false);
        found.columns = columns.getNonEmptyColumns();
        found.rows = rows.getNonEmptyRows();
    });
    found.layers = LayersOf(*layers);
    if (found != Expected(inputs.stored)) {
        Fail(state, "other layers, columns or rows");
    }
    phases.Finish();
}

template <typename Store>
void Rival(benchmark::State& state) {
    CellInputs const inputs = MakeCells(Order::Sparse, Count(UsualCells));
    Store store(inputs.stored.Dimensions());
    StoreAll(store, inputs.stored);

    Phases phases(state);
    NonEmpty found;
    phases.Time("time", inputs.stored.Size(), [&] {
        for (auto const& [key, text] : store.Cells()) {
            found.layers.push_back(Unpack(key, 3));
        }
        SortUnique(found.layers);
        for (auto const& [key, text] : store.Cells()) {
            if (Unpack(key, 3) == found.layers.front()) {
                found.columns.push_back(Unpack(key, 2));
                found.rows.push_back(RowNumber(Unpack(key, 0), Unpack(key, 1)));
            }
        }
        SortUnique(found.columns);
        SortUnique(found.rows);
    });
    if (found != Expected(inputs.stored)) {
        Fail(state, "other layers, columns or rows");
    }
    phases.Finish();
}

[[maybe_unused]] bool const registered = [] {
    Register("nonempty", "ours", Ours);
    Register("nonempty", "boost", Rival<FlatStore>);
    Register("nonempty", "btree", Rival<BtreeStore>);
    return true;
}();

} // namespace

} // namespace om_bench
