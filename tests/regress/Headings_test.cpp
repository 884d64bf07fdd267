// Defects of the display headings that were found once.
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;

namespace {

using ConstNode = OmDisplayColumnHeading::ConstNode;
using Index = std::vector<int>;
using Numbers = std::vector<unsigned long long>;

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

// --- a layer heading that is gone
// -------------------------------------------------------------------------------------

// The headings over it read the display records, which died with it.
TEST(HeadingsOverADeadLayerHeading, ReportEachUseAndGiveNothing) {
    TableSketch sketch;
    sketch.Dimension("R", "r s");
    sketch.Dimension("C", "a b");
    sketch.Dimension("D", "c d");
    sketch.Rows({0}).Columns({1, 2}).Put({1, 1, 1});
    auto layers = std::make_unique<OmDisplayLayerHeading>(sketch.table, false);
    auto gone = std::make_unique<OmDisplayRowHeading>(*layers, false, false);
    OmDisplayColumnHeading columns(*layers, false);
    OmDisplayRowHeading rows(*layers, true, true);
    gone.reset();
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
    sketch.Columns({0, 1, 2}).Put({0, 0, 0, 0}).Put({2000000, 0, 2000000, 0}).Put({5, 0, 0, 0});
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
