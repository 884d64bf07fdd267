#include "backend/tables/om/VectorTree.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/InstanceTracker.h"
#include "tests/support/TreeText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::CopyFailed;
using omtest::FailedAssertion;
using omtest::InstanceBooks;
using omtest::ParentsHold;
using omtest::TextBelow;
using omtest::Tracked;
using Tree = OmVectorTree<Tracked>;
using Node = Tree::Node;
using ConstNode = Tree::ConstNode;
using TreeNode = Tree::TreeNode;
using Ints = std::vector<int>;

/// A tree said in text, with the books of its values.
class VectorTree : public ::testing::Test {
protected:
    void Grow(std::string const& text) {
        omtest::TreeReader<Tracked>(tree, books).AddBelow(tree.Root(), text);
        books.Forget();
    }

    Node At(std::vector<std::size_t> const& path) {
        Node node = tree.Root();
        for (std::size_t const k : path) {
            node = node.Child(k);
        }
        return node;
    }

    TreeNode* Block() { return tree.Root().Ptr()->children.data(); }

    std::string Text() { return TextBelow(tree.Root()); }

    Tree::Subtree Loose(int value, int mark = 0) { return Tree::Subtree(&region, nullptr, books, value, mark); }

    InstanceBooks books;
    OmMemoryRegion region{false};
    Tree tree{&region, books, 0};
};

} // namespace

// --- handles ---------------------------------------------------------------------------------------------------------

TEST_F(VectorTree, RootIsEmbeddedAndHasDepthZeroAndNoParent) {
    EXPECT_EQ(static_cast<void*>(tree.Root().Ptr()), static_cast<void*>(&tree));
    EXPECT_EQ(tree.Root().Depth(), 0U);
    EXPECT_EQ(tree.Root().Ptr()->parent, nullptr);
    EXPECT_TRUE(tree.Root().Parent().IsNull());
    EXPECT_EQ(region.LiveBlocks(), 0U);
}

TEST_F(VectorTree, ChildHandleIsOneDeeperAndParentHandleOneUp) {
    Grow("1 2(3 4(5))");
    Node const five = At({1, 1, 0});
    EXPECT_EQ(five.Value().value, 5);
    EXPECT_EQ(five.Depth(), 3U);
    EXPECT_EQ(five.Parent(), At({1, 1}));
    EXPECT_EQ(five.Parent().Depth(), 2U);
    EXPECT_EQ(five.Parent().Parent().Parent(), tree.Root());
    EXPECT_EQ(five.Parent().Parent().Parent().Depth(), 0U);
}

TEST_F(VectorTree, ChildrenAreARangeOfHandlesInOrder) {
    Grow("1 2(3 4) 5");
    Ints values;
    for (Node const child : tree.Root()) {
        EXPECT_EQ(child.Depth(), 1U);
        child.Value().mark = 9;
        values.push_back(child.Value().value);
    }
    EXPECT_EQ(values, (Ints{1, 2, 5}));
    EXPECT_EQ(Text(), "1#9 2#9(3 4) 5#9");
    ConstNode const two = std::as_const(tree).Root().Child(1);
    std::vector<ConstNode> const below(two.begin(), two.end());
    ASSERT_EQ(below.size(), 2U);
    EXPECT_EQ(below[1].Value().value, 4);
    EXPECT_EQ(below[1].Depth(), 2U);
}

TEST_F(VectorTree, NumberOfChildren) {
    Grow("1 2(3 4) 5");
    EXPECT_EQ(tree.Root().ChildCount(), 3U);
    EXPECT_EQ(At({1}).ChildCount(), 2U);
    EXPECT_EQ(At({2}).ChildCount(), 0U);
}

TEST_F(VectorTree, HandleMadeWithoutArgumentsIsNull) {
    EXPECT_TRUE(Node().IsNull());
    EXPECT_TRUE(ConstNode().IsNull());
    EXPECT_EQ(ConstNode().Depth(), 0U);
    EXPECT_FALSE(tree.Root().IsNull());
}

TEST_F(VectorTree, HandlesAreEqualWhenTheyNameTheSameNode) {
    Grow("1 1");
    EXPECT_EQ(At({0}), At({0}));
    EXPECT_NE(At({0}), At({1}));
    EXPECT_EQ(ConstNode(At({1})), std::as_const(tree).Root().Child(1));
}

TEST_F(VectorTree, EveryNodeLivesInTheTreesRegion) {
    Grow("1(2(3))");
    EXPECT_EQ(tree.Region(), &region);
    for (auto const& path : std::vector<std::vector<std::size_t>>{{}, {0}, {0, 0}, {0, 0, 0}}) {
        EXPECT_EQ(At(path).Ptr()->children.Region(), &region);
    }
}

TEST_F(VectorTree, WithoutARegionItLivesInTheDefaultHeap) {
    OmVectorTree<int> plain(nullptr, 0);
    EXPECT_EQ(plain.Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(plain.AddChild(plain.Root(), 1).Ptr()->children.Region(), OmMemoryRegion::DefaultHeap());
}

// --- AddChild --------------------------------------------------------------------------------------------------------

TEST_F(VectorTree, AddChildAppendsACopyAndReturnsItsHandle) {
    Grow("1 2");
    Tracked const value(books, 7, 5);
    Node const added = tree.AddChild(At({1}), value);
    EXPECT_EQ(Text(), "1 2(7#5)");
    EXPECT_EQ(added, At({1, 0}));
    EXPECT_EQ(added.Depth(), 2U);
    EXPECT_EQ(added.ChildCount(), 0U);
    EXPECT_EQ(added.Ptr()->parent, At({1}).Ptr());
    EXPECT_EQ(tree.AddChild(At({1}), value), At({1, 1}));
}

TEST_F(VectorTree, FifthChildReallocatesToEightAndGrandchildrenFollow) {
    Grow("1(11 12) 2(21) 3 4(41)");
    TreeNode const* const before = Block();
    ASSERT_EQ(tree.Root().Ptr()->children.capacity(), 4U);
    tree.AddChild(tree.Root(), Tracked(books, 5));
    EXPECT_EQ(tree.Root().Ptr()->children.capacity(), 8U);
    EXPECT_NE(Block(), before);
    for (std::size_t k = 0; k < 5; ++k) {
        for (TreeNode const& grandchild : Block()[k].children) {
            EXPECT_EQ(grandchild.parent, Block() + k);
        }
    }
    EXPECT_EQ(Text(), "1(11 12) 2(21) 3 4(41) 5");
}

TEST_F(VectorTree, ChildrenGrowFourEightSixteen) {
    std::vector<std::size_t> capacities;
    for (int k = 0; k < 33; ++k) {
        tree.AddChild(tree.Root(), Tracked(books, k));
        std::size_t const capacity = tree.Root().Ptr()->children.capacity();
        if (capacities.empty() || capacities.back() != capacity) {
            capacities.push_back(capacity);
        }
    }
    EXPECT_EQ(capacities, (std::vector<std::size_t>{4, 8, 16, 32, 64}));
}

// Pointers made wrong show which ones are written: below every child when the storage moved, none else.
TEST_F(VectorTree, AddChildRepairsGrandchildrenOnlyWhenTheStorageMoved) {
    Grow("1(11) 2 3");
    Block()[0].children[0].parent = nullptr;
    tree.AddChild(tree.Root(), Tracked(books, 4));
    EXPECT_EQ(Block()[0].children[0].parent, nullptr);
    tree.AddChild(tree.Root(), Tracked(books, 5));
    EXPECT_EQ(Block()[0].children[0].parent, Block());
}

TEST_F(VectorTree, AddChildRepairsNoDeeperThanGrandchildren) {
    Grow("1(11(111)) 2 3 4");
    TreeNode& eleven = Block()[0].children[0];
    eleven.children[0].parent = nullptr;
    tree.AddChild(tree.Root(), Tracked(books, 5));
    EXPECT_EQ(eleven.parent, Block());
    EXPECT_EQ(eleven.children[0].parent, nullptr);
}

TEST_F(VectorTree, AddChildCopiesItsValueOnceAndNoOther) {
    Grow("1 2 3 4");
    Tracked const value(books, 5);
    tree.AddChild(tree.Root(), value);
    EXPECT_EQ(books.copied, (Ints{5}));
    EXPECT_EQ(books.moves, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

TEST_F(VectorTree, ValueOfASiblingMayBeAddedWhileTheStorageMoves) {
    Grow("1 2 3 4#8");
    tree.AddChild(tree.Root(), At({3}).Value());
    EXPECT_EQ(Text(), "1 2 3 4#8 4#8");
}

TEST_F(VectorTree, ParentsHoldAfterAnySequenceOfAddChild) {
    for (int k = 0; k < 60; ++k) {
        Node parent = tree.Root();
        for (int step = k; step > 0 && parent.ChildCount() != 0; step /= 3) {
            parent = parent.Child(static_cast<std::size_t>(step) % parent.ChildCount());
        }
        tree.AddChild(parent, Tracked(books, k));
        ASSERT_TRUE(ParentsHold(tree.Root().Ptr())) << Text();
    }
}

TEST_F(VectorTree, AddChildWhoseCopyFailsChangesNothing) {
    for (std::string const text : {"1(11) 2 3", "1(11) 2 3 4"}) { // without and with a new block
        OmMemoryRegion own(false);
        Tree local(&own, books, 0);
        omtest::TreeReader<Tracked>(local, books).AddBelow(local.Root(), text);
        std::size_t const blocks = own.LiveBlocks();
        std::size_t const alive = books.Alive();
        Tracked const value(books, 9);
        books.copiesUntilFailure = 0;
        EXPECT_THROW(local.AddChild(local.Root(), value), CopyFailed);
        books.copiesUntilFailure = -1;
        EXPECT_EQ(TextBelow(local.Root()), text);
        EXPECT_TRUE(ParentsHold(local.Root().Ptr()));
        EXPECT_EQ(own.LiveBlocks(), blocks);
        EXPECT_EQ(books.Alive(), alive + 1);
    }
}

// --- InsertBefore and InsertAt ---------------------------------------------------------------------------------------

// Looking for the very node whose value was given would put it before the second.
TEST_F(VectorTree, InsertBeforeASharedValueGoesBeforeTheFirstOfTheEqualSiblings) {
    Grow("1 2#1 2#2 3");
    Tree::InsertBefore(tree.Root(), Loose(9), &At({2}).Value());
    EXPECT_EQ(Text(), "1 9 2#1 2#2 3");
}

TEST_F(VectorTree, InsertBeforeWithoutAReferenceAppends) {
    Grow("1 2");
    Tree::InsertBefore(tree.Root(), Loose(9), nullptr);
    EXPECT_EQ(Text(), "1 2 9");
}

TEST_F(VectorTree, InsertBeforeAValueThatNoChildEqualsAppends) {
    Grow("1(7) 2");
    Tracked const seven(books, 7);
    Tree::InsertBefore(tree.Root(), Loose(9), &seven);
    EXPECT_EQ(Text(), "1(7) 2 9");
}

TEST_F(VectorTree, InsertBeforeTheFirstChildAndIntoNoChildren) {
    Grow("1 2");
    Tracked const one(books, 1);
    Tree::InsertBefore(tree.Root(), Loose(9), &one);
    Tree::InsertBefore(At({2}), Loose(8), &one);
    EXPECT_EQ(Text(), "9 1 2(8)");
}

TEST_F(VectorTree, InsertedSubtreeIsMovedInWithoutCopies) {
    Grow("1 2(21(211) 22) 3 4");
    Tree::Subtree copy = Tree::CopySubtree(At({1}), nullptr, &region);
    books.Forget();
    Tree::InsertBefore(tree.Root(), std::move(copy), &At({0}).Value());
    Tree::Reparent(tree.Root(), true);
    EXPECT_EQ(Text(), "2(21(211) 22) 1 2(21(211) 22) 3 4");
    EXPECT_TRUE(ParentsHold(tree.Root().Ptr()));
    EXPECT_EQ(books.copies + books.moves, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

TEST_F(VectorTree, InsertAtTakesEveryPosition) {
    for (std::size_t position = 0; position <= 4; ++position) {
        Tree local(&region, books, 0);
        omtest::TreeReader<Tracked>(local, books).AddBelow(local.Root(), "1 2 3 4");
        Tree::InsertAt(local.Root(), Loose(9), position);
        EXPECT_EQ(local.Root().Child(position).Value().value, 9);
        EXPECT_EQ(local.Root().ChildCount(), 5U);
        EXPECT_EQ(local.Root().Ptr()->children.capacity(), 8U);
    }
}

TEST_F(VectorTree, InsertionFreesTheBlockOfTheLooseNode) {
    Grow("1");
    std::size_t const blocks = region.LiveBlocks();
    Tree::InsertAt(tree.Root(), Loose(9), 0);
    EXPECT_EQ(region.LiveBlocks(), blocks);
}

// --- EraseChild ------------------------------------------------------------------------------------------------------

TEST_F(VectorTree, ErasingTheLastChildMovesNothing) {
    Grow("1(11) 2(21) 3(31)");
    TreeNode const* const block = Block();
    std::vector<unsigned char> before(2 * sizeof(TreeNode));
    std::memcpy(before.data(), static_cast<void const*>(block), before.size());
    Tree::EraseChild(tree.Root(), 2);
    EXPECT_EQ(Block(), block);
    EXPECT_EQ(std::memcmp(before.data(), static_cast<void const*>(block), before.size()), 0);
    EXPECT_EQ(Text(), "1(11) 2(21)");
    EXPECT_TRUE(ParentsHold(tree.Root().Ptr()));
}

TEST_F(VectorTree, ErasingTheFirstChildMovesAllOthersDownOnePlace) {
    Grow("1(11) 2#5(21) 3(31)");
    TreeNode const* const block = Block();
    Tree::EraseChild(tree.Root(), 0);
    EXPECT_EQ(Block(), block);
    EXPECT_EQ(tree.Root().Ptr()->children.capacity(), 4U);
    EXPECT_EQ(Text(), "2#5(21) 3(31)");
    EXPECT_EQ(books.copies + books.moves, 0);
    EXPECT_EQ(books.destroyed, (Ints{11, 1}));
}

// Repairing at once, the obvious kindness, is what the callers do themselves; one of them leaves it.
TEST_F(VectorTree, MovedSiblingsChildrenPointAtTheOldAddressesUntilReparent) {
    Grow("1 2(21 22) 3(31(311)) 4");
    TreeNode* const block = Block();
    Tree::EraseChild(tree.Root(), 0);
    EXPECT_EQ(block[0].children[0].parent, block + 1);
    EXPECT_EQ(block[0].children[1].parent, block + 1);
    EXPECT_EQ(block[1].children[0].parent, block + 2);
    EXPECT_EQ(block[1].children[0].children[0].parent, block[1].children.data());
    Tree::Reparent(tree.Root(), true);
    EXPECT_TRUE(ParentsHold(tree.Root().Ptr()));
}

TEST_F(VectorTree, ErasingAMiddleChildLeavesTheOnesBeforeItAlone) {
    Grow("1(11) 2 3(31)");
    TreeNode* const block = Block();
    Tree::EraseChild(tree.Root(), 1);
    EXPECT_EQ(Text(), "1(11) 3(31)");
    EXPECT_EQ(block[0].children[0].parent, block);
    EXPECT_EQ(block[1].children[0].parent, block + 2);
}

TEST_F(VectorTree, ErasedNodeGoesWithItsWholeSubtreeFirstChildFirst) {
    Grow("1(2(3 4) 5(6)) 7");
    Tree::EraseChild(tree.Root(), 0);
    EXPECT_EQ(books.destroyed, (Ints{3, 4, 2, 6, 5, 1}));
    EXPECT_EQ(Text(), "7");
    EXPECT_EQ(region.LiveBlocks(), 1U);
}

TEST_F(VectorTree, ErasingTheOnlyChildLeavesAnEmptyNode) {
    Grow("1");
    Tree::EraseChild(tree.Root(), 0);
    EXPECT_EQ(tree.Root().ChildCount(), 0U);
    EXPECT_EQ(tree.AddChild(tree.Root(), Tracked(books, 2)), At({0}));
}

// --- ChildPosition ---------------------------------------------------------------------------------------------------

TEST_F(VectorTree, ChildPositionIsThatOfTheFirstEqualChild) {
    Grow("1 2#1 2#2 3(4)");
    EXPECT_EQ(Tree::ChildPosition(tree.Root(), At({2}).Value()), 1U);
    EXPECT_EQ(Tree::ChildPosition(tree.Root(), At({0}).Value()), 0U);
    EXPECT_EQ(Tree::ChildPosition(At({3}), At({3, 0}).Value()), 0U);
}

TEST_F(VectorTree, ChildPositionIsAllOnesWhenNoChildIsEqual) {
    Grow("1 2(3)");
    Tracked const three(books, 3);
    EXPECT_EQ(Tree::ChildPosition(tree.Root(), three), std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(Tree::ChildPosition(At({0}), three), Tree::NoPosition);
    EXPECT_EQ(Tree::NoPosition, 4294967295U);
}

// --- Reparent --------------------------------------------------------------------------------------------------------

TEST_F(VectorTree, ReparentWithoutRecursionReachesTheChildrenAlone) {
    Grow("1(11(111)) 2");
    TreeNode& one = Block()[0];
    for (TreeNode* node : {&one, &one.children[0], &one.children[0].children[0]}) {
        node->parent = nullptr;
    }
    Tree::Reparent(tree.Root(), false);
    EXPECT_EQ(one.parent, tree.Root().Ptr());
    EXPECT_EQ(one.children[0].parent, nullptr);
    EXPECT_EQ(one.children[0].children[0].parent, nullptr);
}

TEST_F(VectorTree, ReparentWithRecursionReachesEveryDescendantAndNotTheNodeItself) {
    Grow("1(11(111 112(1121)) 12 13(131)) 2(21)");
    TreeNode* const one = Block();
    ConstNode const start = At({0});
    Tree::WalkPreOrder(start, [](ConstNode const& node) {
        const_cast<TreeNode*>(node.Ptr())->parent = nullptr;
        return true;
    });
    Block()[1].children[0].parent = nullptr;
    Tree::Reparent(At({0}), true);
    EXPECT_TRUE(ParentsHold(one));
    EXPECT_EQ(one->parent, nullptr);
    EXPECT_EQ(Block()[1].children[0].parent, nullptr);
}

// --- Counterpart -----------------------------------------------------------------------------------------------------

TEST_F(VectorTree, CounterpartOfARootIsTheOtherRootAtDepthZero) {
    Tree other(&region, books, 100);
    Node const found = Tree::Counterpart(tree.Root(), other.Root());
    EXPECT_EQ(found, other.Root());
    EXPECT_EQ(found.Depth(), 0U);
}

TEST_F(VectorTree, CounterpartHasTheSamePathInTheOtherTree) {
    Grow("1(2 3(4 5)) 6");
    Tree other(&region, books, 100);
    omtest::TreeReader<Tracked>(other, books).AddBelow(other.Root(), "10(20 30(40 50)) 60");
    Tree::WalkPreOrder(tree.Root(), [&](ConstNode const& node) {
        Node const found = Tree::Counterpart(node, other.Root());
        EXPECT_EQ(found.Depth(), node.Depth());
        if (node.Depth() != 0) {
            EXPECT_EQ(found.Value().value, node.Value().value * 10);
        }
        return true;
    });
}

TEST_F(VectorTree, CounterpartDoesNotTestTheOtherTreesChildCount) {
    Grow("1 2 3");
    Tree other(&region, books, 100);
    omtest::TreeReader<Tracked>(other, books).AddBelow(other.Root(), "10");
    AssertionCatcher caught(AfterReport::Return);
    Node const found = Tree::Counterpart(At({2}), other.Root());
    EXPECT_EQ(found.Ptr(), other.Root().Ptr()->children.data() + 2);
    EXPECT_EQ(found.Depth(), 1U);
    EXPECT_TRUE(caught.Failures().empty());
}

TEST_F(VectorTree, CounterpartFailsWhenTheParentDoesNotHoldTheNode) {
    Grow("1(11 12) 2");
    Block()[0].children[1].parent = &Block()[1];
    Node const node(&Block()[0].children[1], 2);
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_THROW(Tree::Counterpart(node, tree.Root()), FailedAssertion);
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].condition, "0 <= offset && offset < vec.size()");
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/VectorTree");
    EXPECT_GT(caught.Failures()[0].line, 0);
}

TEST_F(VectorTree, CounterpartIsANullHandleWhenTheHandlerReturns) {
    Grow("1(11(111) 12) 2");
    Block()[0].children[0].parent = &Block()[1];
    Node const node(&Block()[0].children[0].children[0], 3);
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_TRUE(Tree::Counterpart(node, tree.Root()).IsNull());
    EXPECT_EQ(caught.Failures().size(), 1U);
}

TEST_F(VectorTree, CounterpartOfANodePastItsParentsChildrenFails) {
    Grow("1 2");
    Node const node(Block() + 2, 1); // room that is not in use
    (Block() + 2)->parent = tree.Root().Ptr();
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_THROW(Tree::Counterpart(node, tree.Root()), FailedAssertion);
}

TEST_F(VectorTree, CounterpartBelowAMovedSiblingFailsUntilReparent) {
    Grow("1 2(21 22) 3(31)");
    Tree other(&region, books, 100);
    omtest::TreeReader<Tracked>(other, books).AddBelow(other.Root(), "20(210 220) 30(310)");
    Tree::EraseChild(tree.Root(), 0);
    {
        AssertionCatcher caught(AfterReport::Return);
        EXPECT_TRUE(Tree::Counterpart(At({0, 1}), other.Root()).IsNull());
        EXPECT_EQ(caught.Failures().size(), 1U);
    }
    Tree::Reparent(tree.Root(), true);
    EXPECT_EQ(Tree::Counterpart(At({0, 1}), other.Root()).Value().value, 220);
}

// --- WalkPreOrder ----------------------------------------------------------------------------------------------------

TEST_F(VectorTree, WalkVisitsParentsBeforeChildrenInOrder) {
    Grow("1(2(3) 4) 5(6)");
    Ints values;
    std::vector<unsigned int> depths;
    Tree::WalkPreOrder(tree.Root(), [&](ConstNode const& node) {
        values.push_back(node.Value().value);
        depths.push_back(node.Depth());
        return true;
    });
    EXPECT_EQ(values, (Ints{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(depths, (std::vector<unsigned int>{0, 1, 2, 3, 2, 1, 2}));
}

TEST_F(VectorTree, WalkStaysOutOfNodesThatAreRefused) {
    Grow("1(2(3) 4) 5(6)");
    Ints values;
    auto const refuse = [&](int refused) {
        return [&values, refused](ConstNode const& node) {
            values.push_back(node.Value().value);
            return node.Value().value != refused;
        };
    };
    Tree::WalkPreOrder(tree.Root(), refuse(1));
    EXPECT_EQ(values, (Ints{0, 1, 5, 6}));
    values.clear();
    Tree::WalkPreOrder(At({0}), refuse(1));
    EXPECT_EQ(values, (Ints{1}));
}

TEST_F(VectorTree, WalkUsesNoParentPointers) {
    Grow("1(2(3) 4) 5");
    Block()[0].children[0].parent = nullptr;
    Block()[0].children[0].children[0].parent = nullptr;
    int visited = 0;
    Tree::WalkPreOrder(At({0}), [&](ConstNode const&) { return ++visited > 0; });
    EXPECT_EQ(visited, 4);
}
