#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using omtest::Categories;
using omtest::CategoryReader;
using omtest::CategoryWorld;
using omtest::ChildIndexOf;
using omtest::Label;
using omtest::NodeAt;
using omtest::NodeNamed;
using omtest::ParentPointersHold;
using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;

/// Adds leaves below the root by `Child`, each with the subscript that it stands for in the list.
void AddLeaves(OmDimension& dimension, std::vector<std::string> const& labels) {
    for (std::size_t k = 0; k < labels.size(); ++k) {
        dimension.Child(dimension.Root(), Label(labels[k]), k, false);
    }
}

} // namespace

// --- a new dimension -------------------------------------------------------------------------------------------------

TEST(OmDimension, StartsWithItsNameAlone) {
    CategoryWorld world;
    OmDimension const& dimension = world.dimension;
    EXPECT_EQ(dimension.Name().AsString(), "D");
    EXPECT_EQ(&dimension.Name(), dimension.Root().Value().Text());
    EXPECT_EQ(dimension.NumCategories(), 0);
    EXPECT_FALSE(dimension.DisplayLastCategory());
    EXPECT_EQ(dimension.Root().ChildCount(), 0U);
    EXPECT_EQ(dimension.Root().Depth(), 0U);
    EXPECT_EQ(dimension.Root().Ptr()->parent, nullptr);
}

TEST(OmDimension, NameMayBeWrittenTo) {
    CategoryWorld world;
    world.Root().Value().Text(Label("E"));
    EXPECT_EQ(world.dimension.Name().AsString(), "E");
}

TEST(OmDimension, BeginsWithItsRootNode) {
    CategoryWorld world;
    EXPECT_EQ(static_cast<void const*>(world.Root().Ptr()), static_cast<void const*>(&world.dimension));
}

TEST(OmDimension, OnlyTablesMakeAndCopyDimensions) {
    static_assert(!std::is_copy_constructible_v<OmDimension>);
    static_assert(!std::is_constructible_v<OmDimension, OmDimensionNode const&, OmMemoryRegion*>);
    static_assert(!std::is_constructible_v<OmDimension, OmDimension const&, OmMemoryRegion*>);
    static_assert(!std::is_copy_assignable_v<OmDimension>);
}

TEST(OmDimension, RegionIsThatOfTheRootsChildren) {
    CategoryWorld world;
    EXPECT_EQ(&world.dimension.Region(), world.Root().Ptr()->children.Region());
    EXPECT_NE(&world.dimension.Region(), OmMemoryRegion::DefaultHeap());
}

TEST(OmDimension, NodesAndTheirLabelsLiveInItsRegion) {
    CategoryWorld world;
    OmMemoryRegion const& region = world.dimension.Region();
    std::size_t const before = region.LiveBlocks();
    Node const node = world.dimension.Child(world.Root(), Label("a"), 0, true);
    EXPECT_EQ(node.Value().Region(), &region);
    EXPECT_EQ(node.Ptr()->children.Region(), &region);
    // the children of the root, and the label; the root's own child index is where the root is
    EXPECT_EQ(region.LiveBlocks(), before + 2);
}

TEST(OmDimension, DisplayLastCategoryReadsWhatWasWritten) {
    CategoryWorld world;
    world.dimension.DisplayLastCategory(true);
    EXPECT_TRUE(world.dimension.DisplayLastCategory());
    world.dimension.DisplayLastCategory(false);
    EXPECT_FALSE(world.dimension.DisplayLastCategory());
}

// --- find or create --------------------------------------------------------------------------------------------------

TEST(OmDimensionChild, AppendsInTheOrderOfTheCalls) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"c", "a", "b"});
    EXPECT_EQ(Categories(world.dimension), "c a b");
    EXPECT_EQ(ChildIndexOf(world.Root()), "1, 2, 0");
    EXPECT_EQ(world.dimension.NumCategories(), 3);
}

TEST(OmDimensionChild, ReturnsAHandleOneLevelDown) {
    CategoryWorld world;
    Node const group = world.dimension.Child(world.Root(), Label("g"), 0, true);
    EXPECT_EQ(group.Depth(), 1U);
    EXPECT_TRUE(group == NodeAt(world.dimension, 0));
    Node const leaf = world.dimension.Child(group, Label("a"), 4, false);
    EXPECT_EQ(leaf.Depth(), 2U);
    EXPECT_TRUE(leaf == NodeAt(world.dimension, 0, 0));
    EXPECT_EQ(leaf.Value().Subscript(), 4U);
}

// Taking the subscript into account would add a second child.
TEST(OmDimensionChild, SameLabelWithAnotherSubscriptIsTheFirstChild) {
    CategoryWorld world;
    Node const first = world.dimension.Child(world.Root(), Label("a"), 1, false);
    Node const second = world.dimension.Child(world.Root(), Label("a"), 2, false);
    EXPECT_TRUE(first == second);
    EXPECT_EQ(second.Depth(), 1U);
    EXPECT_EQ(second.Value().Subscript(), 1U);
    EXPECT_EQ(world.Root().ChildCount(), 1U);
    EXPECT_EQ(world.dimension.NumCategories(), 1);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0");
}

TEST(OmDimensionChild, GroupAndLeafOfOneLabelAreTwoChildrenAndTheGroupSortsFirst) {
    CategoryWorld world;
    world.dimension.Child(world.Root(), Label("a"), 0, false);
    world.dimension.Child(world.Root(), Label("a"), 0, true);
    EXPECT_EQ(Categories(world.dimension), "a a()");
    EXPECT_EQ(ChildIndexOf(world.Root()), "1, 0");
    EXPECT_EQ(world.dimension.NumCategories(), 1);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), false), 0);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), true), 1);
}

TEST(OmDimensionChild, GroupsAreNotCountedAsCategories) {
    CategoryWorld world;
    Node const group = world.dimension.Child(world.Root(), Label("g"), 0, true);
    EXPECT_EQ(world.dimension.NumCategories(), 0);
    world.dimension.Child(group, Label("a"), 0, false);
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionChild, NumberOfCategoriesIgnoresSubscripts) {
    CategoryWorld world;
    world.dimension.Child(world.Root(), Label("a"), 100, false);
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionChild, ParentThatIsNoGroupIsRefused) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"a"});
    try {
        world.dimension.Child(NodeAt(world.dimension, 0), Label("b"), 3, false);
        FAIL() << "nothing was thrown";
    } catch (OMSException const& exception) {
        EXPECT_STREQ(exception.what(), "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0");
        EXPECT_EQ(exception.Message(), "OmDimension::Child -- parent is not group");
        EXPECT_EQ(exception.Value1(), 0.0);
        EXPECT_EQ(exception.Value2(), 0.0);
    }
    EXPECT_EQ(Categories(world.dimension), "a");
    EXPECT_EQ(ChildIndexOf(NodeAt(world.dimension, 0)), "");
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionChild, RefusesAlsoByNodeValue) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"a"});
    OmDimensionNode const value(Label("b"), 0, false, nullptr);
    EXPECT_THROW(world.dimension.Child(NodeAt(world.dimension, 0), value), OMSException);
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionChild, CopiesTheValueWithItsFlags) {
    CategoryWorld world;
    OmDimensionNode value(Label("a"), 6, true, nullptr);
    value.Sort(OmSort::Down);
    value.Hide(true);
    value.HideLabels(true);
    Node const node = world.dimension.Child(world.Root(), value);
    EXPECT_EQ(omtest::PrintedBy(node.Value(), 0),
              "Subscript: 6, Group: yes, hide: yes, hideLabels: yes, Sort: down, Text: \"a\"\n");
    EXPECT_EQ(value.Text()->AsString(), "a");
}

// The new node has no children, so positions taken along would name strangers.
TEST(OmDimensionChild, ChildIndexOfTheValueIsNotTakenAlong) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q) B()");
    Node const copy = world.dimension.Child(NodeNamed(world.dimension, "B"), NodeNamed(world.dimension, "A").Value());
    EXPECT_EQ(ChildIndexOf(copy), "");
    EXPECT_EQ(ChildIndexOf(NodeNamed(world.dimension, "A")), "0, 1");
    EXPECT_EQ(Categories(world.dimension), "A(p q) B(A())");
}

TEST(OmDimensionChild, ValueMayBeOneOfTheTreesOwn) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "a b c d");
    Node const group = world.dimension.Child(world.Root(), Label("g"), 0, true);
    Node const copy = world.dimension.Child(group, NodeAt(world.dimension, 2).Value());
    EXPECT_EQ(copy.Value().Text()->AsString(), "c");
    EXPECT_TRUE(world.dimension.Child(world.Root(), NodeAt(world.dimension, 2).Value()) == NodeAt(world.dimension, 2));
}

TEST(OmDimensionChild, FindsWhateverTheOrderOfCreation) {
    CategoryWorld world;
    std::vector<std::string> const labels{"m", "c", "z", "a", "q", "b", "y", "n", "", "mm"};
    AddLeaves(world.dimension, labels);
    for (std::size_t k = 0; k < labels.size(); ++k) {
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(labels[k]), false), static_cast<int>(k));
        EXPECT_TRUE(world.dimension.Child(world.Root(), Label(labels[k]), 99, false) == NodeAt(world.dimension, k));
    }
    EXPECT_EQ(world.dimension.NumCategories(), 10);
    EXPECT_EQ(ChildIndexOf(world.Root()), "8, 3, 5, 1, 0, 9, 7, 4, 6, 2");
}

TEST(OmDimensionChild, GrowingSiblingsKeepsParentPointers) {
    CategoryWorld world;
    for (int k = 0; k < 40; ++k) {
        Node const group = world.dimension.Child(world.Root(), Label("g" + std::to_string(k)), 0, true);
        Node const below = world.dimension.Child(group, Label("h"), 0, true);
        world.dimension.Child(below, Label("i"), 0, false);
    }
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

// --- search only -----------------------------------------------------------------------------------------------------

TEST(OmDimensionFindChild, GivesMinusOneOnANodeWithoutChildren) {
    CategoryWorld world;
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), false), -1);
    AddLeaves(world.dimension, {"a"});
    EXPECT_EQ(OmDimension::FindChild(NodeAt(world.dimension, 0), Label("a"), false), -1);
}

TEST(OmDimensionFindChild, GivesThePositionAmongTheChildren) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"c", "a", "b"});
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("c"), false), 0);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), false), 1);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("b"), false), 2);
}

TEST(OmDimensionFindChild, MissesWhatIsNotThere) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"c", "a"});
    for (char const* const label : {"", "b", "d", "aa"}) {
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(label), false), -1) << label;
    }
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), true), -1);
}

TEST(OmDimensionFindChild, ChangesNothing) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"c", "a"});
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    OmDimension::FindChild(world.Root(), Label("b"), false);
    EXPECT_EQ(Categories(world.dimension), "c a");
    EXPECT_EQ(ChildIndexOf(world.Root()), "1, 0");
    EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
    EXPECT_EQ(world.dimension.NumCategories(), 2);
}

// --- append without search -------------------------------------------------------------------------------------------

TEST(OmDimensionAddNewChild, AddsASecondChildOfTheSameLabel) {
    CategoryWorld world;
    Node const first = world.dimension.AddNewChild(world.Root(), Label("a"), 1, false);
    EXPECT_EQ(first.Depth(), 1U);
    Node const second = world.dimension.AddNewChild(world.Root(), Label("a"), 2, false);
    EXPECT_TRUE(second == NodeAt(world.dimension, 1));
    EXPECT_EQ(second.Value().Subscript(), 2U);
    EXPECT_EQ(Categories(world.dimension), "a a");
    EXPECT_EQ(world.dimension.NumCategories(), 2);
}

// Sorted as `Child` does it, the index would read 1, 0.
TEST(OmDimensionAddNewChild, EntryGoesToTheEndOfTheChildIndex) {
    CategoryWorld world;
    world.dimension.AddNewChild(world.Root(), Label("b"), 0, false);
    world.dimension.AddNewChild(world.Root(), Label("a"), 1, false);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1");
}

TEST(OmDimensionAddNewChild, LaterSearchMayMissWhatIsUnsorted) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "b a");
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), false), -1);
    Node const again = world.dimension.Child(world.Root(), Label("a"), 9, false);
    EXPECT_TRUE(again == NodeAt(world.dimension, 2));
    EXPECT_EQ(Categories(world.dimension), "b a a");
    EXPECT_EQ(ChildIndexOf(world.Root()), "2, 0, 1");
}

TEST(OmDimensionAddNewChild, ParentNeedNotBeAGroup) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"a"});
    Node const child = world.dimension.AddNewChild(NodeAt(world.dimension, 0), Label("b"), 5, false);
    EXPECT_EQ(child.Depth(), 2U);
    EXPECT_EQ(Categories(world.dimension), "a(b)");
    EXPECT_FALSE(NodeAt(world.dimension, 0).Value().IsGroup());
    EXPECT_EQ(ChildIndexOf(NodeAt(world.dimension, 0)), "0");
    EXPECT_EQ(world.dimension.NumCategories(), 2);
}

TEST(OmDimensionAddNewChild, GroupsAreNotCountedAsCategories) {
    CategoryWorld world;
    world.dimension.AddNewChild(world.Root(), Label("g"), 0, true);
    EXPECT_EQ(world.dimension.NumCategories(), 0);
}

// --- counterpart -----------------------------------------------------------------------------------------------------

TEST(OmDimensionCounterpart, IsTheNodeAtTheSamePath) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "X A(p B(q r)) Y");
    OmDimension& copy = world.table.AddDimension(world.dimension);
    Node node = NodeNamed(world.dimension, "r");
    Node const counterpart = copy.Counterpart(node);
    EXPECT_TRUE(counterpart == NodeAt(copy, 1, 1, 1));
    EXPECT_EQ(counterpart.Depth(), 3U);
    EXPECT_FALSE(counterpart == node);
}

TEST(OmDimensionCounterpart, OfARootIsTheOwnRoot) {
    CategoryWorld world;
    OmDimension& other = world.table.AddDimension(Label("E"));
    Node root = other.Root();
    EXPECT_TRUE(world.dimension.Counterpart(root) == world.Root());
    EXPECT_EQ(world.dimension.Counterpart(root).Depth(), 0U);
}

TEST(OmDimensionCounterpart, GoesByPathAndNotByLabel) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q)");
    OmDimension& other = world.table.AddDimension(Label("E"));
    CategoryReader(other).AddBelow(other.Root(), "Z(q p)");
    Node node = NodeNamed(world.dimension, "q");
    EXPECT_EQ(other.Counterpart(node).Value().Text()->AsString(), "p");
}

// --- depth and visible groups ----------------------------------------------------------------------------------------

TEST(OmDimensionDepth, OfADimensionWithoutCategoriesIsOne) {
    CategoryWorld world;
    EXPECT_EQ(world.dimension.getMaximumDepth(), 1U);
    EXPECT_EQ(world.dimension.getMaxVisibleGroupCount(), 0U);
}

TEST(OmDimensionDepth, OfAFlatListIsTwo) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "a b c");
    EXPECT_EQ(world.dimension.getMaximumDepth(), 2U);
    EXPECT_EQ(world.dimension.getMaxVisibleGroupCount(), 1U);
}

TEST(OmDimensionDepth, OfAGroupWithTwoLeavesIsThree) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q)");
    EXPECT_EQ(world.dimension.getMaximumDepth(), 3U);
    EXPECT_EQ(world.dimension.getMaxVisibleGroupCount(), 1U);
}

TEST(OmDimensionDepth, IsThatOfTheDeepestBranch) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "a B(c D(e F())) g");
    EXPECT_EQ(world.dimension.getMaximumDepth(), 4U);
}

struct VisibleGroups {
    char const* categories;
    unsigned long long count;
};

class OmDimensionVisibleGroups : public ::testing::TestWithParam<VisibleGroups> {};

TEST_P(OmDimensionVisibleGroups, AreCountedLevelByLevel) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), GetParam().categories);
    EXPECT_EQ(world.dimension.getMaxVisibleGroupCount(), GetParam().count) << GetParam().categories;
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, OmDimensionVisibleGroups,
    ::testing::Values(VisibleGroups{"A() B() C()", 3},           // visible groups count, childless or not
                      VisibleGroups{"A() b c B() d", 3},         // leaves of one parent count once together
                      VisibleGroups{"A(p) B(q) C(r s)", 3},      // once for each parent
                      VisibleGroups{"~A(p q r)", 1},             // a hidden group with children is passed over
                      VisibleGroups{"~A() ~B()", 1},             // a hidden one without counts like a leaf
                      VisibleGroups{"~A() b", 1},                // and shares the one count
                      VisibleGroups{"~A(P() Q()) ~B(R() s)", 4}, // what is below a hidden one counts
                      VisibleGroups{"A(p(x) q(y))", 2}));

// --- copies ----------------------------------------------------------------------------------------------------------

TEST(OmDimensionCopy, HasTheWholeTree) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "X A(p B(q r)) ~C() Y");
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_EQ(copy.Name().AsString(), "D");
    EXPECT_EQ(Categories(copy), "X A(p B(q r)) ~C() Y");
    EXPECT_EQ(copy.NumCategories(), world.dimension.NumCategories());
    EXPECT_EQ(NodeNamed(copy, "r").Value().Subscript(), NodeNamed(world.dimension, "r").Value().Subscript());
    EXPECT_TRUE(ParentPointersHold(copy));
}

TEST(OmDimensionCopy, TakesTheNumberOfCategoriesAsItStands) {
    CategoryWorld world;
    CategoryReader(world.dimension, 40).AddBelow(world.Root(), "a b");
    Node node = NodeAt(world.dimension, 1);
    world.dimension.Delete(node);
    ASSERT_EQ(world.dimension.NumCategories(), 41);
    EXPECT_EQ(world.table.AddDimension(world.dimension).NumCategories(), 41);
}

TEST(OmDimensionCopy, TakesChildIndexesAsTheyStand) {
    CategoryWorld world;
    AddLeaves(world.dimension, {"c", "a", "b"});
    world.dimension.AddNewChild(world.Root(), Label("0"), 9, false);
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_EQ(ChildIndexOf(copy.Root()), "1, 2, 0, 3");
    EXPECT_EQ(OmDimension::FindChild(copy.Root(), Label("b"), false), 2);
}

// A memberwise copy would take the flag along.
TEST(OmDimensionCopy, DisplayLastCategoryStartsFalse) {
    CategoryWorld world;
    world.dimension.DisplayLastCategory(true);
    EXPECT_FALSE(world.table.AddDimension(world.dimension).DisplayLastCategory());
    EXPECT_TRUE(world.dimension.DisplayLastCategory());
    OmPivotTable other(Label("t"), Label("n"), false);
    other.CopyDimensions(world.table);
    EXPECT_FALSE(other.Dimension(0).DisplayLastCategory());
}

TEST(OmDimensionCopy, IsIndependentOfItsSource) {
    auto source = std::make_unique<CategoryWorld>();
    CategoryReader(source->dimension).AddBelow(source->Root(), "X A(p q)");
    CategoryWorld world;
    OmDimension& copy = world.table.AddDimension(source->dimension);
    source.reset();
    EXPECT_EQ(Categories(copy), "X A(p q)");
    EXPECT_EQ(&copy.Region(), &world.dimension.Region());
    copy.Child(NodeNamed(copy, "A"), Label("r"), 5, false);
    EXPECT_EQ(Categories(copy), "X A(p q r)");
}

TEST(OmDimensionCopy, WideLevelsKeepTheirParents) {
    CategoryWorld world;
    for (int k = 0; k < 33; ++k) {
        CategoryReader(world.dimension).AddBelow(world.Root(), "A(B(p) q)");
    }
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_EQ(Categories(copy), Categories(world.dimension));
    EXPECT_TRUE(ParentPointersHold(copy));
}
