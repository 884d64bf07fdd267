// Every short script over a small table, and many long ones over larger tables: the library's cell store, whatever form
// its nodes take on the way, looks from outside like the store that its steps describe.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/LiteralStore.h"
#include "tests/support/StorePair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using omtest::LiteralStore;
using Pair = omtest::StorePair;
using Index = LiteralStore::Index;

void ApplyNumbered(Pair& pair, std::vector<Index> const& positions, unsigned number) {
    Index const& index = positions[number / 3 % positions.size()];
    switch (number % 3) {
    case 0:
        pair.Store(index, "x" + std::to_string(number));
        break;
    case 1:
        pair.Store(index, "");
        break;
    default:
        pair.Delete(index);
    }
}

/// All scripts of `length` operations: a text, nothing, or a deletion, at any of the positions.
void RunEveryScript(std::vector<Index> const& positions, unsigned length) {
    unsigned const operations = static_cast<unsigned>(3 * positions.size());
    std::vector<unsigned> script(length, 0);
    for (;;) {
        Pair pair(positions.front().size());
        for (unsigned const number : script) {
            ApplyNumbered(pair, positions, number);
        }
        pair.ExpectAlike();
        if (::testing::Test::HasFailure()) {
            std::string shown;
            for (unsigned const number : script) {
                shown.append(std::to_string(number)).append(" ");
            }
            FAIL() << "script " << shown;
        }
        unsigned k = 0;
        while (k < length && ++script[k] == operations) {
            script[k++] = 0;
        }
        if (k == length) {
            return;
        }
    }
}

} // namespace

TEST(CellStore, EveryScriptOfThreeOperationsOverTwoDimensions) {
    RunEveryScript({{0, 0}, {1, 0}, {6, 0}, {0, 1}, {1, 1}, {0, 5}, {6, 5}}, 3);
}

TEST(CellStore, EveryScriptOfFourOperationsOverOneDimension) { RunEveryScript({{0}, {1}, {2}, {9}, {40}}, 4); }

TEST(CellStore, EveryScriptOfThreeOperationsOverThreeDimensions) {
    RunEveryScript({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {7, 3, 1}, {7, 0, 1}}, 3);
}

// Boxes that fill, rows that come and go, nodes that turn sparse and dense, levels put on top.
TEST(CellStore, LongRandomScriptsLookLikeTheLiteralStore) {
    std::mt19937_64 random(20261120);
    auto const below = [&random](int bound) { return static_cast<int>(random() % static_cast<std::uint64_t>(bound)); };
    for (int script = 0; script < 300; ++script) {
        std::size_t const dimensions = 1 + random() % 3;
        int const extents[] = {2, 4, 9, 30, 200};
        std::vector<int> extent(dimensions + 1, 1);
        for (int& size : extent) {
            size = extents[random() % std::size(extents)];
        }
        bool const inOrder = below(3) == 0;
        int const deletions = below(3) == 0 ? 40 : 5;
        Pair pair(dimensions);
        int const steps = 20 + below(400);
        for (int step = 0; step < steps; ++step) {
            Index index(pair.Literal().Dimensions(), 0);
            int rest = step;
            for (std::size_t k = 0; k < index.size(); ++k) {
                index[k] = inOrder ? rest % extent[k] : below(extent[k]);
                rest /= extent[k];
            }
            int const what = below(100);
            if (what < deletions) {
                pair.Delete(index);
            } else if (what < deletions + 4) {
                pair.Store(index, "");
            } else if (what == 99 && pair.Literal().Dimensions() == dimensions) {
                pair.AddDimension();
            } else {
                pair.Store(index, std::to_string(step));
            }
        }
        pair.ExpectAlike();
        ASSERT_FALSE(::testing::Test::HasFailure()) << "script " << script;
    }
}

// An iteration goes on behind its last cell whatever happens to the table meanwhile, and every cell that it gives is
// there.
TEST(CellStore, IterationGoesOnBehindItsLastCellAfterChanges) {
    std::mt19937_64 random(7);
    auto const below = [&random](int bound) { return static_cast<int>(random() % static_cast<std::uint64_t>(bound)); };
    for (int script = 0; script < 60; ++script) {
        std::size_t const dimensions = 1 + random() % 3;
        int const extent = below(2) == 0 ? 6 : 60;
        Pair pair(dimensions);
        auto const anywhere = [&] {
            Index index(dimensions);
            std::generate(index.begin(), index.end(), [&] { return below(extent); });
            return index;
        };
        for (int i = below(80); i >= 0; --i) {
            pair.Store(anywhere(), "start");
        }
        OmPivotTable::Iterator cell = pair.Table().FirstCell();
        for (int step = 0; cell.Cell() != nullptr; ++step) {
            Index const index = cell.Index();
            Index const reversed(index.rbegin(), index.rend());
            for (int i = below(6); i > 0; --i) {
                below(3) == 0 ? pair.Delete(anywhere()) : pair.Store(anywhere(), std::to_string(step));
            }
            if (below(4) == 0) {
                pair.Delete(index);
            }
            std::map<Index, std::string> const cells = pair.Literal().Cells();
            OmPivotTable::Iterator const copy = cell;
            ++cell;
            if (cell.Cell() == nullptr) {
                // Cells that were added behind may be seen or not; those that were there must not be missed silently.
                auto const behind = cells.upper_bound(reversed);
                bool const onlyNew =
                    std::all_of(behind, cells.end(), [](auto const& left) { return left.second != "start"; });
                ASSERT_TRUE(onlyNew) << "script " << script << ", step " << step;
                break;
            }
            Index const now = cell.Index();
            auto const found = cells.find(Index(now.rbegin(), now.rend()));
            ASSERT_NE(found, cells.end()) << "script " << script << ", step " << step;
            ASSERT_EQ(cell.Cell()->AsString(), found->second);
            ASSERT_LT(reversed, found->first);
            for (auto between = cells.upper_bound(reversed); between != found; ++between) {
                ASSERT_NE(between->second, "start") << "script " << script << ", step " << step;
            }
            EXPECT_EQ(copy.Index(), index);
        }
    }
}

// Two thousand million positions, one cell: kilobytes.
TEST(CellStore, CellAtAFarSubscriptIsFoundWalkedAndDeleted) {
    for (std::size_t const dimensions : {1U, 2U, 3U}) {
        for (std::size_t far = 0; far < dimensions; ++far) {
            OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
            for (std::size_t k = 0; k < dimensions; ++k) {
                table.AddDimension(OmStringCell("d"));
            }
            Index index(dimensions, 1);
            index[far] = 2'000'000'000;
            table.Cell(index, OmStringCell("far"));
            table.Cell(Index(dimensions, 0), OmStringCell("near"));
            ASSERT_NE(table.Cell(index), nullptr);
            EXPECT_EQ(table.Cell(index)->AsString(), "far");
            OmPivotTable::Iterator cell = table.FirstCell();
            EXPECT_EQ(cell.Index(), Index(dimensions, 0));
            ++cell;
            EXPECT_EQ(cell.Index(), index);
            table.deleteCell(index);
            EXPECT_EQ(table.Cell(index), nullptr);
            EXPECT_NE(table.Cell(Index(dimensions, 0)), nullptr);
        }
    }
}

// The largest subscript there is.
TEST(CellStore, LargestSubscriptsAreKept) {
    OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
    table.AddDimension(OmStringCell("d"));
    table.AddDimension(OmStringCell("d"));
    Index const corner(2, std::numeric_limits<int>::max());
    for (int i = 0; i < 100; ++i) {
        table.Cell({std::numeric_limits<int>::max() - i, i * 1000}, OmStringCell("a"));
    }
    table.Cell(corner, OmStringCell("corner"));
    ASSERT_NE(table.Cell(corner), nullptr);
    int cells = 0;
    Index last;
    for (OmPivotTable::Iterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell, ++cells) {
        Index const index = cell.Index();
        Index const reversed(index.rbegin(), index.rend());
        EXPECT_LT(last, reversed);
        last = reversed;
    }
    EXPECT_EQ(cells, 101);
    EXPECT_EQ(last, corner);
}
