// Defects that were found in the operations of category trees.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/CategoryText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using omtest::Categories;
using omtest::GrownWorld;
using omtest::Label;
using Node = OmDimension::Node;

/// The categories after the named nodes were gathered under a group "g".
std::string Gathered(std::string const& categories, std::vector<std::string> const& labels) {
    GrownWorld world(categories);
    std::vector<Node> nodes;
    std::vector<Node*> listed;
    for (std::string const& label : labels) {
        nodes.push_back(world.Named(label));
    }
    for (Node& node : nodes) {
        listed.push_back(&node);
    }
    world.dimension.insertChild(Label("g"), listed);
    return Categories(world.dimension);
}

} // namespace

// --- insertChild -----------------------------------------------------------------------------------------------------

TEST(InsertChild, GroupFollowsTheSiblingBeforeTheFirstListedNode) {
    EXPECT_EQ(Gathered("a b c d e", {"d", "b"}), "a c g(d b) e");
    EXPECT_EQ(Gathered("a b c d e", {"e", "a", "b"}), "c d g(e a b)");
    EXPECT_EQ(Gathered("x A(a b c d e) y", {"c", "x", "a", "y"}), "A(b g(c x a y) d e)");
}

TEST(InsertChild, SiblingThatIsListedItselfHandsItsPlaceOn) {
    EXPECT_EQ(Gathered("a b c d e", {"d", "c"}), "a b g(d c) e");
    EXPECT_EQ(Gathered("a b c d e", {"d", "c", "a"}), "b g(d c a) e");
    EXPECT_EQ(Gathered("a b c d e", {"c", "b", "a"}), "g(c b a) d e");
}

// --- a dimension whose name was taken away ---------------------------------------------------------------------------

namespace {

/// A dimension with categories, whose root's text went to another node.
struct NamelessWorld : GrownWorld {
    NamelessWorld() : GrownWorld("A(p q) b") { thief = Root().Value(); }

    OmDimensionNode thief{};
};

} // namespace

TEST(NamelessDimension, IsNeverFound) {
    NamelessWorld world;
    ASSERT_EQ(world.Root().Value().Text(), nullptr);
    world.table.AddDimension(Label("E"));
    EXPECT_EQ(world.table.FindDimension(Label("D")), -1);
    EXPECT_EQ(world.table.FindDimension(Label("")), -1);
    EXPECT_EQ(world.table.FindDimension(Label("E")), 1);
}

TEST(NamelessDimension, IsCopiedWithoutAName) {
    NamelessWorld world;
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_EQ(copy.Root().Value().Text(), nullptr);
    EXPECT_EQ(Categories(copy), "A(p q) b");
    EXPECT_EQ(world.table.FindDimension(Label("D")), -1);
    copy.Root().Value().Text(Label("D"));
    EXPECT_EQ(world.table.FindDimension(Label("D")), 1);
}

TEST(NamelessDimension, GrowsAndIsRearranged) {
    NamelessWorld world;
    world.dimension.Child(world.Root(), Label("c"), 7, false);
    world.dimension.insertCategory(Label("d"), world.Root(), world.Root(), false);
    Node node = world.Named("A");
    world.dimension.insertChild(Label("G"), {&node});
    EXPECT_EQ(Categories(world.dimension), "G(A(p q)) b c d");
}

// --- EraseChild ------------------------------------------------------------------------------------------------------

TEST(EraseChild, TakesANodeAsWellAsAPosition) {
    GrownWorld world("A(p q) b c");
    OmDimension::Tree::EraseChild(world.Root(), world.Named("b"));
    OmDimension::Tree::EraseChild(world.Named("A"), world.Named("p"));
    EXPECT_EQ(Categories(world.dimension), "A(q) c");
    omtest::AssertionCatcher caught(omtest::AfterReport::Return);
    OmDimension::Tree::EraseChild(world.Root(), world.Named("q"));
    OmDimension::Tree::EraseChild(world.Root(), 2);
    EXPECT_EQ(caught.Reports().size(), 2U);
    EXPECT_EQ(Categories(world.dimension), "A(q) c");
}
