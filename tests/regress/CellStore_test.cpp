// Defects of the cell store and of the walks over it, each of which was there once.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/support/FailingMalloc.h"
#include "tests/support/LiteralStore.h"
#include "tests/support/SortedByWalk.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>
#include <pthread.h>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::CellsOf;
using omtest::FailEachMalloc;
using omtest::Text;
using Index = std::vector<int>;
using Iterator = OmPivotTable::Iterator;

class Table : public OmPivotTable {
public:
    explicit Table(std::size_t dimensions) : OmPivotTable(Text("title"), Text("template"), false) {
        for (std::size_t k = 0; k < dimensions; ++k) {
            AddDimension(Text("d"));
        }
    }
    void Put(Index const& index) { Cell(index, _text); }
    OmMemoryRegion const& Region() { return Dimension(0).Region(); }

private:
    OmStringCell const _text{"x"};
};

constexpr int Cells = 4000;

/// Subscripts far apart, ascending, with room for others between.
int Scattered(int number) { return 1000 * number + 500; }

struct Walked {
    std::size_t cells;  ///< that stood there before the walk and were met
    std::size_t sorted; ///< entries put in order
};

/// Walks over a table of scattered cells, which `change` changes at each step, given its number.
Walked WalkAndChange(Table& table, std::size_t dimensions, std::function<void(int, Index const&)> const& change) {
    for (int i = 0; i < Cells; ++i) {
        Index index(dimensions, Scattered(i));
        table.Put(index);
    }
    omtest::SortedByWalk sorted;
    std::set<int> met;
    Iterator cell = table.FirstCell();
    for (int step = 0; cell.Cell() != nullptr && step < 3 * Cells; ++step) {
        Index const index = cell.Index();
        if (index.back() % 1000 == 500) {
            met.insert(index.back());
        }
        sorted.Look(cell);
        change(step, index);
        ++cell;
    }
    return {met.size(), sorted.Entries()};
}

/// A few doublings of the largest node that there was.
constexpr std::size_t MostSorted = std::size_t{40} * Cells;

} // namespace

// Every step sorted the whole hash again, because some node had moved and the hash had one key more.
TEST(CellStoreWalk, StoringACellAtEachStepDoesNotSortTheTableAtEachStep) {
    for (std::size_t const dimensions : {1U, 2U, 3U, 4U}) {
        for (int const offset : {-300, 0, 300}) {
            Table table(dimensions);
            Walked const walked = WalkAndChange(table, dimensions, [&](int step, Index const& index) {
                Index added = index;
                added.back() = offset == 0 ? 1000 * (step % Cells) + 7 : index.back() / 1000 * 1000 + 500 + offset;
                table.Put(added);
            });
            EXPECT_EQ(walked.cells, std::size_t{Cells}) << dimensions << " dimensions, " << offset;
            EXPECT_LE(walked.sorted, MostSorted) << dimensions << " dimensions, " << offset;
        }
    }
}

TEST(CellStoreWalk, UnchangedTableIsSortedOnce) {
    for (std::size_t const dimensions : {1U, 2U, 3U}) {
        Table table(dimensions);
        Walked const walked = WalkAndChange(table, dimensions, [](int, Index const&) {});
        EXPECT_EQ(walked.cells, std::size_t{Cells});
        EXPECT_EQ(walked.sorted, std::size_t{Cells}) << dimensions << " dimensions";
    }
}

TEST(CellStoreWalk, MovingACellAtEachStepDoesNotSortTheTableAtEachStep) {
    for (std::size_t const dimensions : {1U, 2U, 3U, 4U}) {
        for (bool const isSplit : {false, true}) {
            Table table(dimensions);
            for (int i = 0; isSplit && i < 1000; ++i) {
                Index const index(dimensions, i * 77'777 + 3);
                table.Put(index);
                table.deleteCell(index);
            }
            Walked const walked = WalkAndChange(table, dimensions, [&](int step, Index const& index) {
                table.deleteCell(index);
                Index moved = index;
                moved.back() = 1000 * (step % Cells) + 7;
                table.Put(moved);
            });
            EXPECT_EQ(walked.cells, std::size_t{Cells}) << dimensions << " dimensions";
            EXPECT_LE(walked.sorted, MostSorted) << dimensions << " dimensions";
        }
    }
}

// The first deletion gave each of a million cells a leaf of its own: 0.4 s, and 36 MB that stayed.
TEST(CellStoreDeletion, OneCellOfAScatteredTableTakesNoMemory) {
    for (std::size_t const dimensions : {2U, 3U}) {
        Table table(dimensions);
        for (int i = 0; i < 5 * Cells; ++i) {
            Index index(dimensions, 0);
            index[0] = Scattered(i) * 7 % 1'000'003;
            index[1] = Scattered(i);
            table.Put(index);
        }
        std::size_t const blocks = table.Region().LiveBlocks();
        std::size_t const reserved = table.Region().ReservedBytes();
        for (int const number : {5, 4999, 17}) {
            Index index(dimensions, 0);
            index[0] = Scattered(number) * 7 % 1'000'003;
            index[1] = Scattered(number);
            ASSERT_NE(table.Cell(index), nullptr);
            table.deleteCell(index);
            table.deleteCell(index);
            EXPECT_EQ(table.Cell(index), nullptr);
        }
        EXPECT_EQ(table.Region().LiveBlocks(), blocks - 3) << dimensions << " dimensions";
        EXPECT_EQ(table.Region().ReservedBytes(), reserved) << dimensions << " dimensions";
    }
}

// A deletion that finds the rest of its leaf by a look at every cell must not do so each time.
TEST(CellStoreDeletion, ManyOfAScatteredTableGiveTheCellsLeaves) {
    Table table(2);
    for (int i = 0; i < 5 * Cells; ++i) {
        table.Put({Scattered(i), Scattered(i)});
    }
    std::size_t const blocks = table.Region().LiveBlocks();
    for (int i = 0; i < 100; ++i) {
        table.deleteCell({Scattered(i), Scattered(i)});
    }
    EXPECT_GT(table.Region().LiveBlocks(), blocks + Cells);
}

// Where leaves are short their keys are asked for one by one, and the table keeps its form.
TEST(CellStoreDeletion, ManyOfATableOfShortLeavesTakeNoMemory) {
    constexpr int Leaves = 35000;
    Table table(2);
    for (int i = 0; i < Leaves; ++i) {
        table.Put({0, Scattered(i)});
        table.Put({i % 2 + 1, Scattered(i)});
    }
    std::size_t const blocks = table.Region().LiveBlocks();
    for (int i = 0; i < 1000; ++i) {
        table.deleteCell({0, Scattered(i)});
        table.deleteCell({i % 2 + 1, Scattered(i)});
    }
    EXPECT_EQ(table.Region().LiveBlocks(), blocks - 2000);
}

// The dump went down one call a dimension: a thread with a small stack ended there.
TEST(CellStoreDump, TableOfManyDimensionsNeedsNoStack) {
    constexpr std::size_t Dimensions = 2000;
    constexpr std::size_t StackBytes = 128 * 1024;
    Table table(Dimensions);
    table.Put(Index(Dimensions, 0));
    std::string dump;
    auto const write = [&] { dump = omtest::RawShape(table); };
    pthread_attr_t small;
    ASSERT_EQ(pthread_attr_init(&small), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&small, StackBytes), 0);
    pthread_t thread{};
    auto const run = [](void* action) -> void* { return (*static_cast<decltype(write)*>(action))(), nullptr; };
    ASSERT_EQ(pthread_create(&thread, &small, run, const_cast<void*>(static_cast<void const*>(&write))), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), static_cast<std::ptrdiff_t>(Dimensions) + 1);
    EXPECT_EQ(dump.substr(dump.size() - 10), "[0] @ - x\n");
}

// What was assigned by moving got the other's place, which then went on from there.
TEST(CellStoreWalk, IteratorThatWasMovedByAssignmentIsOver) {
    Table table(1);
    table.Put({0});
    table.Put({7});
    Iterator first = table.FirstCell();
    Iterator second = table.FirstCell();
    ++second;
    first = std::move(second);
    EXPECT_EQ(first.Index(), Index{7});
    EXPECT_EQ(second.Cell(), nullptr); // NOLINT(bugprone-use-after-move): it is over
    Iterator& same = first;
    first = std::move(same);
    EXPECT_EQ(first.Cell(), table.Cell({7}));
}

// --- no memory -------------------------------------------------------------------------------------------------------

TEST(CellStoreNoMemory, DeletionThatCannotSplitLeavesTheTable) {
    Table table(2);
    for (int i = 0; i < Cells; ++i) {
        table.Put({Scattered(i) * 7 % 1'000'003, Scattered(i)});
    }
    std::size_t const blocks = table.Region().LiveBlocks();
    std::string const cells = CellsOf(table);
    Index const absent{0, Scattered(1)};
    int refused = 0;
    int looks = 0; // for what is in a leaf, where there is nothing to delete
    for (; table.Region().LiveBlocks() == blocks && looks < 100; ++looks) {
        refused += FailEachMalloc([&] { table.deleteCell(absent); },
                                  [&] {
                                      EXPECT_EQ(table.Region().LiveBlocks(), blocks);
                                      EXPECT_EQ(CellsOf(table), cells);
                                  });
    }
    EXPECT_GT(looks, 1);
    EXPECT_GT(table.Region().LiveBlocks(), blocks + Cells / 2);
    EXPECT_GE(refused, 2);
    EXPECT_EQ(CellsOf(table), cells);
}

TEST(CellStoreNoMemory, StoreThatCannotSplitABoxLeavesTheTable) {
    Table table(2);
    for (int i = 0; i < 200; ++i) {
        for (int j = 0; j < 50; ++j) {
            table.Put({j, i});
        }
    }
    std::size_t const blocks = table.Region().LiveBlocks();
    std::string const cells = CellsOf(table);
    Index const far{2'000'000'000, 5};
    int const refused = FailEachMalloc([&] { table.Put(far); }, [&] { EXPECT_EQ(CellsOf(table), cells); });
    EXPECT_GE(refused, 1);
    EXPECT_GT(table.Region().LiveBlocks(), blocks + 200);
    EXPECT_NE(table.Cell(far), nullptr);
    table.deleteCell(far);
    EXPECT_EQ(CellsOf(table), cells);
}

// Nodes of every form, turned into every other, each request refused once.
TEST(CellStoreNoMemory, EveryChangeOfFormLeavesTheTableOrIsDone) {
    std::mt19937_64 random(20261122);
    auto const below = [&random](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    int refused = 0;
    for (int script = 0; script < 40; ++script) {
        std::size_t const dimensions = 1 + random() % 3;
        Table table(dimensions);
        omtest::LiteralStore literal(dimensions);
        int const extents[] = {2, 9, 30, 200};
        Index extent(dimensions, 0);
        std::generate(extent.begin(), extent.end(), [&] { return extents[below(4)]; });
        for (int step = below(300); step >= 0; --step) {
            Index index(dimensions, 0);
            std::transform(extent.begin(), extent.end(), index.begin(), below);
            std::string const cells = CellsOf(table);
            auto const check = [&] { ASSERT_EQ(CellsOf(table), cells) << "script " << script; };
            if (below(5) != 0 && table.Cell(index) == nullptr) {
                refused += FailEachMalloc([&] { table.Put(index); }, check);
                literal.Store(index, "x");
            } else if (literal.MayDelete(index)) {
                refused += FailEachMalloc([&] { table.deleteCell(index); }, check);
                literal.Delete(index);
            }
        }
        ASSERT_EQ(omtest::RawShape(table), literal.Dump()) << "script " << script;
    }
    EXPECT_GT(refused, 10);
}

TEST(CellStoreNoMemory, StepThatCannotSortEndsTheWalk) {
    Table table(3);
    for (int i = 0; i < Cells; ++i) {
        table.Put({Scattered(i), Scattered(i) * 7 % 1'000'003, i < 100 ? 0 : i < 1000 ? 1 : 2}); // ever more
    }
    std::string const cells = CellsOf(table);
    // Under the sanitizer vectors take their memory from an operator new that cannot be refused.
    bool const canBeRefused = __interceptor_malloc == nullptr;
    int steps = 0;
    int ended = 0; // walks that were refused a step
    int const refused = FailEachMalloc(
        [&] {
            steps = 0;
            Iterator walk = table.FirstCell();
            try {
                for (; walk.Cell() != nullptr; ++walk) {
                    ++steps;
                }
            } catch (std::bad_alloc const&) {
                EXPECT_EQ(walk.Cell(), nullptr);
                EXPECT_EQ((++walk).Cell(), nullptr);
                ++ended;
                throw;
            }
        },
        [&] { EXPECT_EQ(CellsOf(table), cells); });
    EXPECT_EQ(steps, Cells);
    EXPECT_EQ(refused > 0, canBeRefused);
    EXPECT_EQ(ended > 0, canBeRefused);
}
