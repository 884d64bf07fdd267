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
        _blocksAtFirst = _region->LiveBlocks();
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

    void Delete(Index const& index) { _table.deleteCell(index); }

    /// Blocks that are neither texts nor anything that was there before the first store.
    std::size_t Nodes() const { return _region->LiveBlocks() - _blocksAtFirst - CountCells(); }

    /// Bytes since the table was empty.
    std::size_t Bytes() const { return _region->ReservedBytes() - _atFirst; }

    /// What that many stores may take: twice the most that a cell among many takes with its text, and what regions and
    /// nodes start with.
    std::size_t Bound() const { return _stores * 400 + 20000; }

private:
    std::size_t CountCells() const {
        std::size_t cells = 0;
        for (OmPivotTable::ConstIterator cell = _table.FirstCell(); cell.Cell() != nullptr; ++cell) {
            ++cells;
        }
        return cells;
    }

    OmPivotTable _table;
    OmMemoryRegion const* _region = nullptr;
    std::size_t _atFirst = 0;
    std::size_t _blocksAtFirst = 0;
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

// Whatever a node was on the way, only what it has become is still there.
TEST(PivotTableFootprint, NodesThatChangedTheirFormAreGivenBack) {
    Table box(2);
    for (int side = 1; side < 60; ++side) {
        box.StoreBox(side, side);
        EXPECT_EQ(box.Nodes(), 1U) << side;
    }
    box.Store({Far, 5});
    EXPECT_EQ(box.Nodes(), 60U); // a root and its leaves

    Table scattered(2);
    for (int i = 0; i < 1000; ++i) {
        scattered.Store({i * 1000, i * 1000});
        EXPECT_EQ(scattered.Nodes(), 1U) << i;
    }
    for (int i = 0; i < 1000; ++i) {
        scattered.Delete({i * 1000, i * 1000});
    }
    EXPECT_EQ(scattered.Nodes(), 1U);

    Table line(1);
    for (int i = 0; i < 100; ++i) {
        line.Store({i * i * i});
        line.Store({i});
        EXPECT_EQ(line.Nodes(), 1U) << i;
    }
}

// Cells that come and go elsewhere: a hash that counted the keys that are gone would double for ever.
TEST(PivotTableFootprint, CellsThatComeAndGoLeaveNothing) {
    Table table(2);
    for (int i = 0; i < 50000; ++i) {
        table.Store({i % 3, i * 50});
        if (i >= 1000) {
            table.Delete({(i - 1000) % 3, (i - 1000) * 50});
        }
    }
    EXPECT_EQ(table.Nodes(), 1U);
    EXPECT_LE(table.Bytes(), std::size_t{1000} * 400 + 20000);
}
