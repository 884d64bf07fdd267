// Defects that were found in the operations of category trees.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
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
