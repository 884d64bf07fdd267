// Trees a million levels deep and a million children wide: nothing recurses by depth, nothing is quadratic.

#include "backend/tables/om/VectorTree.h"
#include "omcell/OmMemoryRegion.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <utility>

namespace {

using Tree = OmVectorTree<int>;
using Node = Tree::Node;
using ConstNode = Tree::ConstNode;

constexpr int Million = 1000000;

Node Deepen(Tree& tree) {
    Node node = tree.Root();
    for (int level = 1; level <= Million; ++level) {
        node = tree.AddChild(node, level);
    }
    return node;
}

void Widen(Tree& tree) {
    for (int k = 0; k < Million; ++k) {
        tree.AddChild(tree.Root(), k);
    }
}

/// The nodes from `start` on, when their values count up by one from `first` in pre-order; else 0.
int CountUp(ConstNode const& start, int first) {
    int expected = first;
    bool inOrder = true;
    Tree::WalkPreOrder(start, [&](ConstNode const& node) {
        inOrder = inOrder && node.Value() == expected;
        ++expected;
        return true;
    });
    return inOrder ? expected - first : 0;
}

} // namespace

TEST(VectorTreeScale, AMillionLevelsAreGrownWalkedAndDestroyed) {
    OmMemoryRegion region(false);
    {
        Tree tree(&region, 0);
        EXPECT_EQ(Deepen(tree).Depth(), static_cast<unsigned int>(Million));
        EXPECT_EQ(CountUp(tree.Root(), 0), Million + 1);
        EXPECT_EQ(region.LiveBlocks(), static_cast<std::size_t>(Million));
    }
    EXPECT_EQ(region.LiveBlocks(), 0U);
}

TEST(VectorTreeScale, AMillionLevelsAreCopiedInsertedAndErased) {
    OmMemoryRegion region(false);
    Tree tree(&region, 0);
    Deepen(tree);
    Tree::InsertAt(tree.Root(), Tree::CopySubtree(tree.Root().Child(0), tree.Root().Ptr(), &region), 0);
    Tree::Reparent(tree.Root(), true);
    EXPECT_EQ(CountUp(tree.Root().Child(0), 1), Million);
    EXPECT_EQ(CountUp(tree.Root().Child(1), 1), Million);
    Tree::EraseChild(tree.Root(), 0);
    EXPECT_EQ(CountUp(tree.Root().Child(0), 1), Million);
    EXPECT_EQ(region.LiveBlocks(), static_cast<std::size_t>(Million));
}

TEST(VectorTreeScale, ReparentReachesTheLowestOfAMillionLevels) {
    Tree tree(nullptr, 0);
    Node const deepest = Deepen(tree);
    Tree::TreeNode* const above = deepest.Ptr()->parent;
    deepest.Ptr()->parent = nullptr;
    Tree::Reparent(tree.Root(), true);
    EXPECT_EQ(deepest.Ptr()->parent, above);
}

TEST(VectorTreeScale, CounterpartWalksAMillionLevels) {
    OmMemoryRegion region(false);
    Tree tree(&region, 0);
    Tree other(&region, 0);
    Node const deepest = Deepen(tree);
    Node const same = Deepen(other);
    Node const found = Tree::Counterpart(deepest, other.Root());
    EXPECT_EQ(found, same);
    EXPECT_EQ(found.Depth(), static_cast<unsigned int>(Million));
}

TEST(VectorTreeScale, LooseSubtreeOfAMillionLevelsFreesItself) {
    OmMemoryRegion region(false);
    Tree tree(&region, 0);
    Deepen(tree);
    std::size_t const blocks = region.LiveBlocks();
    {
        Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, &region);
        EXPECT_EQ(region.LiveBlocks(), 2 * blocks + 1);
    }
    EXPECT_EQ(region.LiveBlocks(), blocks);
}

TEST(VectorTreeScale, AMillionChildrenAreGrownWalkedAndDestroyed) {
    OmMemoryRegion region(false);
    {
        Tree tree(&region, -1);
        Widen(tree);
        EXPECT_EQ(tree.Root().Ptr()->children.capacity(), std::size_t{1} << 20);
        EXPECT_EQ(CountUp(tree.Root(), -1), Million + 1);
        EXPECT_EQ(Tree::ChildPosition(tree.Root(), Million - 1), static_cast<unsigned int>(Million - 1));
    }
    EXPECT_EQ(region.LiveBlocks(), 0U);
}

TEST(VectorTreeScale, AMillionChildrenAreCopiedInsertedAndErased) {
    OmMemoryRegion region(false);
    Tree tree(&region, -1);
    Tree other(&region, -1);
    Widen(tree);
    Tree::InsertAt(other.Root(), Tree::CopySubtree(tree.Root(), nullptr, &region), 0);
    Tree::Reparent(other.Root(), true);
    Node const top = other.Root().Child(0);
    EXPECT_EQ(CountUp(top, -1), Million + 1);
    EXPECT_EQ(top.Ptr()->children.capacity(), static_cast<std::size_t>(Million));
    int const middle = Million / 2;
    Tree::InsertBefore(top, Tree::Subtree(&region, top.Ptr(), -7), &middle);
    EXPECT_EQ(top.Child(Million / 2).Value(), -7);
    Tree::EraseChild(top, Million / 2);
    Tree::EraseChild(top, 0);
    EXPECT_EQ(top.Child(0).Value(), 1);
    EXPECT_EQ(top.ChildCount(), static_cast<std::size_t>(Million - 1));
    EXPECT_EQ(Tree::Counterpart(top.Child(Million - 2), other.Root()), top.Child(Million - 2));
}
