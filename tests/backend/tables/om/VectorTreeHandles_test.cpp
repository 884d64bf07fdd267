// The checking build of the handles, whatever this build is. The value type is this file's own, so no other translation
// unit has a tree of the same type with another layout.
#ifdef OMTREE_CHECK_HANDLES
#undef OMTREE_CHECK_HANDLES
#endif
#define OMTREE_CHECK_HANDLES 1

#include "backend/tables/om/VectorTree.h"
#include "tests/support/AssertionCatcher.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::FailedAssertion;

struct Category {
    int value;
    friend bool operator==(Category const& a, Category const& b) { return a.value == b.value; }
};

using Tree = OmVectorTree<Category>;
using Node = Tree::Node;
using ConstNode = Tree::ConstNode;

/// 0(1(2 3(4)) 5), with room for more children below the root and below 1.
class VectorTreeHandles : public ::testing::Test {
protected:
    void SetUp() override {
        Node const one = tree.AddChild(tree.Root(), {1});
        tree.AddChild(one, {2});
        tree.AddChild(tree.AddChild(one, {3}), {4});
        tree.AddChild(tree.Root(), {5});
    }

    Node One() { return tree.Root().Child(0); }
    Node Two() { return One().Child(0); }
    Node Three() { return One().Child(1); }
    Node Four() { return Three().Child(0); }
    static Tree::Subtree Loose(int value) { return Tree::Subtree(nullptr, nullptr, Category{value}); }

    Tree tree{nullptr, Category{0}};
};

/// Whether the first use of the handle is reported as stale, and as nothing else.
bool IsReported(ConstNode const& handle) {
    AssertionCatcher caught(AfterReport::Throw);
    try {
        handle.Ptr();
    } catch (FailedAssertion const&) {
    }
    if (caught.Failures().empty()) {
        return false;
    }
    EXPECT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].condition,
              "stale handle: the children around its node have changed, fetch it from the root again");
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/VectorTree");
    return true;
}

} // namespace

TEST_F(VectorTreeHandles, FreshHandlesAreNotReported) {
    EXPECT_FALSE(IsReported(tree.Root()));
    EXPECT_FALSE(IsReported(Four()));
    EXPECT_FALSE(IsReported(Four().Parent()));
    EXPECT_FALSE(IsReported(tree.AddChild(One(), {9})));
    EXPECT_FALSE(IsReported(One().Child(2)));
}

TEST_F(VectorTreeHandles, EveryChangeOfTheVectorThatHoldsTheNodeIsNoticed) {
    std::vector<std::function<void(Node const&)>> const changes{
        [this](Node const& parent) { tree.AddChild(parent, {9}); },
        [](Node const& parent) { Tree::InsertAt(parent, Loose(9), 0); },
        [](Node const& parent) { Tree::InsertBefore(parent, Loose(9), nullptr); },
        [](Node const& parent) { Tree::EraseChild(parent, 0); },
    };
    for (auto const& change : changes) {
        Node const one = One();
        Node const five = tree.Root().Child(tree.Root().ChildCount() - 1);
        change(tree.Root());
        EXPECT_TRUE(IsReported(one));
        EXPECT_TRUE(IsReported(five));
        EXPECT_FALSE(IsReported(tree.Root().Child(0)));
        EXPECT_FALSE(IsReported(tree.Root()));
    }
}

TEST_F(VectorTreeHandles, EveryUseReportsAStaleHandle) {
    Node const stale = Three();
    ConstNode const readOnly = stale;
    tree.AddChild(One(), {9});
    std::vector<std::function<void()>> const uses{
        [&] { stale.Value(); },
        [&] { stale.ChildCount(); },
        [&] { stale.Child(0); },
        [&] { stale.Parent(); },
        [&] { stale.Ptr(); },
        [&] { stale.end(); },
        [&] { readOnly.Value(); },
        [&] { readOnly.ChildCount(); },
        [&] { readOnly.Child(0); },
        [&] { readOnly.Parent(); },
        [&] { readOnly.Ptr(); },
        [&] { tree.AddChild(stale, {1}); },
        [&] { tree.Reparent(stale, true); },
        [&] { Tree::EraseChild(stale, 0); },
        [&] { Tree::ChildPosition(stale, {1}); },
        [&] { Tree::CopySubtree(stale, nullptr, nullptr); },
        [&] { Tree::Counterpart(stale, tree.Root()); },
    };
    for (std::size_t k = 0; k < uses.size(); ++k) {
        AssertionCatcher caught(AfterReport::Throw);
        EXPECT_THROW(uses[k](), FailedAssertion) << "use " << k;
        EXPECT_EQ(caught.Failures().size(), 1U) << "use " << k;
    }
}

TEST_F(VectorTreeHandles, CopyOfAStaleHandleIsStale) {
    Node const stale = Two();
    tree.AddChild(One(), {9});
    Node const copy = stale;
    EXPECT_TRUE(IsReported(copy));
}

TEST_F(VectorTreeHandles, WhatIsNotAUseIsNotReported) {
    Node const stale = Two();
    Node const other = Three();
    tree.AddChild(One(), {9});
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_EQ(stale.Depth(), 2U);
    EXPECT_FALSE(stale.IsNull());
    EXPECT_NE(stale, other);
    EXPECT_TRUE(caught.Failures().empty());
}

// The node itself stays where it is when only its parent is relocated.
TEST_F(VectorTreeHandles, ChangesInOtherVectorsLeaveAHandleFresh) {
    Node const four = Four();
    Node const two = Two();
    for (int k = 0; k < 5; ++k) {
        tree.AddChild(tree.Root(), {k});
    }
    tree.AddChild(Four(), {9});
    EXPECT_FALSE(IsReported(two));
    EXPECT_FALSE(IsReported(four));
    tree.AddChild(One(), {9});
    EXPECT_TRUE(IsReported(two));
    EXPECT_FALSE(IsReported(four));
}

TEST_F(VectorTreeHandles, HandleFromParentIsFollowedToo) {
    Node const three = Four().Parent();
    Node const one = Four().Parent().Parent();
    Node const root = one.Parent();
    tree.AddChild(One(), {9});
    EXPECT_TRUE(IsReported(three));
    EXPECT_FALSE(IsReported(one));
    tree.AddChild(tree.Root(), {9});
    EXPECT_TRUE(IsReported(one));
    EXPECT_FALSE(IsReported(root));
}

TEST_F(VectorTreeHandles, ParentOfAnInsertedSubtreeIsFollowed) {
    Tree::InsertAt(tree.Root(), Tree::CopySubtree(One(), tree.Root().Ptr(), nullptr), 0);
    Tree::Reparent(tree.Root(), true);
    Node const inserted = Four().Parent().Parent();
    EXPECT_FALSE(IsReported(inserted));
    EXPECT_EQ(inserted, One());
    Tree::EraseChild(tree.Root(), 1);
    EXPECT_TRUE(IsReported(inserted));
}

TEST_F(VectorTreeHandles, HandlesIntoAnErasedSubtreeAreReported) {
    Node const one = One();
    Node const two = Two();
    Node const four = Four();
    Tree::EraseChild(tree.Root(), 0);
    EXPECT_TRUE(IsReported(one));
    EXPECT_TRUE(IsReported(two));
    EXPECT_TRUE(IsReported(four));
}

TEST_F(VectorTreeHandles, HandlesIntoADestroyedTreeAreReported) {
    std::vector<Node> handles;
    {
        Tree local(nullptr, Category{0});
        handles.push_back(local.AddChild(local.Root(), {1}));
        handles.push_back(local.AddChild(handles[0], {2}));
        handles.push_back(handles[1].Parent());
    }
    for (Node const& handle : handles) {
        EXPECT_TRUE(IsReported(handle));
    }
}

TEST_F(VectorTreeHandles, RangeOverChangedChildrenIsReported) {
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_THROW(
        for (Node const child
             : One()) {
            tree.AddChild(tree.Root(), {9});
            child.Value();
        },
        FailedAssertion);
}

TEST_F(VectorTreeHandles, CounterpartIsFollowed) {
    Tree other(nullptr, Category{0});
    Node const one = other.AddChild(other.Root(), {10});
    other.AddChild(one, {20});
    Node const found = Tree::Counterpart(Two(), other.Root());
    EXPECT_FALSE(IsReported(found));
    other.AddChild(other.Root().Child(0), {30});
    EXPECT_TRUE(IsReported(found));
}

TEST_F(VectorTreeHandles, HandleMadeOfABarePointerIsNotFollowed) {
    Node const bare(Two().Ptr(), 2);
    tree.AddChild(One(), {9});
    EXPECT_FALSE(IsReported(bare));
    EXPECT_FALSE(IsReported(bare.Parent()));
}

TEST_F(VectorTreeHandles, HandlerThatReturnsLetsTheCallCarryOn) {
    Node const stale = Two();
    tree.AddChild(One(), {9}); // there is room: the node stays where it is
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_EQ(stale.Value().value, 2);
    EXPECT_EQ(caught.Failures().size(), 1U);
}

TEST_F(VectorTreeHandles, HandleOfAnotherTreeIsReportedToWhoeverAsks) {
    Tree other(nullptr, Category{0});
    Node const child = other.AddChild(other.Root(), {1});
    std::vector<Node> const foreign{other.Root(), child, other.AddChild(child, {2})};
    AssertionCatcher caught(AfterReport::Return);
    for (Node const& own : {tree.Root(), One(), Four(), Node(Four().Ptr(), 3)}) {
        tree.CheckHolds(own);
    }
    EXPECT_EQ(caught.Failures().size(), 0U);
    for (Node const& node : foreign) {
        tree.CheckHolds(node);
        ASSERT_EQ(caught.Failures().size(), 1U + static_cast<std::size_t>(&node - foreign.data()));
        EXPECT_EQ(caught.Failures().back().condition, "handle of another tree");
    }
}

TEST_F(VectorTreeHandles, MovedSubtreeBelongsToTheTreeThatTookIt) {
    Tree other(nullptr, Category{0});
    other.AddChild(other.Root(), {1});
    Tree::InsertAt(other.Root(), Tree::CopySubtree(One(), nullptr, nullptr), 0);
    Tree::Reparent(other.Root(), true);
    AssertionCatcher caught(AfterReport::Return);
    other.CheckHolds(other.Root().Child(0).Child(1).Child(0));
    EXPECT_EQ(caught.Failures().size(), 0U);
    tree.CheckHolds(other.Root().Child(0).Child(1).Child(0));
    EXPECT_EQ(caught.Failures().size(), 1U);
}

TEST_F(VectorTreeHandles, DeepHandleOutlivesItsTreeWithoutDeepRecursion) {
    ConstNode deepest;
    {
        Tree deep(nullptr, Category{0});
        Node node = deep.Root();
        for (int level = 0; level < 200000; ++level) {
            node = deep.AddChild(node, {level});
        }
        deepest = node;
    }
    EXPECT_TRUE(IsReported(deepest));
}

TEST(VectorTreeHandlesDeathTest, StaleHandleEndsTheProcessByDefault) {
    Tree tree(nullptr, Category{0});
    Node const stale = tree.AddChild(tree.Root(), {1});
    tree.AddChild(tree.Root(), {2});
    EXPECT_EXIT(stale.Value(), ::testing::KilledBySignal(SIGABRT),
                "backend/tables/om/VectorTree:[0-9]+: stale handle: the children around its node have changed, fetch "
                "it from the root again\n");
}
