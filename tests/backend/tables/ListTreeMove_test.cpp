// Moving a run of records from one tree into another: what arrives, what is asserted, what a failing copy leaves.

#include "backend/tables/ListTree.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/InstanceTracker.h"
#include "tests/support/ListTreeText.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::EndOf;
using omtest::InstanceBooks;
using omtest::ListTreeOf;
using omtest::NodeOf;
using omtest::RecordsOf;
using omtest::Tracked;

using Tree = ListTree<char>;
using Node = Tree::Node;
using Reports = std::vector<std::string>;

constexpr char First[] = "backend/tables/ListTree:503: target._tree == this";
constexpr char Second[] = "backend/tables/ListTree:504: begin._tree == end._tree";
constexpr char Third[] = "backend/tables/ListTree:505: target._tree != begin._tree";
constexpr char Fourth[] = "backend/tables/ListTree:506: begin.Level() == target.Level()";

/// Two trees; b, c and d stand in the first at levels 1, 2 and 1, likewise y, z and w in the second.
class ListTreeMove : public ::testing::Test {
protected:
    Tree here = ListTreeOf("a0 b1 c2 d1");
    Tree there = ListTreeOf("x0 y1 z2 w1");

    Node Here(char value) { return NodeOf(here, value); }
    Node There(char value) { return NodeOf(there, value); }
};

/// The reports of one call with a handler that throws at the first.
Reports FirstReport(Tree& tree, Node const& target, Node const& begin, Node const& end) {
    AssertionCatcher const caught(AfterReport::Throw);
    EXPECT_THROW(tree.Move(target, begin, end), omtest::FailedAssertion);
    return caught.Reports();
}

/// The reports of one call with a handler that returns.
Reports AllReports(Tree& tree, Node const& target, Node const& begin, Node const& end) {
    AssertionCatcher const caught(AfterReport::Return);
    tree.Move(target, begin, end);
    return caught.Reports();
}

std::vector<int> ValuesOf(ListTree<Tracked> const& tree) {
    std::vector<int> values;
    for (ListTreeData<Tracked> const& record : tree.List()) {
        values.push_back(record.value.value);
    }
    return values;
}

} // namespace

TEST_F(ListTreeMove, RunArrivesAsWholeSiblingsBeforeTheTarget) {
    AssertionCatcher const caught(AfterReport::Return);
    here.Move(Here('d'), There('y'), There('w'));
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 y1 z2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 w1");
    EXPECT_TRUE(caught.Failures().empty());
}

TEST_F(ListTreeMove, RunMayReachToTheEndOfTheSource) {
    here.Move(Here('b'), There('y'), EndOf(there));
    EXPECT_EQ(RecordsOf(here), "a0 y1 z2 w1 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0");
}

TEST_F(ListTreeMove, WholeTreeMayMoveBeforeTheEnd) {
    here.Move(EndOf(here), there.Root(), EndOf(there));
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1 x0 y1 z2 w1");
    EXPECT_EQ(there.Size(), 0);
}

TEST_F(ListTreeMove, EmptyRunChangesNothing) {
    here.Move(Here('d'), There('w'), There('w'));
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 y1 z2 w1");
}

// The run is what the two positions bound; levels decide nothing but the assertion.
TEST_F(ListTreeMove, LevelsArriveUnchanged) {
    here.Move(Here('b'), There('y'), There('z'));
    EXPECT_EQ(RecordsOf(here), "a0 y1 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 z2 w1");
}

TEST_F(ListTreeMove, SizesFollow) {
    here.Move(Here('d'), There('y'), There('w'));
    EXPECT_EQ(here.Size(), 6);
    EXPECT_EQ(there.Size(), 2);
}

// --- assertions

TEST_F(ListTreeMove, TargetOfAnotherTreeIsReportedFirst) {
    Tree third = ListTreeOf("t0 u1");
    EXPECT_EQ(FirstReport(here, There('y'), There('x'), NodeOf(third, 'u')), Reports{First});
    EXPECT_EQ(RecordsOf(there), "x0 y1 z2 w1");
}

TEST_F(ListTreeMove, RunOverTwoTreesIsReportedSecond) {
    EXPECT_EQ(FirstReport(here, Here('b'), Here('a'), There('w')), Reports{Second});
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1");
}

TEST_F(ListTreeMove, RunOfTheTargetsOwnTreeIsReportedThird) {
    EXPECT_EQ(FirstReport(here, Here('b'), Here('c'), Here('d')), Reports{Third});
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1");
}

TEST_F(ListTreeMove, RunOfAnotherLevelIsReportedFourth) {
    EXPECT_EQ(FirstReport(here, Here('b'), There('z'), There('w')), Reports{Fourth});
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 y1 z2 w1");
}

TEST_F(ListTreeMove, AllFourAreCheckedInTheirOrder) {
    EXPECT_EQ(AllReports(here, There('y'), There('x'), Here('d')), (Reports{First, Second, Third, Fourth}));
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 y1 z2 w1");
}

TEST_F(ListTreeMove, StopsTheProcessByDefault) {
    EXPECT_DEATH(here.Move(There('y'), There('w'), EndOf(there)),
                 "backend/tables/ListTree:503: target\\._tree == this");
    EXPECT_DEATH(here.Move(Here('b'), There('w'), EndOf(here)),
                 "backend/tables/ListTree:504: begin\\._tree == end\\._tree");
    EXPECT_DEATH(here.Move(Here('b'), Here('d'), EndOf(here)),
                 "backend/tables/ListTree:505: target\\._tree != begin\\._tree");
    EXPECT_DEATH(here.Move(Here('b'), There('z'), There('w')),
                 "backend/tables/ListTree:506: begin\\.Level\\(\\) == target\\.Level\\(\\)");
}

// Compared by the records' levels, 2 and 1, the call would stop.
TEST_F(ListTreeMove, StaleTargetIsComparedByItsCachedLevel) {
    Node const target = Here('d');
    target.Position()->level = 2;
    EXPECT_EQ(AllReports(here, target, There('y'), There('w')), Reports());
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 y1 z2 d2");
}

TEST_F(ListTreeMove, StaleBeginIsComparedByItsCachedLevel) {
    Node const begin = There('z');
    begin.Position()->level = 1; // as the target's, but the handle says 2
    EXPECT_EQ(FirstReport(here, Here('d'), begin, There('w')), Reports{Fourth});
}

TEST_F(ListTreeMove, LevelOfTheEndHandleIsNotLookedAt) {
    EXPECT_EQ(AllReports(here, Here('d'), There('y'), There('z')), Reports());
    EXPECT_EQ(AllReports(here, Here('d'), There('w'), EndOf(there)), Reports());
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 y1 w1 d1");
}

// --- with a handler that returns

TEST_F(ListTreeMove, CarriesOnIntoTheTreeOfTheTarget) {
    Tree third = ListTreeOf("t0 u1");
    EXPECT_EQ(AllReports(third, Here('d'), There('y'), There('w')), Reports{First});
    EXPECT_EQ(RecordsOf(third), "t0 u1");
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 y1 z2 d1");
    EXPECT_EQ(here.Size(), 6);
    EXPECT_EQ(RecordsOf(there), "x0 w1");
}

TEST_F(ListTreeMove, RunOverTwoTreesStaysWhereItIs) {
    EXPECT_EQ(AllReports(here, Here('b'), There('y'), EndOf(here)), Reports{Second});
    EXPECT_EQ(RecordsOf(here), "a0 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 y1 z2 w1");
}

TEST_F(ListTreeMove, CarriesOnWithinOneTree) {
    EXPECT_EQ(AllReports(here, Here('b'), Here('d'), EndOf(here)), Reports{Third});
    EXPECT_EQ(RecordsOf(here), "a0 d1 b1 c2");
}

// The copies go in before the run is removed, so a run that contains the target takes them along.
TEST_F(ListTreeMove, RunThatContainsItsTargetIsRemovedWithTheCopies) {
    EXPECT_EQ(AllReports(here, Here('d'), Here('b'), EndOf(here)), Reports{Third});
    EXPECT_EQ(RecordsOf(here), "a0");
}

TEST_F(ListTreeMove, CarriesOnWithAnotherLevel) {
    EXPECT_EQ(AllReports(here, Here('b'), There('z'), There('w')), Reports{Fourth});
    EXPECT_EQ(RecordsOf(here), "a0 z2 b1 c2 d1");
    EXPECT_EQ(RecordsOf(there), "x0 y1 w1");
}

// --- copies that fail

TEST(ListTreeMoveRollback, FailingCopyLeavesBothTreesAsTheyWere) {
    InstanceBooks books;
    {
        ListTree<Tracked> here(Tracked(books, 1));
        ListTree<Tracked> there(Tracked(books, 10));
        here.AppendChild(here.Root(), Tracked(books, 2));
        for (int value = 11; value <= 14; ++value) {
            there.AppendChild(there.Root(), Tracked(books, value));
        }
        std::size_t const alive = books.Alive();
        for (int succeeding = 0; succeeding < 4; ++succeeding) {
            books.copiesUntilFailure = succeeding;
            ListTree<Tracked>::Node const target(here, std::next(here.List().begin()));
            ListTree<Tracked>::Node const begin(there, std::next(there.List().begin()));
            ListTree<Tracked>::Node const end(there, there.List().end());
            EXPECT_THROW(here.Move(target, begin, end), omtest::CopyFailed);
            EXPECT_EQ(ValuesOf(here), (std::vector<int>{1, 2})) << succeeding;
            EXPECT_EQ(ValuesOf(there), (std::vector<int>{10, 11, 12, 13, 14})) << succeeding;
            EXPECT_EQ(books.Alive(), alive) << succeeding;
            EXPECT_EQ(target.Position(), std::next(here.List().begin()));
        }
        books.copiesUntilFailure = -1;
    }
    EXPECT_TRUE(books.Balanced());
}

// Copies first, removal after: what arrives are copies, and the source's own are destroyed.
TEST(ListTreeMoveRollback, MovedRecordsAreCopiesMadeInOrder) {
    InstanceBooks books;
    {
        ListTree<Tracked> here(Tracked(books, 1));
        ListTree<Tracked> there(Tracked(books, 10));
        here.AppendChild(here.Root(), Tracked(books, 2));
        there.AppendChild(there.Root(), Tracked(books, 11));
        there.AppendChild(there.Root(), Tracked(books, 12));
        books.Forget();
        here.Move({here, std::next(here.List().begin())}, {there, std::next(there.List().begin())},
                  {there, there.List().end()});
        EXPECT_EQ(books.copied, (std::vector<int>{11, 12}));
        EXPECT_EQ(books.destroyed, (std::vector<int>{11, 12}));
        EXPECT_EQ(ValuesOf(here), (std::vector<int>{1, 11, 12, 2}));
    }
    EXPECT_TRUE(books.Balanced());
}
