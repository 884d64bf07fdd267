// Trees a million levels deep: nothing recurses by depth, nothing is quadratic.

#include "backend/tables/ListTree.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

using Tree = ListTree<int>;
using Node = Tree::Node;

constexpr int Million = 1000000;

/// A chain of that many nodes below `parent`, each the child of the one before.
Node Deepen(Tree& tree, Node node) {
    for (int k = 0; k < Million; ++k) {
        node = tree.AppendChild(node, node.Value() + 1);
    }
    return node;
}

/// A root, a child of it, and a million levels below that.
class ListTreeScale : public ::testing::Test {
protected:
    ListTreeScale() { deepest = Deepen(tree, below); }

    /// Whether the records from `first` on have the levels `level`, `level` + 1, and so on to the end.
    static bool IsChain(Tree const& chain, Tree::Records::const_iterator first, int level) {
        for (; first != chain.List().end(); ++first) {
            if (first->level != level++) {
                return false;
            }
        }
        return true;
    }

    Tree tree{0};
    Node below = tree.AppendChild(tree.Root(), 1);
    Node deepest;
};

} // namespace

TEST_F(ListTreeScale, IsGrownByAppending) {
    EXPECT_EQ(tree.Size(), Million + 2);
    EXPECT_EQ(deepest.Level(), Million + 1);
    EXPECT_EQ(deepest.Value(), Million + 1);
    EXPECT_TRUE(IsChain(tree, tree.List().begin(), 0));
    EXPECT_TRUE(tree.IsLeaf(deepest));
    EXPECT_FALSE(tree.IsLeaf(below));
}

TEST_F(ListTreeScale, LastChildOfTheRootIsAppended) {
    Node const added = tree.AppendChild(tree.Root(), -1);
    EXPECT_EQ(added.Level(), 1);
    EXPECT_EQ(added.Position(), std::prev(tree.List().end()));
}

TEST_F(ListTreeScale, IsCopiedAssignedAndCompared) {
    Tree copy(tree);
    EXPECT_TRUE(copy == tree);
    EXPECT_FALSE(copy < tree);
    std::prev(copy.List().end())->value = 0;
    EXPECT_TRUE(copy != tree);
    EXPECT_TRUE(copy < tree);
    Tree assigned(7);
    assigned = tree;
    EXPECT_TRUE(assigned == tree);
}

TEST_F(ListTreeScale, IsPruned) {
    tree.Prune(below);
    EXPECT_EQ(tree.Size(), 1);
}

TEST_F(ListTreeScale, IsErasedFromAbove) {
    tree.Erase(below);
    EXPECT_EQ(tree.Size(), Million + 1);
    EXPECT_TRUE(IsChain(tree, tree.List().begin(), 0));
}

TEST_F(ListTreeScale, IsFlattened) {
    tree.Flatten(below);
    EXPECT_EQ(tree.Size(), Million + 2);
    EXPECT_TRUE(IsChain(tree, std::next(below.Position()), 1));
    EXPECT_EQ(deepest.Position()->level, Million);
    EXPECT_EQ(deepest.Level(), Million + 1);
}

TEST_F(ListTreeScale, IsMoved) {
    Tree other(0);
    Node const target = other.AppendChild(other.Root(), 5);
    other.Move(target, below, Node(tree, tree.List().end()));
    EXPECT_EQ(tree.Size(), 1);
    EXPECT_EQ(other.Size(), Million + 3);
    EXPECT_EQ(std::prev(other.List().end())->value, 5);
    EXPECT_EQ(std::prev(other.List().end(), 2)->level, Million + 1);
}
