// Looking cells up, storing and deleting them, and what happens to them when a dimension is added.
#include "backend/tables/om/OmPivotTable.h"

#include "backend/tables/om/OmDimension.h"
#include "omcell/OmCellMetaData.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::CellsOf;
using omtest::ForeignLog;
using omtest::ForeignSpec;
using omtest::ForeignText;
using omtest::RawShape;
using omtest::Text;
using omtest::WhatOf;
using Index = std::vector<int>;
using Log = std::vector<std::string>;

constexpr OmCellText const* NoCell = nullptr;

/// A table with that many dimensions, without categories: a store takes any subscript.
class Table : public OmPivotTable {
public:
    explicit Table(int dimensions) : OmPivotTable(Text("title"), Text("template"), false) {
        for (int k = 0; k < dimensions; ++k) {
            AddDimension(Text("d" + std::to_string(k)));
        }
    }
};

OmCellMetaData Style(int style) {
    OmCellMetaData meta;
    meta.style = style;
    return meta;
}

/// The style number of the cell's metadata; -100 without metadata, -200 without a cell.
int StyleOf(OmCellText const* cell) {
    if (cell == nullptr) {
        return -200;
    }
    return cell->hasMeta() ? cell->getMeta()->style : -100;
}

std::string LengthMessage(int given, int wanted) {
    return "OmPivotTable::Cell() -- nind != _my->_dimensions.size(), value 1 == " + std::to_string(given) +
           ", value 2 == " + std::to_string(wanted);
}

std::string SignMessage(int subscript) {
    return "OmPivotTable::Cell() -- subscript < 0, value 1 == " + std::to_string(subscript) + ", value 2 == 0";
}

/// Runs the call with a handler that returns, and gives what was reported, without the line.
template <typename Call>
Log Reported(Call&& call) {
    AssertionCatcher const caught(AfterReport::Return);
    call();
    Log reports;
    for (AssertionCatcher::Failure const& failure : caught.Failures()) {
        EXPECT_GT(failure.line, 0);
        reports.push_back(failure.source + ": " + failure.condition);
    }
    return reports;
}

// --- looking up ------------------------------------------------------------------------------------------------------

TEST(PivotTableLookUp, GivesTheStoredCellInBothForms) {
    Table table(2);
    OmStringCell const cell("a");
    table.Cell({1, 0}, cell);
    OmCellText* const stored = table.Cell({1, 0});
    ASSERT_NE(stored, nullptr);
    EXPECT_NE(stored, &cell);
    EXPECT_EQ(stored->AsString(), "a");
    EXPECT_EQ(std::as_const(table).Cell({1, 0}), stored);
    EXPECT_EQ(table.Cell({0, 1}), nullptr);
}

// A look-up that checks against the stored length, or against the number of categories, would throw.
TEST(PivotTableLookUp, GivesNullPastWhatIsStoredOnEveryLevel) {
    Table table(3);
    EXPECT_EQ(table.Cell({0, 0, 0}), nullptr);
    table.Cell({1, 1, 1}, Text("a"));
    for (int const far : {2, 3, 1000000, 2147483647}) {
        EXPECT_EQ(table.Cell({far, 1, 1}), nullptr);
        EXPECT_EQ(table.Cell({1, far, 1}), nullptr);
        EXPECT_EQ(table.Cell({1, 1, far}), nullptr);
    }
    EXPECT_EQ(table.Cell({0, 1, 1}), nullptr);
    EXPECT_EQ(table.Cell({1, 0, 1}), nullptr);
    EXPECT_EQ(table.Cell({1, 1, 0}), nullptr);
}

TEST(PivotTableLookUp, StoringAtFiveMakesSixEntriesAndSevenReadsAsNull) {
    Table table(1);
    EXPECT_TRUE(table.Cell({5}, Text("a")));
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] 0\n"
                               "    [1] 0\n"
                               "    [2] 0\n"
                               "    [3] 0\n"
                               "    [4] 0\n"
                               "    [5] @ - a\n");
    EXPECT_EQ(table.Cell({7}), nullptr);
    EXPECT_EQ(CellsOf(table), "(5)=a");
}

TEST(PivotTableLookUp, ReadingStoresNothing) {
    Table table(2);
    table.Cell({0, 0}, Text("a"));
    std::string const before = RawShape(table);
    table.Cell({4, 4});
    EXPECT_EQ(RawShape(table), before);
    EXPECT_EQ(table.getNumCells(), 1);
}

TEST(PivotTableLookUp, WrongLengthIsRefusedWithBothNumbers) {
    Table table(2);
    EXPECT_EQ(WhatOf([&] { table.Cell({0}); }), LengthMessage(1, 2));
    EXPECT_EQ(WhatOf([&] { table.Cell({0, 0, 0}); }), LengthMessage(3, 2));
    EXPECT_EQ(WhatOf([&] { table.Cell(Index()); }), LengthMessage(0, 2));
    EXPECT_EQ(WhatOf([&] { std::as_const(table).Cell({0}); }), LengthMessage(1, 2));
    EXPECT_EQ(WhatOf([] { Table(0).Cell({0}); }), LengthMessage(1, 0));
}

TEST(PivotTableLookUp, NegativeSubscriptIsRefused) {
    Table table(2);
    EXPECT_EQ(WhatOf([&] { table.Cell({-1, 0}); }), SignMessage(-1));
    EXPECT_EQ(WhatOf([&] { table.Cell({0, -7}); }), SignMessage(-7));
    EXPECT_EQ(WhatOf([&] { std::as_const(table).Cell({0, -7}); }), SignMessage(-7));
}

TEST(PivotTableLookUp, LengthIsCheckedBeforeSigns) {
    Table table(2);
    EXPECT_EQ(WhatOf([&] { table.Cell({-1}); }), LengthMessage(1, 2));
    EXPECT_EQ(WhatOf([&] { table.Cell({-1}, Text("a")); }), LengthMessage(1, 2));
}

// Some numbers of dimensions have a way of their own: every place of a small box, a third of them taken at random.
TEST(PivotTableLookUp, GivesWhatWasStoredForAnyNumberOfDimensions) {
    constexpr int Width = 4;
    for (int dimensions = 1; dimensions <= 6; ++dimensions) {
        SCOPED_TRACE(std::to_string(dimensions) + " dimensions");
        std::mt19937_64 random(static_cast<std::uint64_t>(dimensions));
        Table table(dimensions);
        std::map<Index, std::string> stored;
        Index index(static_cast<std::size_t>(dimensions), 0);
        auto const advance = [&index] {
            auto const digit = std::find_if(index.begin(), index.end(), [](int d) { return d < Width - 1; });
            std::fill(index.begin(), digit, 0);
            if (digit == index.end()) {
                return false;
            }
            ++*digit;
            return true;
        };
        do {
            if (random() % 3 == 0) {
                stored[index] = std::to_string(stored.size());
                table.Cell(index, Text(stored[index]));
            }
        } while (advance());
        do {
            auto const expected = stored.find(index);
            OmCellText const* const cell = table.Cell(index);
            ASSERT_EQ(cell != nullptr, expected != stored.end());
            ASSERT_TRUE(cell == nullptr || cell->AsString() == expected->second);
            for (int& subscript : index) {
                int const kept = std::exchange(subscript, Width + 1);
                ASSERT_EQ(std::as_const(table).Cell(index), nullptr);
                subscript = -1 - kept;
                ASSERT_EQ(WhatOf([&] { table.Cell(index); }), SignMessage(-1 - kept));
                subscript = kept;
            }
        } while (advance());
    }
}

// Only a store needs a dimension: the empty index of a table without dimensions has the right length.
TEST(PivotTableLookUp, EmptyIndexOfATableWithoutDimensionsIsEmpty) {
    Table table(0);
    EXPECT_EQ(table.Cell(Index()), nullptr);
    EXPECT_EQ(std::as_const(table).Cell(Index()), nullptr);
}

// --- storing ---------------------------------------------------------------------------------------------------------

TEST(PivotTableStore, TableWithoutDimensionsTakesNoCell) {
    Table table(0);
    EXPECT_EQ(WhatOf([&] { table.Cell(Index(), Text("a")); }), LengthMessage(0, 0));
    EXPECT_EQ(WhatOf([&] { table.Cell(Index(), NoCell); }), LengthMessage(0, 0));
    EXPECT_EQ(WhatOf([&] { table.Cell({4}, Text("a")); }), LengthMessage(1, 0));
}

TEST(PivotTableStore, WrongIndexIsRefusedAndNothingIsStored) {
    ForeignLog log;
    Table table(2);
    ForeignText const cell(log, "a");
    EXPECT_EQ(WhatOf([&] { table.Cell({0}, cell); }), LengthMessage(1, 2));
    EXPECT_EQ(WhatOf([&] { table.Cell({0, 0, 0}, &cell); }), LengthMessage(3, 2));
    EXPECT_EQ(WhatOf([&] { table.Cell({0, -1}, cell); }), SignMessage(-1));
    EXPECT_EQ(WhatOf([&] { table.Cell({-2, 0}, NoCell); }), SignMessage(-2));
    EXPECT_EQ(log.Take(), Log());
    EXPECT_EQ(RawShape(table), "0\n");
}

TEST(PivotTableStore, BothFormsStoreACloneInTheTablesRegion) {
    ForeignLog log;
    Table table(1);
    ForeignText const cell(log, "a");
    EXPECT_TRUE(table.Cell({0}, cell));
    EXPECT_TRUE(table.Cell({1}, &cell));
    ASSERT_EQ(log.cloneRegions.size(), 2U);
    EXPECT_EQ(log.cloneRegions[0], &table.Dimension(0).Region());
    EXPECT_EQ(log.cloneRegions[1], &table.Dimension(0).Region());
    EXPECT_EQ(CellsOf(table), "(0)=a (1)=a");
}

TEST(PivotTableStore, DestroysTheOldCellThenClonesThenVisits) {
    ForeignLog log;
    Table table(1);
    table.Cell({0}, ForeignText(log, "old"));
    ForeignText const cell(log, "new");
    log.Take();
    EXPECT_TRUE(table.Cell({0}, cell));
    EXPECT_EQ(log.Take(), (Log{"old': destroy", "new: Clone", "new': Accept"}));
}

// By the time the new cell is visited it stands in its place, the count is up, and the metadata is still to come.
TEST(PivotTableStore, VisitComesAfterThePlaceIsTakenAndBeforeTheMetadataIsGiven) {
    ForeignLog log;
    Table table(1);
    table.Cell({0}, ForeignText(log, "old"));
    OmCellMetaData const kept = Style(7);
    table.Cell({0})->setMeta(&kept);
    Log seen;
    ForeignSpec spec{"new", "new"};
    spec.accept = [&](ForeignText& text, OmCellText::Visitor&) {
        seen.push_back(table.Cell({0}) == &text ? "in its place" : "elsewhere");
        seen.push_back(text.hasMeta() ? "with metadata" : "without metadata");
        seen.push_back("call " + std::to_string(table.getNumCells()));
    };
    table.Cell({0}, ForeignText(log, spec));
    EXPECT_EQ(seen, (Log{"in its place", "without metadata", "call 2"}));
    EXPECT_EQ(StyleOf(table.Cell({0})), 7);
}

TEST(PivotTableStore, ReplacingACellKeepsItsMetadata) {
    Table table(1);
    OmStringCell first("first");
    OmCellMetaData meta = Style(3);
    meta.footnotes = {1, 2};
    meta.markers = {"a"};
    first.setMeta(&meta);
    table.Cell({0}, first);
    table.Cell({0}, Text("second"));
    ASSERT_TRUE(table.Cell({0})->hasMeta());
    EXPECT_EQ(*table.Cell({0})->getMeta(), meta);
    EXPECT_EQ(table.Cell({0})->AsString(), "second");
}

// The old record goes over the new cell's own one.
TEST(PivotTableStore, KeptMetadataReplacesThatOfTheNewCell) {
    Table table(1);
    OmStringCell cell("a");
    OmCellMetaData const first = Style(1);
    OmCellMetaData const second = Style(2);
    cell.setMeta(&first);
    table.Cell({0}, cell);
    cell.setMeta(&second);
    table.Cell({0}, cell);
    EXPECT_EQ(StyleOf(table.Cell({0})), 1);
    table.Cell({1}, Text("plain"));
    table.Cell({1}, cell);
    EXPECT_EQ(StyleOf(table.Cell({1})), 2);
}

TEST(PivotTableStore, MetadataGoesWithANullCell) {
    Table table(1);
    OmStringCell cell("a");
    OmCellMetaData const meta = Style(1);
    cell.setMeta(&meta);
    table.Cell({0}, cell);
    table.Cell({0}, NoCell);
    table.Cell({0}, Text("b"));
    EXPECT_EQ(StyleOf(table.Cell({0})), -100);
}

TEST(PivotTableStore, NullDestroysTheCellAndLeavesThePath) {
    ForeignLog log;
    Table table(2);
    table.Cell({0, 1}, ForeignText(log, "a"));
    log.Take();
    EXPECT_TRUE(table.Cell({0, 1}, NoCell));
    EXPECT_EQ(log.Take(), (Log{"a': destroy"}));
    EXPECT_EQ(table.Cell({0, 1}), nullptr);
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] 0\n"
                               "    [1] @\n"
                               "    [0]     [0] 0\n");
    table.deleteCell({0, 1});
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] 0\n"
                               "    [1] 0\n");
}

TEST(PivotTableStore, NullInAnEmptyPlaceMakesThePath) {
    Table table(2);
    EXPECT_TRUE(table.Cell({1, 0}, NoCell));
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] @\n"
                               "    [0]     [0] 0\n"
                               "    [1]     [1] 0\n");
    EXPECT_EQ(CellsOf(table), "");
}

// The old cell goes before the new one is made everywhere else; a cell must survive its own replacement.
TEST(PivotTableStore, CellStoredIntoItsOwnPlaceStays) {
    ForeignLog log;
    Table table(1);
    table.Cell({0}, ForeignText(log, "a", "text"));
    OmCellMetaData const meta = Style(5);
    table.Cell({0})->setMeta(&meta);
    log.Take();
    EXPECT_TRUE(table.Cell({0}, table.Cell({0})));
    EXPECT_EQ(log.Take(), (Log{"a': Clone", "a': destroy", "a'': Accept"}));
    EXPECT_EQ(table.Cell({0})->AsString(), "text");
    EXPECT_EQ(StyleOf(table.Cell({0})), 5);
    EXPECT_EQ(log.alive, 1);

    OmPivotTable& plain = table;
    plain.Cell({1}, Text("b"));
    EXPECT_TRUE(plain.Cell({1}, *plain.Cell({1})));
    EXPECT_EQ(plain.Cell({1})->AsString(), "b");
}

TEST(PivotTableStore, CellOfTheTableStoredElsewhereIsCloned) {
    Table table(1);
    table.Cell({0}, Text("a"));
    table.Cell({9}, table.Cell({0}));
    EXPECT_EQ(CellsOf(table), "(0)=a (9)=a");
    EXPECT_NE(table.Cell({0}), table.Cell({9}));
}

// A store that kept the old pointer until the clone is made would leave it dangling here.
TEST(PivotTableStore, FailingCloneLeavesThePlaceEmpty) {
    ForeignLog log;
    Table table(1);
    table.Cell({0}, ForeignText(log, "old"));
    ForeignText const cell(log, "new");
    log.clonesUntilFailure = 0;
    EXPECT_THROW(table.Cell({0}, cell), std::bad_alloc);
    EXPECT_EQ(table.Cell({0}), nullptr);
    EXPECT_EQ(CellsOf(table), "");
    EXPECT_EQ(log.alive, 1);
    log.clonesUntilFailure = -1;
    EXPECT_TRUE(table.Cell({0}, cell));
    EXPECT_EQ(CellsOf(table), "(0)=new");
}

// --- deleting --------------------------------------------------------------------------------------------------------

TEST(PivotTableDelete, DestroysTheCell) {
    ForeignLog log;
    Table table(1);
    table.Cell({1}, ForeignText(log, "a"));
    table.Cell({0}, ForeignText(log, "b"));
    log.Take();
    table.deleteCell({1});
    EXPECT_EQ(log.Take(), (Log{"a': destroy"}));
    EXPECT_EQ(CellsOf(table), "(0)=b");
    log.Take();
    table.deleteCell({1});
    EXPECT_EQ(log.Take(), Log());
}

TEST(PivotTableDelete, TakesTheMetadataAlong) {
    Table table(1);
    OmStringCell cell("a");
    OmCellMetaData const meta = Style(1);
    cell.setMeta(&meta);
    table.Cell({0}, cell);
    table.deleteCell({0});
    table.Cell({0}, Text("b"));
    EXPECT_EQ(StyleOf(table.Cell({0})), -100);
}

TEST(PivotTableDelete, RemovesEmptyNodesUpToTheRootButNotIt) {
    Table table(3);
    table.Cell({0, 1, 1}, Text("a"));
    table.Cell({0, 0, 1}, Text("b"));
    table.deleteCell({0, 1, 1});
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] 0\n"
                               "    [1] @\n"
                               "    [0]     [0] @\n"
                               "    [0]     [0]     [0] @ - b\n"
                               "    [1]     [1] 0\n");
    table.deleteCell({0, 0, 1});
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] 0\n"
                               "    [1] 0\n");
}

TEST(PivotTableDelete, RemovesANodeWhoseLeavesWentOneByOne) {
    Table table(3);
    table.Cell({0, 0, 0}, Text("a"));
    for (int i = 0; i < 10; ++i) {
        table.Cell({0, 100 * i, 1}, Text("b"));
    }
    for (int i = 0; i < 10; ++i) {
        table.deleteCell({0, 100 * i, 1});
    }
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] @\n"
                               "    [0]     [0] @\n"
                               "    [0]     [0]     [0] @ - a\n"
                               "    [1] 0\n");
}

TEST(PivotTableDelete, KeepsALeafThatHoldsAnotherCell) {
    Table table(2);
    table.Cell({0, 0}, Text("a"));
    table.Cell({1, 0}, Text("b"));
    table.deleteCell({0, 0});
    EXPECT_EQ(CellsOf(table), "(1,0)=b");
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] @\n"
                               "    [0]     [0] 0\n"
                               "    [1]     [1] @ - b\n");
}

TEST(PivotTableDelete, WalkThatReachesNullChangesAndReportsNothing) {
    Table table(3);
    EXPECT_EQ(Reported([&] { table.deleteCell({3, 4, 5}); }), Log());
    table.Cell({0, 0, 1}, Text("a"));
    std::string const before = RawShape(table);
    EXPECT_EQ(Reported([&] { table.deleteCell({99, 99, 0}); }), Log());
    EXPECT_EQ(RawShape(table), before);
}

// Preconditions that are left to the caller are checked unless the build says otherwise.
#if OMTREE_HARDENED

char const* const LengthReport = "backend/tables/om/OmPivotTable: nind == _my->_dimensions.size()";
char const* const SubscriptReport = "backend/tables/om/OmPivotTable: subscript < node length";

TEST(PivotTableDelete, WrongLengthIsReportedAndDoesNothing) {
    Table table(2);
    table.Cell({0, 0}, Text("a"));
    for (Index const& index : {Index(), Index{0}, Index{0, 0, 0}}) {
        EXPECT_EQ(Reported([&] { table.deleteCell(index); }), (Log{LengthReport})) << index.size();
    }
    EXPECT_EQ(CellsOf(table), "(0,0)=a");
}

TEST(PivotTableDelete, SubscriptOutsideWhatIsStoredIsReportedAndDoesNothing) {
    Table table(3);
    table.Cell({0, 0, 0}, Text("a"));
    for (Index const& index : {Index{0, 0, 1}, Index{0, 1, 0}, Index{1, 0, 0}, Index{-1, 0, 0}, Index{0, -1, 0},
                               Index{0, 0, -1}, Index{2147483647, 0, 0}}) {
        EXPECT_EQ(Reported([&] { table.deleteCell(index); }), (Log{SubscriptReport})) << omtest::Show(index);
    }
    EXPECT_EQ(CellsOf(table), "(0,0,0)=a");
}

#endif

// --- adding a dimension ----------------------------------------------------------------------------------------------

TEST(PivotTableWidening, FormerCellsGetSubscriptZero) {
    Table table(2);
    table.Cell({1, 0}, Text("a"));
    table.Cell({0, 2}, Text("b"));
    table.AddDimension(Text("third"));
    ASSERT_NE(table.Cell({1, 0, 0}), nullptr);
    EXPECT_EQ(table.Cell({1, 0, 0})->AsString(), "a");
    EXPECT_EQ(CellsOf(table), "(1,0,0)=a (0,2,0)=b");
    EXPECT_EQ(WhatOf([&] { table.Cell({1, 0}); }), LengthMessage(2, 3));
}

TEST(PivotTableWidening, CopiedDimensionWidensToo) {
    Table table(1);
    table.Cell({1}, Text("a"));
    table.AddDimension(table.Dimension(0));
    table.AddDimension(Table(1).Dimension(0));
    EXPECT_EQ(CellsOf(table), "(1,0,0)=a");
}

TEST(PivotTableWidening, KeepsTheCellsAsTheyAre) {
    ForeignLog log;
    Table table(1);
    table.Cell({1}, ForeignText(log, "a"));
    OmCellText* const cell = table.Cell({1});
    log.Take();
    table.AddDimension(Text("second"));
    EXPECT_EQ(log.Take(), Log());
    EXPECT_EQ(table.Cell({1, 0}), cell);
}

TEST(PivotTableWidening, NewRootHoldsTheOldOneAsItsOnlyEntry) {
    Table table(1);
    table.Cell({1}, Text("a"));
    table.AddDimension(Text("second"));
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] @\n"
                               "    [0]     [0] 0\n"
                               "    [1]     [1] @ - a\n");
}

TEST(PivotTableWidening, EmptyStoreStaysWithoutARoot) {
    Table table(1);
    table.AddDimension(Text("second"));
    EXPECT_EQ(RawShape(table), "0\n");
    table.Cell({1, 1}, Text("a"));
    EXPECT_EQ(CellsOf(table), "(1,1)=a");
}

TEST(PivotTableWidening, NewPlacesAreFreeToStoreIn) {
    Table table(1);
    table.Cell({1}, Text("a"));
    table.AddDimension(Text("second"));
    table.Cell({1, 3}, Text("b"));
    table.Cell({1, 0}, Text("c"));
    EXPECT_EQ(CellsOf(table), "(1,0)=c (1,3)=b");
}

} // namespace
