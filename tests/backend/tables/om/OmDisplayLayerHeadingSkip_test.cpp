// Layers that hold a cell, and the two ways to find them. Which way a table goes shows in cells whose subscripts lie
// outside of the dimensions' sizes: a walk over the cells finds them, probing the positions of rows and columns does
// not.
#include "backend/tables/om/OmDisplayLayerHeading.h"

#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;

namespace {

using Index = std::vector<int>;

std::vector<Index> AllLayers(OmDisplayLayerHeading& layers) {
    std::vector<Index> all;
    while (layers.NextLayer()) {
        all.push_back(layers.getCurrentCellIndex());
    }
    return all;
}

std::vector<Index> NonEmptyLayers(TableSketch& sketch) {
    OmDisplayLayerHeading layers(sketch.table, true);
    return AllLayers(layers);
}

/// A table of `layers` times `rows` possible cells that holds `cells` cells: one stray, outside of the rows, in the
/// last layer and the others in layer 0. Tells whether the stray one is seen.
bool IsWalked(int layers, int rows, int cells) {
    TableSketch sketch;
    sketch.FlatDimension("R", rows);
    sketch.FlatDimension("L", layers);
    sketch.Rows({0}).Layers({1});
    sketch.Put({rows, layers - 1});
    for (int k = 1; k < cells; ++k) {
        sketch.Put({k - 1, 0});
    }
    return NonEmptyLayers(sketch).back() == Index{0, layers - 1};
}

/// As above, for a table whose only cell is the stray one, so that there may be no layer at all.
bool SingleCellIsWalked(int layers, int rows) {
    TableSketch sketch;
    sketch.FlatDimension("R", rows);
    sketch.FlatDimension("L", layers);
    sketch.Rows({0}).Layers({1});
    sketch.Put({rows, layers - 1});
    return !NonEmptyLayers(sketch).empty();
}

} // namespace

// --- what is skipped -------------------------------------------------------------------------------------------------

TEST(OmDisplayLayerSkip, TableWithoutACellHasNoLayer) {
    for (int const rows : {2, 100}) { // probed, walked
        TableSketch sketch;
        sketch.FlatDimension("R", rows);
        sketch.FlatDimension("L", 3);
        sketch.Rows({0}).Layers({1});
        OmDisplayLayerHeading layers(sketch.table, true);
        EXPECT_FALSE(layers.NextLayer());
        EXPECT_EQ(layers.getLayer(), -1);
        EXPECT_FALSE(layers.SwitchLayer(0));
    }
}

// The one layer of a table without layer dimensions is skipped as well.
TEST(OmDisplayLayerSkip, OnlyLayerIsSkippedWhenThereIsNoCell) {
    TableSketch sketch;
    sketch.FlatDimension("R", 2);
    sketch.Rows({0});
    EXPECT_TRUE(NonEmptyLayers(sketch).empty());
    sketch.Put({1});
    EXPECT_EQ(NonEmptyLayers(sketch).size(), 1U);
}

TEST(OmDisplayLayerSkip, TableWithoutDimensionsHasNoLayer) {
    TableSketch sketch;
    EXPECT_TRUE(NonEmptyLayers(sketch).empty());
}

TEST(OmDisplayLayerSkip, ProbingFindsTheLayersInTheirOrder) {
    TableSketch sketch;
    sketch.FlatDimension("A", 3);
    sketch.FlatDimension("R", 2);
    sketch.FlatDimension("B", 2);
    sketch.Rows({1}).Layers({0, 2});
    sketch.Put({2, 1, 0}).Put({0, 0, 1}).Put({1, 1, 1}).Put({1, 0, 1});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{2, 0, 0}, {0, 0, 1}, {1, 0, 1}}));
}

// The cells stand in another order than the layers, and two of them in one layer.
TEST(OmDisplayLayerSkip, WalkingFindsTheLayersInTheirOrder) {
    TableSketch sketch;
    sketch.FlatDimension("A", 3);
    sketch.FlatDimension("R", 100);
    sketch.FlatDimension("B", 2);
    sketch.Rows({1}).Layers({2, 0}); // A is the most significant layer dimension, B the last to vary among the cells
    sketch.Put({2, 50, 0}).Put({0, 70, 1}).Put({1, 10, 1}).Put({1, 99, 1});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 0, 1}, {1, 0, 1}, {2, 0, 0}}));
}

TEST(OmDisplayLayerSkip, NumbersOfLayersArePlacesAmongTheNonEmpty) {
    TableSketch sketch;
    sketch.Dimension("L", "a b c d");
    sketch.Layers({0});
    sketch.Put({1}).Put({3});
    OmDisplayLayerHeading layers(sketch.table, true);
    EXPECT_TRUE(layers.SwitchLayer(1));
    EXPECT_EQ(layers.getLayer(), 1);
    EXPECT_EQ(Labels(layers.Nodes(0)), "L d");
    Index index;
    layers.Fill(index);
    EXPECT_EQ(index, Index{3});
    EXPECT_FALSE(layers.SwitchLayer(2));
    layers.SwitchLayer(0);
    layers.LastLayer();
    EXPECT_EQ(layers.getLayer(), 1);
}

TEST(OmDisplayLayerSkip, CellsStoredLaterAreNotSeen) {
    TableSketch sketch;
    sketch.FlatDimension("L", 2);
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, true);
    sketch.Put({1});
    EXPECT_FALSE(layers.NextLayer());
}

// --- which way is taken ----------------------------------------------------------------------------------------------

TEST(OmDisplayLayerDensity, ThousandPossibleCellsNeedTen) {
    EXPECT_TRUE(IsWalked(10, 100, 9));
    EXPECT_FALSE(IsWalked(10, 100, 10));
}

TEST(OmDisplayLayerDensity, HundredAndFortyNinePossibleCellsNeedOne) { EXPECT_FALSE(SingleCellIsWalked(149, 1)); }

// Halves go up: 150 is the first number of possible cells that needs two, 250 the first that needs three.
TEST(OmDisplayLayerDensity, HalvesGoUp) {
    EXPECT_TRUE(SingleCellIsWalked(150, 1));
    EXPECT_FALSE(IsWalked(3, 83, 2)); // 249
    EXPECT_TRUE(IsWalked(10, 25, 2)); // 250
    EXPECT_FALSE(IsWalked(10, 25, 3));
}

TEST(OmDisplayLayerDensity, FewerThanFiftyPossibleCellsAreProbedAlways) { EXPECT_FALSE(SingleCellIsWalked(7, 7)); }

// Cells that are there count, not calls that stored something.
TEST(OmDisplayLayerDensity, ReplacedAndClearedCellsDoNotCount) {
    TableSketch sketch;
    sketch.FlatDimension("R", 100);
    sketch.FlatDimension("L", 10);
    sketch.Rows({0}).Layers({1});
    sketch.Put({200, 9});
    for (int k = 0; k < 20; ++k) {
        sketch.Put({1, 0});
        sketch.table.Cell({k, 5}, nullptr);
    }
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 0}, {0, 9}}));
}

// A dimension that stands on no axis multiplies the possible cells all the same.
TEST(OmDisplayLayerDensity, AllDimensionsCountForThePossibleCells) {
    TableSketch sketch;
    sketch.FlatDimension("R", 7);
    sketch.FlatDimension("L", 7);
    sketch.FlatDimension("X", 4);
    sketch.Rows({0}).Layers({1});
    sketch.Put({7, 6, 0}); // 196 possible cells need two
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 6, 0}}));
}

// With a size of 0 the threshold is 0, so the table is probed, and there is nothing to probe.
TEST(OmDisplayLayerDensity, SizeOfZeroMeansProbing) {
    TableSketch sketch;
    sketch.FlatDimension("R", 0);
    sketch.FlatDimension("L", 1000);
    sketch.Rows({0}).Layers({1});
    sketch.Put({0, 3});
    EXPECT_TRUE(NonEmptyLayers(sketch).empty());
}

// The product of the sizes passes 64 bits. Taken for a small number it would have every position probed, which does not
// end.
TEST(OmDisplayLayerDensity, ProductOfHugeSizesIsNoSmallNumber) {
    TableSketch sketch;
    for (char const* const name : {"R", "C", "L"}) {
        OmDimension& dimension = sketch.Dimension(name, "a b=2147483646");
        TableSketch::Node first = TableSketch::At(dimension, {0});
        dimension.Delete(first);
        ASSERT_EQ(dimension.NumCategories(), 2147483647);
    }
    sketch.Rows({0}).Columns({1}).Layers({2});
    EXPECT_TRUE(NonEmptyLayers(sketch).empty());
}

// --- probing ---------------------------------------------------------------------------------------------------------

TEST(OmDisplayLayerProbe, TriesColumnsAndRows) {
    TableSketch sketch;
    sketch.FlatDimension("L", 2);
    sketch.FlatDimension("R", 2);
    sketch.FlatDimension("C", 3);
    sketch.Layers({0}).Rows({1}).Columns({2});
    sketch.Put({1, 1, 2});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{1, 0, 0}}));
}

// The other axis is run through by plain numbers from 0 to its size, whatever subscripts its categories have.
TEST(OmDisplayLayerProbe, TakesTheOtherAxisAsPlainSubscripts) {
    TableSketch sketch;
    sketch.Dimension("R", "r0=10 r1=11");
    sketch.Dimension("L", "l0=4 l1=5 l2=6");
    sketch.Rows({0}).Layers({1});
    sketch.Put({10, 4}); // a shown category, but no number below the size
    sketch.Put({1, 5});  // no category
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 5}}));
}

TEST(OmDisplayLayerProbe, LooksAtSubscriptZeroOfADimensionOnNoAxis) {
    TableSketch sketch;
    sketch.FlatDimension("L", 3);
    sketch.FlatDimension("X", 2);
    sketch.Layers({0});
    sketch.Put({1, 0}).Put({2, 1});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{1, 0}}));
}

// A dissolved leaf is still there, with a subscript whose low half is negative as a cell's subscript.
TEST(OmDisplayLayerProbe, DissolvedLeafHoldsNoCell) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("L", "a b");
    TableSketch::Node second = TableSketch::At(dimension, {1});
    dimension.removeChild(second);
    sketch.Layers({0});
    sketch.Put({0}).Put({1});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0}}));
}

TEST(OmDisplayLayerProbe, DigitBeyondTheShownCategoriesHoldsNoCell) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("L", "a b c=4");
    TableSketch::Node second = TableSketch::At(dimension, {1});
    dimension.Delete(second);
    ASSERT_EQ(dimension.NumCategories(), 5);
    sketch.Layers({0});
    sketch.Put({0}).Put({4});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0}, {4}}));
}

TEST(OmDisplayLayerProbe, GapsOnTheAxesAreHarmless) {
    TableSketch sketch;
    sketch.FlatDimension("R", 2);
    sketch.FlatDimension("L", 3);
    sketch.Rows({-1, 0}).Columns({-1}).Layers({-1, 1, -1});
    sketch.Put({1, 2});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 2}}));
}

// --- walking ---------------------------------------------------------------------------------------------------------

class WalkedTable : public ::testing::Test {
protected:
    /// Nothing stands on the row axis below subscript 1000 that a few cells could make dense.
    OmDimension& Layer(std::string const& categories) {
        sketch.FlatDimension("R", 1000);
        OmDimension& dimension = sketch.Dimension("L", categories);
        sketch.Rows({0}).Layers({1});
        return dimension;
    }
    TableSketch sketch;
};

TEST_F(WalkedTable, CellsOutsideOfTheBodyCountForTheirLayer) {
    Layer("a b c");
    sketch.Put({5000, 1});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 1}}));
}

TEST_F(WalkedTable, CellsOfACategoryThatIsNotShownArePassedOver) {
    Layer("a b c");
    sketch.Put({1, 77}).Put({1, 2});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 2}}));
}

TEST_F(WalkedTable, SubscriptsGoThroughTheTreeToTheirPositions) {
    Layer("a=9 G(b=3) c=5");
    sketch.Put({1, 3}).Put({2, 9});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 9}, {0, 3}}));
}

TEST_F(WalkedTable, FarSubscriptsAreFound) {
    Layer("a=2000000 b=7 c=1000000");
    sketch.Put({1, 1000000}).Put({1, 2000000});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 2000000}, {0, 1000000}}));
}

TEST_F(WalkedTable, LastOfSeveralLeavesWithOneSubscriptStandsForIt) {
    Layer("a=1 b=1 c=2");
    sketch.Put({1, 1});
    OmDisplayLayerHeading layers(sketch.table, true);
    ASSERT_TRUE(layers.NextLayer());
    EXPECT_EQ(Labels(layers.Nodes(0)), "L b");
    EXPECT_FALSE(layers.NextLayer());
}

// Positions run over the size; the third leaf lies past it.
TEST_F(WalkedTable, ShownLeafPastTheSizeHasNoPosition) {
    OmDimension& dimension = Layer("a=0 b=0 c=1 d=1");
    TableSketch::Node first = TableSketch::At(dimension, {0});
    dimension.Delete(first); // three leaves, the largest subscript is 1
    ASSERT_EQ(dimension.NumCategories(), 2);
    sketch.Put({1, 1}).Put({1, 0});
    OmDisplayLayerHeading layers(sketch.table, true);
    ASSERT_TRUE(layers.NextLayer());
    EXPECT_EQ(Labels(layers.Nodes(0)), "L b");
    EXPECT_FALSE(layers.NextLayer());
}

TEST_F(WalkedTable, GapsOnTheAxesAreHarmless) {
    Layer("a b c");
    sketch.Rows({-1, 0}).Columns({-1}).Layers({-1, 1, -1});
    sketch.Put({1, 2});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 2}}));
}

TEST_F(WalkedTable, SubscriptsOfADimensionOnNoAxisDoNotMatter) {
    Layer("a b c");
    sketch.FlatDimension("X", 2);
    sketch.Put({1, 2, 1});
    EXPECT_EQ(NonEmptyLayers(sketch), (std::vector<Index>{{0, 2, 0}}));
}
