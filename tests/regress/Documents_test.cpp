// Documents and their parts: defects that were found, each by a test named for it.

#include "backend/tables/ListTree.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/ListTreeText.h"

#include <gtest/gtest.h>

#include <climits>
#include <iterator>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;

using Calls = std::vector<std::string>;

} // namespace

// --- handles that are not the tree's ---------------------------------------------------------------------------------

#if OMTREE_HARDENED
namespace {

using Letters = ListTree<char>;

/// What each call reports of a handle, in their order; none may change anything.
Calls ReportsOf(Letters& tree, Letters::Node node) {
    std::string const before = omtest::RecordsOf(tree);
    int const size = tree.Size();
    AssertionCatcher const caught(AfterReport::Return);
    tree.Prune(node);
    EXPECT_EQ(tree.AppendChild(node, 'n'), node);
    EXPECT_TRUE(tree.IsLeaf(node));
    tree.Flatten(node);
    tree.Erase(node);
    EXPECT_EQ(omtest::RecordsOf(tree), before);
    EXPECT_EQ(tree.Size(), size);
    Calls conditions;
    for (AssertionCatcher::Failure const& failure : caught.Failures()) {
        EXPECT_EQ(failure.source, "backend/tables/ListTree");
        conditions.push_back(failure.condition);
    }
    return conditions;
}

} // namespace

// Unnoticed, the wrong tree's size goes down, or a search runs past the end of the right one's list.
TEST(HandleOfAnotherTree, IsReportedByEveryCallOfAListTree) {
    Letters here = omtest::ListTreeOf("a0 b1 c2");
    Letters there = omtest::ListTreeOf("x0 y1 z2");
    EXPECT_EQ(ReportsOf(here, omtest::NodeOf(there, 'y')), Calls(5, "node._tree == this"));
    EXPECT_EQ(ReportsOf(here, omtest::EndOf(there)), Calls(5, "node._tree == this"));
    EXPECT_EQ(ReportsOf(here, Letters::Node()), Calls(5, "node._tree == this"));
    EXPECT_EQ(omtest::RecordsOf(there), "x0 y1 z2");
    EXPECT_EQ(there.Size(), 3);
}

TEST(HandleOfNoTree, MovesNothing) {
    Letters here = omtest::ListTreeOf("a0 b1");
    AssertionCatcher const caught(AfterReport::Return);
    Letters::Node const root(here, here.List().begin());
    here.Move(root, Letters::Node(), Letters::Node());
    here.Move(Letters::Node(), root, root);
    ASSERT_EQ(caught.Failures().size(), 2U);
    EXPECT_EQ(caught.Failures()[0].condition, "begin._tree != 0");
    EXPECT_EQ(caught.Failures()[1].condition, "target._tree == this");
    EXPECT_EQ(omtest::RecordsOf(here), "a0 b1");
}

// One more than the largest level is no level.
TEST(LargestLevel, HasNoneBelowIt) {
    Letters here = omtest::ListTreeOf("a0 b1");
    Letters::Node const deepest(here, here.List().begin(), INT_MAX);
    AssertionCatcher const caught(AfterReport::Return);
    EXPECT_EQ(here.AppendChild(deepest, 'n'), deepest);
    EXPECT_EQ(omtest::RecordsOf(here), "a0 b1");
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].condition, "parent.Level() < max");
}
#endif

TEST(LargestLevel, IsOneThatARecordMayHave) {
    ListTree<char> here = omtest::ListTreeOf("a0 b1");
    ListTree<char>::Node const parent(here, here.List().begin(), INT_MAX - 1);
    EXPECT_EQ(here.AppendChild(parent, 'n').Level(), INT_MAX);
    EXPECT_TRUE(here.IsLeaf(ListTree<char>::Node(here, std::next(here.List().begin()), INT_MAX)));
}
