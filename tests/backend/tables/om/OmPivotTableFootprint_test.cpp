// What a table takes for its cells: memory grows with them, wherever they stand.

#include "backend/tables/om/OmPivotTable.h"

#include "backend/tables/om/OmDimension.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace {

using omtest::Text;
using Index = std::vector<int>;

constexpr int Far = 2000000000;

/// A table of which only the store takes more memory from here on.
class Table {
public:
    explicit Table(int dimensions) : _table(Text("title"), Text("template"), false) {
        for (int k = 0; k < dimensions; ++k) {
            _region = &_table.AddDimension(Text("d" + std::to_string(k))).Region();
        }
        _atFirst = _region->ReservedBytes();
    }

    void Store(Index const& index) {
        _table.Cell(index, _text);
        ++_stores;
    }
    void StoreBox(int length, int width) {
        for (int i = 0; i < length; ++i) {
            for (int j = 0; j < width; ++j) {
                Store({j, i});
            }
        }
    }

    /// Bytes since the table was empty.
    std::size_t Bytes() const { return _region->ReservedBytes() - _atFirst; }

    /// What that many stores may take: twice the most that a cell among many takes with its text, and what regions and
    /// nodes start with.
    std::size_t Bound() const { return _stores * 400 + 20000; }

private:
    OmPivotTable _table;
    OmMemoryRegion const* _region = nullptr;
    std::size_t _atFirst = 0;
    std::size_t _stores = 0;
    OmStringCell const _text{"text"};
};

} // namespace

TEST(PivotTableFootprint, FarCellOnEveryDimension) {
    for (int dimensions = 1; dimensions <= 5; ++dimensions) {
        Table table(dimensions);
        table.Store(Index(static_cast<std::size_t>(dimensions), Far));
        EXPECT_LE(table.Bytes(), table.Bound()) << dimensions << " dimensions";
    }
}

// Leaves side by side, of one length, until a cell makes one of them very long, or very many of them.
TEST(PivotTableFootprint, CellFarFromAFullBox) {
    for (Index const& far : {Index{Far, 5}, Index{5, Far}, Index{Far, Far}, Index{20000, 19}, Index{19, 20000}}) {
        Table table(2);
        table.StoreBox(20, 20);
        table.Store(far);
        EXPECT_LE(table.Bytes(), table.Bound()) << far[0] << ' ' << far[1];
        table.Store({21, 21});
        table.StoreBox(30, 30);
        EXPECT_LE(table.Bytes(), table.Bound()) << far[0] << ' ' << far[1];
    }
}

TEST(PivotTableFootprint, DiagonalAndComb) {
    Table diagonal(2);
    Table comb(2);
    for (int i = 0; i < 3000; ++i) {
        diagonal.Store({i * 7, i * 7});
        comb.Store({i % 100 == 0 ? i : 0, i});
    }
    EXPECT_LE(diagonal.Bytes(), diagonal.Bound());
    EXPECT_LE(comb.Bytes(), comb.Bound());
}

TEST(PivotTableFootprint, ScatteredCells) {
    std::mt19937_64 random(17);
    for (int const width : {100, 2000, Far}) {
        Table table(3);
        auto const below = [&random](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
        for (int i = 0; i < 5000; ++i) {
            table.Store({below(width), below(width), below(50)});
        }
        EXPECT_LE(table.Bytes(), table.Bound()) << width;
    }
}
