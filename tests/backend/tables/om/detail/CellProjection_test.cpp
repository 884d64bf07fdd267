// What the headings ask of the cell store, against a walk over the cells.
#include "backend/tables/om/detail/CellProjection.h"

#include "tests/support/FailingHeap.h"
#include "tests/support/SeededScripts.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <set>
#include <string>
#include <vector>

// An explicit instantiation may name private members.
template <auto Present, auto Visit>
struct ProjectionOf {
    friend std::size_t PresentCells(OmPivotTable const& table) { return (table.*Present)(); }
    friend void VisitPrefixes(OmPivotTable const& table, std::size_t lowest, std::vector<int> const& wanted,
                              om_detail::PrefixVisitor visit) {
        (table.*Visit)(lowest, wanted, visit);
    }
};
std::size_t PresentCells(OmPivotTable const& table);
void VisitPrefixes(OmPivotTable const& table, std::size_t lowest, std::vector<int> const& wanted,
                   om_detail::PrefixVisitor visit);
template struct ProjectionOf<&OmPivotTable::PresentCells, &OmPivotTable::VisitPrefixes>;

namespace {

using omtest::Dice;
using omtest::TableSketch;
using Index = std::vector<int>;
using Indexes = std::vector<Index>;

/// The prefixes told, sorted; a prefix that is told twice stands there twice.
Indexes Told(OmPivotTable const& table, std::size_t lowest, Index const& wanted) {
    Indexes told;
    VisitPrefixes(table, lowest, wanted, [&](int const* index) {
        told.emplace_back(index + lowest, index + wanted.size());
        return true;
    });
    std::sort(told.begin(), told.end());
    return told;
}

/// Prefixes told by a walk that gets no memory beside its two lists; std::bad_alloc when it asks for more.
int ToldWithoutSorting(OmPivotTable const& table, std::size_t lowest, Index const& wanted) {
    int told = 0;
    omtest::Heap().untilFailure = 2;
    try {
        VisitPrefixes(table, lowest, wanted, [&](int const*) { return ++told > 0; });
    } catch (...) {
        omtest::Heap().untilFailure = -1;
        throw;
    }
    omtest::Heap().untilFailure = -1;
    return told;
}

bool Fits(Index const& cell, Index const& wanted) {
    for (std::size_t k = 0; k < wanted.size(); ++k) {
        if (wanted[k] >= 0 && cell[k] != wanted[k]) {
            return false;
        }
    }
    return true;
}

Indexes Expected(OmPivotTable const& table, std::size_t lowest, Index const& wanted) {
    std::set<Index> prefixes;
    for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
        Index const index = cell.Index();
        if (Fits(index, wanted)) {
            prefixes.emplace(index.begin() + static_cast<std::ptrdiff_t>(lowest), index.end());
        }
    }
    return {prefixes.begin(), prefixes.end()};
}

std::size_t Walked(OmPivotTable const& table) {
    std::size_t cells = 0;
    for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
        ++cells;
    }
    return cells;
}

/// Dimensions without categories: the store knows nothing of them.
void AddDimensions(TableSketch& sketch, std::size_t count) {
    for (std::size_t d = 0; d < count; ++d) {
        sketch.Dimension("d" + std::to_string(d));
    }
}

struct Script {
    Dice& dice;
    TableSketch sketch{};
    std::size_t dimensions = 0;
    int most = 0;
    Indexes stored{}; ///< at some time

    Index AnyIndex() const {
        Index index;
        for (std::size_t d = 0; d < dimensions; ++d) {
            index.push_back(dice.Int(0, dice.Percent(5) ? 4 * most : most));
        }
        return index;
    }

    void Change() {
        Index const index = stored.empty() || dice.Percent(50) ? AnyIndex() : dice.Pick(stored);
        if (dice.Percent(70)) {
            sketch.Put(index);
            stored.push_back(index);
        } else if (dice.Percent(50)) {
            sketch.table.Cell(index, nullptr);
        } else if (sketch.table.Cell(index) != nullptr) {
            sketch.table.deleteCell(index);
        }
    }

    void Compare() const {
        ASSERT_EQ(PresentCells(sketch.table), Walked(sketch.table));
        for (std::size_t lowest = 0; lowest <= dimensions; ++lowest) {
            Index wanted(dimensions, -1);
            ASSERT_EQ(Told(sketch.table, lowest, wanted), Expected(sketch.table, lowest, wanted)) << lowest;
            for (int tries = 0; tries < 4; ++tries) {
                Index const model = stored.empty() || dice.Percent(20) ? AnyIndex() : dice.Pick(stored);
                for (std::size_t d = 0; d < dimensions; ++d) {
                    wanted[d] = dice.Percent(40) ? model[d] : -1;
                }
                ASSERT_EQ(Told(sketch.table, lowest, wanted), Expected(sketch.table, lowest, wanted))
                    << lowest << " of " << ::testing::PrintToString(wanted);
            }
        }
    }

    void Run() {
        dimensions = 1 + dice.Below(5);
        most = dice.Int(1, dimensions < 3 ? 40 : 8);
        AddDimensions(sketch, dimensions);
        std::size_t const changes = dice.Below(200);
        for (std::size_t k = 0; k < changes; ++k) {
            Change();
        }
        Compare();
        if (dice.Percent(30)) { // every cell gets subscript 0 on the new dimension
            AddDimensions(sketch, 1);
            ++dimensions;
            for (Index& index : stored) {
                index.push_back(0);
            }
            Compare();
        }
    }
};

} // namespace

TEST(CellProjection, TableWithoutCellsTellsNothing) {
    TableSketch sketch;
    EXPECT_EQ(PresentCells(sketch.table), 0U);
    EXPECT_TRUE(Told(sketch.table, 0, {}).empty());
    AddDimensions(sketch, 2);
    EXPECT_TRUE(Told(sketch.table, 0, {-1, -1}).empty());
    EXPECT_TRUE(Told(sketch.table, 2, {-1, -1}).empty());
}

TEST(CellProjection, PrefixIsToldOnceHoweverManyCellsStandBelow) {
    TableSketch sketch;
    AddDimensions(sketch, 3);
    sketch.Put({0, 0, 4}).Put({1, 0, 4}).Put({0, 7, 4}).Put({5, 5, 9});
    EXPECT_EQ(Told(sketch.table, 2, {-1, -1, -1}), (Indexes{{4}, {9}}));
    EXPECT_EQ(Told(sketch.table, 1, {-1, -1, -1}), (Indexes{{0, 4}, {5, 9}, {7, 4}}));
    EXPECT_EQ(Told(sketch.table, 3, {-1, -1, -1}), Indexes{{}});
}

// Vectors that a null store leaves, and entries that it grew, hold nothing.
TEST(CellProjection, NodesWithoutACellAreNotTold) {
    TableSketch sketch;
    AddDimensions(sketch, 2);
    sketch.Put({3, 3});
    sketch.table.Cell({0, 5}, nullptr);
    EXPECT_EQ(Told(sketch.table, 1, {-1, -1}), Indexes{{3}});
    sketch.table.Cell({3, 3}, nullptr);
    EXPECT_TRUE(Told(sketch.table, 1, {-1, -1}).empty());
    EXPECT_TRUE(Told(sketch.table, 2, {-1, -1}).empty());
}

TEST(CellProjection, WantedSubscriptsHoldBelowThePrefixAsWell) {
    TableSketch sketch;
    AddDimensions(sketch, 3);
    sketch.Put({1, 0, 4}).Put({2, 0, 4}).Put({2, 6, 8});
    EXPECT_EQ(Told(sketch.table, 2, {1, -1, -1}), Indexes{{4}});
    EXPECT_EQ(Told(sketch.table, 2, {2, -1, -1}), (Indexes{{4}, {8}}));
    EXPECT_EQ(Told(sketch.table, 2, {2, 6, -1}), Indexes{{8}});
    EXPECT_TRUE(Told(sketch.table, 2, {1, 6, -1}).empty());
    EXPECT_TRUE(Told(sketch.table, 0, {-1, -1, 5}).empty());
    EXPECT_TRUE(Told(sketch.table, 0, {-1, -1, std::numeric_limits<int>::max()}).empty());
}

TEST(CellProjection, VisitorEndsTheWalk) {
    TableSketch sketch;
    AddDimensions(sketch, 2);
    for (int k = 0; k < 10; ++k) {
        sketch.Put({k % 3, k});
    }
    for (std::size_t lowest = 0; lowest <= 1; ++lowest) {
        int told = 0;
        VisitPrefixes(sketch.table, lowest, {-1, -1}, [&](int const*) { return ++told < 4; });
        EXPECT_EQ(told, 4) << lowest;
    }
}

TEST(CellProjection, PresentCellsAreNotStoreCalls) {
    TableSketch sketch;
    AddDimensions(sketch, 1);
    sketch.Put({4}).Put({4}).Put({1});
    EXPECT_EQ(PresentCells(sketch.table), 2U);
    sketch.table.Cell({4}, nullptr);
    sketch.table.Cell({4}, nullptr);
    sketch.table.Cell({0}, nullptr);
    EXPECT_EQ(PresentCells(sketch.table), 1U);
    sketch.table.deleteCell({1});
    sketch.table.deleteCell({1});
    EXPECT_EQ(PresentCells(sketch.table), 0U);
    sketch.Put({1});
    EXPECT_EQ(PresentCells(sketch.table), 1U);
    EXPECT_EQ(sketch.table.getNumCells(), 7);
}

// Sorting a node of scattered cells is for telling a prefix once of which several stand there. A wanted subscript below
// the prefix leaves one at most, a wanted one of the prefix leads to a single leaf.
TEST(CellProjection, NothingIsSortedThatCannotRepeat) {
    TableSketch sketch;
    AddDimensions(sketch, 2);
    for (int k = 0; k < 300; ++k) {
        sketch.Put({k % 10, 1000 * (k / 2)});
    }
#ifndef OMTREE_FORCED_FORMS
    ASSERT_THROW(ToldWithoutSorting(sketch.table, 1, {-1, -1}), std::bad_alloc) << "the cells are not scattered";
#endif
    EXPECT_EQ(ToldWithoutSorting(sketch.table, 1, {3, -1}), 30);
    EXPECT_EQ(ToldWithoutSorting(sketch.table, 1, {0, -1}), 30);
    EXPECT_EQ(ToldWithoutSorting(sketch.table, 1, {-1, 0}), 1);
    EXPECT_EQ(ToldWithoutSorting(sketch.table, 0, {-1, 2000}), 2);
    EXPECT_EQ(ToldWithoutSorting(sketch.table, 1, {-1, 2000}), 1);
}

// The walk keeps its levels on the heap.
TEST(CellProjection, ThousandsOfDimensionsAreWalked) {
    constexpr std::size_t Dimensions = 3000;
    TableSketch sketch;
    AddDimensions(sketch, Dimensions);
    sketch.Put(Index(Dimensions, 0)).Put(Index(Dimensions, 1));
    EXPECT_EQ(Told(sketch.table, 0, Index(Dimensions, -1)), (Indexes{Index(Dimensions, 0), Index(Dimensions, 1)}));
    EXPECT_EQ(Told(sketch.table, Dimensions - 1, Index(Dimensions, -1)), (Indexes{{0}, {1}}));
}

TEST(CellProjection, RandomTablesAgreeWithAWalkOverTheCells) {
    omtest::RunScripts(1500, [](Dice& dice) { Script{dice}.Run(); });
}
