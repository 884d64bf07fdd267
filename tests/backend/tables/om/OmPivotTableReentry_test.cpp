// Foreign texts that use the table while they are cloned or destroyed, and programs that change a table on a walk over
// it.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "tests/support/MuteText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::CellsOf;
using omtest::Text;
using Action = std::function<void()>;

/// Does something when it is cloned, and its clones when they go.
class ActingText final : public omtest::MuteText {
public:
    ActingText(Action const* cloned, Action const* gone, OmMemoryRegion* region = nullptr)
        : MuteText(region), _cloned(cloned), _gone(gone) {}
    ~ActingText() override {
        if (_gone != nullptr && !Home()->IsDefaultHeap()) {
            (*std::exchange(_gone, nullptr))();
        }
    }

    OmCellText* Clone(OmMemoryRegion* region) const override {
        auto* const clone = new (region) ActingText(nullptr, _gone, region);
        if (_cloned != nullptr) {
            (*_cloned)();
        }
        return clone;
    }

private:
    Action const* _cloned;
    Action const* _gone;
};

/// A table of `dimensions` dimensions with `rows` times `columns` cells on the first two; the texts are the subscripts.
struct World {
    OmPivotTable table{Text("title"), Text("template"), false};

    World(std::size_t dimensions, int rows, int columns, int withoutRow = -1) {
        for (std::size_t k = 0; k < dimensions; ++k) {
            table.AddDimension(Text("d"));
        }
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns && row != withoutRow; ++column) {
                std::vector<int> index(dimensions, 0);
                index[0] = column;
                index[1] = row;
                table.Cell(index, Text(std::to_string(10 * row + column)));
            }
        }
    }
};

bool Holds(std::string const& cells, std::string const& cell) { return cells.find(cell) != std::string::npos; }

} // namespace

TEST(OmPivotTableReentry, CloneMayDeleteTheLeafThatItsPlaceStandsIn) {
    World world(2, 4, 4, 2);
    Action const act = [&] { world.table.deleteCell({3, 2}); };
    world.table.Cell({3, 2}, nullptr); // the leaf is there, without a cell
    world.table.Cell({1, 2}, ActingText(&act, nullptr));
    EXPECT_NE(world.table.Cell({1, 2}), nullptr);
    EXPECT_TRUE(Holds(CellsOf(world.table), "(1,2)=mute")) << CellsOf(world.table);
    for (int row = 4; row < 20; ++row) {
        for (int column = 0; column < 8; ++column) {
            world.table.Cell({column, row}, Text("x"));
        }
    }
    EXPECT_NE(world.table.Cell({1, 2}), nullptr);
}

TEST(OmPivotTableReentry, OldTextMayDeleteTheLeafThatItStoodIn) {
    World world(2, 4, 4, 2);
    Action const gone = [&] { world.table.deleteCell({1, 2}); };
    world.table.Cell({1, 2}, ActingText(nullptr, &gone));
    world.table.deleteCell({1, 1});
    world.table.Cell({1, 2}, Text("new"));
    EXPECT_TRUE(Holds(CellsOf(world.table), "(1,2)=new")) << CellsOf(world.table);
}

TEST(OmPivotTableReentry, CloneMayAddADimension) {
    World world(2, 2, 2);
    Action const act = [&] { world.table.AddDimension(Text("new")); };
    world.table.Cell({1, 3}, ActingText(&act, nullptr));
    EXPECT_EQ(world.table.NDimensions(), 3U);
    EXPECT_TRUE(Holds(CellsOf(world.table), "(1,3,0)=mute")) << CellsOf(world.table);
}

TEST(OmPivotTableReentry, OldTextMayAddADimensionWhileItIsReplaced) {
    World world(2, 2, 2);
    Action const act = [&] { world.table.AddDimension(Text("new")); };
    world.table.Cell({1, 3}, ActingText(nullptr, &act));
    world.table.Cell({1, 3}, Text("after"));
    EXPECT_TRUE(Holds(CellsOf(world.table), "(1,3,0)=after")) << CellsOf(world.table);
}

TEST(OmPivotTableReentry, DeletedTextMayAddADimension) {
    World world(2, 2, 2);
    Action const act = [&] { world.table.AddDimension(Text("new")); };
    world.table.Cell({1, 1}, ActingText(nullptr, &act));
    world.table.deleteCell({1, 1});
    EXPECT_EQ(world.table.NDimensions(), 3U);
    EXPECT_EQ(CellsOf(world.table), "(0,0,0)=0 (1,0,0)=1 (0,1,0)=10");
}

TEST(OmPivotTableReentry, CloneMayDeleteEverythingElse) {
    OmPivotTable table{Text("title"), Text("template"), false};
    for (int k = 0; k < 3; ++k) {
        table.AddDimension(Text("d"));
    }
    table.Cell({0, 0, 0}, Text("a"));
    table.Cell({0, 0, 1}, Text("b"));
    Action const act = [&] {
        table.deleteCell({0, 0, 1});
        table.deleteCell({0, 0, 0});
    };
    table.Cell({1, 0, 1}, ActingText(&act, nullptr));
    EXPECT_EQ(CellsOf(table), "(1,0,1)=mute");
}

// One walk, no matter how many cells: sorting what is left at every step would take minutes.
TEST(OmPivotTableReentry, ScatteredTableCanBeEmptiedOnAWalk) {
    int const cells = 100'000;
    OmPivotTable table{Text("title"), Text("template"), false};
    table.AddDimension(Text("a"));
    table.AddDimension(Text("b"));
    for (int i = 0; i < cells; ++i) {
        table.Cell({i * 77 % 1'000'003, i * 77}, Text("x"));
    }
    int deleted = 0;
    for (OmPivotTable::Iterator cell = table.FirstCell(); cell.Cell() != nullptr; ++deleted) {
        table.deleteCell(cell.Index());
        ++cell;
    }
    EXPECT_EQ(deleted, cells);
    EXPECT_EQ(table.FirstCell().Cell(), nullptr);
}

TEST(OmPivotTableReentry, MovedIteratorIsOverAndItsHeirGoesOn) {
    World world(2, 2, 2);
    OmPivotTable::Iterator first = world.table.FirstCell();
    ++first;
    OmPivotTable::Iterator heir = std::move(first);
    EXPECT_EQ(first.Cell(), nullptr);
    EXPECT_EQ(heir.Cell()->AsString(), "1");
    OmPivotTable::Iterator other;
    other = std::move(heir);
    ++other;
    EXPECT_EQ(other.Cell()->AsString(), "10");
}
