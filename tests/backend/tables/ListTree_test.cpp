#include "backend/tables/ListTree.h"

#include "tests/support/AssertionCatcher.h"
#include "tests/support/InstanceTracker.h"
#include "tests/support/ListTreeText.h"

#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::EndOf;
using omtest::Fill;
using omtest::InstanceBooks;
using omtest::ListTreeOf;
using omtest::NodeOf;
using omtest::RecordsOf;
using omtest::Tracked;

using Tree = ListTree<char>;
using Node = Tree::Node;
using ConstNode = Tree::ConstNode;

/// The searches, which a derived tree may use.
class SearchTree : public Tree {
public:
    using Tree::ConstPosition;
    using Tree::Position;
    using Tree::SearchBackward;
    using Tree::SearchForward;

    explicit SearchTree(std::string const& text) { Fill(*this, text); }

    char ForwardFrom(char value, int level) {
        Position const changeable = SearchForward(NodeOf(*this, value).Position(), level);
        ConstPosition const fixed =
            std::as_const(*this).SearchForward(ConstPosition(NodeOf(*this, value).Position()), level);
        EXPECT_EQ(fixed, ConstPosition(changeable));
        return changeable == List().end() ? '.' : changeable->value;
    }

    char BackwardFrom(char value, int level) {
        Position const changeable = SearchBackward(NodeOf(*this, value).Position(), level);
        ConstPosition const fixed =
            std::as_const(*this).SearchBackward(ConstPosition(NodeOf(*this, value).Position()), level);
        EXPECT_EQ(fixed, ConstPosition(changeable));
        return changeable->value;
    }
};

} // namespace

// --- making, copying, assigning

TEST(ListTree, HoldsOneListAndNothingElse) {
    static_assert(sizeof(Tree) == sizeof(std::list<ListTreeData<char>>));
    static_assert(sizeof(ListTree<void*>) == sizeof(std::list<ListTreeData<void*>>));
    static_assert(std::is_same_v<decltype(std::declval<Tree&>().List()), std::list<ListTreeData<char>>&>);
    static_assert(std::is_same_v<decltype(std::declval<Tree const&>().List()), std::list<ListTreeData<char>> const&>);
    Tree tree('a');
    EXPECT_EQ(static_cast<void*>(&tree.List()), static_cast<void*>(&tree));
}

TEST(ListTree, RecordIsAValueAndASignedLevelBehindIt) {
    static_assert(std::is_same_v<decltype(ListTreeData<void*>::level), int>);
    static_assert(sizeof(int) == 4);
    ListTreeData<void*> const record{nullptr, -1};
    EXPECT_EQ(static_cast<void const*>(&record), static_cast<void const*>(&record.value));
    EXPECT_LT(record.level, 0);
}

TEST(ListTree, MadeWithARootValueHasOneNodeOfLevelZero) {
    char const fixed = 'a';
    char changeable = 'b';
    Tree ofFixed(fixed);
    Tree ofChangeable(changeable);
    EXPECT_EQ(RecordsOf(ofFixed), "a0");
    EXPECT_EQ(RecordsOf(ofChangeable), "b0");
    EXPECT_EQ(ofFixed.Size(), 1);
    EXPECT_EQ(ofFixed.Root().Level(), 0);
    EXPECT_EQ(ofFixed.Root().Value(), 'a');
    static_assert(std::is_same_v<decltype(ofFixed.Size()), int>);
}

TEST(ListTree, EmptyTreesRootIsAtTheEndWithLevelZero) {
    Tree tree;
    EXPECT_EQ(tree.Size(), 0);
    EXPECT_EQ(tree.Root().Position(), tree.List().end());
    EXPECT_EQ(tree.Root().Level(), 0);
    EXPECT_EQ(std::as_const(tree).Root().Position(), std::as_const(tree).List().end());
    EXPECT_EQ(std::as_const(tree).Root().Level(), 0);
}

TEST(ListTree, CopyHasRecordsOfItsOwn) {
    Tree const source = ListTreeOf("a0 b1 c2");
    Tree copy(source);
    Node node = NodeOf(copy, 'b');
    copy.Erase(node);
    copy.Root().Value() = 'z';
    EXPECT_EQ(RecordsOf(source), "a0 b1 c2");
    EXPECT_EQ(RecordsOf(copy), "z0 c1");
}

TEST(ListTree, CopyOfATreeOfPointersPointsAtTheSameObjects) {
    int value = 1;
    ListTree<int*> const source(&value);
    ListTree<int*> const copy(source);
    EXPECT_EQ(copy.Root().Value(), &value);
}

TEST(ListTree, AssignmentReplacesAllRecordsAndGivesTheTree) {
    Tree const source = ListTreeOf("a0 b1 c2");
    Tree target = ListTreeOf("x0 y1 z1 w2");
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(RecordsOf(target), "a0 b1 c2");
    EXPECT_EQ(RecordsOf(source), "a0 b1 c2");
}

// A list's own assignment would copy into the records that are there, and then never ask for the first copy.
TEST(ListTree, AssignmentRemovesAllRecordsBeforeItCopies) {
    InstanceBooks books;
    {
        ListTree<Tracked> const source(Tracked(books, 1));
        ListTree<Tracked> target(Tracked(books, 2));
        target.AppendChild(target.Root(), Tracked(books, 3));
        books.Forget();
        books.copiesUntilFailure = 0;
        EXPECT_THROW(target = source, omtest::CopyFailed);
        books.copiesUntilFailure = -1;
        EXPECT_EQ(books.destroyed, (std::vector<int>{2, 3}));
        EXPECT_EQ(target.Size(), 0);
        target = source;
        EXPECT_EQ(books.copied, std::vector<int>{1});
        EXPECT_EQ(target.Root().Value().value, 1);
    }
    EXPECT_TRUE(books.Balanced());
}

// Removing the records first, without asking, would leave an empty tree.
TEST(ListTree, SelfAssignmentKeepsEveryRecordInItsPlace) {
    Tree tree = ListTreeOf("a0 b1 c2");
    Node const kept = NodeOf(tree, 'b');
    Tree const& same = tree;
    tree = same;
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c2");
    EXPECT_EQ(NodeOf(tree, 'b').Position(), kept.Position());
}

// A move would leave the source without its records, which its handles still name.
TEST(ListTree, TakingFromATemporaryNameCopies) {
    Tree source = ListTreeOf("a0 b1");
    Tree made(std::move(source));
    Tree assigned;
    assigned = std::move(made);
    EXPECT_EQ(RecordsOf(source), "a0 b1");
    EXPECT_EQ(RecordsOf(made), "a0 b1");
    EXPECT_EQ(RecordsOf(assigned), "a0 b1");
}

TEST(ListTree, DestroyingPruningAndErasingLeaveWhatValuesPointAtAlone) {
    auto const watched = std::make_shared<int>(7);
    {
        ListTree<int*> tree(watched.get());
        auto child = tree.AppendChild(tree.Root(), watched.get());
        tree.AppendChild(child, watched.get());
        tree.Erase(child);
        tree.Prune(tree.Root());
        tree.List().push_back({watched.get(), 0});
    }
    EXPECT_EQ(*watched, 7);
}

// --- handles

TEST(ListTree, HandleTakesTreeAndLevelWhenItIsMade) {
    Tree tree = ListTreeOf("a0 b1 c2");
    Node const node = NodeOf(tree, 'c');
    EXPECT_EQ(node.Tree(), &tree);
    EXPECT_EQ(node.Level(), 2);
    ConstNode const fixed(tree, std::next(std::as_const(tree).List().begin()));
    EXPECT_EQ(fixed.Tree(), &tree);
    EXPECT_EQ(fixed.Level(), 1);
    EXPECT_EQ(fixed.Value(), 'b');
}

TEST(ListTree, HandleAtTheEndHasLevelZero) {
    Tree tree = ListTreeOf("a0 b1 c2");
    EXPECT_EQ(EndOf(tree).Level(), 0);
    EXPECT_EQ(ConstNode(tree, std::as_const(tree).List().end()).Level(), 0);
}

TEST(ListTree, CachedLevelIsNotRefreshed) {
    Tree tree = ListTreeOf("a0 b1 c2");
    Node parent = NodeOf(tree, 'b');
    Node const child = NodeOf(tree, 'c');
    tree.Flatten(parent);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c1");
    EXPECT_EQ(child.Level(), 2);
    EXPECT_EQ(child.Position()->level, 1);
}

TEST(ListTree, HandlesNeverTakeARefreshedLevelWhenCopied) {
    Tree tree = ListTreeOf("a0 b1");
    Node const node = NodeOf(tree, 'b');
    node.Position()->level = 5;
    Node const copy = node;
    ConstNode const fixed = node;
    EXPECT_EQ(copy.Level(), 1);
    EXPECT_EQ(fixed.Level(), 1);
}

TEST(ListTree, HandlesAreEqualForTheSameRecordOfTheSameTree) {
    Tree tree = ListTreeOf("a0 b1");
    Tree const other = tree;
    EXPECT_EQ(tree.Root(), NodeOf(tree, 'a'));
    EXPECT_NE(tree.Root(), NodeOf(tree, 'b'));
    EXPECT_EQ(ConstNode(tree.Root()), std::as_const(tree).Root());
    EXPECT_NE(other.Root(), std::as_const(tree).Root());
}

// --- searches

TEST(ListTreeSearch, ForwardFromTheLastRecordGivesTheEnd) {
    SearchTree tree("a0 b1 c2");
    EXPECT_EQ(tree.ForwardFrom('c', 2), '.');
    EXPECT_EQ(tree.ForwardFrom('c', 0), '.');
}

TEST(ListTreeSearch, ForwardFromTheEndGivesTheEnd) {
    SearchTree tree("a0 b1");
    EXPECT_EQ(tree.SearchForward(tree.List().end(), 0), tree.List().end());
    EXPECT_EQ(std::as_const(tree).SearchForward(std::as_const(tree).List().end(), 9), std::as_const(tree).List().end());
}

TEST(ListTreeSearch, ForwardWithTheOwnLevelFindsWhatFollowsTheSubtree) {
    SearchTree tree("a0 b1 c2 d3 e2 f1 g2");
    EXPECT_EQ(tree.ForwardFrom('a', 0), '.');
    EXPECT_EQ(tree.ForwardFrom('b', 1), 'f');
    EXPECT_EQ(tree.ForwardFrom('c', 2), 'e');
    EXPECT_EQ(tree.ForwardFrom('d', 3), 'e');
    EXPECT_EQ(tree.ForwardFrom('e', 2), 'f');
}

// The next record is looked at even when the start itself is not deeper than the level.
TEST(ListTreeSearch, ForwardNeverStaysWhereItStarts) {
    SearchTree tree("a0 b1 c1");
    EXPECT_EQ(tree.ForwardFrom('a', 7), 'b');
    EXPECT_EQ(tree.ForwardFrom('b', 7), 'c');
}

// Compared as unsigned numbers, -1 would be deeper than everything and the first record would do.
TEST(ListTreeSearch, ForwardComparesLevelsWithTheirSign) {
    SearchTree tree("a0 b1 c2 d-1 e1");
    EXPECT_EQ(tree.ForwardFrom('a', -1), 'd');
    EXPECT_EQ(tree.ForwardFrom('b', -2), '.');
    EXPECT_EQ(tree.ForwardFrom('a', 0), 'd');
}

TEST(ListTreeSearch, BackwardFindsTheParentOneLevelUp) {
    SearchTree tree("a0 b1 c2 d3 e2 f1 g2");
    EXPECT_EQ(tree.BackwardFrom('g', 1), 'f');
    EXPECT_EQ(tree.BackwardFrom('e', 1), 'b');
    EXPECT_EQ(tree.BackwardFrom('d', 2), 'c');
    EXPECT_EQ(tree.BackwardFrom('f', 0), 'a');
}

TEST(ListTreeSearch, BackwardWithTheOwnLevelFindsThePreviousSiblingOrTheParent) {
    SearchTree tree("a0 b1 c2 d3 e2 f1 g2");
    EXPECT_EQ(tree.BackwardFrom('e', 2), 'c');
    EXPECT_EQ(tree.BackwardFrom('f', 1), 'b');
    EXPECT_EQ(tree.BackwardFrom('c', 2), 'b');
    EXPECT_EQ(tree.BackwardFrom('g', 2), 'f');
}

// --- AppendChild and IsLeaf

TEST(ListTree, AppendChildAddsTheLastChildAndGivesItsHandle) {
    Tree tree = ListTreeOf("a0 b1 c2 d1");
    Node const added = tree.AppendChild(NodeOf(tree, 'b'), 'x');
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c2 x2 d1");
    EXPECT_EQ(added.Tree(), &tree);
    EXPECT_EQ(added.Level(), 2);
    EXPECT_EQ(added.Position(), NodeOf(tree, 'x').Position());
    EXPECT_EQ(tree.AppendChild(tree.Root(), 'y').Level(), 1);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c2 x2 d1 y1");
}

// By the record's level, 2, the child would go behind b, as a child of b.
TEST(ListTreeStaleHandle, AppendChildGoesByTheCachedLevelForPlaceAndLevel) {
    Tree tree = ListTreeOf("a0 b1 c2 d2 e1");
    Node const stale = NodeOf(tree, 'b');
    stale.Position()->level = 2;
    tree.AppendChild(stale, 'x');
    EXPECT_EQ(RecordsOf(tree), "a0 b2 c2 d2 x2 e1");
}

TEST(ListTreeStaleHandle, AppendChildWithADeeperCachedLevelGoesRightBehindTheNode) {
    Tree tree = ListTreeOf("a0 b5 c2 d1");
    Node const stale = NodeOf(tree, 'b');
    stale.Position()->level = 1;
    EXPECT_EQ(tree.AppendChild(stale, 'x').Level(), 6);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 x6 c2 d1");
}

TEST(ListTree, IsLeafWhenNoDeeperRecordFollows) {
    Tree tree = ListTreeOf("a0 b1 c2 d1 e1");
    EXPECT_FALSE(tree.IsLeaf(NodeOf(tree, 'a')));
    EXPECT_FALSE(tree.IsLeaf(NodeOf(tree, 'b')));
    EXPECT_TRUE(tree.IsLeaf(NodeOf(tree, 'c')));
    EXPECT_TRUE(tree.IsLeaf(NodeOf(tree, 'd')));
    EXPECT_TRUE(std::as_const(tree).IsLeaf(NodeOf(tree, 'e')));
}

TEST(ListTreeStaleHandle, IsLeafGoesByTheCachedLevel) {
    Tree tree = ListTreeOf("a0 b1 c2");
    Node const deeper = NodeOf(tree, 'b');
    deeper.Position()->level = 2;
    EXPECT_FALSE(tree.IsLeaf(deeper));
    EXPECT_TRUE(tree.IsLeaf(NodeOf(tree, 'b')));
    Fill(tree, "a0 b2 c2");
    Node const shallower = NodeOf(tree, 'b');
    shallower.Position()->level = 1;
    EXPECT_TRUE(tree.IsLeaf(shallower));
    EXPECT_FALSE(tree.IsLeaf(NodeOf(tree, 'b')));
}

// --- Flatten

TEST(ListTree, FlattenMakesChildrenFollowingSiblings) {
    Tree tree = ListTreeOf("a0 b1 c2 d3 e2 f1 g2");
    Node node = NodeOf(tree, 'b');
    tree.Flatten(node);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c1 d2 e1 f1 g2");
}

TEST(ListTree, FlattenOfALeafChangesNothing) {
    Tree tree = ListTreeOf("a0 b1 c2 d2 e1");
    for (char const leaf : {'c', 'd', 'e'}) {
        Node node = NodeOf(tree, leaf);
        tree.Flatten(node);
        EXPECT_EQ(RecordsOf(tree), "a0 b1 c2 d2 e1") << leaf;
    }
}

TEST(ListTree, FlattenKeepsTheNodesOwnLevel) {
    Tree tree = ListTreeOf("a0 b1 c2");
    Node root = tree.Root();
    tree.Flatten(root);
    EXPECT_EQ(RecordsOf(tree), "a0 b0 c1");
    EXPECT_EQ(root.Position()->level, 0);
    EXPECT_EQ(root.Level(), 0);
}

// Lowering first and comparing then would stop at c, which is as high as b by then.
TEST(ListTree, FlattenComparesEachRecordBeforeItLowersIt) {
    Tree tree = ListTreeOf("a0 b1 c2 d2 e2");
    Node node = NodeOf(tree, 'b');
    tree.Flatten(node);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c1 d1 e1");
}

TEST(ListTreeStaleHandle, FlattenGoesByTheRecordsLevel) {
    Tree tree = ListTreeOf("a0 b1 c2 d3 e2 f1");
    Node stale = NodeOf(tree, 'c');
    stale.Position()->level = 1; // the handle still says 2, which would lower d alone
    tree.Flatten(stale);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 c1 d2 e1 f1");
}

TEST(ListTree, FlattenAtTheEndDoesNothing) {
    Tree tree = ListTreeOf("a0 b1");
    Node end = EndOf(tree);
    tree.Flatten(end);
    EXPECT_EQ(RecordsOf(tree), "a0 b1");
    Tree empty;
    Node nothing = empty.Root();
    empty.Flatten(nothing);
    EXPECT_EQ(empty.Size(), 0);
}

// --- Erase

TEST(ListTree, EraseLiftsChildrenIntoTheNodesPlaceAndGrandchildrenWithThem) {
    Tree tree = ListTreeOf("a0 b1 c2 d3 e4 f2 g1");
    Node node = NodeOf(tree, 'b');
    tree.Erase(node);
    EXPECT_EQ(RecordsOf(tree), "a0 c1 d2 e3 f1 g1");
}

TEST(ListTree, EraseOfALeafRemovesItAlone) {
    Tree tree = ListTreeOf("a0 b1 c2 d1");
    Node node = NodeOf(tree, 'c');
    tree.Erase(node);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 d1");
}

TEST(ListTreeStaleHandle, EraseGoesByTheRecordsLevel) {
    Tree tree = ListTreeOf("a0 b1 c2 d3 e2 f1");
    Node stale = NodeOf(tree, 'c');
    stale.Position()->level = 1;
    tree.Erase(stale);
    EXPECT_EQ(RecordsOf(tree), "a0 b1 d2 e1 f1");
}

TEST(ListTree, EraseAtTheEndDoesNothing) {
    Tree tree = ListTreeOf("a0 b1");
    Node end = EndOf(tree);
    tree.Erase(end);
    EXPECT_EQ(RecordsOf(tree), "a0 b1");
}

TEST(ListTree, EraseKeepsOtherHandlesValid) {
    Tree tree = ListTreeOf("a0 b1 c2 d1");
    Node const child = NodeOf(tree, 'c');
    Node node = NodeOf(tree, 'b');
    tree.Erase(node);
    EXPECT_EQ(child.Value(), 'c');
    EXPECT_EQ(child.Position()->level, 1);
}

// --- Prune

TEST(ListTree, PruneRemovesTheNodeWithItsDescendants) {
    Tree tree = ListTreeOf("a0 b1 c2 d3 e2 f1 g2");
    tree.Prune(NodeOf(tree, 'b'));
    EXPECT_EQ(RecordsOf(tree), "a0 f1 g2");
    tree.Prune(NodeOf(tree, 'g'));
    EXPECT_EQ(RecordsOf(tree), "a0 f1");
}

TEST(ListTree, PruneOfTheRootRemovesEveryRecord) {
    Tree tree = ListTreeOf("a0 b1 c2 d1");
    tree.Prune(tree.Root());
    EXPECT_EQ(tree.Size(), 0);
    EXPECT_EQ(tree.Root().Position(), tree.List().end());
}

TEST(ListTreeStaleHandle, PruneGoesByTheCachedLevel) {
    Tree tree = ListTreeOf("a0 b1 c2 d2 e1");
    Node const stale = NodeOf(tree, 'b');
    stale.Position()->level = 2; // by the record, b alone would go
    tree.Prune(stale);
    EXPECT_EQ(RecordsOf(tree), "a0 e1");
}

TEST(ListTreeStaleHandle, PruneWithADeeperCachedLevelLeavesTheDescendants) {
    Tree tree = ListTreeOf("a0 b2 c2 d1");
    Node const stale = NodeOf(tree, 'b');
    stale.Position()->level = 1;
    tree.Prune(stale);
    EXPECT_EQ(RecordsOf(tree), "a0 c2 d1");
}

// --- the end, where a live handle is expected

#if OMTREE_HARDENED
TEST(ListTreeEnd, PruneAppendChildAndIsLeafReportIt) {
    Tree tree = ListTreeOf("a0 b1");
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_THROW(tree.Prune(EndOf(tree)), omtest::FailedAssertion);
    EXPECT_THROW(tree.AppendChild(EndOf(tree), 'x'), omtest::FailedAssertion);
    EXPECT_THROW(tree.IsLeaf(EndOf(tree)), omtest::FailedAssertion);
    ASSERT_EQ(caught.Failures().size(), 3U);
    for (AssertionCatcher::Failure const& failure : caught.Failures()) {
        EXPECT_EQ(failure.condition, "node.position != end");
        EXPECT_EQ(failure.source, "backend/tables/ListTree");
    }
    EXPECT_EQ(RecordsOf(tree), "a0 b1");
}

TEST(ListTreeEnd, CallsDoNothingWhenTheHandlerReturns) {
    Tree tree = ListTreeOf("a0 b1");
    AssertionCatcher const caught(AfterReport::Return);
    tree.Prune(EndOf(tree));
    EXPECT_EQ(tree.AppendChild(EndOf(tree), 'x'), EndOf(tree));
    EXPECT_TRUE(tree.IsLeaf(EndOf(tree)));
    EXPECT_EQ(caught.Failures().size(), 3U);
    EXPECT_EQ(RecordsOf(tree), "a0 b1");
}
#endif

TEST(ListTreeEnd, ALiveHandleIsNeverReported) {
    AssertionCatcher const caught(AfterReport::Return);
    Tree tree = ListTreeOf("a0");
    EXPECT_TRUE(tree.IsLeaf(tree.Root()));
    tree.AppendChild(tree.Root(), 'b');
    tree.Prune(tree.Root());
    EXPECT_EQ(tree.Size(), 0);
    EXPECT_TRUE(caught.Failures().empty());
}

// --- order

TEST(ListTreeOrder, TreesAreEqualWhenLevelsAndValuesAre) {
    EXPECT_TRUE(ListTreeOf("a0 b1 c2") == ListTreeOf("a0 b1 c2"));
    EXPECT_FALSE(ListTreeOf("a0 b1 c2") != ListTreeOf("a0 b1 c2"));
    EXPECT_TRUE(ListTreeOf("a0 b1") != ListTreeOf("a0 c1"));
    EXPECT_TRUE(ListTreeOf("a0 b1") != ListTreeOf("a0 b1 c1"));
    EXPECT_TRUE(Tree() == Tree());
}

TEST(ListTreeOrder, SameValuesAtDifferentDepthsAreUnequal) {
    Tree const nested = ListTreeOf("a0 b1 c2");
    Tree const flat = ListTreeOf("a0 b1 c1");
    EXPECT_FALSE(nested == flat);
    EXPECT_TRUE(nested != flat);
}

TEST(ListTreeOrder, ProperPrefixIsLess) {
    Tree const shorter = ListTreeOf("a0 b1");
    Tree const longer = ListTreeOf("a0 b1 c1");
    EXPECT_TRUE(shorter < longer);
    EXPECT_FALSE(longer < shorter);
    EXPECT_TRUE(Tree() < shorter);
    EXPECT_FALSE(shorter < Tree());
}

TEST(ListTreeOrder, EqualTreesAreNotLess) {
    EXPECT_FALSE(ListTreeOf("a0 b1") < ListTreeOf("a0 b1"));
    EXPECT_FALSE(Tree() < Tree());
}

// By value first, the tree with the smaller value would be less although it is deeper there.
TEST(ListTreeOrder, DepthIsComparedBeforeTheValue) {
    Tree const deeper = ListTreeOf("a0 b1 c2");
    Tree const shallower = ListTreeOf("a0 b1 z1");
    EXPECT_TRUE(shallower < deeper);
    EXPECT_FALSE(deeper < shallower);
    ListTreeData<char> const high{'z', 1};
    ListTreeData<char> const low{'a', 2};
    EXPECT_TRUE(high < low);
    EXPECT_FALSE(low < high);
}

TEST(ListTreeOrder, AtEqualDepthTheValueDecides) {
    EXPECT_TRUE(ListTreeOf("a0 b1") < ListTreeOf("a0 c1"));
    EXPECT_FALSE(ListTreeOf("a0 c1") < ListTreeOf("a0 b1"));
}

// The first position that differs decides, whatever follows and whichever list is longer.
TEST(ListTreeOrder, TheFirstDifferenceDecides) {
    EXPECT_TRUE(ListTreeOf("a0 b1 z2 z3") < ListTreeOf("a0 c1"));
    EXPECT_FALSE(ListTreeOf("a0 c1") < ListTreeOf("a0 b1 z2 z3"));
    EXPECT_FALSE(ListTreeOf("b0") < ListTreeOf("a0 b1 c1 d1"));
}

TEST(ListTreeOrder, PointersCompareByAddress) {
    int values[2] = {9, 1};
    ListTree<int*> const first(&values[0]);
    ListTree<int*> const second(&values[1]);
    EXPECT_TRUE(first < second);
    EXPECT_FALSE(second < first);
    EXPECT_FALSE(first == second);
}
