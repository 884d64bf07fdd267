// Walking over the stored cells.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
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

// --- iterators and a table that changes ------------------------------------------------------------------------------

TEST(PivotTableIteration, DefaultIteratorsCopyAndAssign) {
    Iterator const none;
    Iterator copy(none);
    EXPECT_EQ((++copy).Cell(), nullptr);
    EXPECT_TRUE(copy.Index().empty());
    Table table(1);
    table.Put({3});
    Iterator iterator = table.FirstCell();
    iterator = none;
    EXPECT_EQ((++iterator).Cell(), nullptr);
    EXPECT_TRUE(iterator.Index().empty());
    iterator = table.FirstCell();
    EXPECT_EQ(iterator.Index(), Index{3});
    ConstIterator constCopy{ConstIterator(none)};
    EXPECT_EQ((++constCopy).Cell(), nullptr);
    constCopy = ConstIterator();
    EXPECT_TRUE(constCopy.Index().empty());
}

TEST(PivotTableIteration, IteratorThatIsOverStaysOverWhateverIsStored) {
    Table table(2);
    Iterator early = table.FirstCell();
    table.Put({0, 0});
    Iterator late = table.FirstCell();
    ++late;
    table.Put({5, 5});
    EXPECT_EQ((++early).Cell(), nullptr);
    EXPECT_EQ((++late).Cell(), nullptr);
    EXPECT_EQ(early.Index().size(), 2U);
    EXPECT_EQ(late.Index().size(), 2U);
}

TEST(PivotTableIteration, IteratorOlderThanADimensionGoesOnInTheFormerPart) {
    for (int const former : {1, 2, 3}) {
        for (int const added : {1, 2}) {
            Table table(former);
            Index index(static_cast<std::size_t>(former), 0);
            for (int i = 0; i < 20; ++i) {
                index.back() = i * 1000;
                table.Put(index);
            }
            Iterator iterator = table.FirstCell();
            ++iterator;
            for (int k = 0; k < added; ++k) {
                table.AddDimension(Text("late"));
                Iterator const younger = table.FirstCell();
                EXPECT_EQ(younger.Index().size(), static_cast<std::size_t>(former + k + 1));
            }
            int steps = 1;
            for (; iterator.Cell() != nullptr; ++iterator, ++steps) {
                EXPECT_EQ(iterator.Index().size(), static_cast<std::size_t>(former));
                EXPECT_EQ(iterator.Index().back(), steps * 1000);
                EXPECT_EQ(iterator.Cell()->AsString(), omtest::Show(iterator.Index()));
            }
            EXPECT_EQ(steps, 20);
        }
    }
}

// The nodes that the former levels were have gone; what stands there now may span two levels.
TEST(PivotTableIteration, IteratorOlderThanDimensionsMeetsNodesMadeAnew) {
    for (int const former : {1, 2, 3}) {
        for (int const added : {1, 2, 3}) {
            Table table(former);
            Index index(static_cast<std::size_t>(former), 1);
            table.Put(index);
            Iterator iterator = table.FirstCell();
            for (int k = 0; k < added; ++k) {
                table.AddDimension(Text("late"));
                index.push_back(0);
            }
            table.deleteCell(index);
            index[0] = 5;
            table.Put(index);
            table.Put(Index(index.size(), 0));
            ++iterator;
            EXPECT_TRUE(iterator.Cell() == nullptr || iterator.Cell() == table.Cell(index)) << former << ' ' << added;
        }
    }
}

TEST(PivotTableIteration, CopyAndOriginalGoOnAfterAChange) {
    for (int const far : {1, 100000}) {
        Table table(2);
        for (int i = 0; i < 50; ++i) {
            table.Put({i % 7 * far, i * far});
        }
        Iterator original = table.FirstCell();
        for (int i = 0; i < 10; ++i) {
            ++original;
        }
        Iterator copy(original);
        table.deleteCell(original.Index());
        table.deleteCell({11 % 7 * far, 11 * far});
        table.Put({3, 12 * far});
        ++original;
        ASSERT_NE(original.Cell(), nullptr);
        EXPECT_EQ(original.Index()[1], 12 * far);
        table.deleteCell({3, 12 * far}); // which a walk may have seen or not
        ++copy;
        ASSERT_NE(copy.Cell(), nullptr);
        EXPECT_EQ(copy.Index(), (Index{12 % 7 * far, 12 * far}));
        EXPECT_EQ((++copy).Index(), (Index{13 % 7 * far, 13 * far}));
    }
}

TEST(PivotTableIteration, EverythingMayGoWhileAWalkStandsOnIt) {
    for (int const dimensions : {1, 2, 3}) {
        for (int const far : {1, 100000}) {
            Table table(dimensions);
            std::vector<Index> indexes;
            for (int i = 0; i < 40; ++i) {
                Index index(static_cast<std::size_t>(dimensions), i % 4);
                index.back() = i * far;
                indexes.push_back(index);
                table.Put(index);
            }
            Iterator first = table.FirstCell();
            Iterator middle = first;
            while (middle.Index() != indexes[20]) {
                ++middle;
            }
            for (Index const& index : indexes) {
                table.deleteCell(index);
            }
            EXPECT_EQ((++first).Cell(), nullptr);
            EXPECT_EQ((++middle).Cell(), nullptr);
            EXPECT_EQ(table.FirstCell().Cell(), nullptr);
            table.Put(indexes[3]);
            EXPECT_EQ(table.FirstCell().Index(), indexes[3]);
        }
    }
}

TEST(PivotTableIteration, LastCellMayGoWhileAWalkStandsBeforeItOrOnIt) {
    for (int const far : {1, 100000}) {
        Table table(2);
        for (int i = 0; i < 30; ++i) {
            table.Put({i % 4, i * far});
        }
        Iterator before = table.FirstCell();
        for (int i = 0; i < 28; ++i) {
            ++before;
        }
        Iterator last = before;
        ++last;
        EXPECT_EQ(last.Index(), (Index{1, 29 * far}));
        table.deleteCell({1, 29 * far});
        EXPECT_EQ((++before).Cell(), nullptr);
        EXPECT_EQ((++last).Cell(), nullptr);
    }
}

// --- the largest numbers ---------------------------------------------------------------------------------------------

TEST(PivotTableIteration, LargestSubscriptInEachDimension) {
    constexpr int Largest = std::numeric_limits<int>::max();
    for (std::size_t const dimensions : {1U, 2U, 3U, 4U}) {
        for (unsigned which = 1; which < 1U << dimensions; ++which) {
            Table table(static_cast<int>(dimensions));
            Index index(dimensions, 2);
            for (std::size_t k = 0; k < dimensions; ++k) {
                index[k] = (which >> k & 1) != 0 ? Largest : 2;
            }
            table.PutNull(index);
            EXPECT_EQ(table.FirstCell().Cell(), nullptr);
            table.Put(Index(dimensions, 2));
            table.Put(index);
            Index below = index;
            std::replace(below.begin(), below.end(), Largest, Largest - 1);
            table.Put(below);
            EXPECT_EQ(Places(table), omtest::Show(Index(dimensions, 2)) + omtest::Show(below) + omtest::Show(index));
            Iterator iterator = table.FirstCell();
            ++iterator;
            table.deleteCell(iterator.Index());
            ++iterator;
            ASSERT_NE(iterator.Cell(), nullptr);
            EXPECT_EQ(iterator.Index(), index);
            table.deleteCell(index);
            EXPECT_EQ((++iterator).Cell(), nullptr);
            EXPECT_EQ(table.Cell(index), nullptr);
            EXPECT_EQ(Places(table), omtest::Show(Index(dimensions, 2)));
        }
    }
}

TEST(PivotTableIteration, SixtyFourDimensions) {
    constexpr int Largest = std::numeric_limits<int>::max();
    Table table(64);
    Index const corner(64, Largest);
    Index middle(64, 0);
    middle[40] = 7;
    table.Put(corner);
    table.Put(Index(64, 0));
    table.Put(middle);
    Iterator iterator = table.FirstCell();
    EXPECT_EQ(iterator.Index(), Index(64, 0));
    table.AddDimension(Text("late"));
    ++iterator;
    EXPECT_EQ(iterator.Index(), middle);
    ++iterator;
    EXPECT_EQ(iterator.Index(), corner);
    EXPECT_EQ((++iterator).Cell(), nullptr);
    Index wider = corner;
    wider.push_back(0);
    table.deleteCell(wider);
    EXPECT_EQ(table.Cell(wider), nullptr);
    wider.assign(65, 0);
    EXPECT_NE(table.Cell(wider), nullptr);
}

} // namespace
