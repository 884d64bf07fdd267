#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using omtest::Categories;
using omtest::CategoryReader;
using omtest::CategoryWorld;
using omtest::ChildIndexOf;
using omtest::Label;
using omtest::NodeAt;
using omtest::NodeNamed;
using omtest::ParentPointersHold;
using Node = OmDimension::Node;

constexpr unsigned long long Dissolved = 0xFFFFFFFFFFFFFFFEULL;

/// A grown dimension, and what a test takes away and moves, by label.
struct Grown : omtest::GrownWorld {
    using GrownWorld::GrownWorld;

    /// Adds one-letter leaves below the root by `Child`, which keeps the child index sorted.
    static void AddSorted(OmDimension& dimension, std::string const& letters) {
        for (std::size_t k = 0; k < letters.size(); ++k) {
            dimension.Child(dimension.Root(), Label(std::string(1, letters[k])), k, false);
        }
    }

    void Delete(std::string const& label) {
        Node node = Named(label);
        dimension.Delete(node);
    }
    void Dissolve(std::string const& label) {
        Node node = Named(label);
        dimension.removeChild(node);
    }
    void Move(std::string const& label) {
        Node node = Named(label);
        dimension.moveChild(node, nullptr, false);
    }
    std::string Text() const { return Categories(dimension); }
};

} // namespace

// --- delete ----------------------------------------------------------------------------------------------------------

TEST(OmDimensionDelete, TakesTheNodeWithItsSubtree) {
    Grown world("X A(p B(q)) Y");
    world.Delete("A");
    EXPECT_EQ(world.Text(), "X Y");
    world.Delete("Y");
    EXPECT_EQ(world.Text(), "X");
}

TEST(OmDimensionDelete, OfTheOnlyLeafSetsTheNumberOfCategoriesToOne) {
    Grown world("a");
    world.Delete("a");
    EXPECT_EQ(world.dimension.NumCategories(), 1);
    EXPECT_EQ(world.Text(), "");
}

// A count of the leaves would give 0.
TEST(OmDimensionDelete, DimensionWithoutLeavesReportsOneCategory) {
    Grown world("A() B()");
    ASSERT_EQ(world.dimension.NumCategories(), 0);
    world.Delete("A");
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionDelete, NumberOfCategoriesIsTheLargestSubscriptPlusOne) {
    Grown world("a b A(c d) e", 10);
    ASSERT_EQ(world.dimension.NumCategories(), 5);
    world.Delete("a");
    EXPECT_EQ(world.dimension.NumCategories(), 15);
    world.Delete("e");
    EXPECT_EQ(world.dimension.NumCategories(), 14);
    world.Delete("A");
    EXPECT_EQ(world.dimension.NumCategories(), 12);
}

TEST(OmDimensionDelete, SubscriptsOfGroupsDoNotCount) {
    Grown world("a A() b");
    world.Named("A").Value().Subscript(100);
    world.Delete("b");
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionDelete, SubscriptsBelowANonGroupDoNotCount) {
    Grown world("a b");
    world.dimension.AddNewChild(world.Named("a"), Label("c"), 100, false);
    world.Delete("b");
    EXPECT_EQ(world.dimension.NumCategories(), 1);
}

TEST(OmDimensionDelete, SubscriptsCountByTheirLow32Bits) {
    Grown world("a b c");
    world.Named("a").Value().Subscript(0x700000005ULL);
    world.Named("b").Value().Subscript(4);
    world.Delete("c");
    EXPECT_EQ(world.dimension.NumCategories(), 6);
}

// Signed, the second one would be the smallest.
TEST(OmDimensionDelete, SubscriptsCompareUnsigned) {
    Grown world("a b c");
    world.Named("a").Value().Subscript(5);
    world.Named("b").Value().Subscript(0x7FFFFFFEU);
    world.Delete("c");
    EXPECT_EQ(world.dimension.NumCategories(), 0x7FFFFFFF);
    world.Named("b").Value().Subscript(0xFFFFFFFEU);
    world.Delete("a");
    EXPECT_EQ(world.dimension.NumCategories(), -1);
}

TEST(OmDimensionDelete, CountGoesOnPastTheLargestInt) {
    Grown world("a b");
    world.Named("a").Value().Subscript(0x7FFFFFFEU);
    world.Delete("b");
    ASSERT_EQ(world.dimension.NumCategories(), 0x7FFFFFFF);
    world.dimension.AddNewChild(world.Root(), Label("c"), 0, false);
    EXPECT_LT(world.dimension.NumCategories(), 0);
}

TEST(OmDimensionDelete, LowersLaterEntriesOfTheChildIndex) {
    CategoryWorld world;
    Grown::AddSorted(world.dimension, "abcd");
    Node node = NodeAt(world.dimension, 1);
    world.dimension.Delete(node);
    EXPECT_EQ(Categories(world.dimension), "a c d");
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1, 2");
}

// Erasing the entry that names the deleted child would give 0, 1.
TEST(OmDimensionDelete, ErasesTheEntryAtTheDeletedPosition) {
    CategoryWorld world;
    Grown::AddSorted(world.dimension, "cab");
    ASSERT_EQ(ChildIndexOf(world.Root()), "1, 2, 0");
    Node node = NodeAt(world.dimension, 0);
    world.dimension.Delete(node);
    EXPECT_EQ(Categories(world.dimension), "a b");
    EXPECT_EQ(ChildIndexOf(world.Root()), "1, 0");
}

// The entry 1 stays in the first place while those behind it go, one by one.
TEST(OmDimensionDelete, ExaminesThePlaceAgainAfterEachErasure) {
    CategoryWorld world;
    Grown::AddSorted(world.dimension, "caeb");
    ASSERT_EQ(ChildIndexOf(world.Root()), "1, 3, 0, 2");
    Node node = NodeAt(world.dimension, 1);
    world.dimension.Delete(node);
    EXPECT_EQ(Categories(world.dimension), "c e b");
    EXPECT_EQ(ChildIndexOf(world.Root()), "");
}

TEST(OmDimensionDelete, WalkEndsWhereTheChildIndexHasNoSuchPosition) {
    CategoryWorld world;
    Grown::AddSorted(world.dimension, "cab");
    Node node = NodeAt(world.dimension, 1);
    world.dimension.Delete(node);
    EXPECT_EQ(ChildIndexOf(world.Root()), "");
}

TEST(OmDimensionDelete, LeavesOtherChildIndexesAlone) {
    Grown world("A(p q) B(r s t) c");
    Node node = NodeAt(world.dimension, 1, 0);
    world.dimension.Delete(node);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1, 2");
    EXPECT_EQ(ChildIndexOf(NodeAt(world.dimension, 0)), "0, 1");
    EXPECT_EQ(ChildIndexOf(NodeAt(world.dimension, 1)), "0, 1");
}

// The other operations repair them.
TEST(OmDimensionDelete, LeavesParentPointersBelowLaterSiblings) {
    Grown world("A(p) B(q) C(r(s))");
    world.Delete("B");
    EXPECT_TRUE(NodeAt(world.dimension, 0, 0).Parent() == NodeAt(world.dimension, 0));
    EXPECT_TRUE(NodeAt(world.dimension, 1).Parent() == world.Root());
    EXPECT_TRUE(NodeAt(world.dimension, 1, 0, 0).Parent() == NodeAt(world.dimension, 1, 0));
    EXPECT_NE(NodeAt(world.dimension, 1, 0).Ptr()->parent, NodeAt(world.dimension, 1).Ptr());
}

TEST(OmDimensionDelete, OfTheLastChildLeavesAllParentPointersRight) {
    Grown world("A(p) B(q) C(r)");
    world.Delete("C");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionDelete, OfTheRootDoesNothing) {
    Grown world("a b");
    Node root = world.Root();
    world.dimension.Delete(root);
    EXPECT_EQ(world.Text(), "a b");
    EXPECT_EQ(world.dimension.NumCategories(), 2);
}

TEST(OmDimensionDelete, OfAStrangersNodeDoesNothing) {
    Grown world("a b");
    Grown other("a b");
    Node node = other.Named("a");
    world.dimension.Delete(node);
    EXPECT_EQ(world.Text(), "a b");
    EXPECT_EQ(other.Text(), "a b");
}

// --- dissolve --------------------------------------------------------------------------------------------------------

TEST(OmDimensionRemoveChild, OnALeafChangesOnlyItsSubscript) {
    Grown world("a b c");
    world.Dissolve("b");
    EXPECT_EQ(world.Text(), "a b c");
    EXPECT_EQ(world.Named("a").Value().Subscript(), 0U);
    EXPECT_EQ(world.Named("b").Value().Subscript(), Dissolved);
    EXPECT_FALSE(world.Named("b").Value().IsGroup());
    EXPECT_EQ(world.Named("c").Value().Subscript(), 2U);
    EXPECT_EQ(world.dimension.NumCategories(), 3);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1, 2");
}

TEST(OmDimensionRemoveChild, ChildlessGroupStaysInPlace) {
    Grown world("a B() c");
    world.Dissolve("B");
    EXPECT_EQ(world.Text(), "a B() c");
    EXPECT_EQ(world.Named("B").Value().Subscript(), Dissolved);
}

TEST(OmDimensionRemoveChild, RootKeepsItsChildren) {
    Grown world("a b");
    Node root = world.Root();
    world.dimension.removeChild(root);
    EXPECT_EQ(world.Text(), "a b");
    EXPECT_EQ(world.Root().Value().Subscript(), Dissolved);
}

TEST(OmDimensionRemoveChild, ChildrenTakeThePlaceOfTheGroup) {
    Grown world("X A(p B(q r) s) Y");
    world.Dissolve("A");
    EXPECT_EQ(world.Text(), "X p B(q r) s Y");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
    world.Dissolve("B");
    EXPECT_EQ(world.Text(), "X p q r s Y");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionRemoveChild, FirstAndLastGroupDissolveInPlace) {
    Grown world("A(p q) x B(r s)");
    world.Dissolve("B");
    EXPECT_EQ(world.Text(), "A(p q) x r s");
    world.Dissolve("A");
    EXPECT_EQ(world.Text(), "p q x r s");
}

TEST(OmDimensionRemoveChild, NumberOfCategoriesAndChildIndexStay) {
    Grown world("X A(p q) Y");
    world.Dissolve("A");
    EXPECT_EQ(world.dimension.NumCategories(), 4);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1, 2");
}

TEST(OmDimensionRemoveChild, CopiesKeepEverythingOfTheirOwn) {
    Grown world("X A(B(p q)) Y");
    OmDimensionNode& value = world.Named("B").Value();
    value.Sort(OmSort::Down);
    value.HideLabels(true);
    world.Dissolve("A");
    EXPECT_EQ(omtest::PrintedBy(NodeAt(world.dimension, 1).Value(), 0),
              "Subscript: 7, Group: yes, hide: no, hideLabels: yes, Sort: down, Children: 0, 1, Text: \"B\"\n");
}

TEST(OmDimensionRemoveChild, DissolvesANonGroupWithChildrenToo) {
    Grown world("a b");
    world.dimension.AddNewChild(world.Named("a"), Label("c"), 5, false);
    world.Dissolve("a");
    EXPECT_EQ(world.Text(), "c b");
}

// Going by identity, the children would stand where the second A stood.
TEST(OmDimensionRemoveChild, PlaceIsThatOfTheFirstEqualSibling) {
    Grown world("A() y A(p q) z");
    world.Dissolve("A");
    Node second = NodeAt(world.dimension, 2);
    world.dimension.removeChild(second);
    EXPECT_EQ(world.Text(), "p q A() y z");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

// Each copy goes before the first child that equals the group, and the inner A equals it once it has come up.
TEST(OmDimensionRemoveChild, ChildThatEqualsTheGroupHoldsUpThoseBehindIt) {
    Grown world("A(x A() y A() z) w");
    Node const group = NodeAt(world.dimension, 0);
    group.Child(1).Value().Subscript(Dissolved);
    group.Child(3).Value().Subscript(Dissolved);
    group.Child(3).Value().Hide(true);
    world.Dissolve("A");
    EXPECT_EQ(world.Text(), "x y z ~A() A() w");
}

// A number that is missing may be unequal to itself, for instance.
TEST(OmDimensionRemoveChild, GroupThatIsNotFoundByEqualityStays) {
    omtest::ForeignLog log;
    omtest::ForeignText text(log, "A");
    text.spec().compare = short{1};
    CategoryWorld world;
    Node group = world.dimension.AddNewChild(world.Root(), text, 3, true);
    CategoryReader(world.dimension).AddBelow(group, "p q");
    world.dimension.removeChild(group);
    EXPECT_EQ(Categories(world.dimension), "A(p q)");
    EXPECT_EQ(NodeAt(world.dimension, 0).Value().Subscript(), Dissolved);
}

// --- move to the nearest visible ancestor ----------------------------------------------------------------------------

TEST(OmDimensionMoveUp, GoesToTheEndOfItsSiblingsWhenTheParentIsNotHidden) {
    Grown world("G(a b c) d");
    world.Move("a");
    EXPECT_EQ(world.Text(), "G(b c a) d");
    world.Move("a");
    EXPECT_EQ(world.Text(), "G(b c a) d");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionMoveUp, GoesToTheEndOfTheGrandparentWhenTheParentIsHidden) {
    Grown world("X G(~H(a B(p) c) d) e");
    world.Move("B");
    EXPECT_EQ(world.Text(), "X G(~H(a c) d B(p)) e");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionMoveUp, PassesEveryHiddenAncestorUpToTheRoot) {
    Grown world("~F(~G(~H(a b))) c");
    world.Move("a");
    EXPECT_EQ(world.Text(), "~F(~G(~H(b))) c a");
}

TEST(OmDimensionMoveUp, StopsAtTheFirstAncestorThatIsNotHidden) {
    Grown world("~F(G(~H(a b))) c");
    world.Move("a");
    EXPECT_EQ(world.Text(), "~F(G(~H(b) a)) c");
}

TEST(OmDimensionMoveUp, HiddenRootIsStillTheEnd) {
    Grown world("~H(a b) c");
    world.Root().Value().Hide(true);
    world.Move("a");
    EXPECT_EQ(world.Text(), "~H(b) c a");
}

TEST(OmDimensionMoveUp, OwnFlagOfTheNodeDoesNotMatter) {
    Grown world("G(~a b)");
    world.Move("a");
    EXPECT_EQ(world.Text(), "G(b ~a)");
}

TEST(OmDimensionMoveUp, IgnoresTheSwapFlag) {
    Grown world("G(a b)");
    Node node = world.Named("a");
    world.dimension.moveChild(node, nullptr, true);
    EXPECT_EQ(world.Text(), "G(b a)");
}

TEST(OmDimensionMoveUp, NumberOfCategoriesAndChildIndexesStay) {
    Grown world("~H(a b) c");
    world.Move("a");
    EXPECT_EQ(world.dimension.NumCategories(), 3);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1");
    EXPECT_EQ(ChildIndexOf(world.Named("H")), "0, 1");
}

// --- move to a target ------------------------------------------------------------------------------------------------

namespace {

struct Relocation {
    char const* before;
    char const* node;
    char const* target;
    char const* after;
};

std::ostream& operator<<(std::ostream& stream, Relocation const& move) {
    return stream << move.before << ", " << move.node << " and " << move.target;
}

class OmDimensionMoves : public ::testing::TestWithParam<Relocation> {};
class OmDimensionSwaps : public ::testing::TestWithParam<Relocation> {};

void ExpectMove(Relocation const& move, bool swap) {
    Grown world(move.before);
    std::string const index = ChildIndexOf(world.Root());
    int const categories = world.dimension.NumCategories();
    Node node = world.Named(move.node);
    Node target = world.Named(move.target);
    world.dimension.moveChild(node, &target, swap);
    EXPECT_EQ(world.Text(), move.after);
    EXPECT_TRUE(ParentPointersHold(world.dimension));
    EXPECT_EQ(ChildIndexOf(world.Root()), index);
    EXPECT_EQ(world.dimension.NumCategories(), categories);
}

} // namespace

TEST_P(OmDimensionMoves, PutTheNodeBeforeTheTarget) { ExpectMove(GetParam(), false); }

INSTANTIATE_TEST_SUITE_P(
    Cases, OmDimensionMoves,
    ::testing::Values(Relocation{"a b c d", "d", "b", "a d b c"}, Relocation{"a b c d", "a", "d", "b c a d"},
                      Relocation{"a b c d", "a", "b", "a b c d"}, Relocation{"a B(p q) c", "c", "q", "a B(p c q)"},
                      Relocation{"a B(p q) c", "q", "a", "q a B(p) c"},
                      Relocation{"a B(p q) C(r(s)) d", "C", "p", "a B(C(r(s)) p q) d"},
                      Relocation{"F(a) B(p q)", "F", "q", "B(p F(a) q)"},
                      Relocation{"A(p(x) q) b", "x", "A", "x A(p() q) b"}, Relocation{"A(p q) b", "A", "q", "A(p q) b"},
                      Relocation{"a b c", "a", "a", "b c a"}));

TEST_P(OmDimensionSwaps, ExchangeTwoSiblings) { ExpectMove(GetParam(), true); }

INSTANTIATE_TEST_SUITE_P(
    Cases, OmDimensionSwaps,
    ::testing::Values(Relocation{"X A Y B Z", "A", "B", "X B Y A Z"}, Relocation{"X A Y B Z", "B", "A", "X B Y A Z"},
                      Relocation{"X A B Z", "A", "B", "X B A Z"}, Relocation{"X A B Z", "B", "A", "X B A Z"},
                      Relocation{"A B", "A", "B", "B A"}, Relocation{"A B", "B", "A", "B A"},
                      Relocation{"X A B", "A", "B", "X B A"}, Relocation{"X A B", "B", "A", "X B A"},
                      Relocation{"A X B", "A", "B", "B X A"}, Relocation{"A X B", "B", "A", "B X A"},
                      Relocation{"A(p) X B(q(r))", "A", "B", "B(q(r)) X A(p)"},
                      Relocation{"G(a b c) x", "c", "a", "G(c b a) x"}));

// They are not exchanged.
INSTANTIATE_TEST_SUITE_P(UnderDifferentParents, OmDimensionSwaps,
                         ::testing::Values(Relocation{"G(a b c) H(d e f)", "a", "e", "G(b c a) H(d f e)"},
                                           Relocation{"G(a b c) H(d e f)", "e", "a", "G(b c a) H(d f e)"},
                                           Relocation{"G(a b) c d", "a", "c", "G(b a) d c"},
                                           Relocation{"G(H(a b) c d)", "b", "c", "G(H(a b) d c)"}));

INSTANTIATE_TEST_SUITE_P(OneAboveTheOther, OmDimensionSwaps,
                         ::testing::Values(Relocation{"A(p q) b", "A", "q", "A(p q) b"},
                                           Relocation{"A(p q) b", "q", "A", "A(p q) b"},
                                           Relocation{"a b", "a", "a", "a b"}));

TEST(OmDimensionSwap, UnderDifferentParentsFollowersAreFoundByEquality) {
    CategoryWorld world;
    CategoryReader reader(world.dimension);
    reader.AddBelow(world.Root(), "G(x y) H(z y)");
    NodeAt(world.dimension, 1, 1).Value().Subscript(NodeAt(world.dimension, 0, 1).Value().Subscript());
    Node node = NodeNamed(world.dimension, "x");
    Node target = NodeNamed(world.dimension, "z");
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(Categories(world.dimension), "G(x y) H(z y)");
}

// Hiding takes no part in equality, so it shows which of the two was taken.
TEST(OmDimensionSwap, RemovesTheFirstSiblingThatEqualsTheTarget) {
    Grown world("~t a t b");
    NodeAt(world.dimension, 2).Value().Subscript(0);
    Node node = NodeAt(world.dimension, 1);
    Node target = NodeAt(world.dimension, 2);
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(world.Text(), "t t a b");
}

TEST(OmDimensionSwap, GoesBeforeTheFirstSiblingThatEqualsTheFollower) {
    Grown world("f a x b ~f");
    NodeAt(world.dimension, 4).Value().Subscript(0);
    Node node = world.Named("a");
    Node target = world.Named("b");
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(world.Text(), "a f b x ~f");
}

TEST(OmDimensionSwap, ChangesNothingWhenTheParentOfOneWouldGoWithTheEqualOfTheOther) {
    Grown world("T(P(a) b) T() c");
    Node node = world.Named("a");
    Node target = NodeAt(world.dimension, 1);
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(world.Text(), "T(P(a) b) T() c");
}

TEST(OmDimensionMove, GoesBeforeTheFirstSiblingThatEqualsTheTarget) {
    Grown world("t a ~t n");
    NodeAt(world.dimension, 2).Value().Subscript(0);
    Node node = world.Named("n");
    Node target = NodeAt(world.dimension, 2);
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(world.Text(), "n t a ~t");
}

TEST(OmDimensionMove, EqualityOfTheTargetGoesByAll64BitsOfTheSubscript) {
    Grown world("t a ~t n");
    NodeAt(world.dimension, 2).Value().Subscript(0x100000000ULL);
    Node node = world.Named("n");
    Node target = NodeAt(world.dimension, 2);
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(world.Text(), "t a n ~t");
}

TEST(OmDimensionMove, MovedNodeKeepsEverythingOfItsOwn) {
    Grown world("a G(p q) b");
    OmDimensionNode& value = world.Named("G").Value();
    value.Sort(OmSort::Up);
    value.Subscript(77);
    Node node = world.Named("G");
    Node target = world.Named("a");
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(omtest::PrintedBy(NodeAt(world.dimension, 0).Value(), 0),
              "Subscript: 77, Group: yes, hide: no, hideLabels: no, Sort: up, Children: 0, 1, Text: \"G\"\n");
}

TEST(OmDimensionMove, ChildIndexesOfBothParentsStay) {
    Grown world("A(p q) B(r s)");
    Node node = world.Named("p");
    Node target = world.Named("s");
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(world.Text(), "A(q) B(r p s)");
    EXPECT_EQ(ChildIndexOf(world.Named("A")), "0, 1");
    EXPECT_EQ(ChildIndexOf(world.Named("B")), "0, 1");
}

TEST(OmDimensionMove, RootAndStrangersDoNotMove) {
    Grown world("A(p) b");
    Grown other("A(p) b");
    Node root = world.Root();
    Node node = world.Named("b");
    Node stranger = other.Named("p");
    for (bool const swap : {false, true}) {
        world.dimension.moveChild(root, &node, swap);
        world.dimension.moveChild(node, &root, swap);
        world.dimension.moveChild(stranger, &node, swap);
        world.dimension.moveChild(node, &stranger, swap);
        world.dimension.moveChild(root, nullptr, swap);
        world.dimension.moveChild(stranger, nullptr, swap);
    }
    EXPECT_EQ(world.Text(), "A(p) b");
    EXPECT_EQ(other.Text(), "A(p) b");
}
