// Columns that hold a cell in the current layer, and the two ways to find them: probing every position of the rows, or
// walking over the cells of a table in which fewer than one possible cell in a hundred is present. Which way is taken
// shows in cells whose subscripts lie outside of the dimensions' sizes.
#include "backend/tables/om/OmDisplayColumnHeading.h"

#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;

namespace {

using ConstNode = OmDisplayColumnHeading::ConstNode;
using Index = std::vector<int>;
using Lines = std::vector<std::string>;
using Numbers = std::vector<unsigned long long>;

constexpr int Most = std::numeric_limits<int>::max();

/// Rows (dimension 0), columns (1) and layers (2); the cells decide how full the table is.
class SkippingColumns : public ::testing::Test {
protected:
    void Build(std::string const& columnCategories, int rows = 2, std::string const& layerCategories = "l0 l1 l2") {
        sketch.FlatDimension("R", rows);
        sketch.Dimension("C", columnCategories);
        sketch.Dimension("L", layerCategories);
        sketch.Rows({0}).Columns({1}).Layers({2});
    }

    /// The list of a heading that skips, built now over a new layer heading switched to `layer`.
    Numbers NonEmpty(int layer) {
        layers = std::make_unique<OmDisplayLayerHeading>(sketch.table, false);
        layers->SwitchLayer(layer);
        columns = std::make_unique<OmDisplayColumnHeading>(*layers, true);
        return columns->getNonEmptyColumns();
    }

    TableSketch sketch;
    std::unique_ptr<OmDisplayLayerHeading> layers;
    std::unique_ptr<OmDisplayColumnHeading> columns;
};

constexpr int Dense = 2;    ///< rows of a table that any of the tests fills to more than one per cent
constexpr int Sparse = 999; ///< and of one that it does not

} // namespace

// --- both ways -------------------------------------------------------------------------------------------------------

TEST_F(SkippingColumns, OnlyColumnsWithACellInTheCurrentLayerAreShown) {
    for (int const rows : {Dense, Sparse}) {
        SCOPED_TRACE(rows);
        TableSketch table;
        table.FlatDimension("R", rows);
        table.Dimension("C", "a b c d");
        table.Dimension("L", "l0 l1 l2");
        table.Rows({0}).Columns({1}).Layers({2});
        table.Put({1, 3, 1}).Put({0, 1, 1}).Put({1, 1, 1}).Put({0, 0, 0});
        OmDisplayLayerHeading over(table.table, false);
        over.SwitchLayer(1);
        OmDisplayColumnHeading const heading(over, true);
        EXPECT_EQ(heading.getNonEmptyColumns(), (Numbers{1, 3}));
        EXPECT_EQ(heading.NColumns(), 2);
    }
}

TEST_F(SkippingColumns, LayerWithoutACellHasNoColumn) {
    for (int const rows : {Dense, Sparse}) {
        SCOPED_TRACE(rows);
        TableSketch table;
        table.FlatDimension("R", rows);
        table.Dimension("C", "a G(b)");
        table.Dimension("L", "l0 l1");
        table.Rows({0}).Columns({1}).Layers({2});
        table.Put({1, 1, 0});
        OmDisplayLayerHeading over(table.table, false);
        over.SwitchLayer(1);
        OmDisplayColumnHeading heading(over, true);
        EXPECT_EQ(heading.NColumns(), 0);
        EXPECT_EQ(heading.NRows(), 3); // heights as if nothing was skipped
        for (int const r : {0, 1, 2}) {
            EXPECT_TRUE(heading.Row(r).empty());
        }
        EXPECT_EQ(Labels(heading.Column(0)), ". . .");
    }
}

TEST_F(SkippingColumns, TableWithoutColumnDimensionsShowsItsColumnOnlyWithACell) {
    sketch.FlatDimension("R", 2);
    sketch.Rows({0});
    OmDisplayLayerHeading over(sketch.table, false);
    EXPECT_EQ(OmDisplayColumnHeading(over, true).NColumns(), 0);
    sketch.Put({1});
    EXPECT_EQ(OmDisplayColumnHeading(over, true).NColumns(), 1);
}

TEST_F(SkippingColumns, ColumnNumbersArePlacesAmongTheShown) {
    Build("a b c d");
    sketch.Put({0, 1, 0}).Put({0, 3, 0});
    NonEmpty(0);
    EXPECT_EQ(Labels(columns->Column(0)), "C b");
    EXPECT_EQ(Labels(columns->Column(1)), "C d");
    EXPECT_EQ(Labels(columns->Row(1)), "b d");
    EXPECT_EQ(Labels(columns->ColumnCategories(1)), "d");
    Index index;
    columns->Fill(index, 1);
    EXPECT_EQ(index, (Index{0, 3, 0}));
}

TEST_F(SkippingColumns, ColumnPastTheShownHasNullCells) {
    Build("a b c d");
    sketch.Put({0, 1, 0});
    NonEmpty(0);
    for (int const c : {1, 3, Most, -1}) {
        EXPECT_EQ(Labels(columns->Column(c)), ". .") << c;
        EXPECT_EQ(Labels(columns->ColumnCategories(c)), ".") << c;
        Index index{5, 5, 5};
        columns->Fill(index, c);
        EXPECT_EQ(index, (Index{5, 5, 5})) << c;
    }
}

// Elsewhere a number past the shown columns stands for nothing; in these two it is the linear number itself.
TEST_F(SkippingColumns, NodeListsTakeANumberPastTheShownColumnsAsItStands) {
    Build("a b c d");
    sketch.Put({0, 1, 0}).Put({0, 3, 0});
    NonEmpty(0);
    std::vector<ConstNode*> dimensions;
    std::vector<ConstNode*> categories;
    std::vector<ConstNode*> nodes;
    for (int c = 0; c < 5; ++c) {
        columns->DimCatNodes(c, dimensions, categories);
        columns->DimAllNodes(c, nodes);
    }
    EXPECT_EQ(Labels(dimensions), "C C C C");
    EXPECT_EQ(Labels(categories), "b d c d"); // 0 and 1 are mapped, 2 and 3 are not, 4 is past the categories
    EXPECT_EQ(Labels(nodes), "C b C d C c C d");
}

TEST_F(SkippingColumns, NodeListsOfAnEmptyLayerTakeEveryNumberAsItStands) {
    Build("a b");
    NonEmpty(0);
    std::vector<ConstNode*> nodes;
    columns->DimAllNodes(1, nodes);
    EXPECT_EQ(Labels(nodes), "C b");
}

// --- which layer -----------------------------------------------------------------------------------------------------

TEST_F(SkippingColumns, HeadingKeepsTheLayerThatWasCurrentWhenItWasBuilt) {
    Build("a b");
    sketch.Put({0, 0, 0}).Put({0, 1, 1});
    NonEmpty(0);
    layers->SwitchLayer(1);
    EXPECT_EQ(columns->getNonEmptyColumns(), Numbers{0});
    EXPECT_EQ(Labels(columns->Column(0)), "C a");
    EXPECT_EQ(OmDisplayColumnHeading(*layers, true).getNonEmptyColumns(), Numbers{1});
}

// The current cell index starts with zeros.
TEST_F(SkippingColumns, BeforeTheFirstLayerSubscriptsOfZeroCount) {
    for (int const rows : {Dense, Sparse}) {
        SCOPED_TRACE(rows);
        TableSketch table;
        table.FlatDimension("R", rows);
        table.Dimension("C", "a b c");
        table.Dimension("L", "l0=1 l1=0");
        table.Rows({0}).Columns({1}).Layers({2});
        table.Put({0, 0, 1}).Put({0, 2, 0});
        OmDisplayLayerHeading over(table.table, false);
        EXPECT_EQ(OmDisplayColumnHeading(over, true).getNonEmptyColumns(), Numbers{2});
    }
}

// Restoring leaves the current cell index where the last switch put it.
TEST_F(SkippingColumns, RestoringALayerDoesNotMoveTheSubscripts) {
    for (int const rows : {Dense, Sparse}) {
        SCOPED_TRACE(rows);
        TableSketch table;
        table.FlatDimension("R", rows);
        table.Dimension("C", "a b");
        table.Dimension("L", "l0 l1");
        table.Rows({0}).Columns({1}).Layers({2});
        table.Put({0, 0, 0}).Put({0, 1, 1});
        OmDisplayLayerHeading over(table.table, false);
        over.SwitchLayer(0);
        table.table.setLayerLoc(1);
        over.restoreLayer();
        EXPECT_EQ(OmDisplayColumnHeading(over, true).getNonEmptyColumns(), Numbers{0});
    }
}

// The low half of a dissolved leaf's subscript is negative as a cell's subscript; looking such a cell up throws.
TEST_F(SkippingColumns, LayerOfADissolvedLeafHasNoColumn) {
    for (int const rows : {Dense, Sparse}) {
        SCOPED_TRACE(rows);
        TableSketch table;
        table.FlatDimension("R", rows);
        table.Dimension("C", "a b");
        OmDimension& dimension = table.Dimension("L", "l0 l1");
        table.Rows({0}).Columns({1}).Layers({2});
        table.Put({0, 0, 0}).Put({0, 1, 1});
        TableSketch::Node second = TableSketch::At(dimension, {1});
        dimension.removeChild(second);
        OmDisplayLayerHeading over(table.table, false);
        over.SwitchLayer(1);
        ASSERT_EQ(over.getCurrentCellIndex(), (Index{0, 0, -2}));
        EXPECT_EQ(OmDisplayColumnHeading(over, true).NColumns(), 0);
    }
}

// --- probing ---------------------------------------------------------------------------------------------------------

TEST_F(SkippingColumns, ProbingTakesTheRowsAsPlainSubscripts) {
    Build("a=7 b=8 c=9", Dense);
    sketch.Put({2, 7, 0}); // behind the rows
    sketch.Put({1, 8, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{1});
}

TEST_F(SkippingColumns, ProbingFindsNoCellOfADissolvedLeaf) {
    Build("a b c", Dense);
    OmDimension& dimension = sketch.table.Dimension(1);
    TableSketch::Node second = TableSketch::At(dimension, {1});
    dimension.removeChild(second);
    sketch.Put({0, 1, 0}).Put({0, 2, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{2});
}

TEST_F(SkippingColumns, ProbingFindsNoCellBeyondTheShownCategories) {
    Build("a b c", Dense);
    OmDimension& dimension = sketch.table.Dimension(1);
    TableSketch::Node second = TableSketch::At(dimension, {1});
    dimension.Delete(second);
    sketch.Put({0, 1, 0}).Put({0, 2, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{1});
    EXPECT_EQ(Labels(columns->Column(0)), "C c");
}

TEST_F(SkippingColumns, ProbingLooksAtSubscriptZeroOfADimensionOnNoAxis) {
    Build("a b", Dense);
    sketch.FlatDimension("X", 2);
    sketch.Put({0, 0, 0, 1}).Put({0, 1, 0, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{1});
}

TEST_F(SkippingColumns, ProbingRunsOverEveryRowDimension) {
    sketch.FlatDimension("R", 2);
    sketch.FlatDimension("Q", 3);
    sketch.Dimension("C", "a b");
    sketch.Rows({0, 1}).Columns({2});
    sketch.Put({1, 2, 1});
    EXPECT_EQ(NonEmpty(0), Numbers{1});
}

// --- walking ---------------------------------------------------------------------------------------------------------

TEST_F(SkippingColumns, WalkingCountsCellsBehindTheRows) {
    Build("a b c", Sparse);
    sketch.Put({5000, 1, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{1});
}

// Cells of all layers would be the plain reading of a walk over the table.
TEST_F(SkippingColumns, WalkingCountsCellsOfTheCurrentLayerAlone) {
    Build("a b c", Sparse);
    sketch.Put({1, 1, 0}).Put({1, 2, 1});
    EXPECT_EQ(NonEmpty(0), Numbers{1});
    EXPECT_EQ(NonEmpty(1), Numbers{2});
    EXPECT_EQ(NonEmpty(2), Numbers{});
}

TEST_F(SkippingColumns, WalkingComparesSubscriptsAndNotPlacesOfTheLayer) {
    Build("a b c", Sparse, "l0=8 l1=4");
    sketch.Put({1, 1, 4}).Put({1, 2, 8});
    EXPECT_EQ(NonEmpty(0), Numbers{2});
    EXPECT_EQ(NonEmpty(1), Numbers{1});
}

TEST_F(SkippingColumns, WalkingPassesOverCategoriesThatAreNotShown) {
    Build("a b c", Sparse);
    sketch.Put({1, 44, 0}).Put({1, 0, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{0});
}

TEST_F(SkippingColumns, WalkingGoesThroughTheTreeToThePositions) {
    Build("a=5 G(b=9) c=1", Sparse);
    sketch.Put({1, 1, 0}).Put({1, 9, 0});
    EXPECT_EQ(NonEmpty(0), (Numbers{1, 2}));
}

TEST_F(SkippingColumns, WalkingPutsPositionsOfSeveralDimensionsInOrder) {
    sketch.FlatDimension("A", 3);
    sketch.FlatDimension("B", 2);
    sketch.FlatDimension("R", Sparse);
    sketch.Columns({0, 1}).Rows({2}); // B is outermost
    sketch.Put({2, 0, 5}).Put({0, 1, 3}).Put({1, 1, 1}).Put({1, 1, 2});
    EXPECT_EQ(NonEmpty(0), (Numbers{2, 3, 4}));
}

TEST_F(SkippingColumns, WalkingSeesEverySubscriptOfADimensionOnNoAxis) {
    Build("a b", Sparse);
    sketch.FlatDimension("X", 2);
    sketch.Put({0, 0, 0, 1});
    EXPECT_EQ(NonEmpty(0), Numbers{0});
}

// The same flag decides as for the layers: ten cells of a thousand make the table dense.
TEST_F(SkippingColumns, OnePerCentDecidesForTheColumnsAsWell) {
    sketch.FlatDimension("R", 100);
    sketch.FlatDimension("C", 10);
    sketch.Rows({0}).Columns({1});
    sketch.Put({100, 9}); // behind the rows
    for (int k = 0; k < 8; ++k) {
        sketch.Put({k, 0});
    }
    EXPECT_EQ(NonEmpty(0), (Numbers{0, 9}));
    sketch.Put({8, 0});
    EXPECT_EQ(NonEmpty(0), Numbers{0});
}

// The decision is the layer heading's, made when that was built.
TEST_F(SkippingColumns, DensityIsThatOfTheLayerHeading) {
    sketch.FlatDimension("R", 100);
    sketch.FlatDimension("C", 10);
    sketch.Rows({0}).Columns({1});
    sketch.Put({100, 9});
    OmDisplayLayerHeading before(sketch.table, false);
    for (int k = 0; k < 50; ++k) {
        sketch.Put({k, 0});
    }
    EXPECT_EQ(OmDisplayColumnHeading(before, true).getNonEmptyColumns(), (Numbers{0, 9}));
    OmDisplayLayerHeading after(sketch.table, false);
    EXPECT_EQ(OmDisplayColumnHeading(after, true).getNonEmptyColumns(), Numbers{0});
}

// --- heights ---------------------------------------------------------------------------------------------------------

TEST_F(SkippingColumns, HeightIsThatOfTheDeepestShownColumn) {
    Build("a G(b H(c))");
    sketch.Put({0, 0, 0}).Put({0, 1, 0}).Put({0, 2, 1});
    NonEmpty(0);
    EXPECT_EQ(columns->VisibleHeight(0), 3);
    EXPECT_EQ(columns->NRows(), 3);
    EXPECT_EQ(Labels(columns->Column(0)), "C a .");
    EXPECT_EQ(Labels(columns->Column(1)), "C G b");
    NonEmpty(1);
    EXPECT_EQ(columns->VisibleHeight(0), 4);
}

TEST_F(SkippingColumns, HeightsAreTakenForEachDimension) {
    sketch.Dimension("A", "a0 G(a1)");
    sketch.Dimension("B", "H(b0) b1");
    sketch.Columns({1, 0});
    sketch.Put({0, 0}).Put({1, 1});
    OmDisplayLayerHeading over(sketch.table, false);
    OmDisplayColumnHeading heading(over, true);
    EXPECT_EQ(heading.VisibleHeight(0), 3);
    EXPECT_EQ(heading.VisibleHeight(1), 3);
    sketch.table.Cell({1, 1}, nullptr);
    OmDisplayColumnHeading fewer(over, true);
    EXPECT_EQ(fewer.VisibleHeight(0), 2);
    EXPECT_EQ(fewer.VisibleHeight(1), 3);
    EXPECT_EQ(Labels(fewer.Column(0)), "A a0 B H b0");
}

// Without skipping, the width of the dimension counts, whatever the cells.
TEST_F(SkippingColumns, HeightWithoutSkippingIsTheWidthOfTheDimension) {
    Build("a G(b H(c))");
    sketch.Put({0, 0, 0});
    NonEmpty(0);
    EXPECT_EQ(columns->NRows(), 2);
    EXPECT_EQ(OmDisplayColumnHeading(*layers, false).NRows(), 4);
}
