// Defects of the display headings that were found once.
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;

namespace {

using ConstNode = OmDisplayColumnHeading::ConstNode;
using Index = std::vector<int>;
using Numbers = std::vector<unsigned long long>;

constexpr int Most = std::numeric_limits<int>::max();

/// Dimensions with the leaves `a` and `b`.
void AddPairs(TableSketch& sketch, int count) {
    for (int d = 0; d < count; ++d) {
        sketch.Dimension("D", "a b");
    }
}

/// One leaf, and the largest size there is.
void AddHugeDimension(TableSketch& sketch, std::string const& name, std::string const& leaf) {
    OmDimension& dimension = sketch.Dimension(name, leaf + " last=2147483646");
    TableSketch::Node doomed = dimension.AddNewChild(dimension.Root(), OmStringCell("doomed"), 0, false);
    dimension.Delete(doomed);
}

/// The dimensions' numbers, from `first` on.
std::vector<short> Axis(int first, int count) {
    std::vector<short> axis;
    for (int d = first; d < first + count; ++d) {
        axis.push_back(static_cast<short>(d));
    }
    return axis;
}

} // namespace

// --- a dimension that the layer heading does not know ----------------------------------------------------------------

// The headings over it looked the new dimension's display record up past the end of the list.
TEST(HeadingsOverAStaleLayerHeading, TakeADimensionAddedLaterForOneWithoutARecord) {
    TableSketch sketch;
    sketch.Dimension("R", "r s t");
    sketch.Dimension("C", "a b");
    sketch.Rows({0}).Columns({1}).Put({2, 1});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    sketch.Dimension("late", "k l m");
    sketch.Columns({2, 1});
    for (bool const skip : {false, true}) {
        OmDisplayColumnHeading columns(layers, skip);
        EXPECT_EQ(columns.NDimensions(), 2);
        EXPECT_EQ(columns.getDimensionIndex(1), 2);
        EXPECT_EQ(columns.VisibleHeight(1), 0);
        EXPECT_EQ(columns.NRows(), 2);
        EXPECT_EQ(columns.NColumns(), skip ? 1 : 2);
        EXPECT_EQ(Labels(columns.Column(skip ? 0 : 1)), "C b");
        EXPECT_EQ(Labels(columns.ColumnCategories(skip ? 0 : 1)), "b .");
        Index index{7};
        columns.Fill(index, skip ? 0 : 1);
        EXPECT_EQ(index, (Index{7, 1}));
        OmDisplayRowHeading rows(layers, skip, true);
        EXPECT_EQ(rows.NRows(), skip ? 1 : 3);
        EXPECT_EQ(Labels(rows.Row(skip ? 0 : 2)), "t");
    }
}

// The walk over the cells of a sparse table read its restrictions past their end.
TEST(HeadingsOverAStaleLayerHeading, WalkTheCellsOfATableWithADimensionAddedLater) {
    TableSketch sketch;
    sketch.FlatDimension("R", 100);
    sketch.FlatDimension("C", 100);
    sketch.Dimension("L", "d e");
    sketch.Rows({0}).Columns({1}).Layers({2}).Put({90, 7, 0}).Put({80, 9, 1});
    OmDisplayLayerHeading layers(sketch.table, true);
    layers.LastLayer();
    sketch.Dimension("late", "k l m");
    sketch.Layers({3, 2}).Put({81, 3, 1, 2});
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), (Numbers{3, 9}));
    EXPECT_EQ(OmDisplayRowHeading(layers, true, false).getNonEmptyRows(), (Numbers{80, 81}));
    EXPECT_FALSE(layers.NextLayer());
}

// Those built before go on with the dimensions that there were.
TEST(HeadingsOverAStaleLayerHeading, StayAsTheyAreWhenADimensionIsAdded) {
    TableSketch sketch;
    sketch.Dimension("R", "r s");
    sketch.Dimension("C", "a b");
    sketch.Dimension("L", "d e");
    sketch.Rows({0}).Columns({1}).Layers({2}).Put({1, 1, 1});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    OmDisplayColumnHeading columns(layers, false);
    OmDisplayRowHeading rows(layers, false, true);
    sketch.Dimension("late", "k l m");
    sketch.Columns({3, 1}).Layers({});
    EXPECT_EQ(columns.NColumns() + rows.NRows(), 4);
    EXPECT_EQ(Labels(columns.Column(1)) + Labels(rows.Row(1)), "C bs");
    EXPECT_EQ(Labels(columns.Row(1)) + Labels(rows.Column(0)), "a br s");
    ASSERT_TRUE(layers.NextLayer());
    EXPECT_FALSE(layers.NextLayer());
    EXPECT_EQ(Labels(layers.Nodes(0)), "L e");
    Index index(4, 7);
    layers.Fill(index);
    columns.Fill(index, 1);
    rows.Fill(index, 1);
    EXPECT_EQ(index, (Index{1, 1, 1}));
}

// --- a layer heading that is gone -----------------------------------------------------------------------------------

// The headings over it read the display records, which died with it.
TEST(HeadingsOverADeadLayerHeading, ReportEachUseAndGiveNothing) {
    TableSketch sketch;
    sketch.Dimension("R", "r s");
    sketch.Dimension("C", "a b");
    sketch.Dimension("D", "c d");
    sketch.Rows({0}).Columns({1, 2}).Put({1, 1, 1});
    auto layers = std::make_unique<OmDisplayLayerHeading>(sketch.table, false);
    auto first = std::make_unique<OmDisplayRowHeading>(*layers, false, false);
    auto second = std::make_unique<OmDisplayRowHeading>(*layers, false, false);
    OmDisplayColumnHeading columns(*layers, false);
    OmDisplayRowHeading rows(*layers, true, true);
    second.reset();
    first.reset();
    layers.reset();

    // What a heading keeps itself is still there.
    EXPECT_EQ(columns.NColumns() + rows.NRows(), 4 + 1);
    EXPECT_EQ(columns.NRows() + rows.NColumns(), 4 + 1);
    EXPECT_EQ(columns.NDimensions(), 2);
    EXPECT_EQ(columns.VisibleHeight(1), 2);
    EXPECT_EQ(columns.getDimensionIndex(0), 2);
    EXPECT_EQ(columns.getNonEmptyColumns().size(), 4U);
    EXPECT_EQ(Labels(std::vector<ConstNode*>()) + omtest::Texts(rows.CornerText()), "R");
    EXPECT_EQ(&columns.Table(), &sketch.table);

#if OMTREE_HARDENED
    omtest::AssertionCatcher caught(omtest::AfterReport::Return);
    EXPECT_EQ(Labels(columns.Column(0)), ". . . .");
    EXPECT_EQ(Labels(columns.ColumnCategories(0)), ". .");
    EXPECT_EQ(Labels(columns.Row(1)), "");
    EXPECT_EQ(Labels(rows.Row(0)), ".");
    EXPECT_EQ(Labels(rows.Column(0)), "");
    std::vector<ConstNode*> nodes;
    columns.DimAllNodes(1, nodes);
    columns.DimCatNodes(1, nodes, nodes);
    EXPECT_TRUE(nodes.empty());
    for (std::size_t const length : {std::size_t{3}, std::size_t{1}}) {
        Index index(length, 7);
        columns.Fill(index, 0);
        rows.Fill(index, 0);
        EXPECT_EQ(index, Index(length, 7));
    }
    ASSERT_EQ(caught.Failures().size(), 11U);
    for (omtest::AssertionCatcher::Failure const& failure : caught.Failures()) {
        EXPECT_EQ(failure.source + ": " + failure.condition, "backend/tables/om/detail/HeadingLayout: _layers != 0");
    }
#endif
}

// --- axes of more positions than anyone could visit ------------------------------------------------------------------
// A step for each of their positions would take centuries, so ending at all is what these ask for.

// Any size of 0 makes a table a dense one, however few cells there are.
TEST(HeadingsOfLongAxes, AreSkippedWhereAnotherDimensionHasNoCategories) {
    TableSketch sketch;
    for (int d = 0; d < 41; ++d) {
        sketch.Dimension("D", "a b c");
    }
    sketch.Dimension("none");
    sketch.Columns(Axis(1, 37)).Rows({0}).Put(Index(42, 0));
    Index second(42, 0);
    second[1] = second[2] = 2;
    second[0] = 1;
    sketch.Put(second);
    OmDisplayLayerHeading layers(sketch.table, true);
    layers.NextLayer();
    OmDisplayColumnHeading columns(layers, true);
    EXPECT_EQ(columns.getNonEmptyColumns(), (Numbers{0, 2 + 3 * 2}));
    EXPECT_EQ(Labels(columns.ColumnCategories(1)).substr(68), "a c c");
    EXPECT_EQ(OmDisplayRowHeading(layers, true, false).getNonEmptyRows(), (Numbers{0, 1}));

    sketch.Rows({});
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), (Numbers{0}));

    // The layers are as many, and looked for in the same way.
    sketch.Columns({0}).Layers(Axis(1, 37));
    OmDisplayLayerHeading over(sketch.table, true);
    over.LastLayer();
    EXPECT_EQ(over.getLayer(), 1);
    EXPECT_EQ(over.getCurrentCellIndex()[1], 2);
}

// Positions without a shown category took no look-up, so none was ever left over for the walk.
TEST(HeadingsOfLongAxes, AreSkippedWhereNextToNothingIsShown) {
    TableSketch sketch;
    for (int d = 0; d < 3; ++d) {
        OmDimension& dimension = sketch.Dimension("D", "a b=2000000");
        TableSketch::Node doomed = dimension.AddNewChild(dimension.Root(), OmStringCell("doomed"), 0, false);
        dimension.Delete(doomed);
        ASSERT_EQ(dimension.NumCategories(), 2000001);
    }
    sketch.Dimension("none");
    sketch.Columns({0, 1, 2}).Put({0, 0, 0, 0}).Put({2000000, 0, 2000000, 0});
    for (int k = 1; k < 20; ++k) { // more than there are shown positions
        sketch.Put({k, 0, 0, 0});
    }
    OmDisplayLayerHeading layers(sketch.table, false);
    constexpr unsigned long long Size = 2000001;
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), (Numbers{0, Size * Size + 1}));
}

// A dimension on both axes is the other axis's alone: its digits along this one do not matter as long as they show a
// category. Nor does the first of two entries that name one dimension.
TEST(HeadingsOfLongAxes, ListEveryPositionThatACellIsFoundFrom) {
    TableSketch sketch;
    sketch.FlatDimension("C", 2000);
    sketch.Dimension("R", "r s t=1");
    sketch.Dimension("none");
    sketch.Columns({0, 0}).Rows({1}).Put({1500, 1, 0});
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading const columns(layers, true);
    ASSERT_EQ(columns.NColumns(), 2000);
    EXPECT_EQ(columns.getNonEmptyColumns()[0], 1500U);
    EXPECT_EQ(columns.getNonEmptyColumns()[1999], 1999U * 2000 + 1500);

    sketch.Columns({1, 0}).Rows({1});
    OmDisplayLayerHeading again(sketch.table, false);
    EXPECT_EQ(OmDisplayColumnHeading(again, true).getNonEmptyColumns(), (Numbers{4500, 4501, 4502}));
    EXPECT_EQ(OmDisplayRowHeading(again, true, false).NRows(), 3);
}

// A dimension that stands on an axis sixty-two times leaves the last time alone to decide.
TEST(HeadingsOfLongAxes, RefuseMorePositionsThanAListCanHold) {
    TableSketch sketch;
    AddPairs(sketch, 1);
    sketch.Dimension("none");
    sketch.Put({1, 0});
    sketch.Columns(std::vector<short>(10, 0));
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).NColumns(), 512);
    for (std::size_t const entries : {62U, 63U, 64U, 65U, 200U}) {
        sketch.Columns(std::vector<short>(entries, 0));
        EXPECT_THROW(OmDisplayColumnHeading(layers, true), std::length_error) << entries;
    }
    sketch.Columns({}).Layers(std::vector<short>(62, 0));
    EXPECT_THROW(OmDisplayLayerHeading(sketch.table, true), std::length_error);
}

// Numbers that do not fit into 64 bits wrap, as those of the walk over a sparse table do.
TEST(HeadingsOfLongAxes, WrapBeyondSixtyFourBitsWhereAnotherDimensionHasNoCategories) {
    TableSketch sketch;
    AddPairs(sketch, 64);
    sketch.Dimension("C", "a b=0 c=5");
    sketch.Dimension("none");
    Index cell(66, 1);
    cell[64] = cell[65] = 0;
    sketch.Put(cell).Columns(Axis(0, 65));
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), Numbers{~0ULL});
    sketch.Columns(Axis(0, 64));
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), Numbers{~0ULL});
}

// Two leaves with one subscript are two positions, both of which find its cells.
TEST(HeadingsOfLongAxes, ListEachOfSeveralLeavesWithOneSubscript) {
    TableSketch sketch;
    sketch.Dimension("C", "a b=0 c=5 d=4 e=0");
    sketch.FlatDimension("D", 3000);
    sketch.Dimension("none");
    sketch.Columns({1, 0}).Put({0, 2999, 0}).Put({4, 7, 0}).Put({3, 7, 0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(),
              (Numbers{2999, 3000 + 2999, 3 * 3000 + 7, 4 * 3000 + 2999}));
}

// --- lines and heights of large headings -----------------------------------------------------------------------------

// Each position climbed its whole path again: 40 lines took 4 * 10^11 steps.
TEST(LinesOfDeepHeadings, CostTheNodesOfTheTree) {
    constexpr int Teeth = 100000;
    TableSketch sketch;
    OmDimension& comb = sketch.Dimension("C");
    TableSketch::Node node = comb.Root();
    for (int k = 0; k < Teeth; ++k) {
        comb.AddNewChild(node, OmStringCell("leaf"), static_cast<unsigned long long>(k), false);
        node = comb.AddNewChild(node, OmStringCell("group"), OmDimensionNode::NoSubscript, true);
    }
    sketch.Columns({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading columns(layers, false);
    ASSERT_EQ(columns.NRows(), Teeth + 1);
    for (int line = 1; line <= 40; ++line) {
        std::deque<ConstNode*> const nodes = columns.Row(Teeth / 40 * line);
        ASSERT_EQ(nodes.size(), static_cast<std::size_t>(Teeth));
        ASSERT_EQ(nodes[0] == nullptr, line > 0);
        ASSERT_EQ(nodes[Teeth - 1]->Depth(), static_cast<unsigned int>(Teeth / 40 * line));
    }
}

// Every dimension took the digits of every position for itself: 10^11 steps.
TEST(HeightsOfManyDimensions, TakeTheDigitsOfAPositionOnce) {
    constexpr int Dimensions = 8000;
    constexpr int Positions = 1500;
    TableSketch sketch;
    sketch.FlatDimension("C", Positions);
    for (int d = 1; d < Dimensions; ++d) {
        // The second leaf, which would need a line more, lies past the size: no height is as large as it could be.
        OmDimension& dimension = sketch.Dimension("D", "a G(b)");
        TableSketch::Node doomed = dimension.AddNewChild(dimension.Root(), OmStringCell("doomed"), 0, false);
        TableSketch::At(dimension, {1, 0}).Value().Subscript(0);
        dimension.Delete(doomed);
    }
    sketch.Columns(Axis(0, Dimensions));
    Index index(Dimensions, 0);
    for (index[0] = 0; index[0] < Positions; ++index[0]) {
        sketch.Put(index);
    }
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading columns(layers, true);
    EXPECT_EQ(columns.NColumns(), Positions);
    EXPECT_EQ(columns.NRows(), 2 * Dimensions);
}

// --- the largest numbers ---------------------------------------------------------------------------------------------

TEST(HeadingsAtTheLargestInt, NoLayerComesAfterOneRestoredThere) {
    TableSketch sketch;
    sketch.Dimension("L", "d e");
    sketch.Layers({0}).Put({0}).Put({1});
    sketch.table.setLayerLoc(Most);
    for (bool const skip : {false, true}) {
        OmDisplayLayerHeading layers(sketch.table, skip);
        EXPECT_EQ(layers.restoreLayer(), Most);
        EXPECT_FALSE(layers.NextLayer());
        EXPECT_EQ(layers.getLayer(), Most);
        EXPECT_EQ(Labels(layers.Nodes(0)), "");
        Index index{5};
        layers.Fill(index);
        EXPECT_EQ(index, Index{5});
        layers.LastLayer();
        EXPECT_EQ(layers.getLayer(), 1);
    }
}

TEST(HeadingsAtTheLargestInt, LastLayerIsTheLastThatCanBeNamed) {
    TableSketch sketch;
    AddPairs(sketch, 32);
    sketch.Layers(Axis(0, 32));
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.LastLayer();
    EXPECT_EQ(layers.getLayer(), Most);
    Index expected(32, 1);
    expected[31] = 0;
    EXPECT_EQ(layers.getCurrentCellIndex(), expected);
    EXPECT_FALSE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), Most);
}

TEST(HeadingsAtTheLargestInt, CountsOfPositionsStopThere) {
    TableSketch sketch;
    AddPairs(sketch, 63);
    sketch.Columns(Axis(0, 32)).Rows(Axis(0, 63));
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading columns(layers, false);
    OmDisplayRowHeading rows(layers, false, false);
    EXPECT_EQ(columns.NColumns(), Most);
    EXPECT_EQ(rows.NRows(), Most);
    EXPECT_EQ(Labels(columns.Column(Most)).substr(0, 12), "D a D b D b ");
    Index index;
    rows.Fill(index, Most);
    EXPECT_EQ(index[30] * 10 + index[31], 10);
    EXPECT_THROW(rows.getNonEmptyRows(), std::length_error);
}

// What is left for the outermost dimension may be more than a digit holds. Its low half, 4, would show a category.
TEST(HeadingsAtTheLargestInt, OversizedFirstDigitShowsNothing) {
    TableSketch sketch;
    AddHugeDimension(sketch, "I", "a");
    sketch.Dimension("O", "a b c d e f");
    sketch.Columns({0, 1});
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading columns(layers, false);
    EXPECT_EQ(columns.NColumns(), Most);
    EXPECT_EQ(Labels(columns.ColumnCategories(-4)), ". a");
    EXPECT_EQ(Labels(columns.Column(-4)), ". . I a");
    std::vector<ConstNode*> nodes;
    columns.DimAllNodes(-4, nodes);
    EXPECT_EQ(Labels(nodes), "I a");
    Index index{7, 7};
    columns.Fill(index, -4);
    EXPECT_EQ(index, (Index{0, 7}));
    for (int const c : {-1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(Labels(columns.ColumnCategories(c)), ". .");
        columns.Fill(index, c);
        EXPECT_EQ(index, (Index{0, 7}));
    }
}

TEST(HeadingsAtTheLargestInt, SizeBelowZeroIsKeptByTheVectorAlone) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("D", "a=4294967294");
    TableSketch::Node doomed = dimension.AddNewChild(dimension.Root(), OmStringCell("doomed"), 0, false);
    dimension.Delete(doomed);
    EXPECT_EQ(sketch.table.SizeVector(), Index{-1});
    EXPECT_EQ(sketch.table.Size(0), 0U);
}

// Behind the first of them there is no position but 0, and the others do not change that.
TEST(HeadingsAtTheLargestInt, DimensionsWithoutCategoriesLeaveNoDigitsToLargeNumbers) {
    TableSketch sketch;
    sketch.Dimension("D");
    sketch.Dimension("E");
    sketch.Dimension("F", "a b");
    sketch.Columns({0, 1, 2});
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading columns(layers, false);
    EXPECT_EQ(columns.NColumns(), 0);
    EXPECT_EQ(Labels(columns.ColumnCategories(0)), "a . .");
    for (int const c : {-1, 1, 2, Most}) {
        EXPECT_EQ(Labels(columns.ColumnCategories(c)), ". . .");
        Index index(3, 7);
        columns.Fill(index, c);
        EXPECT_EQ(index, Index(3, 7));
    }
}

// --- many dimensions -------------------------------------------------------------------------------------------------

// Their number of possible cells does not fit into 64 bits, and is 0 there: the table is a sparse one all the same.
TEST(HeadingsOfManyDimensions, GoOnBeyondSixtyFourBits) {
    TableSketch sketch;
    AddPairs(sketch, 64);
    sketch.Columns(Axis(0, 64)).Put(Index(64, 1)).Put(Index(64, 0));
    OmDisplayLayerHeading layers(sketch.table, true);
    ASSERT_TRUE(layers.NextLayer());
    EXPECT_EQ(OmDisplayColumnHeading(layers, false).NColumns(), 0);
    OmDisplayColumnHeading columns(layers, true);
    EXPECT_EQ(columns.getNonEmptyColumns(), (Numbers{0, ~0ULL}));
    EXPECT_EQ(columns.Column(1).size(), 128U);
    EXPECT_EQ(columns.ColumnCategories(1)[63]->Value().Text()->AsString(), "b");
    EXPECT_EQ(Labels(columns.Row(127)), "a b");
    Index index;
    columns.Fill(index, 1);
    EXPECT_EQ(index, Index(64, 1));
}

// Digits of more than eight dimensions do not stand in the object.
TEST(HeadingsOfManyDimensions, FillABodyFromLongAxes) {
    TableSketch sketch;
    AddPairs(sketch, 30);
    sketch.Layers(Axis(0, 9)).Columns(Axis(9, 10)).Rows(Axis(19, 11));
    for (int seed = 1; seed < 6; ++seed) {
        Index index(30);
        for (int d = 0; d < 30; ++d) {
            index[static_cast<std::size_t>(d)] = d * d / seed % 2;
        }
        sketch.Put(index, std::to_string(seed));
    }
    for (bool const skip : {false, true}) {
        std::string found;
        OmDisplayLayerHeading layers(sketch.table, skip);
        while (layers.NextLayer()) {
            OmDisplayColumnHeading columns(layers, true);
            OmDisplayRowHeading rows(layers, true, true);
            for (int r = 0; r < rows.NRows(); ++r) {
                for (int c = 0; c < columns.NColumns(); ++c) {
                    Index index;
                    layers.Fill(index);
                    columns.Fill(index, c);
                    rows.Fill(index, r);
                    OmPivotTable const& table = sketch.table;
                    OmCellText const* const cell = table.Cell(index);
                    found += cell != nullptr ? cell->AsString() : "";
                    ASSERT_EQ(Labels(columns.ColumnCategories(c))[0], "ab"[index[18]]);
                    ASSERT_EQ(Labels(rows.Row(r)).back(), "ab"[index[19]]);
                    ASSERT_EQ(layers.Nodes(8).back()->Value().Text()->AsString()[0], "ab"[index[0]]);
                }
            }
        }
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, "12345");
    }
}

TEST(HeadingsOfOddAxes, TakeRepeatedAndMissingDimensionsAsTheyStand) {
    TableSketch sketch;
    sketch.Dimension("L", "d e f");
    sketch.Layers({0, -1, 77, -7, 0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(layers.NDimensions(), 5);
    EXPECT_EQ(layers.getDimensionIndex(1), -7);
    EXPECT_EQ(layers.getDimensionIndex(2), 77);
    EXPECT_EQ(layers.VisibleWidth(2) + layers.VisibleWidth(-1) + layers.VisibleWidth(Most), 0);
    EXPECT_EQ(layers.getDimensionIndex(-1) + layers.getDimensionIndex(Most), -2);
    layers.LastLayer();
    EXPECT_EQ(layers.getLayer(), 8);
    ASSERT_TRUE(layers.SwitchLayer(5));
    EXPECT_EQ(Labels(layers.Nodes(0)), "L e");
    EXPECT_EQ(Labels(layers.Nodes(4)), "L f");
    EXPECT_EQ(Labels(layers.Nodes(2)), "");
    EXPECT_EQ(layers.getCurrentCellIndex(), Index{2});
    sketch.Put({1});
    OmDisplayLayerHeading skipping(sketch.table, true);
    std::string nonEmpty;
    while (skipping.NextLayer()) {
        nonEmpty += Labels(skipping.Nodes(0)) + "/" + Labels(skipping.Nodes(4)) + " ";
    }
    EXPECT_EQ(nonEmpty, "L d/L e L e/L e L f/L e ");
}

// --- flags, vectors and texts of the caller --------------------------------------------------------------------------

// A heading has the lines that it had when it was built, whatever is shown later.
TEST(HeadingsWhoseFlagsChange, CutTheLabelsToTheirLines) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("C", "G(-a)");
    sketch.Dimension("-R", "-r s");
    sketch.Columns({1, 0}).Rows({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading columns(layers, false);
    OmDisplayRowHeading rows(layers, false, true);
    ASSERT_EQ(Labels(columns.Column(0)), "C G .");
    TableSketch::At(dimension, {0, 0}).Value().Hide(false);
    EXPECT_EQ(Labels(columns.Column(0)), "C G .");
    EXPECT_EQ(Labels(columns.Column(1)), "C G s");
    EXPECT_EQ(Labels(columns.Row(1)), "G G");
    EXPECT_EQ(Labels(columns.Row(2)), ". s");
    EXPECT_EQ(Labels(rows.Row(0)), "G");
    TableSketch::At(dimension, {0}).Value().Hide(true);
    EXPECT_EQ(Labels(columns.Column(0)), "C a .");
    EXPECT_EQ(Labels(columns.Row(1)), "a a");
    TableSketch::At(dimension, {0, 0}).Value().Hide(true);
    EXPECT_EQ(Labels(columns.Column(0)), "C . .");
    EXPECT_EQ(Labels(columns.Row(1)), ". .");
}

TEST(HeadingsAskedWithOneVectorTwice, AppendToItInTurn) {
    TableSketch sketch;
    sketch.Dimension("C", "a b");
    sketch.Dimension("D", "G(c d)");
    sketch.Columns({0}).Rows({0, 1}).Layers({1});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    OmDisplayRowHeading const rows(layers, false, false);
    std::vector<ConstNode*> nodes;
    rows.DimCatNodes(1, nodes, nodes);
    EXPECT_EQ(Labels(nodes), "D c C b");
    layers.DimAllNodes(0, nodes);
    layers.DimAllNodes(0, nodes);
    EXPECT_EQ(Labels(nodes), "D c C b D G c D G c");
    ConstNode* node = nullptr;
    layers.DimCatNodes(0, node, node);
    EXPECT_EQ(node->Value().Text()->AsString(), "c");
}

// A text of a program's own kind may call back; the headings call none.
TEST(HeadingsOverForeignTexts, AskThemNothing) {
    omtest::ForeignLog log;
    OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
    OmDimension& dimension = table.AddDimension(omtest::ForeignText(log, "name"));
    dimension.AddNewChild(dimension.Root(), omtest::ForeignText(log, "leaf"), 0, false);
    omtest::ForeignText const corner(log, "corner");
    table.CornerText(&corner);
    table.Rows().push_back(0);
    table.Cell({0}, omtest::ForeignText(log, "cell"));
    log.Take();
    for (bool const names : {false, true}) {
        OmDisplayLayerHeading layers(table, true);
        layers.NextLayer();
        OmDisplayColumnHeading columns(layers, true);
        OmDisplayRowHeading rows(layers, true, names);
        std::vector<OmCellText const*> const texts = rows.CornerText();
        OmCellText const* const inCorner = names ? &dimension.Name() : table.CornerText();
        ASSERT_EQ(texts.size(), names ? 1U : 2U);
        EXPECT_EQ(texts[0], inCorner);
        EXPECT_EQ(rows.Row(0).size() + columns.Column(0).size(), names ? 1U : 2U);
    }
    EXPECT_EQ(log.Take(), std::vector<std::string>());
}
