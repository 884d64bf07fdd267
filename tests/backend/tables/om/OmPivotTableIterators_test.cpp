// Walking over the stored cells.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::CellsOf;
using omtest::Text;
using omtest::Walk;
using Index = std::vector<int>;
using Iterator = OmPivotTable::Iterator;
using ConstIterator = OmPivotTable::ConstIterator;

constexpr OmCellText const* NoCell = nullptr;

class Table : public OmPivotTable {
public:
    explicit Table(int dimensions) : OmPivotTable(Text("title"), Text("template"), false) {
        for (int k = 0; k < dimensions; ++k) {
            AddDimension(Text("d" + std::to_string(k)));
        }
    }
    /// Stores a cell that reads as its index.
    void Put(Index const& index) { Cell(index, Text(omtest::Show(index))); }
    /// Leaves the place empty but its path in the store.
    void PutNull(Index const& index) { Cell(index, NoCell); }
};

/// The walked cells without what they read, which must be the index.
std::string Places(OmPivotTable const& table) {
    std::string places;
    for (ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
        EXPECT_EQ(cell.Cell()->AsString(), omtest::Show(cell.Index()));
        places += cell.Cell()->AsString();
    }
    return places;
}

TEST(PivotTableIteration, GoesFirstAlongTheFirstDimension) {
    Table table(2);
    table.Put({0, 1});
    table.Put({1, 0});
    EXPECT_EQ(Places(table), "(1,0)(0,1)");
}

TEST(PivotTableIteration, LastDimensionIsTheSlowest) {
    Table table(3);
    for (Index const& index : {Index{1, 1, 1}, Index{0, 0, 1}, Index{1, 1, 0}, Index{0, 1, 0}, Index{2, 0, 0}}) {
        table.Put(index);
    }
    EXPECT_EQ(Places(table), "(2,0,0)(0,1,0)(1,1,0)(0,0,1)(1,1,1)");
}

TEST(PivotTableIteration, PassesEmptyPlaces) {
    Table table(1);
    for (int const k : {3, 100, 7}) {
        table.Put({k});
    }
    EXPECT_EQ(Places(table), "(3)(7)(100)");
}

TEST(PivotTableIteration, EmptyTableHasNoCell) {
    EXPECT_EQ(Table(0).FirstCell().Cell(), nullptr);
    EXPECT_EQ(Table(2).FirstCell().Cell(), nullptr);
    Table table(2);
    table.Put({1, 1});
    table.deleteCell({1, 1});
    EXPECT_EQ(table.FirstCell().Cell(), nullptr);
}

// Taking the first path for a cell would end the walk before it began, and lose every cell behind.
TEST(PivotTableIteration, PassesALeafOfNullEntriesInFront) {
    Table table(2);
    table.PutNull({4, 0});
    table.Put({0, 1});
    EXPECT_EQ(Places(table), "(0,1)");
}

TEST(PivotTableIteration, PassesLeavesOfNullEntriesBetweenAndBehind) {
    Table table(3);
    table.Put({0, 0, 0});
    table.PutNull({0, 1, 0});
    table.PutNull({0, 0, 1});
    table.Put({2, 2, 2});
    table.PutNull({9, 2, 2});
    table.PutNull({0, 0, 3});
    EXPECT_EQ(Places(table), "(0,0,0)(2,2,2)");
}

TEST(PivotTableIteration, TableOfNullEntriesHasNoCell) {
    Table table(2);
    table.PutNull({0, 0});
    table.PutNull({3, 1});
    EXPECT_EQ(table.FirstCell().Cell(), nullptr);
    EXPECT_EQ(std::as_const(table).FirstCell().Cell(), nullptr);
}

TEST(PivotTableIteration, ReachesTheStoredObjects) {
    Table table(2);
    table.Put({1, 0});
    EXPECT_EQ(table.FirstCell().Cell(), table.Cell({1, 0}));
    EXPECT_EQ(std::as_const(table).FirstCell().Cell(), table.Cell({1, 0}));
}

TEST(PivotTableIteration, CellsMayBeChangedAndConstOnesNot) {
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Iterator&>().Cell()), OmCellText*>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<ConstIterator&>().Cell()), OmCellText const*>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<OmPivotTable const&>().FirstCell()), ConstIterator>));
    EXPECT_TRUE((std::is_same_v<decltype(++std::declval<Iterator&>()), Iterator&>));
    EXPECT_TRUE((std::is_same_v<decltype(++std::declval<ConstIterator&>()), ConstIterator&>));
}

TEST(PivotTableIteration, IteratorsHoldOnePointer) {
    EXPECT_EQ(sizeof(Iterator), sizeof(void*));
    EXPECT_EQ(sizeof(ConstIterator), sizeof(void*));
}

TEST(PivotTableIteration, AdvancingPastTheEndStaysThere) {
    Table table(2);
    table.Put({0, 0});
    Iterator iterator = table.FirstCell();
    ++iterator;
    EXPECT_EQ(iterator.Cell(), nullptr);
    ++ ++iterator;
    EXPECT_EQ(iterator.Cell(), nullptr);
    ConstIterator constIterator = std::as_const(table).FirstCell();
    ++ ++ ++constIterator;
    EXPECT_EQ(constIterator.Cell(), nullptr);
}

TEST(PivotTableIteration, DefaultIteratorIsOver) {
    Iterator iterator;
    EXPECT_EQ(iterator.Cell(), nullptr);
    ++iterator;
    EXPECT_EQ(iterator.Cell(), nullptr);
    EXPECT_TRUE(iterator.Index().empty());
    ConstIterator constIterator;
    ++constIterator;
    EXPECT_EQ(constIterator.Cell(), nullptr);
    EXPECT_TRUE(constIterator.Index().empty());
}

TEST(PivotTableIteration, CopyGoesOnByItself) {
    Table table(1);
    for (int k = 0; k < 3; ++k) {
        table.Put({k});
    }
    Iterator first = table.FirstCell();
    ++first;
    Iterator copy(first);
    ++copy;
    EXPECT_EQ(first.Index(), (Index{1}));
    EXPECT_EQ(copy.Index(), (Index{2}));
    EXPECT_EQ(Walk(first), "(1)=(1) (2)=(2)");
    EXPECT_EQ(Walk(copy), "(2)=(2)");
    EXPECT_EQ(Iterator(Iterator()).Cell(), nullptr);
}

TEST(PivotTableIteration, AssignedIteratorGoesOnByItself) {
    Table table(2);
    table.Put({0, 0});
    table.Put({0, 1});
    Iterator first = table.FirstCell();
    Iterator second;
    second = first;
    ++second;
    EXPECT_EQ(first.Index(), (Index{0, 0}));
    EXPECT_EQ(second.Index(), (Index{0, 1}));
    first = second;
    EXPECT_EQ(first.Cell(), table.Cell({0, 1}));
    first = Iterator();
    EXPECT_EQ(first.Cell(), nullptr);
    EXPECT_EQ(second.Cell(), table.Cell({0, 1}));
}

TEST(PivotTableIteration, AssignmentToItselfKeepsThePlace) {
    Table table(1);
    table.Put({5});
    Iterator iterator = table.FirstCell();
    Iterator const& same = iterator;
    iterator = same;
    EXPECT_EQ(iterator.Index(), (Index{5}));
    EXPECT_EQ(iterator.Cell(), table.Cell({5}));
}

TEST(PivotTableIteration, ConstIteratorsCopyAndAssignToo) {
    Table table(1);
    table.Put({0});
    table.Put({1});
    ConstIterator first = std::as_const(table).FirstCell();
    ConstIterator copy(first);
    ++copy;
    ConstIterator assigned;
    assigned = copy;
    ++assigned;
    EXPECT_EQ(Walk(first), "(0)=(0) (1)=(1)");
    EXPECT_EQ(Walk(copy), "(1)=(1)");
    EXPECT_EQ(assigned.Cell(), nullptr);
}

TEST(PivotTableIteration, ConstIteratorStartsWhereAnIteratorStands) {
    Table table(1);
    table.Put({0});
    table.Put({1});
    Iterator iterator = table.FirstCell();
    ++iterator;
    ConstIterator const same(iterator);
    ++iterator;
    EXPECT_EQ(same.Cell(), table.Cell({1}));
    EXPECT_EQ(same.Index(), (Index{1}));
}

TEST(PivotTableIteration, IndexHasOneEntryForEachDimension) {
    Table table(5);
    table.Put({4, 0, 3, 0, 2});
    EXPECT_EQ(table.FirstCell().Index(), (Index{4, 0, 3, 0, 2}));
}

// An iterator that compared with its end, or went by the number of categories, would stop at once: the dimension has
// none.
TEST(PivotTableIteration, ReachesCellsPastTheCategories) {
    Table table(1);
    ASSERT_EQ(table.Size(0), 0U);
    table.Put({12});
    EXPECT_EQ(Places(table), "(12)");
}

} // namespace
