// The texts that frame a table.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <csignal>
#include <new>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::Text;
using Log = std::vector<std::string>;

class Table : public OmPivotTable {
public:
    Table() : OmPivotTable(Text("title"), Text("template"), false) {}
};

/// One of the three texts that can be set.
struct Slot {
    char const* name;
    OmCellText const* (*read)(OmPivotTable const& table);
    void (*write)(OmPivotTable& table, OmCellText const& text);
};

std::ostream& operator<<(std::ostream& out, Slot const& slot) { return out << slot.name; }

class PivotTableText : public ::testing::TestWithParam<Slot> {
protected:
    OmCellText const* Read() const { return GetParam().read(table); }
    void Write(OmCellText const& text) { GetParam().write(table, text); }

    ForeignLog log{};
    Table table{};
};

INSTANTIATE_TEST_SUITE_P(
    All, PivotTableText,
    ::testing::Values(Slot{"CornerText", [](OmPivotTable const& table) { return table.CornerText(); },
                           [](OmPivotTable& table, OmCellText const& text) { table.CornerText(&text); }},
                      Slot{"Caption", [](OmPivotTable const& table) { return table.Caption(); },
                           [](OmPivotTable& table, OmCellText const& text) { table.Caption(&text); }},
                      Slot{"TableTitle", [](OmPivotTable const& table) { return table.GetTableTitle(); },
                           [](OmPivotTable& table, OmCellText const& text) { table.SetTableTitle(text); }}),
    [](auto const& slot) { return std::string(slot.param.name); });

TEST_P(PivotTableText, IsNullUntilSet) { EXPECT_EQ(Read(), nullptr); }

TEST_P(PivotTableText, IsACloneInTheTablesRegion) {
    OmMemoryRegion* const region = &table.AddDimension(Text("d")).Region();
    ForeignText const text(log, "a");
    Write(text);
    EXPECT_NE(Read(), &text);
    EXPECT_EQ(Read()->AsString(), "a");
    EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{region});
}

// Everywhere else a text is cloned before the old one is destroyed.
TEST_P(PivotTableText, SetterDestroysFirstThenClonesThenVisits) {
    Write(ForeignText(log, "old"));
    ForeignText const text(log, "new");
    log.Take();
    Write(text);
    EXPECT_EQ(log.Take(), (Log{"old': destroy", "new: Clone", "new': Accept"}));
}

TEST_P(PivotTableText, FirstSettingClonesAndVisits) {
    ForeignText const text(log, "a");
    Write(text);
    EXPECT_EQ(log.Take(), (Log{"a: Clone", "a': Accept"}));
}

TEST_P(PivotTableText, FailingCloneLeavesNoText) {
    Write(ForeignText(log, "old"));
    ForeignText const text(log, "new");
    log.clonesUntilFailure = 0;
    EXPECT_THROW(Write(text), std::bad_alloc);
    EXPECT_EQ(Read(), nullptr);
    EXPECT_EQ(log.alive, 1);
}

// Preconditions that are left to the caller are checked unless the build says otherwise.
#if OMTREE_HARDENED

TEST_P(PivotTableText, OwnTextIsReportedAndStays) {
    Write(ForeignText(log, "a"));
    OmCellText const* const held = Read();
    log.Take();
    AssertionCatcher const caught(AfterReport::Return);
    Write(*held);
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/OmPivotTable");
    EXPECT_EQ(caught.Failures()[0].condition, "text != held");
    EXPECT_GT(caught.Failures()[0].line, 0);
    EXPECT_EQ(log.Take(), Log());
    EXPECT_EQ(Read(), held);
}

#endif

TEST_P(PivotTableText, TextOfAnotherPlaceOfTheTableIsCloned) {
    Write(*table.TemplateName());
    EXPECT_EQ(Read()->AsString(), "template");
    EXPECT_NE(Read(), table.TemplateName());
}

TEST_P(PivotTableText, LeavesTheOthersAlone) {
    Write(Text("a"));
    EXPECT_EQ((table.CornerText() != nullptr) + (table.Caption() != nullptr) + (table.GetTableTitle() != nullptr), 1);
    EXPECT_EQ(table.Title()->AsString(), "title");
    EXPECT_EQ(table.TemplateName()->AsString(), "template");
}

TEST(PivotTableTexts, NullClearsCornerTextAndCaption) {
    ForeignLog log;
    Table table;
    ForeignText const text(log, "a");
    table.CornerText(&text);
    table.Caption(&text);
    log.Take();
    table.CornerText(nullptr);
    EXPECT_EQ(log.Take(), (Log{"a': destroy"}));
    EXPECT_EQ(table.CornerText(), nullptr);
    table.Caption(nullptr);
    EXPECT_EQ(log.Take(), (Log{"a': destroy"}));
    EXPECT_EQ(table.Caption(), nullptr);
}

TEST(PivotTableTexts, ClearingNothingIsNoBreach) {
    Table table;
    AssertionCatcher const caught(AfterReport::Return);
    table.CornerText(nullptr);
    table.Caption(nullptr);
    EXPECT_TRUE(caught.Failures().empty());
    EXPECT_EQ(table.CornerText(), nullptr);
}

TEST(PivotTableTexts, ConstAndModifiableFormsGiveTheSameText) {
    Table table;
    OmStringCell const text("a");
    table.CornerText(&text);
    table.Caption(&text);
    EXPECT_EQ(std::as_const(table).CornerText(), table.CornerText());
    EXPECT_EQ(std::as_const(table).Caption(), table.Caption());
}

TEST(PivotTableTexts, TableTitleStandsBesideThePartsTitle) {
    Table table;
    table.SetTableTitle(Text("a"));
    EXPECT_EQ(&table.TableTitle(), table.GetTableTitle());
    EXPECT_EQ(table.TableTitle().AsString(), "a");
    EXPECT_EQ(table.Title()->AsString(), "title");
}

// Preconditions that are left to the caller are checked unless the build says otherwise.
#if OMTREE_HARDENED

TEST(PivotTableTexts, TableTitleWithoutOneIsReported) {
    Table table;
    AssertionCatcher const caught(AfterReport::Throw);
    EXPECT_THROW(table.TableTitle(), omtest::FailedAssertion);
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/OmPivotTable");
    EXPECT_EQ(caught.Failures()[0].condition, "_my->_tableTitle != 0");
    EXPECT_GT(caught.Failures()[0].line, 0);
}

// There is nothing that the reference could name, so a handler that returns ends the program.
TEST(PivotTableTextsDeathTest, TableTitleWithoutOneEndsTheProgram) {
    Table table;
    EXPECT_DEATH(table.TableTitle(), "backend/tables/om/OmPivotTable:[0-9]+: _my->_tableTitle != 0");
    EXPECT_EXIT(
        {
            SetAssertionHandler([](char const*, int, char const*) {});
            table.TableTitle();
        },
        ::testing::KilledBySignal(SIGABRT), "");
}

#endif

} // namespace
