// Trees of a million levels and of a million siblings through every operation. Recursion by depth would run out of
// stack, and work per pair of siblings would not end within the time that a test is given.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using omtest::CategoryWorld;
using omtest::Label;
using omtest::NodeAt;
using omtest::ParentPointersHold;
using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;

constexpr unsigned int Million = 1000000;

std::size_t NodesFrom(ConstNode const& top) {
    std::size_t count = 0;
    OmDimension::Tree::WalkPreOrder(top, [&](ConstNode const&) { return ++count != 0; });
    return count;
}

/// The first child of the first child and so on.
Node Lowest(Node node) {
    while (node.ChildCount() != 0) {
        node = node.Child(0);
    }
    return node;
}

std::string TextOf(ConstNode const& node) { return node.Value().Text()->AsString(); }

/// A chain of groups, a million deep, below the root, and a short one beside it.
struct DeepWorld : CategoryWorld {
    DeepWorld() {
        OmStringCell const label = Label("");
        Node node = dimension.AddNewChild(Root(), Label("top"), 0, true);
        dimension.AddNewChild(Root(), Label("beside"), 0, true);
        node = NodeAt(dimension, 0);
        for (unsigned int depth = 1; depth < Million; ++depth) {
            node = dimension.AddNewChild(node, label, depth, true);
        }
    }
    Node Top() { return NodeAt(dimension, 0); }
    Node Beside() { return NodeAt(dimension, 1); }
};

/// A million leaves in one group, and a few after it.
struct WideWorld : CategoryWorld {
    WideWorld() {
        OmStringCell const label = Label("");
        Node const group = dimension.AddNewChild(Root(), Label("wide"), 0, true);
        for (unsigned int k = 0; k < Million; ++k) {
            dimension.AddNewChild(group, label, k, false);
        }
        dimension.AddNewChild(Root(), Label("x"), Million, false);
        dimension.AddNewChild(Root(), Label("y"), Million + 1, false);
    }
    Node Wide() { return NodeAt(dimension, 0); }

    /// Subscripts of the children of `parent` read first, first + step and so on.
    static bool Counts(ConstNode const& parent, std::size_t from, std::size_t number, unsigned long long first,
                       long long step) {
        for (std::size_t k = 0; k < number; ++k) {
            if (parent.Child(from + k).Value().Subscript() != first) {
                return false;
            }
            first += static_cast<unsigned long long>(step);
        }
        return true;
    }
};

} // namespace

// --- a million levels ------------------------------------------------------------------------------------------------

TEST(OmDimensionDeep, GrowsAtTheBottomAndIsCopied) {
    DeepWorld world;
    Node lowest = Lowest(world.Top());
    EXPECT_EQ(lowest.Depth(), Million);
    OmDimension& copy = world.table.AddDimension(world.dimension);
    Node const counterpart = copy.Counterpart(lowest);
    EXPECT_TRUE(counterpart == Lowest(NodeAt(copy, 0)));
    EXPECT_EQ(counterpart.Depth(), Million);
    EXPECT_TRUE(ParentPointersHold(copy));
    Node const leaf = world.dimension.Child(lowest, Label("leaf"), 3, false);
    EXPECT_EQ(leaf.Depth(), Million + 1);
    EXPECT_EQ(OmDimension::FindChild(lowest, Label("leaf"), false), 0);
    EXPECT_EQ(world.dimension.insertCategory(Label("n"), leaf, lowest, false).Subscript(), 4U);
    EXPECT_EQ(TextOf(lowest.Child(1)), "n");
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million + 2);
    EXPECT_EQ(world.dimension.getMaxVisibleGroupCount(), 2U);
}

TEST(OmDimensionDeep, IsDissolvedAndDeletedAtBothEnds) {
    DeepWorld world;
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    Node node = world.Top();
    world.dimension.removeChild(node);
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million);
    node = Lowest(world.Top()).Parent();
    world.dimension.removeChild(node);
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million - 1);
    EXPECT_TRUE(ParentPointersHold(world.dimension));
    node = Lowest(world.Top());
    world.dimension.Delete(node);
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million - 2);
    node = world.Top();
    world.dimension.Delete(node);
    EXPECT_EQ(world.dimension.getMaximumDepth(), 2U);
    EXPECT_LT(world.dimension.Region().LiveBlocks(), blocks / 1000);
}

// Asking for each ancestor from the root on would take a million times a million steps, hidden or not.
TEST(OmDimensionDeep, LowestNodeMovesUp) {
    DeepWorld world;
    Node const lowest = Lowest(world.Top());
    world.dimension.AddNewChild(lowest, Label("a"), 0, false);
    world.dimension.AddNewChild(lowest, Label("b"), 0, false);
    Node node = lowest.Child(0);
    world.dimension.moveChild(node, nullptr, false);
    EXPECT_EQ(TextOf(lowest.Child(0)), "b");
    EXPECT_EQ(TextOf(lowest.Child(1)), "a");
    for (node = world.Top(); node.ChildCount() != 0; node = node.Child(0)) {
        node.Value().Hide(true);
    }
    world.dimension.moveChild(node, nullptr, false);
    EXPECT_EQ(TextOf(NodeAt(world.dimension, 2)), "b");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionDeep, MovesBelowAndAboveAndIsSwapped) {
    DeepWorld world;
    Node node = world.Beside();
    Node target = Lowest(world.Top());
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(world.Root().ChildCount(), 1U);
    node = Lowest(world.Top());
    target = world.Top();
    EXPECT_EQ(TextOf(node), "beside");
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(TextOf(NodeAt(world.dimension, 0)), "beside");
    node = NodeAt(world.dimension, 0);
    target = NodeAt(world.dimension, 1);
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(TextOf(NodeAt(world.dimension, 0)), "top");
    world.dimension.AddNewChild(world.Beside(), Label("z"), 0, false);
    node = world.Top();
    target = NodeAt(world.dimension, 1, 0);
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million + 2);
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionDeep, IsGatheredFromBothEnds) {
    DeepWorld world;
    Node lowest = Lowest(world.Top());
    Node beside = world.Beside();
    world.dimension.insertChild(Label("N"), {&beside, &lowest});
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million);
    EXPECT_EQ(NodeAt(world.dimension, 1).ChildCount(), 2U);
    Node top = world.Top();
    Node group = NodeAt(world.dimension, 1);
    world.dimension.insertChild(Label("M"), {&top, &group});
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million + 1);
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionDeep, NodesBelowALaterSiblingOfADeletedOneAreFound) {
    DeepWorld world;
    Node node = world.Beside();
    Node target = world.Top();
    world.dimension.moveChild(node, &target, true);
    node = NodeAt(world.dimension, 0);
    ASSERT_EQ(TextOf(node), "beside");
    world.dimension.Delete(node);
    node = Lowest(world.Top());
    world.dimension.moveChild(node, nullptr, false);
    node = Lowest(world.Top());
    world.dimension.Delete(node);
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million);
}

// A listed node at every level: paths from the root would take a million times a million steps.
TEST(OmDimensionDeep, GathersOneNodeFromEveryLevel) {
    CategoryWorld world;
    OmStringCell const label = Label("");
    Node node = world.Root();
    for (unsigned int depth = 0; depth < Million; ++depth) {
        world.dimension.AddNewChild(node, label, depth, false);
        node = world.dimension.AddNewChild(node, label, 0, true);
    }
    std::vector<Node> leaves;
    for (node = world.Root(); node.ChildCount() != 0; node = node.Child(1)) {
        leaves.push_back(node.Child(0));
    }
    std::vector<Node*> listed;
    for (Node& leaf : leaves) {
        listed.push_back(&leaf);
    }
    world.dimension.insertChild(Label("N"), listed);
    EXPECT_TRUE(WideWorld::Counts(NodeAt(world.dimension, 0), 0, Million, 0, 1));
    EXPECT_EQ(NodesFrom(world.Root()), 2 * std::size_t{Million} + 2);
    EXPECT_EQ(world.dimension.getMaximumDepth(), Million + 1);
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

// --- a million siblings ----------------------------------------------------------------------------------------------

TEST(OmDimensionWide, IsFoundByLabel) {
    CategoryWorld world;
    for (unsigned int k = 0; k < Million; ++k) {
        world.dimension.Child(world.Root(), Label(std::to_string(Million + k)), k, false);
    }
    for (unsigned int k = 0; k < Million; k += 997) {
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(std::to_string(Million + k)), false), static_cast<int>(k));
    }
    EXPECT_EQ(world.dimension.NumCategories(), static_cast<int>(Million));
    EXPECT_EQ(world.dimension.getMaximumDepth(), 2U);
    EXPECT_EQ(world.dimension.getMaxVisibleGroupCount(), 1U);
}

TEST(OmDimensionWide, IsCopiedRearrangedAndDeletedFrom) {
    WideWorld world;
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_TRUE(WideWorld::Counts(NodeAt(copy, 0), 0, Million, 0, 1));
    Node node = NodeAt(world.dimension, 0, Million - 1);
    EXPECT_TRUE(copy.Counterpart(node) == NodeAt(copy, 0, Million - 1));

    node = NodeAt(world.dimension, 0, 0);
    world.dimension.moveChild(node, nullptr, false);
    EXPECT_EQ(NodeAt(world.dimension, 0, Million - 1).Value().Subscript(), 0U);
    node = NodeAt(world.dimension, 0, Million - 1);
    Node target = NodeAt(world.dimension, 0, 0);
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(NodeAt(world.dimension, 0, 0).Value().Subscript(), 0U);
    EXPECT_EQ(NodeAt(world.dimension, 0, Million - 1).Value().Subscript(), 1U);
    node = NodeAt(world.dimension, 0, Million - 1);
    target = NodeAt(world.dimension, 0, 1);
    world.dimension.moveChild(node, &target, false);
    EXPECT_TRUE(WideWorld::Counts(world.Wide(), 0, Million, 0, 1));

    Node const wide = world.Wide();
    EXPECT_EQ(world.dimension.insertCategory(Label("n"), wide.Child(0), wide, true).Subscript(), Million + 2);
    EXPECT_EQ(world.dimension.insertCategory(Label("m"), wide.Child(Million), wide, false).Subscript(), Million + 3);
    EXPECT_EQ(TextOf(wide.Child(0)), "n");
    EXPECT_EQ(TextOf(wide.Child(Million + 1)), "m");

    node = wide.Child(0);
    world.dimension.Delete(node);
    EXPECT_TRUE(WideWorld::Counts(world.Wide(), 0, Million, 0, 1));
    node = world.Wide();
    world.dimension.Delete(node);
    EXPECT_EQ(world.Root().ChildCount(), 2U);
}

// One copy after the other, each would push the rest along.
TEST(OmDimensionWide, DissolvesBeforeAMillionSiblings) {
    WideWorld world;
    OmStringCell const label = Label("");
    for (unsigned int k = 0; k < Million; ++k) {
        world.dimension.AddNewChild(world.Root(), label, k, false);
    }
    Node node = world.Wide();
    world.dimension.removeChild(node);
    ASSERT_EQ(world.Root().ChildCount(), 2 * std::size_t{Million} + 2);
    EXPECT_TRUE(WideWorld::Counts(world.Root(), 0, Million + 2, 0, 1));
    EXPECT_TRUE(WideWorld::Counts(world.Root(), Million + 2, Million, 0, 1));
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionWide, AllAreGatheredInEitherOrder) {
    WideWorld world;
    for (bool const backwards : {false, true}) {
        Node const parent = backwards ? NodeAt(world.dimension, 0, 0) : world.Wide();
        std::vector<Node> nodes;
        for (std::size_t k = 0; k < Million; ++k) {
            nodes.push_back(parent.Child(k));
        }
        std::vector<Node*> listed;
        for (Node& node : nodes) {
            listed.push_back(&node);
        }
        if (backwards) {
            std::reverse(listed.begin(), listed.end());
        }
        world.dimension.insertChild(Label("N"), listed);
    }
    EXPECT_TRUE(WideWorld::Counts(NodeAt(world.dimension, 0, 0, 0), 0, Million, Million - 1, -1));
    EXPECT_TRUE(ParentPointersHold(world.dimension));
    EXPECT_EQ(NodesFrom(world.Root()), std::size_t{Million} + 6);
}

TEST(OmDimensionWide, EverySecondIsGathered) {
    WideWorld world;
    std::vector<Node> nodes;
    for (std::size_t k = 1; k < Million; k += 2) {
        nodes.push_back(world.Wide().Child(k));
    }
    std::vector<Node*> listed;
    for (Node& node : nodes) {
        listed.push_back(&node);
    }
    world.dimension.insertChild(Label("N"), listed);
    ASSERT_EQ(TextOf(NodeAt(world.dimension, 0, 1)), "N");
    EXPECT_TRUE(WideWorld::Counts(NodeAt(world.dimension, 0, 1), 0, Million / 2, 1, 2));
    EXPECT_TRUE(WideWorld::Counts(world.Wide(), 2, Million / 2 - 1, 2, 2));
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

// Each of them would have to be searched for on its own.
TEST(OmDimensionWide, IsGatheredBelowALaterSiblingOfADeletedOne) {
    CategoryWorld world;
    OmStringCell const label = Label("");
    world.dimension.AddNewChild(world.Root(), Label("gone"), 0, true);
    Node const group = world.dimension.AddNewChild(world.Root(), Label("wide"), 0, true);
    for (unsigned int k = 0; k < Million; ++k) {
        world.dimension.AddNewChild(group, label, k, false);
    }
    Node gone = NodeAt(world.dimension, 0);
    world.dimension.Delete(gone);
    std::vector<Node> nodes;
    for (std::size_t k = 0; k < Million; ++k) {
        nodes.push_back(NodeAt(world.dimension, 0, k));
    }
    std::vector<Node*> listed;
    for (Node& node : nodes) {
        listed.push_back(&node);
    }
    world.dimension.insertChild(Label("N"), listed);
    EXPECT_TRUE(WideWorld::Counts(NodeAt(world.dimension, 0, 0), 0, Million, 0, 1));
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}
