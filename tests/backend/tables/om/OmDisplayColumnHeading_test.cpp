#include "backend/tables/om/OmDisplayColumnHeading.h"

#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

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
using Lines = std::vector<std::string>;
using Numbers = std::vector<unsigned long long>;

constexpr int Least = std::numeric_limits<int>::min();
constexpr int Most = std::numeric_limits<int>::max();

/// A table with its layer heading and a column heading over it, built by `Build` from the sketch.
class ColumnHeading : public ::testing::Test {
protected:
    OmDisplayColumnHeading& Build(bool skipEmpty = false) {
        layers = std::make_unique<OmDisplayLayerHeading>(sketch.table, false);
        return Rebuild(skipEmpty);
    }

    /// Over the layer heading that is there.
    OmDisplayColumnHeading& Rebuild(bool skipEmpty) {
        columns = std::make_unique<OmDisplayColumnHeading>(*layers, skipEmpty);
        return *columns;
    }

    /// Builds over the one column dimension that reads so.
    OmDisplayColumnHeading& BuildOver(std::string const& name, std::string const& categories) {
        sketch.Dimension(name, categories);
        sketch.Columns({0});
        return Build();
    }

    Lines AllColumns() const {
        Lines lines;
        for (int c = 0; c < columns->NColumns(); ++c) {
            lines.push_back(Labels(columns->Column(c)));
        }
        return lines;
    }

    TableSketch sketch;
    std::unique_ptr<OmDisplayLayerHeading> layers;
    std::unique_ptr<OmDisplayColumnHeading> columns;
};

} // namespace

// --- columns and lines -----------------------------------------------------------------------------------------------

TEST_F(ColumnHeading, TableWithoutColumnDimensionsHasOneColumnAndNoLine) {
    sketch.Dimension("R", "r0 r1");
    sketch.Rows({0});
    Build();
    EXPECT_EQ(columns->NDimensions(), 0);
    EXPECT_EQ(columns->NColumns(), 1);
    EXPECT_EQ(columns->NRows(), 0);
    EXPECT_TRUE(columns->Column(0).empty());
    EXPECT_TRUE(columns->Row(0).empty());
    EXPECT_TRUE(columns->ColumnCategories(0).empty());
}

// The usual order would be that of the axis.
TEST_F(ColumnHeading, LastDimensionOfTheAxisIsOutermost) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "G(b0) b1");
    sketch.Columns({1, 0});
    Build();
    EXPECT_EQ(columns->NDimensions(), 2);
    EXPECT_EQ(columns->getDimensionIndex(0), 0);
    EXPECT_EQ(columns->getDimensionIndex(1), 1);
    EXPECT_EQ(columns->VisibleHeight(0), 2);
    EXPECT_EQ(columns->VisibleHeight(1), 3);
    EXPECT_EQ(columns->NRows(), 5);
    EXPECT_EQ(AllColumns(), (Lines{"A a0 B G b0", "A a0 B b1 .", "A a1 B G b0", "A a1 B b1 ."}));
}

TEST_F(ColumnHeading, RowsListOneLineOfEveryColumn) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "G(b0) b1");
    sketch.Columns({1, 0});
    Build();
    EXPECT_EQ(Labels(columns->Row(0)), "A A A A");
    EXPECT_EQ(Labels(columns->Row(1)), "a0 a0 a1 a1");
    EXPECT_EQ(Labels(columns->Row(3)), "G b1 G b1");
    EXPECT_EQ(Labels(columns->Row(4)), "b0 . b0 .");
}

TEST_F(ColumnHeading, CategoriesAreTheLeavesInHeadingOrder) {
    sketch.Dimension("A", "a0 -a1");
    sketch.Dimension("B", "~G(b0) b1");
    sketch.Columns({1, 0});
    Build();
    EXPECT_EQ(Labels(columns->ColumnCategories(0)), "a0 b0");
    EXPECT_EQ(Labels(columns->ColumnCategories(3)), "a1 b1");
}

TEST_F(ColumnHeading, TableAndFlagAreThoseOfTheConstructor) {
    sketch.Dimension("A", "a0");
    sketch.Columns({0});
    EXPECT_FALSE(Build(false).SkipEmpty());
    EXPECT_EQ(&columns->Table(), &sketch.table);
    EXPECT_TRUE(Build(true).SkipEmpty());
}

TEST_F(ColumnHeading, AxesAreReadWhenTheHeadingIsBuilt) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "b0 b1 b2");
    sketch.Columns({0});
    Build();
    sketch.Columns({1, 0});
    EXPECT_EQ(columns->NDimensions(), 1);
    EXPECT_EQ(AllColumns(), (Lines{"A a0", "A a1"}));
}

// --- heading cells ---------------------------------------------------------------------------------------------------

TEST_F(ColumnHeading, ShortPathsAreFilledUpBelowTheLeaf) {
    BuildOver("A", "x G(y H(z))");
    EXPECT_EQ(AllColumns(), (Lines{"A x . .", "A G y .", "A G H z"}));
}

TEST_F(ColumnHeading, GroupWithHiddenLabelsTakesEverythingBelowAlong) {
    BuildOver("A", "~G(H(x)) y");
    EXPECT_EQ(AllColumns(), (Lines{"A .", "A y"}));
}

TEST_F(ColumnHeading, NameThatHidesItsLabelsLeavesNoLine) {
    EXPECT_EQ(BuildOver("~A", "G(x) y").NRows(), 0);
    EXPECT_EQ(columns->NColumns(), 2);
    EXPECT_TRUE(columns->Column(1).empty());
}

TEST_F(ColumnHeading, HiddenNodesAreLeftOutAndTheRestMovesUp) {
    BuildOver("-A", "-G(x) H(y) K(-z)");
    EXPECT_EQ(AllColumns(), (Lines{"x .", "H y", "K ."}));
}

// Asking for hidden first would show what lies below such a group.
TEST_F(ColumnHeading, HiddenGroupWithHiddenLabelsEndsTheCellsAsWell) {
    BuildOver("A", "-~G(H(x)) y");
    EXPECT_EQ(AllColumns(), (Lines{"A .", "A y"}));
}

TEST_F(ColumnHeading, OutermostOfTwoGroupsWithHiddenLabelsDecides) {
    BuildOver("A", "G(~H(~K(x)))");
    EXPECT_EQ(AllColumns(), (Lines{"A G"}));
}

TEST_F(ColumnHeading, LeafThatSaysItHidesLabelsIsShown) {
    BuildOver("A", "~x");
    EXPECT_EQ(AllColumns(), (Lines{"A x"}));
}

TEST_F(ColumnHeading, HiddenLeafKeepsItsColumn) {
    BuildOver("A", "x -y z");
    EXPECT_EQ(AllColumns(), (Lines{"A x", "A .", "A z"}));
    EXPECT_EQ(Labels(columns->ColumnCategories(1)), "y");
    Index index;
    columns->Fill(index, 1);
    EXPECT_EQ(index, Index{1});
}

TEST_F(ColumnHeading, NodesStayWhereTheyAre) {
    BuildOver("A", "x y");
    ConstNode* const category = columns->Column(1)[1];
    ConstNode* const again = columns->ColumnCategories(1)[0];
    EXPECT_EQ(category, again);
    Rebuild(true); // the layer heading keeps them
    EXPECT_EQ(category->Value().Text()->AsString(), "y");
}

// --- all positions ---------------------------------------------------------------------------------------------------

TEST_F(ColumnHeading, WithoutSkippingTheListHoldsEveryColumnAndIsFilledOnce) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "b0 b1 b2");
    sketch.Columns({0, 1});
    OmDisplayColumnHeading const& heading = Build();
    Numbers const& list = heading.getNonEmptyColumns();
    EXPECT_EQ(list, (Numbers{0, 1, 2, 3, 4, 5}));
    unsigned long long const* const elements = list.data();
    EXPECT_EQ(&heading.getNonEmptyColumns(), &list);
    EXPECT_EQ(heading.getNonEmptyColumns().data(), elements);
    EXPECT_EQ(list.size(), 6U);
}

TEST_F(ColumnHeading, ListOfNoColumnIsEmpty) {
    BuildOver("A", "");
    EXPECT_EQ(columns->NColumns(), 0);
    EXPECT_TRUE(columns->getNonEmptyColumns().empty());
    EXPECT_TRUE(columns->getNonEmptyColumns().empty());
}

TEST_F(ColumnHeading, ListOfATableWithoutColumnDimensionsIsZero) {
    Build();
    EXPECT_EQ(columns->getNonEmptyColumns(), Numbers{0});
}

// --- dimension and category nodes ------------------------------------------------------------------------------------

TEST_F(ColumnHeading, DimensionAndCategoryNodesAreAppended) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("-B", "-~G(-b0) b1");
    sketch.Columns({1, 0});
    Build();
    std::vector<ConstNode*> dimensions;
    std::vector<ConstNode*> categories{nullptr};
    columns->DimCatNodes(2, dimensions, categories);
    EXPECT_EQ(Labels(dimensions), "A B");
    EXPECT_EQ(Labels(categories), ". a1 b0");
    columns->DimCatNodes(1, dimensions, categories);
    EXPECT_EQ(Labels(dimensions), "A B A B");
    EXPECT_EQ(Labels(categories), ". a1 b0 a0 b1");
}

TEST_F(ColumnHeading, AllNodesAreAppendedHiddenOnesIncluded) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("-B", "-~G(-b0) b1");
    sketch.Columns({1, 0});
    Build();
    std::vector<ConstNode*> nodes{nullptr};
    columns->DimAllNodes(2, nodes);
    EXPECT_EQ(Labels(nodes), ". A a1 B G b0");
    columns->DimAllNodes(1, nodes);
    EXPECT_EQ(Labels(nodes), ". A a1 B G b0 A a0 B b1");
}

TEST_F(ColumnHeading, DimensionWithAPathOfOneNodeIsLeftOutOfTheLists) {
    sketch.Dimension("A", "a0");
    sketch.Dimension("B", "b0 b1");
    sketch.table.Dimension(0).Root().Value().IsGroup(false);
    sketch.Columns({0, 1});
    Build();
    std::vector<ConstNode*> dimensions;
    std::vector<ConstNode*> nodes;
    columns->DimCatNodes(0, dimensions, nodes);
    EXPECT_EQ(Labels(dimensions), "B");
    EXPECT_EQ(Labels(nodes), "b0");
    columns->DimAllNodes(1, nodes);
    EXPECT_EQ(Labels(nodes), "b0 B b1");
    EXPECT_EQ(AllColumns(), (Lines{"B b0 A", "B b1 A"}));
}

// --- filling a cell index --------------------------------------------------------------------------------------------

TEST_F(ColumnHeading, FillWritesTheColumnDimensionsAndLeavesTheOthers) {
    sketch.Dimension("R", "r0");
    sketch.Dimension("A", "a0=5 a1=6");
    sketch.Dimension("B", "b0=9 b1=8");
    sketch.Columns({2, 1});
    OmDisplayColumnHeading const& heading = Build();
    Index index{7, 7, 7};
    heading.Fill(index, 2);
    EXPECT_EQ(index, (Index{7, 6, 9}));
    heading.Fill(index, 1);
    EXPECT_EQ(index, (Index{7, 5, 8}));
}

TEST_F(ColumnHeading, FillResizesToTheNumberOfDimensions) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("R", "r0");
    sketch.Columns({0});
    Build();
    Index index;
    columns->Fill(index, 1);
    EXPECT_EQ(index, (Index{1, 0}));
    index.assign(5, 3);
    columns->Fill(index, 0);
    EXPECT_EQ(index, (Index{0, 3}));
}

TEST_F(ColumnHeading, ThreeFillsMakeACompleteIndex) {
    sketch.Dimension("R", "r0 r1");
    sketch.Dimension("C", "c0 c1 c2");
    sketch.Dimension("L", "l0 l1");
    sketch.Rows({0}).Columns({1}).Layers({2});
    sketch.Put({1, 2, 1}, "here");
    Build();
    layers->SwitchLayer(1);
    Index index;
    layers->Fill(index);
    columns->Fill(index, 2);
    OmDisplayRowHeading(*layers, false, false).Fill(index, 1);
    EXPECT_EQ(index, (Index{1, 2, 1}));
    EXPECT_EQ(sketch.table.Cell(index)->AsString(), "here");
}

// --- positions and dimensions that are not there ---------------------------------------------------------------------

TEST_F(ColumnHeading, GapOnTheAxisCountsAsADimensionButTakesNoLine) {
    sketch.Dimension("A", "a0 a1");
    sketch.table.Columns()[1] = 0; // leaves a gap in front
    Build();
    EXPECT_EQ(columns->NDimensions(), 2);
    EXPECT_EQ(columns->getDimensionIndex(0), 0);
    EXPECT_EQ(columns->getDimensionIndex(1), -1);
    EXPECT_EQ(columns->VisibleHeight(1), 0);
    EXPECT_EQ(AllColumns(), (Lines{"A a0", "A a1"}));
    EXPECT_EQ(Labels(columns->ColumnCategories(1)), "a1 .");
    Index index;
    columns->Fill(index, 1);
    EXPECT_EQ(index, Index{1});
}

// Heights are listed for the dimensions that have a record, so the gap's place goes to the one behind it.
TEST_F(ColumnHeading, GapInFrontHasNoHeightOfItsOwn) {
    sketch.Dimension("A", "a0 G(a1)");
    sketch.Columns({0, -1});
    Build();
    EXPECT_EQ(columns->getDimensionIndex(0), -1);
    EXPECT_EQ(columns->VisibleHeight(0), 3);
    EXPECT_EQ(columns->VisibleHeight(1), 0);
    EXPECT_EQ(columns->NRows(), 3);
    EXPECT_EQ(AllColumns(), (Lines{"A a0 .", "A G a1"}));
}

TEST_F(ColumnHeading, NumberWithoutADimensionTakesNoLine) {
    sketch.Dimension("A", "a0 a1");
    sketch.Columns({0, 12});
    Build();
    EXPECT_EQ(columns->getDimensionIndex(0), 12);
    EXPECT_EQ(AllColumns(), (Lines{"A a0", "A a1"}));
}

TEST_F(ColumnHeading, ArgumentsOutOfRangeAreHarmless) {
    BuildOver("A", "a0 a1");
    for (int const i : {1, Most, -1, Least}) {
        EXPECT_EQ(columns->VisibleHeight(i), 0) << i;
        EXPECT_EQ(columns->getDimensionIndex(i), -1) << i;
    }
    for (int const r : {2, Most, -1, Least}) {
        EXPECT_TRUE(columns->Row(r).empty()) << r;
    }
}

TEST_F(ColumnHeading, ColumnOutOfRangeHasNullCells) {
    BuildOver("A", "a0 a1");
    for (int const c : {2, Most, -1, Least}) {
        EXPECT_EQ(Labels(columns->Column(c)), ". .") << c;
        EXPECT_EQ(Labels(columns->ColumnCategories(c)), ".") << c;
        std::vector<ConstNode*> nodes;
        columns->DimAllNodes(c, nodes);
        columns->DimCatNodes(c, nodes, nodes);
        EXPECT_TRUE(nodes.empty()) << c;
        Index index{9, 9};
        columns->Fill(index, c);
        EXPECT_EQ(index, Index{9}) << c;
    }
}

// The first digit takes what is left, so only the outermost dimension is beyond its categories.
TEST_F(ColumnHeading, ColumnPastTheLastGoesOnInTheInnerDimensions) {
    sketch.Dimension("A", "a0 a1");
    sketch.Dimension("B", "b0 b1 b2");
    sketch.Columns({1, 0});
    Build();
    EXPECT_EQ(Labels(columns->Column(7)), ". . B b1");
}

TEST_F(ColumnHeading, DimensionThatHasLostItsCategoriesKeepsOneColumnWithoutALine) {
    OmDimension& dimension = sketch.Dimension("A", "a0");
    TableSketch::Node only = TableSketch::At(dimension, {0});
    dimension.Delete(only);
    ASSERT_EQ(dimension.NumCategories(), 1);
    sketch.Columns({0});
    Build();
    EXPECT_EQ(columns->NColumns(), 1);
    EXPECT_EQ(columns->NRows(), 0);
    EXPECT_TRUE(columns->Column(0).empty());
    EXPECT_EQ(Labels(columns->ColumnCategories(0)), ".");
    Index index{4};
    columns->Fill(index, 0);
    EXPECT_EQ(index, Index{4});
}

TEST_F(ColumnHeading, DigitBeyondTheShownCategoriesHasNullCells) {
    OmDimension& dimension = sketch.Dimension("A", "a0 a1 a2");
    sketch.Dimension("B", "b0");
    TableSketch::Node middle = TableSketch::At(dimension, {1});
    dimension.Delete(middle);
    ASSERT_EQ(dimension.NumCategories(), 3);
    sketch.Columns({1, 0});
    Build();
    EXPECT_EQ(AllColumns(), (Lines{"A a0 B b0", "A a2 B b0", ". . B b0"}));
    EXPECT_EQ(Labels(columns->Row(1)), "a0 a2 .");
    EXPECT_EQ(Labels(columns->ColumnCategories(2)), ". b0");
}

TEST_F(ColumnHeading, SizeBelowZeroCountsAsZero) {
    OmDimension& dimension = sketch.Dimension("A", "a0 far=4294967294");
    sketch.Dimension("B", "b0");
    TableSketch::Node first = TableSketch::At(dimension, {0});
    dimension.Delete(first);
    ASSERT_EQ(dimension.NumCategories(), -1);
    for (bool const skipEmpty : {false, true}) {
        for (std::vector<short> const& axis : {std::vector<short>{0, 1}, std::vector<short>{1, 0}}) {
            sketch.Columns(axis);
            EXPECT_EQ(Build(skipEmpty).NColumns(), 0);
            EXPECT_EQ(columns->NRows(), 4);
            EXPECT_TRUE(columns->Row(0).empty());
            EXPECT_TRUE(columns->getNonEmptyColumns().empty());
            EXPECT_EQ(columns->Column(3).size(), 4U);
        }
    }
}
