// Copies, loose subtrees, the end of a tree, and what is left when a copy fails.

#include "backend/tables/om/VectorTree.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/InstanceTracker.h"
#include "tests/support/TreeText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::CopyFailed;
using omtest::InstanceBooks;
using omtest::ParentsHold;
using omtest::RegionTracked;
using omtest::TextBelow;
using omtest::Tracked;
using Tree = OmVectorTree<Tracked>;
using Node = Tree::Node;
using TreeNode = Tree::TreeNode;
using Ints = std::vector<int>;
using Regions = std::vector<OmMemoryRegion*>;

constexpr char const* Sample = "1(2(3 4) 5 6(7(8))) 9";
constexpr int SampleNodes = 9;

class VectorTreeCopy : public ::testing::Test {
protected:
    void SetUp() override {
        omtest::TreeReader<Tracked>(tree, books).AddBelow(tree.Root(), Sample);
        books.Forget();
    }

    static Node Handle(Tree::Subtree const& subtree) { return Node(subtree.Ptr(), 0); }

    InstanceBooks books;
    OmMemoryRegion region{false};
    OmMemoryRegion other{false};
    Tree tree{&region, books, 0};
};

bool CapacitiesAreExact(TreeNode const* node) {
    for (TreeNode const& child : node->children) {
        if (!CapacitiesAreExact(&child)) {
            return false;
        }
    }
    return node->children.capacity() == node->children.size();
}

} // namespace

TEST_F(VectorTreeCopy, CopyIsDeepAndInOrder) {
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, &other);
    EXPECT_EQ(TextBelow(Handle(copy)), Sample);
    EXPECT_EQ(copy.Ptr()->value.value, 0);
    EXPECT_EQ(TextBelow(tree.Root()), Sample);
}

TEST_F(VectorTreeCopy, ValuesAreCopiedInPreOrderOnceEach) {
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, &other);
    EXPECT_EQ(books.copied, (Ints{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(books.moves, 0);
    EXPECT_TRUE(books.destroyed.empty());
}

// Growing by the usual rule would leave 4 places for every node that has children.
TEST_F(VectorTreeCopy, EveryNodeReservesExactlyItsChildCount) {
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, &other);
    EXPECT_TRUE(CapacitiesAreExact(copy.Ptr()));
    EXPECT_FALSE(CapacitiesAreExact(tree.Root().Ptr()));
}

TEST_F(VectorTreeCopy, ParentPointerOfTheCopyIsTheGivenNode) {
    Node const nine = tree.Root().Child(1);
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root().Child(0), nine.Ptr(), &region);
    EXPECT_EQ(copy.Ptr()->parent, nine.Ptr());
    EXPECT_TRUE(ParentsHold(copy.Ptr()));
    EXPECT_EQ(nine.ChildCount(), 0U);
}

TEST_F(VectorTreeCopy, CopyLivesInTheGivenRegion) {
    std::size_t const blocks = region.LiveBlocks();
    {
        Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, &other);
        EXPECT_EQ(copy.Ptr()->children.Region(), &other);
        EXPECT_EQ(copy.Ptr()->children[0].children[2].children[0].children.Region(), &other);
        EXPECT_EQ(other.LiveBlocks(), 6U); // the top, and one block for each of the five nodes that have children
        EXPECT_EQ(region.LiveBlocks(), blocks);
    }
    EXPECT_EQ(other.LiveBlocks(), 0U);
}

TEST_F(VectorTreeCopy, NullRegionIsTheDefaultHeap) {
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, nullptr);
    EXPECT_EQ(copy.Ptr()->children.Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(copy.Ptr()->children[0].children.Region(), OmMemoryRegion::DefaultHeap());
}

TEST_F(VectorTreeCopy, CopyIsIndependentOfItsSource) {
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root().Child(0), nullptr, &region);
    tree.Root().Child(0).Child(0).Value().value = 77;
    Tree::EraseChild(tree.Root().Child(0), 2);
    EXPECT_EQ(TextBelow(Handle(copy)), "2(3 4) 5 6(7(8))");
}

TEST_F(VectorTreeCopy, CopyOfALeafIsOneNode) {
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root().Child(1), nullptr, &other);
    EXPECT_EQ(copy.Ptr()->value.value, 9);
    EXPECT_EQ(copy.Ptr()->children.capacity(), 0U);
    EXPECT_EQ(other.LiveBlocks(), 1U);
}

TEST_F(VectorTreeCopy, CopyNeedsNoParentPointers) {
    tree.Root().Child(0).Child(2).Ptr()->parent = nullptr;
    tree.Root().Child(0).Child(2).Child(0).Ptr()->parent = nullptr;
    Tree::Subtree const copy = Tree::CopySubtree(tree.Root(), nullptr, &other);
    EXPECT_EQ(TextBelow(Handle(copy)), Sample);
}

TEST_F(VectorTreeCopy, NodeMayBeCopiedIntoItself) {
    Node const one = tree.Root().Child(0);
    Tree::InsertAt(one, Tree::CopySubtree(one, one.Ptr(), &region), 1);
    Tree::Reparent(one, true);
    EXPECT_EQ(TextBelow(tree.Root()), "1(2(3 4) 1(2(3 4) 5 6(7(8))) 5 6(7(8))) 9");
    EXPECT_TRUE(ParentsHold(tree.Root().Ptr()));
}

// --- values that know their region -----------------------------------------------------------------------------------

TEST(VectorTreeRegions, AddedValuesAreCopiedIntoTheTreesRegion) {
    InstanceBooks books;
    OmMemoryRegion region(false);
    OmVectorTree<RegionTracked> tree(&region, books, 0);
    auto const child = tree.AddChild(tree.Root(), RegionTracked(books, 1));
    tree.AddChild(child, RegionTracked(books, 2));
    EXPECT_EQ(books.copiedRegions, (Regions{&region, &region}));
    EXPECT_EQ(books.copies, 2);
}

TEST(VectorTreeRegions, CopiedValuesGoIntoTheCopysRegion) {
    InstanceBooks books;
    OmMemoryRegion region(false);
    OmMemoryRegion other(false);
    OmVectorTree<RegionTracked> tree(&region, books, 0);
    omtest::TreeReader<RegionTracked>(tree, books).AddBelow(tree.Root(), "1(2) 3");
    books.Forget();
    auto const copy = OmVectorTree<RegionTracked>::CopySubtree(tree.Root(), nullptr, &other);
    EXPECT_EQ(books.copiedRegions, Regions(4, &other));
    EXPECT_EQ(books.copied, (Ints{0, 1, 2, 3}));
}

TEST(VectorTreeRegions, PlainValuesAndPointersNeedNoRegion) {
    int texts[3] = {1, 2, 3};
    OmVectorTree<int*> tree(nullptr, nullptr);
    tree.AddChild(tree.AddChild(tree.Root(), &texts[0]), &texts[1]);
    auto const copy = OmVectorTree<int*>::CopySubtree(tree.Root(), nullptr, nullptr);
    EXPECT_EQ(copy.Ptr()->value, nullptr);
    EXPECT_EQ(copy.Ptr()->children[0].children[0].value, &texts[1]);
}

// --- loose subtrees --------------------------------------------------------------------------------------------------

TEST_F(VectorTreeCopy, LooseSubtreeThatIsNotInsertedFreesItself) {
    std::size_t const blocks = region.LiveBlocks();
    { Tree::Subtree const copy = Tree::CopySubtree(tree.Root().Child(0), nullptr, &region); }
    EXPECT_EQ(region.LiveBlocks(), blocks);
    EXPECT_EQ(books.destroyed, (Ints{3, 4, 2, 5, 8, 7, 6, 1}));
}

TEST_F(VectorTreeCopy, LooseSubtreeHasOneOwner) {
    static_assert(!std::is_copy_constructible_v<Tree::Subtree> && !std::is_copy_assignable_v<Tree::Subtree>);
    Tree::Subtree first(&region, nullptr, books, 20);
    TreeNode* const node = first.Ptr();
    Tree::Subtree second = std::move(first);
    EXPECT_EQ(second.Ptr(), node);
    Tree::Subtree third(&region, nullptr, books, 30);
    third = std::move(second);
    EXPECT_EQ(third.Ptr(), node);
    EXPECT_EQ(third.Ptr()->value.value, 20);
}

TEST_F(VectorTreeCopy, LooseNodeKeepsItsParentPointerWhenInserted) {
    Node const nine = tree.Root().Child(1);
    Tree::InsertAt(nine, Tree::Subtree(&region, nine.Ptr(), books, 20), 0);
    EXPECT_EQ(nine.Child(0).Ptr()->parent, nine.Ptr());
    EXPECT_EQ(TextBelow(nine), "20");
}

// --- the end of a tree -----------------------------------------------------------------------------------------------

TEST(VectorTreeEnd, DestructionIsPostOrderFirstChildFirstTheRootsValueLast) {
    InstanceBooks books;
    {
        Tree tree(nullptr, books, 0);
        omtest::TreeReader<Tracked>(tree, books).AddBelow(tree.Root(), Sample);
        books.Forget();
    }
    EXPECT_EQ(books.destroyed, (Ints{3, 4, 2, 5, 8, 7, 6, 1, 9, 0}));
    EXPECT_TRUE(books.Balanced());
}

TEST(VectorTreeEnd, DestructionNeedsNoParentPointers) {
    InstanceBooks books;
    {
        Tree tree(nullptr, books, 0);
        omtest::TreeReader<Tracked>(tree, books).AddBelow(tree.Root(), Sample);
        Tree::WalkPreOrder(tree.Root(), [](Tree::ConstNode const& node) {
            const_cast<TreeNode*>(node.Ptr())->parent = nullptr;
            return true;
        });
    }
    EXPECT_TRUE(books.Balanced());
}

TEST(VectorTreeEnd, ArenaHoldsNothingAfterwards) {
    InstanceBooks books;
    OmMemoryRegion region(false);
    {
        Tree tree(&region, books, 0);
        omtest::TreeReader<Tracked>(tree, books).AddBelow(tree.Root(), Sample);
        EXPECT_EQ(region.LiveBlocks(), 5U);
        for (int k = 0; k < 40; ++k) {
            tree.AddChild(tree.Root().Child(1), Tracked(books, k));
        }
        Tree::InsertBefore(tree.Root(), Tree::CopySubtree(tree.Root().Child(0), nullptr, &region), nullptr);
        Tree::EraseChild(tree.Root(), 0);
        Tree::Reparent(tree.Root(), true);
        EXPECT_EQ(region.LiveBlocks(), 6U);
    }
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(region.LiveBytes(), 0U);
    EXPECT_TRUE(books.Balanced());
}

TEST(VectorTreeEnd, TreeInASweptArenaMayStillBeDestroyed) {
    InstanceBooks books;
    OmMemoryRegion region(false);
    {
        Tree tree(&region, books, 0);
        omtest::TreeReader<Tracked>(tree, books).AddBelow(tree.Root(), Sample);
        region.WorkingRelease(false);
    }
    EXPECT_TRUE(books.Balanced());
    EXPECT_EQ(region.LiveBlocks(), 0U);
}

// --- copies that fail ------------------------------------------------------------------------------------------------

TEST_F(VectorTreeCopy, CopyThatFailsHalfWayLeavesNothingBehind) {
    std::size_t const alive = books.Alive();
    for (int failing = 0; failing <= SampleNodes; ++failing) {
        books.copiesUntilFailure = failing;
        EXPECT_THROW(Tree::CopySubtree(tree.Root(), nullptr, &other), CopyFailed) << failing;
        EXPECT_EQ(books.Alive(), alive);
        EXPECT_EQ(books.errors, 0);
        EXPECT_EQ(other.LiveBlocks(), 0U);
    }
    books.copiesUntilFailure = SampleNodes + 1;
    EXPECT_NO_THROW(Tree::CopySubtree(tree.Root(), nullptr, &other));
    EXPECT_EQ(TextBelow(tree.Root()), Sample);
}

TEST_F(VectorTreeCopy, LooseNodeWhoseValueFailsFreesItsBlock) {
    Tracked const value(books, 20);
    books.copiesUntilFailure = 0;
    EXPECT_THROW(Tree::Subtree(&other, nullptr, value), CopyFailed);
    EXPECT_EQ(other.LiveBlocks(), 0U);
}

// Arenas take their chunks past operator new; what can be refused here is the list of nodes still to copy.
TEST(VectorTreeNoMemory, CopyWhoseWorkListIsRefusedLeavesNothingBehind) {
    OmMemoryRegion region(false);
    OmVectorTree<int> tree(&region, 0);
    auto node = tree.Root();
    for (int level = 1; level <= 20; ++level) {
        node = tree.AddChild(node, level);
    }
    std::size_t const blocks = region.LiveBlocks();
    int const refused = omtest::FailEachRequest([&] { OmVectorTree<int>::CopySubtree(tree.Root(), nullptr, &region); },
                                                [&] { EXPECT_EQ(region.LiveBlocks(), blocks); });
    EXPECT_GT(refused, 0);
    EXPECT_EQ(region.LiveBlocks(), blocks);
}

TEST(VectorTreeNoMemory, ReparentNeedsNoMemory) {
    OmMemoryRegion region(false);
    OmVectorTree<int> tree(&region, 0);
    auto const one = tree.AddChild(tree.Root(), 1);
    tree.AddChild(one, 2);
    int const refused = omtest::FailEachRequest([&] { OmVectorTree<int>::Reparent(tree.Root(), true); }, [] {});
    EXPECT_EQ(refused, 0);
}
