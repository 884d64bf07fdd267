#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using omtest::Categories;
using omtest::CategoryWorld;
using omtest::ChildIndexOf;
using omtest::Label;
using omtest::NodeAt;
using omtest::ParentPointersHold;
using Node = OmDimension::Node;

constexpr unsigned long long AllOnes = 0xFFFFFFFFFFFFFFFFULL;

/// A grown dimension, and what a test puts in, by label.
struct Grown : omtest::GrownWorld {
    using GrownWorld::GrownWorld;

    /// Puts the named nodes under a new group "NEW".
    void Gather(std::vector<std::string> const& labels) {
        std::vector<Node> nodes;
        for (std::string const& label : labels) {
            nodes.push_back(Named(label));
        }
        Gather(nodes);
    }
    void Gather(std::vector<Node>& nodes) {
        std::vector<Node*> pointers;
        for (Node& node : nodes) {
            pointers.push_back(&node);
        }
        dimension.insertChild(Label("NEW"), pointers);
    }

    OmDimensionNode Insert(std::string const& label, Node const& reference, Node const& parent, bool before) {
        return dimension.insertCategory(Label(label), reference, parent, before);
    }
    OmDimensionNode Insert(std::string const& label, std::string const& reference, bool before) {
        return Insert(label, Named(reference), Named(reference).Parent(), before);
    }
    std::string Text() const { return Categories(dimension); }
};

struct Gathering {
    char const* before;
    std::vector<std::string> listed;
    char const* after;
};

std::ostream& operator<<(std::ostream& stream, Gathering const& gathering) {
    stream << gathering.before << ":";
    for (std::string const& label : gathering.listed) {
        stream << " " << label;
    }
    return stream;
}

class OmDimensionGatherings : public ::testing::TestWithParam<Gathering> {};

} // namespace

// --- gather under a new group ----------------------------------------------------------------------------------------

TEST_P(OmDimensionGatherings, TakeThePlaceOfTheFirstListed) {
    Grown world(GetParam().before);
    std::string const index = ChildIndexOf(world.Root());
    int const categories = world.dimension.NumCategories();
    world.Gather(GetParam().listed);
    EXPECT_EQ(world.Text(), GetParam().after);
    EXPECT_TRUE(ParentPointersHold(world.dimension));
    EXPECT_EQ(ChildIndexOf(world.Root()), index);
    EXPECT_EQ(world.dimension.NumCategories(), categories);
}

INSTANTIATE_TEST_SUITE_P(OneParent, OmDimensionGatherings,
                         ::testing::Values(Gathering{"a b c d", {"a"}, "NEW(a) b c d"},
                                           Gathering{"a b c d", {"b", "c"}, "a NEW(b c) d"},
                                           Gathering{"a b c d", {"a", "d"}, "NEW(a d) b c"},
                                           Gathering{"a b c d", {"d"}, "a b c NEW(d)"},
                                           Gathering{"a b c d", {"a", "b", "c", "d"}, "NEW(a b c d)"},
                                           Gathering{"a b c d", {"d", "c", "b", "a"}, "NEW(d c b a)"},
                                           Gathering{"a b c d e", {"c", "a", "e"}, "b NEW(c a e) d"}));

// The sibling before the first listed one is followed while others go; where it goes itself, the one before it is.
INSTANTIATE_TEST_SUITE_P(ListedSiblingsBeforeTheFirst, OmDimensionGatherings,
                         ::testing::Values(Gathering{"a b c d e f", {"c", "a"}, "b NEW(c a) d e f"},
                                           Gathering{"a b c d e", {"c", "b"}, "a NEW(c b) d e"},
                                           Gathering{"a b c d e", {"d", "b"}, "a c NEW(d b) e"},
                                           Gathering{"a b c d e", {"d", "c", "a"}, "b NEW(d c a) e"},
                                           Gathering{"a b c d e", {"c", "b", "a"}, "NEW(c b a) d e"},
                                           Gathering{"a b c d", {"d", "b"}, "a c NEW(d b)"},
                                           Gathering{"a b c d", {"d", "a", "b"}, "c NEW(d a b)"}));

INSTANTIATE_TEST_SUITE_P(
    SeveralParents, OmDimensionGatherings,
    ::testing::Values(Gathering{"A(p q) B(r s) c", {"r", "p"}, "A(q) B(NEW(r p) s) c"},
                      Gathering{"A(p q) B(r s) c", {"c", "q", "r"}, "A(p) B(s) NEW(c q r)"},
                      Gathering{"A(p q) B(r s) c", {"s", "A"}, "B(r NEW(s A(p q))) c"},
                      Gathering{"A(B(C(p q) r) s) t", {"p", "r", "s"}, "A(B(C(NEW(p r s) q))) t"},
                      Gathering{"a B(c D(e F(g h)) i) j", {"g", "a", "c", "i"}, "B(D(e F(NEW(g a c i) h))) j"}));

// The copies are made before anything goes, so a node is in the group both by itself and below its parent.
INSTANTIATE_TEST_SUITE_P(OneBelowAnother, OmDimensionGatherings,
                         ::testing::Values(Gathering{"A(p q) b", {"A", "p"}, "NEW(A(p q) p) b"},
                                           Gathering{"x A(p q) b", {"x", "p", "A"}, "NEW(x p A(p q)) b"},
                                           Gathering{
                                               "x A(B(p) q) c", {"x", "A", "B", "p"}, "NEW(x A(B(p) q) B(p) p) c"}));

INSTANTIATE_TEST_SUITE_P(FirstBelowAnother, OmDimensionGatherings,
                         ::testing::Values(Gathering{"A(p q) b", {"p", "A"}, "A(p q) b"},
                                           Gathering{"A(B(p) q) c", {"p", "c", "A"}, "A(B(p) q) c"}));

INSTANTIATE_TEST_SUITE_P(OneListedTwice, OmDimensionGatherings,
                         ::testing::Values(Gathering{"a b c", {"b", "b"}, "a NEW(b b) c"},
                                           Gathering{"a b c", {"a", "c", "a"}, "NEW(a c a) b"}));

TEST(OmDimensionInsertChild, EmptyListChangesNothing) {
    Grown world("a B(c)");
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    world.dimension.insertChild(Label("NEW"), {});
    EXPECT_EQ(world.Text(), "a B(c)");
    EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
}

TEST(OmDimensionInsertChild, GroupHasSubscriptAllOnesAndNoFlags) {
    Grown world("a b");
    world.Gather({"b"});
    OmDimensionNode const& value = NodeAt(world.dimension, 1).Value();
    EXPECT_EQ(value.Subscript(), AllOnes);
    EXPECT_TRUE(value.IsGroup());
    EXPECT_FALSE(value.Hide());
    EXPECT_FALSE(value.HideLabels());
    EXPECT_EQ(value.Sort(), OmSort::None);
}

// The new group's index stays empty too, so its children are not found by label.
TEST(OmDimensionInsertChild, ChildIndexOfTheGroupIsEmpty) {
    Grown world("a b c");
    world.Gather({"b", "c"});
    EXPECT_EQ(ChildIndexOf(NodeAt(world.dimension, 1)), "");
    EXPECT_EQ(OmDimension::FindChild(NodeAt(world.dimension, 1), Label("b"), false), -1);
}

TEST(OmDimensionInsertChild, ListedNodesKeepEverythingOfTheirOwn) {
    Grown world("a B(p q) c");
    OmDimensionNode& value = world.Named("B").Value();
    value.Sort(OmSort::Up);
    value.Hide(true);
    world.Gather({"c", "B"});
    EXPECT_EQ(omtest::PrintedBy(world.Named("B").Value(), 0),
              "Subscript: 7, Group: yes, hide: yes, hideLabels: no, Sort: up, Children: 0, 1, Text: \"B\"\n");
    EXPECT_EQ(world.Named("c").Value().Subscript(), 3U);
}

TEST(OmDimensionInsertChild, RootAndStrangersAreNotGathered) {
    Grown world("A(p) b");
    Grown other("A(p) b");
    std::vector<std::vector<Node>> lists{
        {world.Root()}, {world.Named("b"), world.Root()}, {other.Named("p")}, {world.Named("b"), other.Named("p")}};
    for (std::vector<Node>& nodes : lists) {
        world.Gather(nodes);
    }
    EXPECT_EQ(world.Text(), "A(p) b");
    EXPECT_EQ(other.Text(), "A(p) b");
}

TEST(OmDimensionInsertChild, FailingCloneChangesNothing) {
    omtest::ForeignLog log;
    CategoryWorld world;
    for (char const* const label : {"a", "b", "c"}) {
        world.dimension.AddNewChild(world.Root(), omtest::ForeignText(log, label), 0, false);
    }
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    Node first = NodeAt(world.dimension, 1);
    Node second = NodeAt(world.dimension, 2);
    for (int const clones : {0, 1, 2}) {
        omtest::ForeignText const text(log, "NEW");
        log.clonesUntilFailure = clones;
        EXPECT_THROW(world.dimension.insertChild(text, {&first, &second}), std::bad_alloc);
        EXPECT_EQ(Categories(world.dimension), "a b c");
        EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
    }
}

// --- insert a leaf ---------------------------------------------------------------------------------------------------

TEST(OmDimensionInsertCategory, GoesBeforeTheReference) {
    Grown world("a b c");
    world.Insert("n", "b", true);
    EXPECT_EQ(world.Text(), "a n b c");
    world.Insert("m", "a", true);
    EXPECT_EQ(world.Text(), "m a n b c");
}

TEST(OmDimensionInsertCategory, GoesAfterTheReference) {
    Grown world("a b c");
    world.Insert("n", "b", false);
    EXPECT_EQ(world.Text(), "a b n c");
}

TEST(OmDimensionInsertCategory, AfterTheLastChildIsAtTheEnd) {
    Grown world("a b");
    world.Insert("n", "b", false);
    EXPECT_EQ(world.Text(), "a b n");
}

TEST(OmDimensionInsertCategory, StandsBesideAGroupToo) {
    Grown world("a G(p q) b");
    world.Insert("n", "G", true);
    world.Insert("m", "G", false);
    world.Insert("o", "p", false);
    EXPECT_EQ(world.Text(), "a n G(p o q) m b");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST(OmDimensionInsertCategory, SubscriptIsTheLargestOfTheDimensionPlusOne) {
    Grown world("a G(p q) b", 10);
    world.Named("a").Value().Subscript(30);
    EXPECT_EQ(world.Insert("n", "p", true).Subscript(), 31U);
    EXPECT_EQ(world.Named("n").Value().Subscript(), 31U);
    EXPECT_EQ(world.Insert("m", "b", true).Subscript(), 32U);
}

// In 32 bits the sum would be 0.
TEST(OmDimensionInsertCategory, SubscriptIsComputedIn64Bits) {
    Grown world("a b");
    world.Named("a").Value().Subscript(AllOnes);
    EXPECT_EQ(world.Insert("n", "b", true).Subscript(), 0x100000000ULL);
}

TEST(OmDimensionInsertCategory, SubscriptAfterADissolvedLeafIsAllOnesIn32Bits) {
    Grown world("a b");
    Node node = world.Named("a");
    world.dimension.removeChild(node);
    EXPECT_EQ(world.Insert("n", "b", true).Subscript(), 0xFFFFFFFFULL);
}

TEST(OmDimensionInsertCategory, FirstLeafHasSubscriptOne) {
    Grown world("G()");
    EXPECT_EQ(world.Insert("n", "G", true).Subscript(), 1U);
}

TEST(OmDimensionInsertCategory, CountsOneCategoryMore) {
    Grown world("a b", 10);
    world.Insert("n", "a", true);
    EXPECT_EQ(world.dimension.NumCategories(), 3);
}

TEST(OmDimensionInsertCategory, ChildIndexStays) {
    Grown world("a b");
    world.Insert("n", "a", true);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1");
}

TEST(OmDimensionInsertCategory, ReturnsACopyOfTheNewValue) {
    Grown world("a b");
    OmDimensionNode const made = world.Insert("n", "a", false);
    EXPECT_TRUE(made == world.Named("n").Value());
    EXPECT_NE(made.Text(), world.Named("n").Value().Text());
    EXPECT_EQ(made.Region(), &world.dimension.Region());
    EXPECT_EQ(omtest::PrintedBy(made, 0), "Subscript: 2, Group: no, hide: no, hideLabels: no, Text: \"n\"\n");
}

// By identity the leaf would stand next to the second one.
TEST(OmDimensionInsertCategory, PlaceIsThatOfTheFirstEqualSibling) {
    Grown world("t a ~t b");
    NodeAt(world.dimension, 2).Value().Subscript(0);
    world.Insert("n", NodeAt(world.dimension, 2), world.Root(), true);
    EXPECT_EQ(world.Text(), "n t a ~t b");
    world.Insert("m", NodeAt(world.dimension, 2), world.Root(), false);
    EXPECT_EQ(world.Text(), "n m t a ~t b");
}

TEST(OmDimensionInsertCategory, ReferenceThatTheParentDoesNotHaveMeansTheEnd) {
    Grown world("G(p q) a b");
    world.Insert("n", world.Named("p"), world.Root(), true);
    EXPECT_EQ(world.Text(), "G(p q) a b n");
    world.Insert("m", world.Named("q"), world.Root(), false);
    EXPECT_EQ(world.Text(), "G(p q) a b n m");
}

TEST(OmDimensionInsertCategory, GrowingSiblingsKeepsParentPointers) {
    Grown world("A(p) B(q(r)) C(s) D(t)");
    for (int k = 0; k < 20; ++k) {
        world.Insert("n", "A", k % 2 == 0);
        EXPECT_TRUE(ParentPointersHold(world.dimension));
    }
    EXPECT_EQ(world.dimension.NumCategories(), 24);
}
