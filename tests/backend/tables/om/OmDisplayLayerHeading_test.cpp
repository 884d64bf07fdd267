#include "backend/tables/om/OmDisplayLayerHeading.h"

#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;

namespace {

using ConstNode = OmDisplayLayerHeading::ConstNode;
using Index = std::vector<int>;

constexpr int Least = std::numeric_limits<int>::min();
constexpr int Most = std::numeric_limits<int>::max();

/// The cell index of every layer, from the first on.
std::vector<Index> AllLayers(OmDisplayLayerHeading& layers) {
    std::vector<Index> all;
    while (layers.NextLayer()) {
        all.push_back(layers.getCurrentCellIndex());
    }
    return all;
}

std::vector<std::string> AllLabels(OmDisplayLayerHeading& layers, int i) {
    std::vector<std::string> all;
    while (layers.NextLayer()) {
        all.push_back(Labels(layers.Nodes(i)));
    }
    return all;
}

/// What `Nodes(0)` gives in the first layer of a table whose one layer dimension reads so.
std::string FirstNodes(std::string const& name, std::string const& categories) {
    TableSketch sketch;
    sketch.Dimension(name, categories);
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    return Labels(layers.Nodes(0));
}

int WidthOf(std::string const& name, std::string const& categories) {
    TableSketch sketch;
    sketch.Dimension(name, categories);
    sketch.Layers({0});
    return OmDisplayLayerHeading(sketch.table, false).VisibleWidth(0);
}

} // namespace

// --- which layers there are ------------------------------------------------------------------------------------------

TEST(OmDisplayLayerHeading, TableWithoutLayerDimensionsHasOneLayer) {
    TableSketch sketch;
    sketch.Dimension("Sex", "Male Female");
    sketch.Rows({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(layers.NDimensions(), 0);
    EXPECT_EQ(layers.getLayer(), -1);
    EXPECT_TRUE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), 0);
    EXPECT_FALSE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), 0);
}

TEST(OmDisplayLayerHeading, TableWithoutDimensionsHasOneLayer) {
    TableSketch sketch;
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLayers(layers), std::vector<Index>{{}});
}

// The usual order would be that of the axis.
TEST(OmDisplayLayerHeading, LastDimensionOfTheAxisIsLayerDimensionZero) {
    TableSketch sketch;
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "b0 b1 b2");
    sketch.Dimension("C", "(c0)");
    sketch.Layers({1, 0, 2});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    ASSERT_EQ(layers.NDimensions(), 3);
    EXPECT_EQ(layers.getDimensionIndex(0), 2);
    EXPECT_EQ(layers.getDimensionIndex(1), 0);
    EXPECT_EQ(layers.getDimensionIndex(2), 1);
    EXPECT_EQ(layers.VisibleWidth(0), 3);
    EXPECT_EQ(layers.VisibleWidth(1), 2);
    EXPECT_EQ(Labels(layers.Nodes(1)), "A a0");
    EXPECT_EQ(Labels(layers.Nodes(2)), "B b0");
}

// The usual order would change the last dimension of the axis fastest.
TEST(OmDisplayLayerHeading, FirstDimensionOfTheAxisVariesFastest) {
    TableSketch sketch;
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "b0 b1 b2");
    sketch.Layers({0, 1});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLayers(layers), (std::vector<Index>{{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}, {1, 2}}));
}

TEST(OmDisplayLayerHeading, LayersFollowTheTreeAndNotTheSubscripts) {
    TableSketch sketch;
    sketch.Dimension("A", "x=2 (y=0) z=1");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLayers(layers), (std::vector<Index>{{2}, {0}, {1}}));
}

TEST(OmDisplayLayerHeading, AxesAreReadWhenTheHeadingIsBuilt) {
    TableSketch sketch;
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "b0 b1 b2");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    sketch.Layers({1, 0});
    EXPECT_EQ(layers.NDimensions(), 1);
    EXPECT_EQ(layers.getDimensionIndex(0), 0);
    EXPECT_EQ(AllLayers(layers).size(), 2U);
}

TEST(OmDisplayLayerHeading, AxisOfTheTableKeepsItsOrder) {
    TableSketch sketch;
    sketch.Dimension("A", "a0");
    sketch.Dimension("B", "b0");
    sketch.Layers({0, 1});
    OmDisplayLayerHeading const layers(sketch.table, true);
    EXPECT_EQ(sketch.table.Layers()[0], 0);
    EXPECT_EQ(sketch.table.Layers()[1], 1);
}

TEST(OmDisplayLayerHeading, GapsOnTheAxisCountAsDimensionsWithOnePosition) {
    TableSketch sketch;
    sketch.Dimension("A", "a0 a1");
    sketch.table.Layers()[2] = 0; // leaves two gaps in front
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(layers.NDimensions(), 3);
    EXPECT_EQ(layers.getDimensionIndex(0), 0);
    EXPECT_EQ(layers.getDimensionIndex(1), -1);
    EXPECT_EQ(layers.VisibleWidth(1), 0);
    ASSERT_TRUE(layers.SwitchLayer(1));
    EXPECT_FALSE(layers.SwitchLayer(2));
    EXPECT_EQ(Labels(layers.Nodes(0)), "A a1");
    EXPECT_TRUE(layers.Nodes(1).empty());
}

TEST(OmDisplayLayerHeading, NumbersWithoutADimensionHaveNoRecord) {
    TableSketch sketch;
    sketch.Dimension("A", "a0 a1");
    sketch.Layers({7, 0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(layers.getDimensionIndex(1), 7);
    EXPECT_EQ(layers.VisibleWidth(1), 0);
    EXPECT_EQ(AllLayers(layers), (std::vector<Index>{{0}, {1}}));
}

TEST(OmDisplayLayerHeading, DimensionWithoutCategoriesLeavesNoLayer) {
    TableSketch sketch;
    sketch.Dimension("A");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(layers.VisibleWidth(0), 0);
    EXPECT_FALSE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), -1);
}

// Deleting takes the size from the largest subscript left, which need not fit a signed number.
TEST(OmDisplayLayerHeading, SizeBelowZeroCountsAsZero) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("A", "a0 far=4294967294");
    TableSketch::Node first = TableSketch::At(dimension, {0});
    dimension.Delete(first);
    ASSERT_EQ(dimension.NumCategories(), -1);
    sketch.Layers({0});
    for (bool const skipEmpty : {false, true}) {
        OmDisplayLayerHeading layers(sketch.table, skipEmpty);
        EXPECT_FALSE(layers.NextLayer());
        EXPECT_EQ(layers.VisibleWidth(0), 2);
    }
}

// --- switching -------------------------------------------------------------------------------------------------------

class Switching : public ::testing::Test {
protected:
    Switching() {
        sketch.Dimension("R", "r0 r1");
        sketch.Dimension("L", "l0=4 l1=5 l2=6");
        sketch.Layers({1}).Rows({0});
    }
    TableSketch sketch;
};

TEST_F(Switching, StartsBeforeTheFirstLayerWithAllZeros) {
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(layers.getLayer(), -1);
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 0}));
}

TEST_F(Switching, MakesALayerCurrent) {
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_TRUE(layers.SwitchLayer(1));
    EXPECT_EQ(layers.getLayer(), 1);
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 5}));
    EXPECT_TRUE(layers.SwitchLayer(0));
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 4}));
}

TEST_F(Switching, PastTheEndChangesNothing) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(2);
    for (int const n : {3, 4, Most, -2, Least}) {
        EXPECT_FALSE(layers.SwitchLayer(n)) << n;
        EXPECT_EQ(layers.getLayer(), 2) << n;
        EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 6})) << n;
    }
}

// The one number outside the range that is not ignored; it gives false all the same.
TEST_F(Switching, MinusOneGoesBackBeforeTheFirstLayer) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(1);
    EXPECT_FALSE(layers.SwitchLayer(-1));
    EXPECT_EQ(layers.getLayer(), -1);
    EXPECT_TRUE(layers.Nodes(0).empty());
    EXPECT_TRUE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), 0);
}

TEST_F(Switching, MinusOneLeavesTheCurrentCellIndex) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(1);
    layers.SwitchLayer(-1);
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 5}));
}

TEST_F(Switching, NextLayerStaysAtTheLastOne) {
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_TRUE(layers.NextLayer());
    EXPECT_TRUE(layers.NextLayer());
    EXPECT_TRUE(layers.NextLayer());
    EXPECT_FALSE(layers.NextLayer());
    EXPECT_FALSE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), 2);
}

TEST_F(Switching, LastLayerMakesTheLastCurrent) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.LastLayer();
    EXPECT_EQ(layers.getLayer(), 2);
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 6}));
}

// There is no last layer; its number is then -1, which is a reset.
TEST_F(Switching, LastLayerOfNoneGoesBackBeforeTheFirst) {
    OmDisplayLayerHeading layers(sketch.table, true);
    sketch.table.setLayerLoc(1);
    layers.restoreLayer();
    layers.LastLayer();
    EXPECT_EQ(layers.getLayer(), -1);
}

TEST_F(Switching, CurrentCellIndexIsHandedOutAsACopy) {
    OmDisplayLayerHeading layers(sketch.table, false);
    Index copy = layers.getCurrentCellIndex();
    copy.assign(9, 9);
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 0}));
}

TEST_F(Switching, TableAndFlagAreThoseOfTheConstructor) {
    OmDisplayLayerHeading all(sketch.table, false);
    OmDisplayLayerHeading skipping(sketch.table, true);
    EXPECT_EQ(&all.Table(), &sketch.table);
    EXPECT_FALSE(all.SkipEmpty());
    EXPECT_TRUE(skipping.SkipEmpty());
}

// --- the stored layer ------------------------------------------------------------------------------------------------

// Switching would also bring the current cell index along.
TEST_F(Switching, RestoringSetsTheCurrentLayerAndNothingElse) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(2);
    sketch.table.setLayerLoc(1);
    OmDisplayLayerHeading const& readOnly = layers;
    EXPECT_EQ(readOnly.restoreLayer(), 1);
    EXPECT_EQ(layers.getLayer(), 1);
    EXPECT_EQ(layers.getCurrentCellIndex(), (Index{0, 6}));
    EXPECT_EQ(Labels(layers.Nodes(0)), "L l1");
    Index index;
    layers.Fill(index);
    EXPECT_EQ(index, (Index{0, 5}));
}

TEST_F(Switching, RestoringTheInitialLocationGoesBeforeTheFirstLayer) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(1);
    EXPECT_EQ(layers.restoreLayer(), -1);
    EXPECT_EQ(layers.getLayer(), -1);
    EXPECT_TRUE(layers.NextLayer());
    EXPECT_EQ(layers.getLayer(), 0);
}

TEST_F(Switching, RestoringDoesNotCheckTheLocation) {
    OmDisplayLayerHeading layers(sketch.table, false);
    for (int const location : {3, Most, -7, Least}) {
        sketch.table.setLayerLoc(location);
        EXPECT_EQ(layers.restoreLayer(), location);
        EXPECT_EQ(layers.getLayer(), location);
        EXPECT_TRUE(layers.Nodes(0).empty());
        EXPECT_FALSE(layers.NextLayer());
    }
}

TEST_F(Switching, LayerPastTheSkippedSequenceShowsNothing) {
    sketch.Put({0, 5});
    OmDisplayLayerHeading layers(sketch.table, true);
    sketch.table.setLayerLoc(1);
    layers.restoreLayer();
    EXPECT_TRUE(layers.Nodes(0).empty());
    Index index{7, 7};
    layers.Fill(index);
    EXPECT_EQ(index, (Index{7, 7}));
}

// --- filling a cell index --------------------------------------------------------------------------------------------

TEST_F(Switching, FillBeforeTheFirstLayerDoesNothing) {
    OmDisplayLayerHeading layers(sketch.table, false);
    Index index{9};
    layers.Fill(index);
    EXPECT_EQ(index, Index{9});
}

TEST_F(Switching, FillWritesTheLayerDimensionsAndLeavesTheOthers) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(1);
    Index index{8, 9};
    layers.Fill(index);
    EXPECT_EQ(index, (Index{8, 5}));
}

TEST_F(Switching, FillResizesToTheNumberOfDimensions) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(0);
    Index tooShort;
    layers.Fill(tooShort);
    EXPECT_EQ(tooShort, (Index{0, 4}));
    Index tooLong{1, 2, 3, 4};
    layers.Fill(tooLong);
    EXPECT_EQ(tooLong, (Index{1, 4}));
}

// Three categories are left of four, but the size still reaches to the largest subscript.
TEST_F(Switching, DigitBeyondTheShownCategoriesRepeatsThePreviousOne) {
    OmDimension& dimension = sketch.table.Dimension(1);
    TableSketch::Node middle = TableSketch::At(dimension, {1});
    dimension.Delete(middle);
    ASSERT_EQ(sketch.table.Size(1), 7U);
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLayers(layers), (std::vector<Index>{{0, 4}, {0, 6}, {0, 6}, {0, 6}, {0, 6}, {0, 6}, {0, 6}}));
    EXPECT_TRUE(layers.Nodes(0).empty());
    Index index{1, 2};
    layers.Fill(index);
    EXPECT_EQ(index, (Index{1, 2}));
}

// --- labels of the current layer -------------------------------------------------------------------------------------

TEST(OmDisplayLayerNodes, AreEmptyBeforeTheFirstLayer) {
    TableSketch sketch;
    sketch.Dimension("L", "l0");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_TRUE(layers.Nodes(0).empty());
}

TEST(OmDisplayLayerNodes, RunFromTheNameDownToTheCategory) {
    TableSketch sketch;
    sketch.Dimension("L", "G(H(x) y) z");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLabels(layers, 0), (std::vector<std::string>{"L G H x", "L G y", "L z"}));
    EXPECT_EQ(layers.Nodes(0)[0]->Depth(), 0U);
    EXPECT_EQ(layers.Nodes(0)[1]->Depth(), 1U);
}

TEST(OmDisplayLayerNodes, ShowANullPointerForAHiddenNode) {
    EXPECT_EQ(FirstNodes("-L", "G(x)"), ". G x");
    EXPECT_EQ(FirstNodes("L", "-G(x)"), "L . x");
    EXPECT_EQ(FirstNodes("L", "G(-x)"), "L G .");
}

TEST(OmDisplayLayerNodes, StopBeforeAVisibleGroupWithHiddenLabels) {
    EXPECT_EQ(FirstNodes("L", "G(~H(K(x)))"), "L G");
    EXPECT_EQ(FirstNodes("~L", "G(x)"), "");
}

// Only the cells of the other two headings stop there; both are shown side by side.
TEST(OmDisplayLayerNodes, PassAHiddenGroupWithHiddenLabels) {
    TableSketch sketch;
    sketch.Dimension("L", "-~G(H(x))");
    sketch.Layers({0}).Columns({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    EXPECT_EQ(Labels(layers.Nodes(0)), "L . H x");
    OmDisplayColumnHeading columns(layers, false);
    EXPECT_EQ(Labels(columns.Column(0)), "L");
}

TEST(OmDisplayLayerNodes, PassALeafThatSaysItHidesLabels) { EXPECT_EQ(FirstNodes("L", "~x"), "L x"); }

TEST(OmDisplayLayerNodes, OfADimensionOutOfRangeAreEmpty) {
    TableSketch sketch;
    sketch.Dimension("L", "l0");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    for (int const i : {1, Most, -1, Least}) {
        EXPECT_TRUE(layers.Nodes(i).empty()) << i;
        EXPECT_EQ(layers.VisibleWidth(i), 0) << i;
        EXPECT_EQ(layers.getDimensionIndex(i), -1) << i;
    }
}

TEST(OmDisplayLayerNodes, StayWhereTheyAreWhenTheLayerSwitches) {
    TableSketch sketch;
    sketch.Dimension("L", "l0 l1");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(0);
    ConstNode* const category = layers.Nodes(0)[1];
    layers.SwitchLayer(1);
    EXPECT_EQ(category->Value().Text()->AsString(), "l0");
    layers.SwitchLayer(0);
    EXPECT_EQ(layers.Nodes(0)[1], category);
}

// --- dimension and category nodes ------------------------------------------------------------------------------------

class LayerDimCat : public ::testing::Test {
protected:
    LayerDimCat() {
        sketch.Dimension("R", "r0");
        sketch.Dimension("L", "-~G(-x) y");
        sketch.Layers({1});
    }

    /// Whether asking for layer dimension i changes nothing.
    static bool LeavesUntouched(OmDisplayLayerHeading const& layers, int i) {
        ConstNode mark;
        ConstNode* dimension = &mark;
        ConstNode* category = nullptr;
        std::vector<ConstNode*> nodes{&mark};
        layers.DimCatNodes(i, dimension, category);
        layers.DimAllNodes(i, nodes);
        return dimension == &mark && category == nullptr && nodes == std::vector<ConstNode*>{&mark};
    }

    TableSketch sketch;
    ConstNode* dimension = nullptr;
    ConstNode* category = nullptr;
};

TEST_F(LayerDimCat, GiveTheEndsOfTheLabelPath) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(0);
    layers.DimCatNodes(0, dimension, category);
    EXPECT_EQ(dimension->Value().Text()->AsString(), "L");
    EXPECT_EQ(dimension->Depth(), 0U);
    EXPECT_EQ(category->Value().Text()->AsString(), "x");
    layers.SwitchLayer(1);
    layers.DimCatNodes(0, dimension, category);
    EXPECT_EQ(category->Value().Text()->AsString(), "y");
}

// Labels that the heading leaves out are here all the same, and what the vector held before stays in front.
TEST_F(LayerDimCat, AppendEveryNodeHiddenOnesIncluded) {
    OmDisplayLayerHeading layers(sketch.table, false);
    std::vector<ConstNode*> nodes{nullptr};
    layers.SwitchLayer(0);
    layers.DimAllNodes(0, nodes);
    EXPECT_EQ(Labels(nodes), ". L G x");
    layers.SwitchLayer(1);
    layers.DimAllNodes(0, nodes);
    EXPECT_EQ(Labels(nodes), ". L G x L y");
}

TEST_F(LayerDimCat, LeaveEverythingUntouchedBeforeTheFirstLayer) {
    OmDisplayLayerHeading const layers(sketch.table, false);
    EXPECT_TRUE(LeavesUntouched(layers, 0));
}

TEST_F(LayerDimCat, LeaveEverythingUntouchedOutOfRange) {
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.NextLayer();
    for (int const i : {1, Most, -1, Least}) {
        EXPECT_TRUE(LeavesUntouched(layers, i)) << i;
    }
}

// A root that is no group is the one shown leaf, and its path has one entry.
TEST_F(LayerDimCat, LeaveEverythingUntouchedWhenThePathIsOneNode) {
    sketch.table.Dimension(1).Root().Value().IsGroup(false);
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(0);
    EXPECT_EQ(Labels(layers.Nodes(0)), "L");
    EXPECT_TRUE(LeavesUntouched(layers, 0));
}

TEST_F(LayerDimCat, LeaveEverythingUntouchedBeyondTheShownCategories) {
    sketch.table.Dimension(1).Root().Value().IsGroup(false);
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(1);
    EXPECT_TRUE(LeavesUntouched(layers, 0));
}

// --- which categories are shown --------------------------------------------------------------------------------------

// Hiding takes the label out of the heading and nothing else.
TEST(OmDisplayRecord, HiddenLeafKeepsItsPosition) {
    TableSketch sketch;
    sketch.Dimension("L", "a -b c");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLabels(layers, 0), (std::vector<std::string>{"L a", "L .", "L c"}));
    EXPECT_EQ(layers.getLayer(), 2);
    layers.SwitchLayer(1);
    EXPECT_EQ(layers.getCurrentCellIndex(), Index{1});
}

TEST(OmDisplayRecord, GroupWithoutChildrenShowsNothing) {
    TableSketch sketch;
    sketch.Dimension("L", "Empty() a Outer(Inner()) b");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLabels(layers, 0), (std::vector<std::string>{"L a", "L b"}));
    EXPECT_EQ(layers.VisibleWidth(0), 2);
}

TEST(OmDisplayRecord, NodeThatIsNoGroupIsNotEntered) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("L", "G(a b) c");
    TableSketch::At(dimension, {0}).Value().IsGroup(false);
    TableSketch::At(dimension, {0}).Value().Subscript(9);
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(0);
    EXPECT_EQ(Labels(layers.Nodes(0)), "L G");
    EXPECT_EQ(layers.getCurrentCellIndex(), Index{9});
    layers.SwitchLayer(1);
    EXPECT_EQ(Labels(layers.Nodes(0)), "L c");
}

TEST(OmDisplayRecord, CategoryIsTheLowHalfOfTheSubscript) {
    TableSketch sketch;
    sketch.Dimension("L", "a=4294967299 b=18446744073709551614");
    sketch.Layers({0});
    OmDisplayLayerHeading layers(sketch.table, false);
    EXPECT_EQ(AllLayers(layers), (std::vector<Index>{{3}, {-2}}));
}

TEST(OmDisplayRecord, WidthIsTheLargestLabelDepth) {
    EXPECT_EQ(WidthOf("L", "x"), 2);
    EXPECT_EQ(WidthOf("L", "x G(H(y)) z"), 4);
    EXPECT_EQ(WidthOf("L", ""), 0);
}

TEST(OmDisplayRecord, HiddenNodesTakeNoWidth) {
    EXPECT_EQ(WidthOf("-L", "G(x)"), 2);
    EXPECT_EQ(WidthOf("L", "-G(x)"), 2);
    EXPECT_EQ(WidthOf("L", "G(-x)"), 2);
    EXPECT_EQ(WidthOf("-L", "-x"), 0);
}

// The group's own line goes with those below it.
TEST(OmDisplayRecord, GroupWithHiddenLabelsDropsItselfAndWhatLiesBelowFromTheWidth) {
    EXPECT_EQ(WidthOf("L", "~G(H(x))"), 1);
    EXPECT_EQ(WidthOf("L", "G(~H(x))"), 2);
    EXPECT_EQ(WidthOf("~L", "G(x)"), 0);
    EXPECT_EQ(WidthOf("L", "~G(H(x)) y"), 2);
}

TEST(OmDisplayRecord, HiddenGroupWithHiddenLabelsDropsTheSame) { EXPECT_EQ(WidthOf("L", "-~G(H(x))"), 1); }

TEST(OmDisplayRecord, LeafThatSaysItHidesLabelsDropsNothing) { EXPECT_EQ(WidthOf("L", "~x"), 2); }
