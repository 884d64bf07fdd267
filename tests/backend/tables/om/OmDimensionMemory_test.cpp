// Category trees whose parent pointers or child indexes are out of step, and the books of their region.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/Assert.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <string>
#include <vector>

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

/// How a tree came to have stale parent pointers.
enum class After {
    Delete, ///< they lead to the next sibling, or to the place behind the last one
    TwoDeletes,
    Relocation ///< and the block that the parents' own parent stands in was replaced since
};

/// "G(A(x) B(p q(r)) C(s t))" without A, under the named history.
struct StaleWorld : CategoryWorld {
    explicit StaleWorld(After history) {
        CategoryReader(dimension).AddBelow(Root(), "G(A(x) Z() B(p q(r)) C(s t))");
        Delete("A");
        if (history == After::Delete) {
            return;
        }
        Delete("Z");
        if (history == After::Relocation) {
            for (int k = 0; k < 40; ++k) {
                CategoryReader(dimension).AddBelow(Root(), "k");
            }
            while (Root().ChildCount() > 1) {
                Node last = NodeAt(dimension, Root().ChildCount() - 1);
                dimension.Delete(last);
            }
        }
    }

    void Delete(std::string const& label) {
        Node node = NodeNamed(dimension, label);
        dimension.Delete(node);
    }
    Node Named(std::string const& label) { return NodeNamed(dimension, label); }
    std::string Text() const {
        std::string text = Categories(dimension);
        std::string const empty = "Z() ";
        std::size_t const place = text.find(empty);
        return place == std::string::npos ? text : text.erase(place, empty.size());
    }
};

class OmDimensionAfterDelete : public ::testing::TestWithParam<After> {
protected:
    StaleWorld world{GetParam()};
};

int reports = 0;
std::string lastReport;

void CountReport(char const* source, int, char const* condition) {
    ++reports;
    lastReport = std::string(source) + ": " + condition;
}

} // namespace

// --- nodes below later siblings of a deleted one ---------------------------------------------------------------------

TEST_P(OmDimensionAfterDelete, ParentPointersAreStale) {
    EXPECT_EQ(world.Text(), "G(B(p q(r)) C(s t))");
    EXPECT_FALSE(ParentPointersHold(world.dimension));
}

TEST_P(OmDimensionAfterDelete, NodesBelowCanBeDeleted) {
    world.Delete("q");
    EXPECT_EQ(world.Text(), "G(B(p) C(s t))");
    world.Delete("t");
    EXPECT_EQ(world.Text(), "G(B(p) C(s))");
    world.Delete("s");
    EXPECT_EQ(world.Text(), "G(B(p) C())");
    EXPECT_EQ(ChildIndexOf(world.Named("B")), "0");
    EXPECT_EQ(ChildIndexOf(world.Named("C")), "");
}

TEST_P(OmDimensionAfterDelete, NodesBelowCanBeDissolved) {
    Node node = world.Named("q");
    world.dimension.removeChild(node);
    EXPECT_EQ(world.Text(), "G(B(p r) C(s t))");
    node = world.Named("C");
    world.dimension.removeChild(node);
    EXPECT_EQ(world.Text(), "G(B(p r) s t)");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST_P(OmDimensionAfterDelete, NodesBelowCanMoveUp) {
    world.Named("C").Value().Hide(true);
    Node node = world.Named("s");
    world.dimension.moveChild(node, nullptr, false);
    EXPECT_EQ(world.Text(), "G(B(p q(r)) ~C(t) s)");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST_P(OmDimensionAfterDelete, NodesBelowCanBeMovedToATarget) {
    Node node = world.Named("t");
    Node target = world.Named("q");
    world.dimension.moveChild(node, &target, false);
    EXPECT_EQ(world.Text(), "G(B(p t q(r)) C(s))");
}

TEST_P(OmDimensionAfterDelete, NodesBelowCanBeSwapped) {
    Node node = world.Named("p");
    Node target = world.Named("q");
    world.dimension.moveChild(node, &target, true);
    EXPECT_EQ(world.Text(), "G(B(q(r) p) C(s t))");
}

TEST_P(OmDimensionAfterDelete, NodesBelowCanBeGathered) {
    Node first = world.Named("t");
    Node second = world.Named("q");
    world.dimension.insertChild(Label("N"), {&first, &second});
    EXPECT_EQ(world.Text(), "G(B(p) C(s N(t q(r))))");
    EXPECT_TRUE(ParentPointersHold(world.dimension));
}

TEST_P(OmDimensionAfterDelete, LeavesCanBeInsertedBelow) {
    world.dimension.insertCategory(Label("n"), world.Named("p"), world.Named("B"), false);
    world.dimension.insertCategory(Label("m"), world.Named("t"), world.Named("C"), false);
    EXPECT_EQ(world.Text(), "G(B(p n q(r)) C(s t m))");
}

TEST_P(OmDimensionAfterDelete, ChildrenCanBeAddedAndFoundBelow) {
    for (int k = 0; k < 10; ++k) {
        world.dimension.AddNewChild(world.Named("B"), Label("n"), 0, true);
        world.dimension.Child(world.Named("q"), Label("m" + std::to_string(k)), 0, true);
    }
    EXPECT_EQ(OmDimension::FindChild(world.Named("q"), Label("r"), false), 0);
    EXPECT_EQ(world.dimension.getMaximumDepth(), 5U);
}

// The walk up meets a parent that does not hold the node, and says so instead of following it.
TEST_P(OmDimensionAfterDelete, CounterpartOfANodeBelowIsReported) {
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_TRUE(ParentPointersHold(copy));
    reports = 0;
    OmAssertionHandler const before = SetAssertionHandler(CountReport);
    for (char const* const label : {"r", "s", "t"}) {
        Node node = world.Named(label);
        EXPECT_TRUE(copy.Counterpart(node).IsNull()) << label;
    }
    SetAssertionHandler(before);
    EXPECT_EQ(reports, 3);
    EXPECT_EQ(lastReport, "backend/tables/om/VectorTree: 0 <= offset && offset < vec.size()");
}

TEST_P(OmDimensionAfterDelete, StrangersNodesAreStillToldApart) {
    CategoryWorld other;
    CategoryReader(other.dimension).AddBelow(other.Root(), "a b");
    Node node = world.Named("s");
    Node target = NodeNamed(other.dimension, "a");
    other.dimension.moveChild(node, nullptr, false);
    other.dimension.moveChild(target, &node, false);
    other.dimension.Delete(node);
    other.dimension.insertChild(Label("N"), {&node});
    EXPECT_EQ(Categories(other.dimension), "a b");
    EXPECT_EQ(world.Text(), "G(B(p q(r)) C(s t))");
}

INSTANTIATE_TEST_SUITE_P(Histories, OmDimensionAfterDelete,
                         ::testing::Values(After::Delete, After::TwoDeletes, After::Relocation));

// --- child indexes out of step ---------------------------------------------------------------------------------------

// Entries past the children count as sorting after whatever is looked for.
TEST(OmDimensionIndexOutOfStep, EntriesPastTheChildrenAreNeverFollowed) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.dimension.Child(world.Root(), Label("G"), 0, true), "x");
    for (char const* const label : {"a", "b", "c", "d", "e", "f"}) {
        world.dimension.Child(world.Root(), Label(label), 0, false);
    }
    for (char const* const label : {"c", "d", "e", "f"}) {
        Node node = NodeNamed(world.dimension, label);
        Node target = NodeNamed(world.dimension, "x");
        world.dimension.moveChild(node, &target, false);
    }
    ASSERT_EQ(Categories(world.dimension), "G(c d e f x) a b");
    ASSERT_EQ(ChildIndexOf(world.Root()), "0, 1, 2, 3, 4, 5, 6");
    for (char const* const label : {"c", "d", "e", "f", "z", ""}) {
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(label), false), -1) << label;
    }
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("G"), true), 0);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), false), 1);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("b"), false), 2);
}

// A search through the children would find the third as well.
TEST(OmDimensionIndexOutOfStep, SearchGivesWhatTheBisectionGives) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "b c a");
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("a"), false), -1);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("b"), false), 0);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("c"), false), 1);
}

// The new entry is the index's length, which is no child's position then.
TEST(OmDimensionIndexOutOfStep, NewEntryIsTheLengthOfTheIndex) {
    CategoryWorld world;
    for (char const* const label : {"a", "b", "c"}) {
        world.dimension.Child(world.Root(), Label(label), 0, false);
    }
    Node b = NodeNamed(world.dimension, "b");
    Node c = NodeNamed(world.dimension, "c");
    world.dimension.insertChild(Label("G"), {&b, &c});
    ASSERT_EQ(Categories(world.dimension), "a G(b c)");
    ASSERT_EQ(ChildIndexOf(world.Root()), "0, 1, 2");
    world.dimension.AddNewChild(world.Root(), Label("d"), 0, false);
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1, 2, 3");
    world.dimension.Child(world.Root(), Label("e"), 0, false);
    EXPECT_EQ(ChildIndexOf(world.Root()),
              "0, 1, 2, 4, 3"); // before the 3, which is past the children and so sorts last
    EXPECT_EQ(Categories(world.dimension), "a G(b c) d e");
}

TEST(OmDimensionIndexOutOfStep, ShorterIndexThanChildrenFindsWhatItNames) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "G(a b c d) h");
    Node group = NodeNamed(world.dimension, "G");
    world.dimension.removeChild(group);
    ASSERT_EQ(Categories(world.dimension), "a b c d h");
    ASSERT_EQ(ChildIndexOf(world.Root()), "0, 1");
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("b"), false), 1);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label("h"), false), -1);
    EXPECT_EQ(world.dimension.Child(world.Root(), Label("h"), 0, false), NodeAt(world.dimension, 5));
    EXPECT_EQ(ChildIndexOf(world.Root()), "0, 1, 2");
}

// --- the region's books ----------------------------------------------------------------------------------------------

namespace {

using Operation = std::function<void(OmDimension&)>;

struct NamedOperation {
    char const* name;
    Operation run;
};

/// One operation each on "S(A(p q(r)) B(s t) u v)" below the root.
std::vector<NamedOperation> Operations() {
    auto const named = [](OmDimension& dimension, char const* label) { return NodeNamed(dimension, label); };
    return {
        {"Child", [=](OmDimension& d) { d.Child(named(d, "B"), Label("new label, quite long"), 9, true); }},
        {"Child, found", [=](OmDimension& d) { d.Child(named(d, "B"), Label("s"), 9, false); }},
        {"AddNewChild", [=](OmDimension& d) { d.AddNewChild(named(d, "B"), Label("s"), 9, false); }},
        {"FindChild", [=](OmDimension& d) { OmDimension::FindChild(named(d, "B"), Label("t"), false); }},
        {"Delete",
         [=](OmDimension& d) {
             Node node = named(d, "A");
             d.Delete(node);
         }},
        {"removeChild",
         [=](OmDimension& d) {
             Node node = named(d, "A");
             d.removeChild(node);
         }},
        {"moveChild up",
         [=](OmDimension& d) {
             Node node = named(d, "A");
             d.moveChild(node, nullptr, false);
         }},
        {"moveChild",
         [=](OmDimension& d) {
             Node node = named(d, "A");
             Node target = named(d, "t");
             d.moveChild(node, &target, false);
         }},
        {"moveChild, swap",
         [=](OmDimension& d) {
             Node node = named(d, "A");
             Node target = named(d, "u");
             d.moveChild(node, &target, true);
         }},
        {"insertChild",
         [=](OmDimension& d) {
             Node first = named(d, "A");
             Node second = named(d, "t");
             Node third = named(d, "r");
             d.insertChild(Label("N"), {&second, &first, &third});
         }},
        {"insertCategory", [=](OmDimension& d) { d.insertCategory(Label("n"), named(d, "s"), named(d, "B"), false); }},
        {"Text", [=](OmDimension& d) { named(d, "A").Value().Text(Label("another label, quite long")); }},
        {"operator=", [=](OmDimension& d) { named(d, "u").Value() = named(d, "B").Value(); }},
    };
}

} // namespace

TEST(OmDimensionBooks, EveryOperationGivesBackWhatItTook) {
    for (NamedOperation const& operation : Operations()) {
        CategoryWorld world;
        OmMemoryRegion const& region = world.dimension.Region();
        CategoryReader(world.dimension).AddBelow(world.Root(), "x");
        std::size_t const blocks = region.LiveBlocks();
        std::size_t const bytes = region.LiveBytes();
        CategoryReader(world.dimension).AddBelow(world.Root(), "S(A(p q(r)) B(s t) u v)");
        operation.run(world.dimension);
        Node node = NodeAt(world.dimension, 1);
        ASSERT_EQ(node.Value().Text()->AsString(), "S");
        world.dimension.Delete(node);
        EXPECT_EQ(region.LiveBlocks(), blocks) << operation.name;
        EXPECT_EQ(region.LiveBytes(), bytes) << operation.name;
    }
}

TEST(OmDimensionBooks, CopiedDimensionStandsOnItsOwnBooks) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "S(A(p q(r)) B(s t) u v)");
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    {
        CategoryWorld other;
        other.table.AddDimension(world.dimension);
        EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
    }
    EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
}

TEST(OmDimensionBooks, FailingCloneLeavesTheTreeAsItWas) {
    for (NamedOperation const& operation : Operations()) {
        if (std::string(operation.name) == "Text" || std::string(operation.name) == "insertCategory") {
            continue; // the label handed in is a string cell; and a leaf stays when only its copy for the caller failed
        }
        omtest::ForeignLog log;
        CategoryWorld world;
        CategoryReader(world.dimension).AddBelow(world.Root(), "S(A(p q(r)) B(s t) u v)");
        OmDimension::Tree::WalkPreOrder(world.Root(), [&](OmDimension::ConstNode const& node) {
            OmDimensionNode& value = const_cast<OmDimensionNode&>(node.Value());
            std::string const label = value.Text()->AsString();
            value.Text(omtest::ForeignText(log, label));
            return true;
        });
        std::string const before = Categories(world.dimension);
        std::size_t const blocks = world.dimension.Region().LiveBlocks();
        int const alive = log.alive;
        int refused = 0;
        for (bool done = false; !done; ++refused) {
            log.clonesUntilFailure = refused;
            try {
                operation.run(world.dimension);
                done = true;
            } catch (std::bad_alloc const&) {
                log.clonesUntilFailure = -1;
                EXPECT_EQ(Categories(world.dimension), before) << operation.name;
                EXPECT_TRUE(ParentPointersHold(world.dimension)) << operation.name;
                EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks) << operation.name;
                EXPECT_EQ(log.alive, alive) << operation.name;
            }
        }
    }
}

// Rearranging for hours must not make the table grow.
TEST(OmDimensionBooks, RearrangingDoesNotGrowTheRegion) {
    CategoryWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q(r) s) B(t u) c");
    auto const turn = [&] {
        Node node = NodeNamed(world.dimension, "B");
        Node target = NodeNamed(world.dimension, "A");
        world.dimension.moveChild(node, &target, true);
        node = NodeNamed(world.dimension, "t");
        world.dimension.moveChild(node, nullptr, false);
        Node first = NodeNamed(world.dimension, "p");
        Node second = NodeNamed(world.dimension, "s");
        world.dimension.insertChild(Label("N"), {&first, &second});
        node = NodeNamed(world.dimension, "N");
        world.dimension.removeChild(node);
        world.dimension.insertCategory(Label("n"), NodeNamed(world.dimension, "u"), NodeNamed(world.dimension, "B"),
                                       true);
        node = NodeNamed(world.dimension, "n");
        world.dimension.Delete(node);
    };
    for (int k = 0; k < 10; ++k) {
        turn();
    }
    std::size_t const reserved = world.dimension.Region().ReservedBytes();
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    for (int k = 0; k < 2000; ++k) {
        turn();
    }
    EXPECT_LE(world.dimension.Region().ReservedBytes(), reserved);
    EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
}

// --- random histories ------------------------------------------------------------------------------------------------

namespace {

/// Deletes, grows and rearranges at random, with few repairs in between, so that parent pointers of all ages meet every
/// operation. Labels are unique, so what is there can be counted.
class Wanderer {
public:
    explicit Wanderer(unsigned seed) : _random(seed) {}

    void Run() {
        for (int k = 0; k < 400; ++k) {
            Step();
        }
        OmDimension::Tree::Reparent(_world.Root(), true);
        EXPECT_TRUE(ParentPointersHold(_world.dimension));
    }

private:
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(_random() % bound); }

    /// A random walk down; the root only when it has no children.
    Node Pick() {
        Node node = _world.Root();
        do {
            if (node.ChildCount() == 0) {
                return node;
            }
            node = node.Child(Below(node.ChildCount()));
        } while (Below(3) != 0);
        return node;
    }

    static std::size_t CountFrom(Node const& top) {
        std::size_t count = 0;
        OmDimension::Tree::WalkPreOrder(top, [&](OmDimension::ConstNode const&) { return ++count != 0; });
        return count;
    }
    std::size_t Count() { return CountFrom(_world.Root()); }

    static bool IsWithin(OmDimension::ConstNode const& node, Node const& top) {
        bool within = false;
        OmDimension::Tree::WalkPreOrder(top, [&](OmDimension::ConstNode const& place) {
            within = within || place == node;
            return true;
        });
        return within;
    }

    void Grow() {
        Node const parent = Pick();
        for (std::size_t k = Below(9); k > 0; --k) {
            ++_next;
            _world.dimension.AddNewChild(parent, Label(std::to_string(_next)), _next, Below(2) == 0);
        }
    }

    void Step() {
        Node node = Pick();
        Node target = Pick();
        std::size_t const before = Count();
        std::size_t const kind = Below(before > 150 ? 10 : 14);
        if (kind <= 3) {
            std::size_t const gone = CountFrom(node);
            bool const isRoot = node.Depth() == 0;
            _world.dimension.Delete(node);
            EXPECT_EQ(Count(), isRoot ? before : before - gone);
        } else if (kind == 4) {
            bool const stays = node.Depth() == 0 || node.ChildCount() == 0;
            _world.dimension.removeChild(node);
            EXPECT_EQ(Count(), stays ? before : before - 1);
        } else if (kind <= 7) {
            _world.dimension.moveChild(node, kind == 5 ? nullptr : &target, kind == 6);
            EXPECT_EQ(Count(), before);
        } else if (kind == 8) {
            bool const apart =
                node.Depth() != 0 && target.Depth() != 0 && !IsWithin(node, target) && !IsWithin(target, node);
            if (apart) {
                _world.dimension.insertChild(Label(std::to_string(++_next)), {&node, &target});
            }
            EXPECT_EQ(Count(), apart ? before + 1 : before);
        } else if (kind == 9) {
            _world.dimension.insertCategory(Label(std::to_string(++_next)), node, target, Below(2) == 0);
            EXPECT_EQ(Count(), before + 1);
        } else {
            Grow();
        }
    }

    std::mt19937_64 _random;
    CategoryWorld _world{};
    unsigned _next = 0;
};

} // namespace

TEST(OmDimensionWandering, LosesNoNodeAndReadsNothingThatIsGone) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Wanderer(seed).Run();
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}
