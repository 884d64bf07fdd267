// How many records each operation steps over, counted.

#include "tests/support/CountedRecords.h"

#include <gtest/gtest.h>

#include <iterator>
#include <vector>

namespace {

using omtest::Counted;
using omtest::StepBooks;

using Tree = ListTree<Counted>;
using Node = Tree::Node;

/// A root with `width` children, each with as many children.
class ListTreeSteps : public ::testing::Test {
protected:
    static constexpr int Width = 20;

    ListTreeSteps() {
        for (int k = 0; k < Width; ++k) {
            children.push_back(tree.AppendChild(tree.Root(), Counted{k}));
        }
        for (Node const& child : children) {
            for (int k = 0; k < Width; ++k) {
                tree.AppendChild(child, Counted{k});
            }
        }
    }

    template <typename Operation>
    static long StepsOf(Operation&& operation) {
        StepBooks().Forget();
        operation();
        EXPECT_EQ(StepBooks().backward, 0);
        return StepBooks().forward;
    }

    Tree tree{Counted{0}};
    std::vector<Node> children;
};

} // namespace

TEST_F(ListTreeSteps, AppendStepsOverTheParentsSubtree) {
    EXPECT_EQ(StepsOf([&] { tree.AppendChild(children[3], Counted{1}); }), Width + 1);
    EXPECT_EQ(StepsOf([&] { tree.AppendChild(children[3], Counted{1}); }), Width + 2);
    EXPECT_EQ(StepsOf([&] { tree.AppendChild(children[4], Counted{1}); }), Width + 1);
}

TEST_F(ListTreeSteps, AppendBelowTheRootStepsOverTheWholeTree) {
    EXPECT_EQ(StepsOf([&] { tree.AppendChild(tree.Root(), Counted{1}); }), 1 + Width + Width * Width);
}

TEST_F(ListTreeSteps, AppendBelowALeafStepsOnceWhereverItStands) {
    Node const firstLeaf(tree, std::next(children.front().Position()));
    Node const lastLeaf(tree, std::next(children.back().Position(), Width));
    EXPECT_EQ(StepsOf([&] { tree.AppendChild(firstLeaf, Counted{1}); }), 1);
    EXPECT_EQ(StepsOf([&] { tree.AppendChild(lastLeaf, Counted{1}); }), 1);
}

// Growing a document one heading at a time costs a walk over that heading alone.
TEST_F(ListTreeSteps, AppendNeverStepsOutsideTheParentsSubtree) {
    long total = 0;
    for (Node const& child : children) {
        total += StepsOf([&] { tree.AppendChild(child, Counted{1}); });
    }
    EXPECT_EQ(total, Width * (Width + 1));
}

TEST_F(ListTreeSteps, IsLeafStepsOnce) {
    EXPECT_EQ(StepsOf([&] { EXPECT_FALSE(tree.IsLeaf(tree.Root())); }), 1);
    EXPECT_EQ(StepsOf([&] { EXPECT_FALSE(tree.IsLeaf(children[7])); }), 1);
}

TEST_F(ListTreeSteps, PruneStepsOverTheSubtree) {
    EXPECT_EQ(StepsOf([&] { tree.Prune(children[5]); }), Width + 1);
    EXPECT_EQ(tree.Size(), 1 + (Width - 1) * (Width + 1));
}

TEST_F(ListTreeSteps, FlattenStepsOverTheSubtree) {
    EXPECT_EQ(StepsOf([&] { tree.Flatten(children[5]); }), Width + 1);
}

TEST_F(ListTreeSteps, EraseStepsOverTheSubtree) {
    EXPECT_EQ(StepsOf([&] { tree.Erase(children[5]); }), Width + 1);
}

// A step taken on the heading's way out of its list would be one on every document item.
TEST_F(ListTreeSteps, SizeRootAndHandlesStepOverNothing) {
    EXPECT_EQ(StepsOf([&] {
                  EXPECT_EQ(tree.Size(), 1 + Width + Width * Width);
                  EXPECT_EQ(tree.Root().Level(), 0);
                  EXPECT_EQ(Node(tree, children[5].Position()).Level(), 1);
              }),
              0);
}

TEST_F(ListTreeSteps, MoveSearchesNothing) {
    Tree other(Counted{9});
    Node const target = other.AppendChild(other.Root(), Counted{8});
    EXPECT_EQ(StepsOf([&] { other.Move(target, children[2], children[3]); }), 0);
    EXPECT_EQ(other.Size(), 2 + Width + 1);
}
