// The count of store calls and the cell limit.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/PivotTableData.h"
#include "platform/BackendSettings.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// An explicit instantiation may name a private member, so the count can be brought near its end without two thousand
// million calls.
template <auto Member>
struct RecordOf {
    friend OmPivotTable::Data* Record(OmPivotTable& table) { return table.*Member; }
};
OmPivotTable::Data* Record(OmPivotTable& table);
template struct RecordOf<&OmPivotTable::_my>;

namespace {

using omtest::CellsOf;
using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::Text;
using omtest::WhatOf;
using Index = std::vector<int>;
using Log = std::vector<std::string>;

/// A table of one dimension with a cell limit.
std::unique_ptr<OmPivotTable> TableWithLimit(long limit) {
    auto table = std::make_unique<OmPivotTable>(Text("title"), Text("template"), false);
    table->AddDimension(Text("d"));
    table->getBackendSettings().setMaxCells(limit);
    return table;
}

TEST(PivotTableCount, LimitZeroTakesOneCellAndScratchesAtTheSecond) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(0);
    EXPECT_TRUE(table->Cell({0}, Text("a")));
    EXPECT_FALSE(table->IsScratched());
    EXPECT_FALSE(table->Cell({1}, Text("b")));
    EXPECT_TRUE(table->IsScratched());
    EXPECT_EQ(table->getNumCells(), 2);
    EXPECT_EQ(CellsOf(*table), "(0)=a");
}

TEST(PivotTableCount, LimitMTakesMPlusOneCells) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(3);
    for (int k = 0; k < 4; ++k) {
        EXPECT_TRUE(table->Cell({k}, Text("a")));
    }
    EXPECT_FALSE(table->Cell({4}, Text("a")));
    EXPECT_EQ(table->getNumCells(), 5);
}

TEST(PivotTableCount, NegativeLimitTakesNoCell) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(-1);
    EXPECT_FALSE(table->Cell({0}, Text("a")));
    EXPECT_TRUE(table->IsScratched());
    EXPECT_EQ(table->getNumCells(), 1);
}

TEST(PivotTableCount, StorePastTheLimitTouchesNeitherTextNorPlace) {
    ForeignLog log;
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(0);
    table->Cell({0}, ForeignText(log, "a"));
    ForeignText const cell(log, "b");
    log.Take();
    EXPECT_FALSE(table->Cell({0}, cell));
    EXPECT_FALSE(table->Cell({0}, static_cast<OmCellText const*>(nullptr)));
    EXPECT_EQ(log.Take(), Log());
    EXPECT_EQ(CellsOf(*table), "(0)=a");
}

TEST(PivotTableCount, StoresKeepFailingAndCounting) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(0);
    for (int k = 0; k < 5; ++k) {
        table->Cell({0}, Text("a"));
    }
    EXPECT_EQ(table->getNumCells(), 5);
    table->Scratch(false);
    EXPECT_FALSE(table->Cell({0}, Text("a")));
    EXPECT_TRUE(table->IsScratched());
    EXPECT_EQ(table->getNumCells(), 6);
}

// The limit comes first, so an index that would throw does not.
TEST(PivotTableCount, LimitIsTestedBeforeTheIndex) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(-1);
    EXPECT_FALSE(table->Cell(Index(), Text("a")));
    EXPECT_FALSE(table->Cell({1, 2, 3}, Text("a")));
    EXPECT_FALSE(table->Cell({-1}, Text("a")));
    OmPivotTable none(Text("title"), Text("template"), false);
    none.getBackendSettings().setMaxCells(-1);
    EXPECT_FALSE(none.Cell(Index(), Text("a")));
}

// Counting occupied places, or successful stores only, gives less than 7.
TEST(PivotTableCount, EveryCallCounts) {
    ForeignLog log;
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(100);
    table->Cell({0}, Text("stored"));
    EXPECT_EQ(table->getNumCells(), 1);
    table->Cell({0}, Text("replaced"));
    EXPECT_EQ(table->getNumCells(), 2);
    table->Cell({0}, static_cast<OmCellText const*>(nullptr));
    EXPECT_EQ(table->getNumCells(), 3);
    EXPECT_NE(WhatOf([&] { table->Cell({0, 0}, Text("too long")); }), "nothing thrown");
    EXPECT_EQ(table->getNumCells(), 4);
    EXPECT_NE(WhatOf([&] { table->Cell({-1}, Text("negative")); }), "nothing thrown");
    EXPECT_EQ(table->getNumCells(), 5);
    log.clonesUntilFailure = 0;
    EXPECT_THROW(table->Cell({0}, ForeignText(log, "no memory")), std::bad_alloc);
    EXPECT_EQ(table->getNumCells(), 6);
    table->getBackendSettings().setMaxCells(0);
    EXPECT_FALSE(table->Cell({0}, Text("past the limit")));
    EXPECT_EQ(table->getNumCells(), 7);
}

TEST(PivotTableCount, StoreIntoATableWithoutDimensionsCounts) {
    OmPivotTable table(Text("title"), Text("template"), false);
    EXPECT_NE(WhatOf([&] { table.Cell(Index(), Text("a")); }), "nothing thrown");
    EXPECT_EQ(table.getNumCells(), 1);
}

TEST(PivotTableCount, OnlyStoresCount) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(100);
    table->Cell({0});
    std::as_const(*table).Cell({0});
    table->AddDimension(Text("e"));
    EXPECT_NE(WhatOf([&] { table->Cell({0}); }), "nothing thrown");
    EXPECT_EQ(table->getNumCells(), 0);
}

TEST(PivotTableCount, DeletingNeverLowersTheCount) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(1);
    table->Cell({0}, Text("a"));
    table->deleteCell({0});
    EXPECT_EQ(table->getNumCells(), 1);
    table->Cell({0}, Text("a"));
    table->deleteCell({0});
    EXPECT_EQ(table->getNumCells(), 2);
    EXPECT_FALSE(table->Cell({0}, Text("a")));
}

TEST(PivotTableCount, NewLimitHoldsAtOnce) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(0);
    table->Cell({0}, Text("a"));
    table->getBackendSettings().setMaxCells(1);
    EXPECT_TRUE(table->Cell({1}, Text("b")));
    EXPECT_FALSE(table->Cell({2}, Text("c")));
    BackendSettings settings;
    settings.setMaxCells(3);
    table->setBackendSettings(settings);
    EXPECT_TRUE(table->Cell({2}, Text("c")));
    EXPECT_EQ(CellsOf(*table), "(0)=a (1)=b (2)=c");
}

TEST(PivotTableCount, TableWithoutSettingsHasTheDefaultLimit) {
    OmPivotTable const table(Text("title"), Text("template"), false);
    EXPECT_EQ(table.getBackendSettings().getMaxCells(), 2000000000L);
}

TEST(PivotTableCount, ScratchingByHandChangesNothingElse) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(10);
    table->Cell({0}, Text("a"));
    table->Scratch(true);
    EXPECT_TRUE(table->IsScratched());
    EXPECT_EQ(CellsOf(*table), "(0)=a");
    EXPECT_TRUE(table->Cell({1}, Text("b")));
    EXPECT_EQ(CellsOf(*table), "(0)=a (1)=b");
    table->Scratch(false);
    EXPECT_FALSE(table->IsScratched());
}

TEST(PivotTableCount, IsReadAsALong) {
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<OmPivotTable const&>().getNumCells()), long>));
}

// One step further would overflow, and a count below zero would let stores succeed again.
TEST(PivotTableCount, StopsAtTheLargestValueOfItsType) {
    std::unique_ptr<OmPivotTable> const table = TableWithLimit(0);
    constexpr std::int32_t Largest = std::numeric_limits<std::int32_t>::max();
    Record(*table)->cellCount = Largest - 1;
    EXPECT_FALSE(table->Cell({0}, Text("a")));
    EXPECT_EQ(table->getNumCells(), Largest);
    EXPECT_FALSE(table->Cell({0}, Text("a")));
    EXPECT_EQ(table->getNumCells(), Largest);
    table->getBackendSettings().setMaxCells(Largest);
    EXPECT_TRUE(table->Cell({0}, Text("a")));
    EXPECT_EQ(table->getNumCells(), Largest);
}

} // namespace
