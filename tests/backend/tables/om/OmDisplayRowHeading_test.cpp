#include "backend/tables/om/OmDisplayRowHeading.h"

#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;
using omtest::Texts;

namespace {

using ConstNode = OmDisplayRowHeading::ConstNode;
using Index = std::vector<int>;
using Lines = std::vector<std::string>;
using Numbers = std::vector<unsigned long long>;

constexpr int Least = std::numeric_limits<int>::min();
constexpr int Most = std::numeric_limits<int>::max();

class RowHeading : public ::testing::Test {
protected:
    OmDisplayRowHeading& Build(bool skipEmpty, bool dimNamesInCorner) {
        layers = std::make_unique<OmDisplayLayerHeading>(sketch.table, false);
        rows = std::make_unique<OmDisplayRowHeading>(*layers, skipEmpty, dimNamesInCorner);
        return *rows;
    }

    /// Two row dimensions, the outer one A (three heading columns with its name) and the inner one B (two).
    void TwoDimensions() {
        sketch.Dimension("A", "G(a0) a1");
        sketch.Dimension("B", "b0 b1");
        sketch.Rows({1, 0});
        sketch.table.CornerText(&corner);
    }

    Lines AllRows() const {
        Lines lines;
        for (int r = 0; r < rows->NRows(); ++r) {
            lines.push_back(Labels(rows->Row(r)));
        }
        return lines;
    }

    OmStringCell corner{"corner"};
    TableSketch sketch;
    std::unique_ptr<OmDisplayLayerHeading> layers;
    std::unique_ptr<OmDisplayRowHeading> rows;
};

} // namespace

// --- the column heading turned by a quarter --------------------------------------------------------------------------

TEST_F(RowHeading, TableWithoutRowDimensionsHasOneRowAndNoHeadingColumn) {
    Build(false, false);
    EXPECT_EQ(rows->NDimensions(), 0);
    EXPECT_EQ(rows->NRows(), 1);
    EXPECT_EQ(rows->NColumns(), 0);
    EXPECT_TRUE(rows->Row(0).empty());
    EXPECT_TRUE(rows->Column(0).empty());
    EXPECT_TRUE(rows->RowCategories(0).empty());
}

// The usual order would be that of the axis.
TEST_F(RowHeading, LastDimensionOfTheAxisIsOutermost) {
    TwoDimensions();
    Build(false, false);
    EXPECT_EQ(rows->NDimensions(), 2);
    EXPECT_EQ(rows->getDimensionIndex(0), 0);
    EXPECT_EQ(rows->getDimensionIndex(1), 1);
    EXPECT_EQ(rows->VisibleWidth(0), 3);
    EXPECT_EQ(rows->VisibleWidth(1), 2);
    EXPECT_EQ(rows->NRows(), 4);
    EXPECT_EQ(rows->NColumns(), 5);
    EXPECT_EQ(AllRows(), (Lines{"A G a0 B b0", "A G a0 B b1", "A a1 . B b0", "A a1 . B b1"}));
}

TEST_F(RowHeading, ColumnsListOneHeadingColumnOfEveryRow) {
    TwoDimensions();
    Build(false, false);
    EXPECT_EQ(Labels(rows->Column(1)), "G G a1 a1");
    EXPECT_EQ(Labels(rows->Column(2)), "a0 a0 . .");
    EXPECT_EQ(Labels(rows->Column(4)), "b0 b1 b0 b1");
}

TEST_F(RowHeading, CategoriesAreTheLeavesInHeadingOrder) {
    TwoDimensions();
    Build(false, true);
    EXPECT_EQ(Labels(rows->RowCategories(2)), "a1 b0");
}

TEST_F(RowHeading, NodeListsAppendAndLeaveNothingOut) {
    TwoDimensions();
    sketch.table.Dimension(0).Root().Value().Hide(true);
    OmDisplayRowHeading const& heading = Build(false, true);
    std::vector<ConstNode*> dimensions{nullptr};
    std::vector<ConstNode*> categories;
    heading.DimCatNodes(1, dimensions, categories);
    EXPECT_EQ(Labels(dimensions), ". A B");
    EXPECT_EQ(Labels(categories), "a0 b1");
    heading.DimAllNodes(1, categories);
    EXPECT_EQ(Labels(categories), "a0 b1 A G a0 B b1");
}

TEST_F(RowHeading, FillWritesTheRowDimensionsAndLeavesTheOthers) {
    TwoDimensions();
    sketch.Dimension("C", "c0");
    OmDisplayRowHeading const& heading = Build(false, false);
    Index index{7, 7, 7, 7};
    heading.Fill(index, 3);
    EXPECT_EQ(index, (Index{1, 1, 7}));
}

TEST_F(RowHeading, TableAndFlagsAreThoseOfTheConstructor) {
    TwoDimensions();
    Build(true, false);
    EXPECT_EQ(&rows->Table(), &sketch.table);
    EXPECT_TRUE(rows->SkipEmpty());
    EXPECT_FALSE(rows->DimNamesInCorner());
    Build(false, true);
    EXPECT_FALSE(rows->SkipEmpty());
    EXPECT_TRUE(rows->DimNamesInCorner());
}

TEST_F(RowHeading, WithoutSkippingTheListHoldsEveryRowAndIsFilledOnce) {
    TwoDimensions();
    OmDisplayRowHeading const& heading = Build(false, false);
    Numbers const& list = heading.getNonEmptyRows();
    EXPECT_EQ(list, (Numbers{0, 1, 2, 3}));
    unsigned long long const* const elements = list.data();
    EXPECT_EQ(&heading.getNonEmptyRows(), &list);
    EXPECT_EQ(heading.getNonEmptyRows().data(), elements);
}

TEST_F(RowHeading, ArgumentsOutOfRangeAreHarmless) {
    sketch.Dimension("A", "a0 a1");
    sketch.Rows({0});
    Build(false, false);
    for (int const n : {2, Most, -1, Least}) {
        EXPECT_TRUE(rows->Column(n).empty()) << n;
        EXPECT_EQ(rows->VisibleWidth(n), 0) << n;
        EXPECT_EQ(rows->getDimensionIndex(n), -1) << n;
        EXPECT_EQ(Labels(rows->Row(n)), ". .") << n;
        EXPECT_EQ(Labels(rows->RowCategories(n)), ".") << n;
    }
}

TEST_F(RowHeading, GapOnTheAxisCountsAsADimensionButTakesNoColumn) {
    sketch.Dimension("A", "a0 a1");
    sketch.Rows({0, -1});
    sketch.table.CornerText(&corner);
    Build(false, true);
    EXPECT_EQ(rows->NDimensions(), 2);
    EXPECT_EQ(AllRows(), (Lines{"a0", "a1"}));
    EXPECT_EQ(Texts(rows->CornerText()), "A");
}

// --- skipping --------------------------------------------------------------------------------------------------------

TEST_F(RowHeading, RowNumbersArePlacesAmongTheShown) {
    sketch.Dimension("R", "a b G(c) d");
    sketch.FlatDimension("C", 2);
    sketch.Rows({0}).Columns({1});
    sketch.Put({1, 0}).Put({3, 1});
    Build(true, false);
    EXPECT_EQ(rows->getNonEmptyRows(), (Numbers{1, 3}));
    EXPECT_EQ(rows->NRows(), 2);
    EXPECT_EQ(AllRows(), (Lines{"R b", "R d"})); // nothing of the depth that the group would take
    EXPECT_EQ(Labels(rows->Column(1)), "b d");
    EXPECT_EQ(Labels(rows->RowCategories(1)), "d");
    Index index;
    rows->Fill(index, 1);
    EXPECT_EQ(index, (Index{3, 0}));
    EXPECT_EQ(Labels(rows->Row(2)), ". .");
}

TEST_F(RowHeading, NodeListsTakeANumberPastTheShownRowsAsItStands) {
    sketch.Dimension("R", "a b c d");
    sketch.Rows({0});
    sketch.Put({1}).Put({3});
    Build(true, false);
    std::vector<ConstNode*> nodes;
    for (int r = 0; r < 5; ++r) {
        rows->DimAllNodes(r, nodes);
    }
    EXPECT_EQ(Labels(nodes), "R b R d R c R d");
}

TEST_F(RowHeading, RowsOfTheCurrentLayerAreProbedAgainstTheColumns) {
    sketch.FlatDimension("R", 3);
    sketch.FlatDimension("C", 2);
    sketch.FlatDimension("L", 2);
    sketch.Rows({0}).Columns({1}).Layers({2});
    sketch.Put({0, 1, 1}).Put({1, 0, 0}).Put({2, 2, 1}); // the last one stands behind the columns
    OmDisplayLayerHeading over(sketch.table, false);
    over.SwitchLayer(1);
    EXPECT_EQ(OmDisplayRowHeading(over, true, false).getNonEmptyRows(), Numbers{0});
}

TEST_F(RowHeading, RowsOfASparseTableAreThoseOfTheCellsOfTheLayer) {
    sketch.FlatDimension("R", 3);
    sketch.FlatDimension("C", 500);
    sketch.FlatDimension("L", 2);
    sketch.Rows({0}).Columns({1}).Layers({2});
    sketch.Put({0, 1, 1}).Put({1, 0, 0}).Put({2, 600, 1});
    OmDisplayLayerHeading over(sketch.table, false);
    over.SwitchLayer(1);
    EXPECT_EQ(OmDisplayRowHeading(over, true, false).getNonEmptyRows(), (Numbers{0, 2}));
}

TEST_F(RowHeading, RowsOfADissolvedLayerAreNone) {
    sketch.FlatDimension("R", 2);
    OmDimension& dimension = sketch.FlatDimension("L", 2);
    sketch.Rows({0}).Layers({1});
    sketch.Put({0, 0}).Put({0, 1});
    TableSketch::Node second = TableSketch::At(dimension, {1});
    dimension.removeChild(second);
    OmDisplayLayerHeading over(sketch.table, false);
    over.SwitchLayer(1);
    EXPECT_EQ(OmDisplayRowHeading(over, true, false).NRows(), 0);
}

// --- names in the corner ---------------------------------------------------------------------------------------------

TEST_F(RowHeading, NamesInTheCornerFreeTheirHeadingColumns) {
    TwoDimensions();
    Build(false, true);
    EXPECT_EQ(rows->VisibleWidth(0), 2);
    EXPECT_EQ(rows->VisibleWidth(1), 1);
    EXPECT_EQ(rows->NColumns(), 3);
    EXPECT_EQ(AllRows(), (Lines{"G a0 b0", "G a0 b1", "a1 . b0", "a1 . b1"}));
    EXPECT_EQ(Texts(rows->CornerText()), "A . B");
}

TEST_F(RowHeading, NamesOfTheCornerAreTheLabelsOfTheTable) {
    TwoDimensions();
    Build(false, true);
    EXPECT_EQ(rows->CornerText()[0], &sketch.table.Dimension(0).Name());
    EXPECT_EQ(rows->CornerText()[2], &sketch.table.Dimension(1).Name());
}

// A hidden name takes no heading column, so there is none to give up.
TEST_F(RowHeading, HiddenNameGivesUpNoColumn) {
    TwoDimensions();
    sketch.table.Dimension(0).Root().Value().Hide(true);
    Build(false, true);
    EXPECT_EQ(rows->VisibleWidth(0), 2);
    EXPECT_EQ(rows->VisibleWidth(1), 1);
    EXPECT_EQ(Labels(rows->Row(0)), "G a0 b0");
    EXPECT_EQ(Texts(rows->CornerText()), ". . B");
}

// There is no heading column left to stand above.
TEST_F(RowHeading, NameOfADimensionOfWidthZeroIsDropped) {
    sketch.Dimension("A", "-a0 -a1");
    sketch.Dimension("B", "b0 b1");
    sketch.Rows({1, 0});
    sketch.table.CornerText(&corner);
    Build(false, true);
    EXPECT_EQ(rows->VisibleWidth(0), 0);
    EXPECT_EQ(rows->NColumns(), 1);
    EXPECT_EQ(AllRows(), (Lines{"b0", "b1", "b0", "b1"}));
    EXPECT_EQ(Texts(rows->CornerText()), "B");
}

// Without a name in place the table's own corner text takes it, beside a dropped name and a hidden one.
TEST_F(RowHeading, CornerTextStandsInWhenNoNameIsPlaced) {
    sketch.Dimension("A", "-a0");
    sketch.Dimension("-B", "H(b0)");
    sketch.Rows({1, 0});
    sketch.table.CornerText(&corner);
    Build(false, true);
    EXPECT_EQ(rows->VisibleWidth(0), 0);
    EXPECT_EQ(rows->VisibleWidth(1), 2);
    EXPECT_EQ(Texts(rows->CornerText()), "corner .");
}

TEST_F(RowHeading, CornerStaysEmptyWhenOnlyNamesTookWidth) {
    sketch.Dimension("A", "-a0");
    sketch.Rows({0});
    sketch.table.CornerText(&corner);
    Build(false, true);
    EXPECT_EQ(rows->NColumns(), 0);
    EXPECT_TRUE(rows->CornerText().empty());
}

TEST_F(RowHeading, NameThatHidesItsLabelsIsDropped) {
    TwoDimensions();
    sketch.table.Dimension(0).Root().Value().HideLabels(true);
    Build(false, true);
    EXPECT_EQ(rows->VisibleWidth(0), 0);
    EXPECT_EQ(Texts(rows->CornerText()), "B");
}

TEST_F(RowHeading, DimensionWithoutCategoriesPlacesNoName) {
    OmDimension& dimension = sketch.Dimension("A", "a0");
    sketch.Dimension("B", "b0");
    sketch.Rows({1, 0});
    sketch.table.CornerText(&corner);
    TableSketch::Node only = TableSketch::At(dimension, {0});
    dimension.Delete(only); // one position, no category
    Build(false, true);
    EXPECT_EQ(AllRows(), (Lines{"b0"}));
    EXPECT_EQ(Texts(rows->CornerText()), "B");
}

TEST_F(RowHeading, NamesAreThereAlthoughTheFirstRowIsSkipped) {
    TwoDimensions();
    sketch.Put({1, 1});
    Build(true, true);
    EXPECT_EQ(rows->getNonEmptyRows(), Numbers{3});
    EXPECT_EQ(AllRows(), (Lines{"a1 b1"}));
    EXPECT_EQ(Texts(rows->CornerText()), "A B");
}

// --- the table's corner text -----------------------------------------------------------------------------------------

TEST_F(RowHeading, WithoutNamesTheCornerTextStandsInFront) {
    TwoDimensions();
    Build(false, false);
    EXPECT_EQ(Texts(rows->CornerText()), "corner . . . .");
    OmPivotTable const& table = sketch.table;
    EXPECT_EQ(rows->CornerText()[0], table.CornerText());
}

TEST_F(RowHeading, WithoutHeadingColumnsTheCornerIsEmpty) {
    sketch.table.CornerText(&corner);
    Build(false, false);
    EXPECT_EQ(rows->NRows(), 1);
    EXPECT_TRUE(rows->CornerText().empty());
    Build(false, true);
    EXPECT_TRUE(rows->CornerText().empty());
}

TEST_F(RowHeading, CornerOfATableWithoutCornerTextIsAllNull) {
    TwoDimensions();
    sketch.table.CornerText(nullptr);
    Build(false, false);
    EXPECT_EQ(Texts(rows->CornerText()), ". . . . .");
}

// --- the corner when no row is shown ---------------------------------------------------------------------------------

// The names come from the first position of the axis; there is no first shown row to take them from.
TEST_F(RowHeading, NamesStayInTheCornerWhenNoRowIsShown) {
    TwoDimensions();
    Build(true, true);
    EXPECT_EQ(rows->NRows(), 0);
    EXPECT_EQ(rows->NColumns(), 3);
    EXPECT_EQ(Texts(rows->CornerText()), "A . B");
}

TEST_F(RowHeading, CornerWithoutNamesIsEmptyWhenNoRowIsShown) {
    TwoDimensions();
    Build(true, false);
    EXPECT_EQ(rows->NRows(), 0);
    EXPECT_EQ(rows->NColumns(), 5);
    EXPECT_TRUE(rows->CornerText().empty());
}

// Null entries without the corner text, which needs a row.
TEST_F(RowHeading, HiddenNamesLeaveNullEntriesWhenNoRowIsShown) {
    TwoDimensions();
    sketch.table.Dimension(0).Root().Value().Hide(true);
    sketch.table.Dimension(1).Root().Value().Hide(true);
    Build(true, true);
    EXPECT_EQ(rows->NRows(), 0);
    EXPECT_EQ(Texts(rows->CornerText()), ". . .");
}

TEST_F(RowHeading, CornerIsHandedOutAsACopy) {
    TwoDimensions();
    Build(false, false);
    std::vector<OmCellText const*> copy = rows->CornerText();
    copy.clear();
    EXPECT_EQ(rows->CornerText().size(), 5U);
}

// --- a whole table ---------------------------------------------------------------------------------------------------

TEST_F(RowHeading, ThreeHeadingsLayATableOutLayerByLayer) {
    sketch.Dimension("Sex", "Male Female");
    sketch.Dimension("Age", "Adult Child");
    sketch.Dimension("Class", "First Crew");
    sketch.Rows({0}).Columns({1}).Layers({2});
    sketch.Put({0, 0, 0}, "118").Put({1, 0, 0}, "4").Put({1, 1, 0}, "5").Put({0, 0, 1}, "670");
    OmDisplayLayerHeading over(sketch.table, true);
    Lines drawn;
    while (over.NextLayer()) {
        OmDisplayColumnHeading columns(over, true);
        OmDisplayRowHeading heading(over, true, true);
        drawn.push_back(Labels(over.Nodes(0)));
        drawn.push_back(Texts(heading.CornerText()) + " | " + Labels(columns.Row(columns.NRows() - 1)));
        for (int r = 0; r < heading.NRows(); ++r) {
            std::string line = Labels(heading.Row(r)) + " |";
            for (int c = 0; c < columns.NColumns(); ++c) {
                Index index;
                over.Fill(index);
                columns.Fill(index, c);
                heading.Fill(index, r);
                OmCellText const* const cell = sketch.table.Cell(index);
                line += " " + (cell != nullptr ? cell->AsString() : std::string("."));
            }
            drawn.push_back(line);
        }
    }
    EXPECT_EQ(drawn, (Lines{"Class First", "Sex | Adult Child", "Male | 118 .", "Female | 4 5", //
                            "Class Crew", "Sex | Adult", "Male | 670"}));
}
