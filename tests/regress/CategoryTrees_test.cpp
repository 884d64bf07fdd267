// Defects that were found in the operations of category trees.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/CategoryText.h"
#include "tests/support/FailingMalloc.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
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

// --- operations that are refused memory ------------------------------------------------------------------------------

namespace {

/// Everything that can be read of a dimension.
std::string StateOf(OmDimension const& dimension) {
    std::string text = std::to_string(dimension.NumCategories());
    text += omtest::ParentPointersHold(dimension) ? "\n" : " stale\n";
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](OmDimension::ConstNode const& node) {
        text += node.Value().Text() != nullptr ? omtest::PrintedBy(node.Value(), node.Depth()) : "?\n";
        return true;
    });
    return text + std::to_string(dimension.Region().LiveBlocks());
}

/// So long that it takes a block of its own.
std::string Long(std::string const& name) { return name + std::string(1100, '.'); }

/// Groups A and B below the root, all three with as many children as there is room for, in blocks of their own.
struct FullWorld : omtest::CategoryWorld {
    static constexpr int Room = 16;

    FullWorld() {
        for (char const* const name : {"A", "B"}) {
            dimension.AddNewChild(Root(), Label(Long(name)), 0, true);
        }
        for (int k = 2; k < Room; ++k) {
            dimension.AddNewChild(Root(), Label(Long("r" + std::to_string(k))), 0, false);
        }
        for (int k = 0; k < Room; ++k) {
            dimension.AddNewChild(A(), Label(Long("a" + std::to_string(100 + k))), 1, k % 2 == 0);
            dimension.AddNewChild(B(), Label(Long("b" + std::to_string(100 + k))), 2, k % 2 == 0);
        }
        dimension.AddNewChild(A().Child(0), Label(Long("below")), 3, false);
        // So many that their parent's child index takes a block of its own, too.
        for (int k = 0; k < 300; ++k) {
            dimension.AddNewChild(B().Child(2), Label("m"), 4, false);
        }
        A().Value().Hide(true);
    }

    Node A() { return omtest::NodeAt(dimension, 0); }
    Node B() { return omtest::NodeAt(dimension, 1); }
};

using Change = std::function<void(FullWorld&)>;

struct NamedChange {
    char const* name;
    Change run;
};

std::vector<NamedChange> Changes() {
    return {
        {"Child", [](FullWorld& w) { w.dimension.Child(w.B(), Label(Long("b2")), 9, false); }},
        {"Child below a leafless group",
         [](FullWorld& w) { w.dimension.Child(w.B().Child(0), Label(Long("first")), 9, false); }},
        {"Child by value",
         [](FullWorld& w) { w.dimension.Child(w.B(), OmDimensionNode(Label(Long("b2")), 9, true, nullptr)); }},
        {"AddNewChild", [](FullWorld& w) { w.dimension.AddNewChild(w.B(), Label(Long("b2")), 9, false); }},
        {"AddNewChild below a leafless group",
         [](FullWorld& w) { w.dimension.AddNewChild(w.B().Child(0), Label(Long("first")), 9, false); }},
        {"Delete",
         [](FullWorld& w) {
             Node node = w.A();
             w.dimension.Delete(node);
         }},
        {"removeChild",
         [](FullWorld& w) {
             Node node = w.A();
             w.dimension.removeChild(node);
         }},
        {"moveChild up",
         [](FullWorld& w) {
             Node node = w.A().Child(0);
             w.dimension.moveChild(node, nullptr, false);
         }},
        {"moveChild before a target",
         [](FullWorld& w) {
             Node node = w.A().Child(0);
             Node target = w.B().Child(3);
             w.dimension.moveChild(node, &target, false);
         }},
        {"moveChild, exchange",
         [](FullWorld& w) {
             Node node = w.A().Child(0);
             Node target = w.B().Child(3);
             w.dimension.moveChild(node, &target, true);
         }},
        {"insertChild",
         [](FullWorld& w) {
             Node first = w.B().Child(3);
             Node second = w.A().Child(0);
             w.dimension.insertChild(Label(Long("new")), {&first, &second});
         }},
        {"insertCategory",
         [](FullWorld& w) { w.dimension.insertCategory(Label(Long("new")), w.B().Child(3), w.B(), false); }},
        {"Text", [](FullWorld& w) { w.A().Value().Text(Label(Long("new"))); }},
        {"assignment", [](FullWorld& w) { w.A().Child(0).Value() = w.B().Child(2).Value(); }},
    };
}

} // namespace

TEST(RefusedMemory, EveryOperationLeavesTheDimensionAsItWas) {
    int refused = 0;
    for (NamedChange const& change : Changes()) {
        for (int allowed = 0;; ++allowed) {
            FullWorld world;
            std::string const before = StateOf(world.dimension);
            bool thrown = false;
            omtest::mallocBooks.failed = false;
            omtest::mallocBooks.untilFailure = allowed;
            try {
                change.run(world);
            } catch (std::bad_alloc const&) {
                thrown = true;
            }
            omtest::mallocBooks.untilFailure = -1;
            ASSERT_EQ(thrown, omtest::mallocBooks.failed) << change.name;
            if (!thrown) {
                refused += allowed;
                break;
            }
            ASSERT_EQ(StateOf(world.dimension), before) << change.name << " after " << allowed << " requests";
        }
    }
    EXPECT_GT(refused, 40);
}

// The same for texts that cannot be cloned, wherever in the operation that is.
TEST(RefusedMemory, TextsThatCannotBeClonedChangeNothing) {
    for (NamedChange const& change : Changes()) {
        for (int allowed = 0;; ++allowed) {
            omtest::ForeignLog log;
            FullWorld world;
            OmDimension::Tree::WalkPreOrder(world.Root(), [&](OmDimension::ConstNode const& node) {
                OmDimensionNode& value = const_cast<OmDimensionNode&>(node.Value());
                value.Text(omtest::ForeignText(log, value.Text()->AsString()));
                return true;
            });
            std::string const before = StateOf(world.dimension);
            log.clonesUntilFailure = allowed;
            try {
                change.run(world);
                break;
            } catch (std::bad_alloc const&) {
            }
            log.clonesUntilFailure = -1;
            ASSERT_EQ(StateOf(world.dimension), before) << change.name << " after " << allowed << " clones";
        }
    }
}

// The value that comes back is a copy, too.
TEST(RefusedMemory, LeafWhoseCopyCannotBeMadeIsNotInserted) {
    omtest::ForeignLog log;
    GrownWorld world("a b");
    std::string const before = StateOf(world.dimension);
    for (int const allowed : {0, 1}) {
        omtest::ForeignText const text(log, "n");
        log.clonesUntilFailure = allowed;
        EXPECT_THROW(world.dimension.insertCategory(text, world.Named("a"), world.Root(), true), std::bad_alloc);
        EXPECT_EQ(StateOf(world.dimension), before);
    }
}

// --- texts that use the dimension while something is done to them ----------------------------------------------------

namespace {

/// What a meddling text does, and when.
struct Meddling {
    std::function<void()> whenCloned{};
    std::function<void()> whenDestroyed{};

    static void Once(std::function<void()>& action) {
        if (std::function<void()> const taken = std::exchange(action, nullptr)) {
            taken();
        }
    }
};

class MeddlingText final : public OmCellText {
public:
    MeddlingText(Meddling& meddling, char name, OmMemoryRegion* region = nullptr)
        : OmCellText(region), _meddling(meddling), _name(name) {}
    ~MeddlingText() override { Meddling::Once(_meddling.whenDestroyed); }
    MeddlingText(MeddlingText const&) = delete;
    MeddlingText& operator=(MeddlingText const&) = delete;

    void Accept(Visitor&) override {}
    short OrderCode() const override { return 300; }
    std::string AsString() const override { return std::string(1, _name); }
    std::string AsU8String() const override { return AsString(); }
    std::string AsEngString() const override { return AsString(); }
    short Compare(OmCellText const& other) const override {
        return static_cast<short>(AsString().compare(other.AsString()));
    }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        if (region != nullptr && !region->IsDefaultHeap()) {
            Meddling::Once(_meddling.whenCloned);
        }
        return new (region) MeddlingText(_meddling, _name, region);
    }

private:
    Meddling& _meddling;
    char _name;
};

/// Whether the child index has each child's position once.
bool IndexNamesAllChildren(OmDimension::ConstNode const& node) {
    std::string const entries = ", " + omtest::ChildIndexOf(node) + ",";
    bool all = static_cast<std::size_t>(std::count(entries.begin(), entries.end(), ',')) == node.ChildCount() + 1;
    for (std::size_t k = 0; k < node.ChildCount(); ++k) {
        all = all && entries.find(", " + std::to_string(k) + ",") != std::string::npos;
    }
    return all;
}

/// Grows the root's children past their room.
void AddEight(OmDimension& dimension) {
    for (char const* const name : {"1", "2", "3", "4", "5", "6", "7", "8"}) {
        dimension.AddNewChild(dimension.Root(), Label(name), 0, false);
    }
}

} // namespace

TEST(MeddlingTexts, ChildIsAddedWhileATextIsCloned) {
    for (bool const byLabel : {false, true}) {
        // The first clone goes beside the tree, the second one into it.
        for (int const meddledClone : {1, 2}) {
            Meddling meddling;
            GrownWorld world("a b c d");
            MeddlingText const text(meddling, 'm');
            std::function<void()> const meddle = [&] { AddEight(world.dimension); };
            meddling.whenCloned = meddle;
            if (meddledClone == 2) {
                meddling.whenCloned = [&] { meddling.whenCloned = meddle; };
            }
            Node const made = byLabel ? world.dimension.Child(world.Root(), text, 7, false)
                                      : world.dimension.AddNewChild(world.Root(), text, 7, false);
            EXPECT_EQ(made.Value().Text()->AsString(), "m");
            EXPECT_EQ(Categories(world.dimension), "a b c d 1 2 3 4 5 6 7 8 m");
            EXPECT_EQ(world.dimension.NumCategories(), 13);
            EXPECT_TRUE(IndexNamesAllChildren(world.Root()));
            EXPECT_TRUE(omtest::ParentPointersHold(world.dimension));
        }
    }
}

TEST(MeddlingTexts, SameChildIsAddedWhileATextIsCloned) {
    Meddling meddling;
    GrownWorld world("a");
    MeddlingText const text(meddling, 'm');
    std::function<void()> const meddle = [&] { world.dimension.Child(world.Root(), text, 3, false); };
    meddling.whenCloned = [&] { meddling.whenCloned = meddle; };
    Node const made = world.dimension.Child(world.Root(), text, 7, false);
    EXPECT_EQ(made.Value().Subscript(), 3U);
    EXPECT_EQ(Categories(world.dimension), "a m");
    EXPECT_EQ(world.dimension.NumCategories(), 2);
}

TEST(MeddlingTexts, DimensionIsUsedWhileALabelIsDestroyed) {
    struct Case {
        char const* name;
        std::function<void(GrownWorld&)> run;
        char const* after;
    };
    std::vector<Case> const cases{
        {"Delete",
         [](GrownWorld& world) {
             Node node = world.Named("m");
             world.dimension.Delete(node);
         },
         "A(p q) B(r s)"},
        {"moveChild before a target",
         [](GrownWorld& world) {
             Node node = world.Named("m");
             Node target = world.Named("s");
             world.dimension.moveChild(node, &target, false);
         },
         "A(p q) B(r m s)"},
        {"moveChild to the end",
         [](GrownWorld& world) {
             Node node = world.Named("m");
             world.dimension.moveChild(node, nullptr, false);
         },
         "A(p q) B(r s) m"},
        {"moveChild, exchange",
         [](GrownWorld& world) {
             Node node = world.Named("m");
             Node target = world.Named("A");
             world.dimension.moveChild(node, &target, true);
         },
         "m A(p q) B(r s)"},
        {"insertChild",
         [](GrownWorld& world) {
             Node node = world.Named("m");
             world.dimension.insertChild(Label("G"), {&node});
         },
         "A(p q) G(m) B(r s)"},
        {"EraseChild",
         [](GrownWorld& world) {
             OmDimension::Tree::EraseChild(world.Root(), 1);
             OmDimension::Tree::Reparent(world.Root(), true);
         },
         "A(p q) B(r s)"},
        {"Text", [](GrownWorld& world) { world.Named("m").Value().Text(Label("n")); }, "A(p q) n B(r s)"},
        {"assignment",
         [](GrownWorld& world) { world.Named("m").Value() = OmDimensionNode(Label("n"), 1, false, nullptr); },
         "A(p q) n B(r s)"},
    };
    for (Case const& one : cases) {
        SCOPED_TRACE(one.name);
        Meddling meddling;
        GrownWorld world("A(p q) m B(r s)");
        world.Named("m").Value().Text(MeddlingText(meddling, 'm'));
        std::string seen;
        meddling.whenDestroyed = [&] {
            AddEight(world.dimension);
            seen = Categories(world.dimension);
        };
        one.run(world);
        EXPECT_EQ(seen, std::string(one.after) + " 1 2 3 4 5 6 7 8");
        EXPECT_EQ(Categories(world.dimension), seen);
    }
}

// --- nodes of another tree -------------------------------------------------------------------------------------------

TEST(Strangers, AreReportedAndChangeNothing) {
    GrownWorld world("A(p q) b");
    GrownWorld other("A(p q) b");
    std::string const before = StateOf(world.dimension);
    std::string const beforeOther = StateOf(other.dimension);
    omtest::AssertionCatcher caught(omtest::AfterReport::Return);
    Node stranger = other.Named("A");
    Node mine = world.Named("A");
    world.dimension.removeChild(stranger);
    EXPECT_EQ(caught.Reports().size(), 1U);
    world.dimension.insertCategory(Label("n"), stranger, mine, false);
    world.dimension.insertCategory(Label("n"), mine, stranger, true);
    EXPECT_EQ(caught.Reports().size(), 3U);
    world.dimension.Delete(stranger);
    world.dimension.moveChild(stranger, nullptr, false);
    world.dimension.moveChild(stranger, &mine, false);
    world.dimension.moveChild(mine, &stranger, true);
    world.dimension.insertChild(Label("n"), {&mine, &stranger});
    EXPECT_EQ(StateOf(world.dimension), before);
    EXPECT_EQ(StateOf(other.dimension), beforeOther);
}

TEST(Strangers, NullHandlesChangeNothing) {
    GrownWorld world("A(p q) b");
    std::string const before = StateOf(world.dimension);
    Node none;
    Node mine = world.Named("A");
    world.dimension.Delete(none);
    world.dimension.moveChild(none, &mine, false);
    world.dimension.moveChild(mine, &none, true);
    world.dimension.insertChild(Label("n"), {&mine, &none});
    world.dimension.insertChild(Label("n"), {nullptr});
    EXPECT_EQ(StateOf(world.dimension), before);
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

// --- removeChild -----------------------------------------------------------------------------------------------------

TEST(RemoveChild, ChildrenGrowAsWithEveryInsertion) {
    for (int const count : {2, 3, 4, 6, 7, 8, 14, 15}) {
        GrownWorld world("G()");
        for (int k = 0; k < count; ++k) {
            world.dimension.AddNewChild(world.Named("G"), Label("x" + std::to_string(k)), 0, false);
        }
        Node node = world.Named("G");
        world.dimension.removeChild(node);
        std::size_t expected = 4;
        while (expected < static_cast<std::size_t>(count) + 1) {
            expected *= 2;
        }
        EXPECT_EQ(world.Root().Ptr()->children.capacity(), expected) << count;
    }
}
