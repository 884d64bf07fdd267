// A table as it comes out of its constructor, its dimensions and its axes.
#include "backend/tables/om/OmPivotTable.h"

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmOutputPart.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::ForeignLog;
using omtest::ForeignSpec;
using omtest::ForeignText;
using omtest::SlotOf;
using omtest::Text;
using omtest::WhatOf;
using Log = std::vector<std::string>;
using Axis = std::vector<short>;

std::unique_ptr<OmPivotTable> TableOf(std::string const& templateName, bool hasSplits = false) {
    return std::make_unique<OmPivotTable>(Text("title"), Text(templateName), hasSplits);
}

/// Adds `count` leaves "0", "1" ... with their position as subscript.
void Fill(OmDimension& dimension, int count) {
    for (int k = 0; k < count; ++k) {
        dimension.Child(dimension.Root(), Text(std::to_string(k)), static_cast<unsigned long long>(k), false);
    }
}

Axis Entries(PuppetVector<short> const& axis) { return Axis(axis.begin(), axis.end()); }

/// "Sex(Adults(Male Female) Unknown)"
std::string Tree(OmDimension const& dimension) {
    std::string text;
    unsigned int depth = 0;
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](OmDimension::ConstNode const& node) {
        if (node.Depth() > depth) {
            text += '(';
        } else if (!text.empty()) {
            text.append(depth - node.Depth(), ')').append(" ");
        }
        depth = node.Depth();
        text += node.Value().Text()->AsString();
        return true;
    });
    return text.append(depth, ')');
}

/// Counts the visits of each kind of part.
class CountingVisitor final : public OmOutputPart::Visitor {
public:
    void Visit(OmInteractive&) override { ++others; }
    void Visit(OmModel&) override { ++others; }
    void Visit(OmAnswerTree&) override { ++others; }
    void Visit(OmChart&) override { ++others; }
    void Visit(OmPageTitle&) override { ++others; }
    void Visit(OmTextBlock&) override { ++others; }
    void Visit(OmHeading&) override { ++others; }
    void Visit(OmProcedure&) override { ++others; }
    void Visit(OmPivotTable& table) override { tables.push_back(&table); }

    std::vector<OmPivotTable*> tables;
    int others = 0;
};

/// Storage for a copy of a table that is never destroyed, as the copy of a part must not be.
class SharedCopy {
public:
    explicit SharedCopy(OmPivotTable const& source) : _copy(::new (_storage) OmPivotTable(source)) {}
    OmPivotTable* operator->() const { return _copy; }
    OmPivotTable& operator*() const { return *_copy; }

private:
    alignas(OmPivotTable) unsigned char _storage[sizeof(OmPivotTable)];
    OmPivotTable* _copy;
};

// --- construction ----------------------------------------------------------------------------------------------------

TEST(OmPivotTable, TitleIsAPartTitleOutsideTheTablesRegion) {
    ForeignLog log;
    ForeignText const title(log, "title");
    ForeignText const name(log, "name");
    OmPivotTable const table(title, name, false);
    EXPECT_EQ(table.Title()->AsString(), "title");
    ASSERT_EQ(log.cloneRegions.size(), 2U);
    EXPECT_EQ(log.cloneRegions[0], nullptr);
    ASSERT_NE(log.cloneRegions[1], nullptr);
    EXPECT_FALSE(log.cloneRegions[1]->IsDefaultHeap());
    EXPECT_EQ(table.GetTableTitle(), nullptr);
}

TEST(OmPivotTable, TemplateNameIsAClone) {
    OmStringCell const name("Cross tabulation");
    OmPivotTable table(Text("title"), name, false);
    EXPECT_NE(table.TemplateName(), &name);
    EXPECT_EQ(table.TemplateName()->AsString(), "Cross tabulation");
    EXPECT_EQ(std::as_const(table).TemplateName(), table.TemplateName());
}

TEST(OmPivotTable, NewTableIsEmpty) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    EXPECT_EQ(table->NDimensions(), 0U);
    EXPECT_TRUE(table->SizeVector().empty());
    EXPECT_TRUE(table->Rows().empty());
    EXPECT_TRUE(table->Columns().empty());
    EXPECT_TRUE(table->Layers().empty());
    EXPECT_TRUE(table->Footnotes().empty());
    EXPECT_EQ(table->FirstCell().Cell(), nullptr);
    EXPECT_EQ(table->getNumCells(), 0);
    EXPECT_FALSE(table->IsScratched());
    EXPECT_TRUE(table->Visible());
    EXPECT_TRUE(table->Expanded());
}

TEST(OmPivotTable, SplitsAreWhatTheConstructorWasTold) {
    EXPECT_TRUE(TableOf("t", true)->HasSplits());
    EXPECT_FALSE(TableOf("t", false)->HasSplits());
}

// A comparison that ignores case or blanks would take the others as well.
TEST(OmPivotTable, WarningsAndNotesAreExactTemplateNames) {
    struct Case {
        char const* name;
        bool warnings;
        bool notes;
    };
    for (Case const& each : {Case{"Warnings", true, false}, Case{"Notes", false, true}, Case{"warnings", false, false},
                             Case{"NOTES", false, false}, Case{"Warnings ", false, false}, Case{" Notes", false, false},
                             Case{"Warning", false, false}, Case{"NotesX", false, false}, Case{"", false, false}}) {
        EXPECT_EQ(TableOf(each.name)->IsWarnings(), each.warnings) << each.name;
        EXPECT_EQ(TableOf(each.name)->IsNotes(), each.notes) << each.name;
    }
}

TEST(OmPivotTable, TitleDoesNotMakeATableOfWarnings) {
    EXPECT_FALSE(OmPivotTable(Text("Warnings"), Text("t"), false).IsWarnings());
    EXPECT_FALSE(OmPivotTable(Text("Notes"), Text("t"), false).IsNotes());
}

// Reading the template name at each question would follow the edit.
TEST(OmPivotTable, WarningsFlagStaysWhenTheTemplateNameChanges) {
    ForeignLog log;
    ForeignText const name(log, "name", "Warnings");
    OmPivotTable table(Text("title"), name, false);
    static_cast<ForeignText*>(table.TemplateName())->spec().text = "Notes";
    EXPECT_EQ(table.TemplateName()->AsString(), "Notes");
    EXPECT_TRUE(table.IsWarnings());
    EXPECT_FALSE(table.IsNotes());
}

TEST(OmPivotTable, HasOnePointerBesideItsBase) {
    EXPECT_EQ(sizeof(OmPivotTable), sizeof(OmOutputPart) + sizeof(void*));
}

TEST(OmPivotTable, SlotsAreTheDestructorAndAccept) {
    EXPECT_TRUE(std::has_virtual_destructor_v<OmPivotTable>);
    EXPECT_EQ(SlotOf(&OmPivotTable::Accept), 2U);
}

TEST(OmPivotTable, AcceptHandsTheTableToItsOwnVisit) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    CountingVisitor visitor;
    OmOutputPart& part = *table;
    part.Accept(visitor);
    EXPECT_EQ(visitor.tables, std::vector<OmPivotTable*>{table.get()});
    EXPECT_EQ(visitor.others, 0);
}

// A deep copy would keep the two apart.
TEST(OmPivotTable, CopySharesTitleAndRecord) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    SharedCopy const copy(*table);
    copy->AddDimension(Text("d"));
    copy->OptionNumber(7);
    EXPECT_EQ(copy->Title(), table->Title());
    EXPECT_EQ(table->NDimensions(), 1U);
    EXPECT_EQ(table->OptionNumber(), 7);
}

TEST(OmPivotTable, AssignmentSharesTitleAndRecord) {
    std::unique_ptr<OmPivotTable> const first = TableOf("t");
    std::unique_ptr<OmPivotTable> const second = TableOf("t");
    second->OptionNumber(2);
    SharedCopy const copy(*first);
    *copy = *second;
    EXPECT_EQ(copy->OptionNumber(), 2);
    EXPECT_EQ(copy->Title(), second->Title());
    EXPECT_EQ(first->OptionNumber(), -1);
}

// --- dimensions ------------------------------------------------------------------------------------------------------

TEST(OmPivotTable, AddedDimensionIsANamedGroupWithoutCategories) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    OmStringCell const name("Sex");
    OmDimension& dimension = table->AddDimension(name);
    EXPECT_EQ(&dimension, &table->Dimension(0));
    EXPECT_NE(&dimension.Name(), &name);
    EXPECT_EQ(dimension.Name().AsString(), "Sex");
    EXPECT_EQ(dimension.NumCategories(), 0);
    EXPECT_EQ(dimension.Root().ChildCount(), 0U);
    EXPECT_TRUE(dimension.Root().Value().IsGroup());
    EXPECT_EQ(dimension.Root().Value().Subscript(), ~0ULL);
    EXPECT_FALSE(dimension.DisplayLastCategory());
}

TEST(OmPivotTable, DimensionsAreNumberedInTheOrderOfAdding) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    EXPECT_EQ(table->AddDimension(Text("a")).Index(), 0);
    EXPECT_EQ(table->AddDimension(Text("b")).Index(), 1);
    EXPECT_EQ(table->AddDimension(table->Dimension(0)).Index(), 2);
    EXPECT_EQ(table->Dimension(0).Index(), 0);
    EXPECT_EQ(table->NDimensions(), 3U);
    EXPECT_EQ(table->Dimension(1).Name().AsString(), "b");
    EXPECT_EQ(table->Dimension(2).Name().AsString(), "a");
}

TEST(OmPivotTable, DimensionStaysWhereItIsWhileOthersAreAdded) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    OmDimension* const first = &table->AddDimension(Text("first"));
    for (int k = 0; k < 40; ++k) {
        table->AddDimension(Text(std::to_string(k)));
    }
    EXPECT_EQ(&table->Dimension(0), first);
    EXPECT_EQ(table->NDimensions(), 41U);
}

TEST(OmPivotTable, CategoriesLiveInTheTablesRegion) {
    ForeignLog log;
    ForeignText const name(log, "name");
    ForeignText const label(log, "label");
    OmPivotTable table(Text("title"), name, false);
    OmMemoryRegion* const region = log.cloneRegions.at(0);
    OmDimension& dimension = table.AddDimension(Text("d"));
    EXPECT_EQ(&dimension.Region(), region);
    OmDimension::Node const child = dimension.Child(dimension.Root(), label, 0, false);
    EXPECT_EQ(static_cast<ForeignText*>(child.Value().Text())->region(), region);
}

TEST(OmPivotTable, CopiedDimensionIsDeepAndKeepsItsSize) {
    std::unique_ptr<OmPivotTable> source = TableOf("t");
    OmDimension& sex = source->AddDimension(Text("Sex"));
    sex.Child(sex.Child(sex.Root(), Text("Adults"), 9, true), Text("Male"), 0, false);
    sex.Child(sex.Root(), Text("Unknown"), 1, false);
    source->AddDimension(Text("Age"));

    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("first"));
    OmDimension& copy = table->AddDimension(sex);
    sex.Child(sex.Root(), Text("Later"), 2, false);
    EXPECT_EQ(copy.NumCategories(), 2);
    EXPECT_EQ(copy.Index(), 1);
    source.reset();
    EXPECT_EQ(Tree(copy), "Sex(Adults(Male) Unknown)");
    EXPECT_EQ(table->SizeVector(), (std::vector<int>{0, 2}));
}

TEST(OmPivotTable, AddDimensionPlacesNothingOnAnAxis) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(table->AddDimension(Text("d")));
    EXPECT_EQ(table->Rows().size() + table->Columns().size() + table->Layers().size(), 0U);
}

TEST(OmPivotTable, FindDimensionGivesTheFirstMatch) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    for (char const* const name : {"a", "b", "b", "c"}) {
        table->AddDimension(Text(name));
    }
    EXPECT_EQ(table->FindDimension(Text("b")), 1);
    EXPECT_EQ(table->FindDimension(Text("c")), 3);
    EXPECT_EQ(table->FindDimension(Text("B")), -1);
    EXPECT_EQ(TableOf("t")->FindDimension(Text("b")), -1);
}

// A search by `Compare` alone would take the first one.
TEST(OmPivotTable, FindDimensionAsksForTheLengthBeforeItCompares) {
    ForeignLog log;
    ForeignSpec longer{"longer", "x"};
    longer.length = 5;
    longer.compare = static_cast<short>(0);
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(ForeignText(log, longer));
    table->AddDimension(ForeignText(log, "same", "x"));
    ForeignText const probe(log, "probe", "x");
    log.Take();
    EXPECT_EQ(table->FindDimension(probe), 1);
    EXPECT_EQ(log.Take({"Compare"}), (Log{"same'': Compare(probe)"}));
}

TEST(OmPivotTable, DimensionNumberBelowZeroIsRefused) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    std::string const expected = "OmPivotTable::Dimension() -- which < 0, value 1 == -3, value 2 == 0";
    EXPECT_EQ(WhatOf([&] { table->Dimension(-3); }), expected);
    EXPECT_EQ(WhatOf([&] { std::as_const(*table).Dimension(-3); }), expected);
}

TEST(OmPivotTable, DimensionNumberPastTheLastIsRefused) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    table->AddDimension(Text("e"));
    EXPECT_EQ(WhatOf([&] { table->Dimension(1); }), "nothing thrown");
    std::string const message = "OmPivotTable::Dimension() -- which < NDimensions()";
    EXPECT_EQ(WhatOf([&] { table->Dimension(2); }), message + ", value 1 == 2, value 2 == 2");
    EXPECT_EQ(WhatOf([&] { std::as_const(*table).Dimension(7); }), message + ", value 1 == 7, value 2 == 2");
    EXPECT_EQ(WhatOf([] { TableOf("t")->Dimension(0); }), message + ", value 1 == 0, value 2 == 0");
}

TEST(OmPivotTable, SizeOutsideTheDimensionsIsRefused) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    EXPECT_EQ(WhatOf([&] { table->Size(-1); }), "OmPivotTable::Size() -- which < 0, value 1 == -1, value 2 == 0");
    EXPECT_EQ(WhatOf([&] { table->Size(1); }),
              "OmPivotTable::Size() -- which < NDimensions(), value 1 == 1, value 2 == 1");
}

TEST(OmPivotTable, SizeFollowsTheDimension) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    OmDimension& dimension = table->AddDimension(Text("d"));
    table->AddDimension(Text("e"));
    Fill(dimension, 3);
    dimension.Child(dimension.Root(), Text("group"), 9, true);
    EXPECT_EQ(table->Size(0), 3U);
    EXPECT_EQ(table->Size(1), 0U);
    OmDimension::Node first = dimension.Root().Child(0);
    dimension.Delete(first);
    EXPECT_EQ(table->Size(0), 3U); // the largest subscript left is 2
    EXPECT_EQ(table->SizeVector(), (std::vector<int>{3, 0}));
}

TEST(OmPivotTable, CopyDimensionsCopiesAllInOrder) {
    std::unique_ptr<OmPivotTable> source = TableOf("t");
    for (int k = 0; k < 3; ++k) {
        Fill(source->AddDimension(Text("d" + std::to_string(k))), k + 1);
    }
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->CopyDimensions(*source);
    source.reset();
    ASSERT_EQ(table->NDimensions(), 3U);
    EXPECT_EQ(Tree(table->Dimension(0)), "d0(0)");
    EXPECT_EQ(Tree(table->Dimension(2)), "d2(0 1 2)");
    EXPECT_EQ(table->SizeVector(), (std::vector<int>{1, 2, 3}));
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(table->Dimension(k).Index(), k);
    }
}

TEST(OmPivotTable, CopyDimensionsCopiesNothingElse) {
    std::unique_ptr<OmPivotTable> const source = TableOf("Warnings", true);
    Fill(source->AddDimension(Text("d")), 1);
    source->Rows()[0] = 0;
    source->Cell({0}, Text("cell"));
    source->OptionNumber(4);
    OmStringCell const caption("caption");
    source->Caption(&caption);
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->CopyDimensions(*source);
    EXPECT_TRUE(table->Rows().empty());
    EXPECT_EQ(omtest::CellsOf(*table), "");
    EXPECT_EQ(table->getNumCells(), 0);
    EXPECT_EQ(table->OptionNumber(), -1);
    EXPECT_EQ(table->Caption(), nullptr);
    EXPECT_FALSE(table->IsWarnings());
    EXPECT_FALSE(table->HasSplits());
}

// Both forms of adding visit the name; copying all dimensions leaves the names as they are.
TEST(OmPivotTable, CopyDimensionsVisitsNoName) {
    ForeignLog log;
    std::unique_ptr<OmPivotTable> const source = TableOf("t");
    OmDimension& dimension = source->AddDimension(ForeignText(log, "d"));
    EXPECT_EQ(log.Take({"Accept"}), (Log{"d'': Accept"}));
    std::unique_ptr<OmPivotTable> const copies = TableOf("t");
    copies->CopyDimensions(*source);
    EXPECT_EQ(log.Take({"Accept"}), Log());
    copies->AddDimension(dimension);
    EXPECT_EQ(log.Take({"Accept"}), (Log{"d''': Accept"}));
}

TEST(OmPivotTable, CopyDimensionsIntoATableWithDimensionsIsRefused) {
    std::unique_ptr<OmPivotTable> const source = TableOf("t");
    source->AddDimension(Text("s"));
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("a"));
    table->AddDimension(Text("b"));
    EXPECT_EQ(WhatOf([&] { table->CopyDimensions(*source); }),
              "OmPivotTable::CopyDimensions() -- _my->_dimensions.size() != 0, value 1 == 2, value 2 == 0");
    EXPECT_EQ(table->NDimensions(), 2U);
}

TEST(OmPivotTable, CopyDimensionsOfAnEmptyTableIsNothing) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->CopyDimensions(*TableOf("t"));
    table->CopyDimensions(*table);
    EXPECT_EQ(table->NDimensions(), 0U);
}

// --- axes ------------------------------------------------------------------------------------------------------------

TEST(OmPivotTable, WritingPastAnAxisFillsTheGap) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->Rows()[2] = 0;
    table->Columns()[0] = 1;
    table->Layers()[1] = 2;
    EXPECT_EQ(Entries(table->Rows()), (Axis{-1, -1, 0}));
    EXPECT_EQ(Entries(table->Columns()), (Axis{1}));
    EXPECT_EQ(Entries(table->Layers()), (Axis{-1, 2}));
}

TEST(OmPivotTable, ConstAxesAreTheSameAndReadAsGapsPastTheirEnd) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    OmPivotTable const& constTable = *table;
    EXPECT_EQ(&constTable.Rows(), &table->Rows());
    EXPECT_EQ(&constTable.Columns(), &table->Columns());
    EXPECT_EQ(&constTable.Layers(), &table->Layers());
    EXPECT_EQ(constTable.Rows()[5], -1);
    EXPECT_EQ(constTable.Columns()[0], -1);
    EXPECT_EQ(constTable.Layers()[9], -1);
    EXPECT_TRUE(table->Rows().empty());
}

TEST(OmPivotTable, EndTableRemovesGaps) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    for (int k = 0; k < 4; ++k) {
        table->AddDimension(Text("d"));
    }
    table->Layers()[1] = 3;
    table->Columns()[0] = 2;
    table->Columns()[2] = 0;
    table->Rows()[3] = 1;
    table->EndTable();
    EXPECT_EQ(Entries(table->Layers()), (Axis{3}));
    EXPECT_EQ(Entries(table->Columns()), (Axis{2, 0}));
    EXPECT_EQ(Entries(table->Rows()), (Axis{1}));
}

// Removing every gap first would leave one entry here and throw.
TEST(OmPivotTable, EndTableKeepsGapsWhileTheCountsAgree) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    table->AddDimension(Text("e"));
    table->Rows()[1] = 0;
    table->EndTable();
    EXPECT_EQ(Entries(table->Rows()), (Axis{-1, 0}));
}

TEST(OmPivotTable, EndTableRefusesADimensionThatStandsOnNoAxis) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    table->AddDimension(Text("e"));
    table->AddDimension(Text("f"));
    table->Rows()[4] = 0;
    EXPECT_EQ(WhatOf([&] { table->EndTable(); }),
              "OmPivotTable::Data::ReindexAxis() -- ndim != nCount, value 1 == 3, value 2 == 1");
    EXPECT_EQ(Entries(table->Rows()), (Axis{0}));
    table->Columns()[0] = 1;
    table->Layers()[0] = 2;
    table->EndTable();
}

TEST(OmPivotTable, EndTableRefusesMoreEntriesThanDimensions) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    table->Rows()[0] = 0;
    table->Columns()[0] = 0;
    EXPECT_EQ(WhatOf([&] { table->EndTable(); }),
              "OmPivotTable::Data::ReindexAxis() -- ndim != nCount, value 1 == 1, value 2 == 2");
}

// A check that each dimension occurs once would refuse both.
TEST(OmPivotTable, EndTableCountsEntriesOnly) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    table->AddDimension(Text("e"));
    table->Rows()[0] = 0;
    table->Columns()[0] = 0;
    EXPECT_EQ(WhatOf([&] { table->EndTable(); }), "nothing thrown");
    table->Columns()[0] = 25;
    EXPECT_EQ(WhatOf([&] { table->EndTable(); }), "nothing thrown");
}

TEST(OmPivotTable, OnlyMinusOneIsAGap) {
    std::unique_ptr<OmPivotTable> const table = TableOf("t");
    table->AddDimension(Text("d"));
    table->Rows()[0] = -2;
    table->Columns()[0] = -1;
    table->EndTable();
    EXPECT_EQ(Entries(table->Rows()), (Axis{-2}));
    EXPECT_TRUE(table->Columns().empty());
}

TEST(OmPivotTable, EndTableOfAnEmptyTableIsNothing) {
    EXPECT_EQ(WhatOf([] { TableOf("t")->EndTable(); }), "nothing thrown");
}

} // namespace
