// What a text class of a program's own sees of a category tree: which operations are called, in which order, with which
// region and which tracker.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using omtest::Categories;
using omtest::CategoryReader;
using omtest::CategoryWorld;
using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::Label;
using omtest::NodeAt;
using omtest::NodeNamed;
using Calls = std::vector<std::string>;
using Node = OmDimension::Node;
using Regions = std::vector<OmMemoryRegion*>;

/// A text whose clones never have a tracker.
class Forgetful final : public OmCellText {
public:
    explicit Forgetful(std::string text, OmMemoryRegion* region = nullptr)
        : OmCellText(region), _text(std::move(text), region) {}
    void Accept(Visitor&) override {}
    short OrderCode() const override { return 202; }
    std::string AsString() const override { return _text.AsString(); }
    std::string AsU8String() const override { return AsString(); }
    std::string AsEngString() const override { return AsString(); }
    short Compare(OmCellText const& other) const override {
        int const order = AsString().compare(other.AsString());
        return static_cast<short>((order > 0) - (order < 0));
    }
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) Forgetful(AsString(), region); }

private:
    OmStringCell _text;
};

/// A dimension whose table has a tracker.
struct TrackedWorld : CategoryWorld {
    TrackedWorld() { table.setBackendSettings(BackendSettings()); }
    icuTracker* Tracker() { return table.getICUTracker(); }
};

/// A dimension of foreign labels that report to one log.
struct LoggedWorld {
    ForeignLog log{};
    CategoryWorld world{};

    /// Adds a category without a trace in the log.
    Node Add(Node const& parent, std::string const& label, bool isGroup = false) {
        Node const node = world.dimension.AddNewChild(parent, ForeignText(log, label), _subscript++, isGroup);
        log.Take();
        return node;
    }
    OmMemoryRegion* Region() { return &world.dimension.Region(); }

    /// The entries of these operations, without the primes that tell clones from their sources.
    Calls Plain(std::initializer_list<char const*> operations) {
        Calls calls = log.Take(operations);
        for (std::string& call : calls) {
            call.erase(std::remove(call.begin(), call.end(), '\''), call.end());
        }
        return calls;
    }

private:
    unsigned long long _subscript = 0;
};

icuTracker MakeTracker() { return icuTracker({true, "en_US.UTF-8"}); }

} // namespace

// --- order of calls --------------------------------------------------------------------------------------------------

TEST(OmDimensionTexts, ChildByValueClonesTracksSearchesAndClonesIntoPlace) {
    LoggedWorld logged;
    logged.Add(logged.world.Root(), "b");
    OmDimensionNode const value(ForeignText(logged.log, "a"), 0, false, nullptr);
    logged.log.Take();
    logged.world.dimension.Child(logged.world.Root(), value);
    EXPECT_EQ(logged.log.cloneRegions, (Regions{logged.Region(), logged.Region()}));
    EXPECT_EQ(logged.log.Take(), (Calls{"a': Clone", "a'': SetTracker(null)", "b''': Compare(a'')",
                                        "a'': Compare(b''')", "a'': Clone", "a'': destroy"}));
}

TEST(OmDimensionTexts, ChildThatIsFoundDiscardsTheCopy) {
    LoggedWorld logged;
    logged.Add(logged.world.Root(), "a");
    OmDimensionNode const value(ForeignText(logged.log, "a"), 0, false, nullptr);
    logged.log.Take();
    logged.world.dimension.Child(logged.world.Root(), value);
    EXPECT_EQ(logged.log.Take(), (Calls{"a': Clone", "a'': SetTracker(null)", "a''': Compare(a'')",
                                        "a'': Compare(a''')", "a'': destroy"}));
}

TEST(OmDimensionTexts, ChildByTextFirstMakesAValueOutsideTheTable) {
    LoggedWorld logged;
    ForeignText const text(logged.log, "a");
    logged.world.dimension.Child(logged.world.Root(), text, 0, false);
    Regions const regions = logged.log.cloneRegions;
    ASSERT_EQ(regions.size(), 3U);
    EXPECT_EQ(OmMemoryRegion::OrDefault(regions[0]), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(regions[1], logged.Region());
    EXPECT_EQ(regions[2], logged.Region());
    EXPECT_EQ(logged.log.Take({"Clone", "SetTracker", "Compare"}),
              (Calls{"a: Clone", "a': Clone", "a'': SetTracker(null)", "a'': Clone"}));
    EXPECT_EQ(logged.log.alive, 2); // the text and the label
}

TEST(OmDimensionTexts, ChildOfAParentThatIsNoGroupClonesNothingIntoTheTable) {
    LoggedWorld logged;
    Node const leaf = logged.Add(logged.world.Root(), "b");
    OmDimensionNode const value(ForeignText(logged.log, "a"), 0, false, nullptr);
    logged.log.Take();
    EXPECT_ANY_THROW(logged.world.dimension.Child(leaf, value));
    EXPECT_EQ(logged.log.Take(), Calls{});
}

TEST(OmDimensionTexts, AddNewChildComparesNothing) {
    LoggedWorld logged;
    logged.Add(logged.world.Root(), "b");
    ForeignText const text(logged.log, "a");
    logged.world.dimension.AddNewChild(logged.world.Root(), text, 0, false);
    Regions const regions = logged.log.cloneRegions;
    ASSERT_EQ(regions.size(), 3U);
    EXPECT_EQ(regions[1], logged.Region());
    EXPECT_EQ(regions[2], logged.Region());
    EXPECT_EQ(logged.log.Take({"Clone", "SetTracker", "Compare", "TextLength"}),
              (Calls{"a: Clone", "a': Clone", "a'': SetTracker(null)", "a'': Clone"}));
    EXPECT_EQ(logged.log.alive, 3);
}

TEST(OmDimensionTexts, FindChildProbesWithACloneInTheDefaultHeap) {
    LoggedWorld logged;
    logged.Add(logged.world.Root(), "a");
    ForeignText const text(logged.log, "a");
    EXPECT_EQ(OmDimension::FindChild(logged.world.Root(), text, false), 0);
    ASSERT_EQ(logged.log.cloneRegions.size(), 1U);
    EXPECT_EQ(OmMemoryRegion::OrDefault(logged.log.cloneRegions[0]), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(logged.log.Take(), (Calls{"a: Clone", "a''': Compare(a')", "a': Compare(a''')", "a': destroy"}));
}

// Seven children take three questions and the one that settles it.
TEST(OmDimensionTexts, SearchIsABisection) {
    LoggedWorld logged;
    for (char const* const label : {"a", "b", "c", "d", "e", "f", "g"}) {
        logged.Add(logged.world.Root(), label);
    }
    OmDimension::FindChild(logged.world.Root(), ForeignText(logged.log, "f"), false);
    EXPECT_EQ(logged.Plain({"Compare"}), (Calls{"d: Compare(f)", "f: Compare(f)", "e: Compare(f)", "f: Compare(f)"}));
}

TEST(OmDimensionTexts, RootValueIsClonedIntoTheRegionOfTheValue) {
    ForeignLog log;
    CategoryWorld world;
    ForeignText const name(log, "N");
    OmDimension& dimension = world.table.AddDimension(name);
    ASSERT_EQ(log.cloneRegions.size(), 2U);
    EXPECT_EQ(OmMemoryRegion::OrDefault(log.cloneRegions[0]), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(log.cloneRegions[1], OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(dimension.Root().Value().Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(log.Take({"Clone"}), (Calls{"N: Clone", "N': Clone"}));
}

TEST(OmDimensionTexts, CopyingClonesOncePerNodeDepthFirst) {
    LoggedWorld logged;
    logged.world.Root().Value().Text(ForeignText(logged.log, "N"));
    Node const group = logged.Add(logged.world.Root(), "A", true);
    logged.Add(logged.Add(group, "B", true), "c");
    logged.Add(group, "d");
    logged.Add(logged.world.Root(), "e");
    CategoryWorld other;
    OmDimension& copy = other.table.AddDimension(logged.world.dimension);
    EXPECT_EQ(logged.log.cloneRegions, Regions(6, &copy.Region()));
    EXPECT_EQ(copy.Root().Value().Region(), &copy.Region());
    EXPECT_EQ(logged.Plain({"Clone", "destroy"}),
              (Calls{"N: Clone", "A: Clone", "B: Clone", "c: Clone", "d: Clone", "e: Clone"}));
}

TEST(OmDimensionTexts, DestructionTakesChildrenBeforeParentsAndTheRootLast) {
    ForeignLog log;
    auto world = std::make_unique<CategoryWorld>();
    OmDimension& dimension = world->dimension;
    dimension.Root().Value().Text(ForeignText(log, "N"));
    Node const group = dimension.AddNewChild(dimension.Root(), ForeignText(log, "A"), 0, true);
    dimension.AddNewChild(group, ForeignText(log, "b"), 0, false);
    dimension.AddNewChild(dimension.Root(), ForeignText(log, "c"), 0, false);
    log.Take();
    world.reset();
    EXPECT_EQ(log.Take(), (Calls{"b''': destroy", "A''': destroy", "c''': destroy", "N': destroy"}));
    EXPECT_EQ(log.alive, 0);
}

TEST(OmDimensionTexts, DeleteDestroysTheSubtreeAndTouchesNoOtherLabel) {
    LoggedWorld logged;
    Node const group = logged.Add(logged.world.Root(), "A", true);
    logged.Add(group, "b");
    logged.Add(logged.world.Root(), "c");
    Node node = NodeAt(logged.world.dimension, 0);
    logged.log.Take();
    logged.world.dimension.Delete(node);
    EXPECT_EQ(logged.log.Take(), (Calls{"b''': destroy", "A''': destroy"}));
}

TEST(OmDimensionTexts, DissolvingCopiesTheChildrenInOrderBeforeAnythingGoes) {
    LoggedWorld logged;
    Node const group = logged.Add(logged.world.Root(), "A", true);
    logged.Add(logged.Add(group, "B", true), "c");
    logged.Add(group, "d");
    Node node = NodeAt(logged.world.dimension, 0);
    logged.world.dimension.removeChild(node);
    EXPECT_EQ(logged.log.cloneRegions, Regions(3, logged.Region()));
    EXPECT_EQ(logged.Plain({"Clone", "destroy"}),
              (Calls{"B: Clone", "c: Clone", "d: Clone", "c: destroy", "B: destroy", "d: destroy", "A: destroy"}));
}

TEST(OmDimensionTexts, SwappingCopiesBothBeforeEitherGoes) {
    LoggedWorld logged;
    for (char const* const label : {"a", "b"}) {
        logged.Add(logged.world.Root(), label);
    }
    Node node = NodeAt(logged.world.dimension, 0);
    Node target = NodeAt(logged.world.dimension, 1);
    logged.world.dimension.moveChild(node, &target, true);
    Calls calls = logged.Plain({"Clone", "destroy"});
    auto const end = std::find(calls.begin(), calls.end(), "a: destroy");
    EXPECT_NE(std::find(calls.begin(), end, "a: Clone"), end);
    EXPECT_NE(std::find(calls.begin(), end, "b: Clone"), end);
    EXPECT_NE(std::find(end, calls.end(), "b: destroy"), calls.end());
}

// A group's children may be anywhere: the group is made whole before the first of them goes, from the last listed on.
TEST(OmDimensionTexts, GatheringCopiesInListOrderAndDestroysBackwards) {
    LoggedWorld logged;
    Node const group = logged.Add(logged.world.Root(), "A", true);
    logged.Add(group, "b");
    logged.Add(group, "c");
    logged.Add(logged.world.Root(), "d");
    logged.Add(logged.world.Root(), "e");
    Node c = NodeNamed(logged.world.dimension, "c");
    Node e = NodeNamed(logged.world.dimension, "e");
    Node b = NodeNamed(logged.world.dimension, "b");
    ForeignText const text(logged.log, "G");
    logged.log.Take();
    logged.world.dimension.insertChild(text, {&e, &b, &c});
    EXPECT_EQ(logged.log.cloneRegions, Regions(4, logged.Region()));
    EXPECT_EQ(logged.Plain({"Clone", "destroy"}),
              (Calls{"G: Clone", "e: Clone", "b: Clone", "c: Clone", "c: destroy", "b: destroy", "e: destroy"}));
}

TEST(OmDimensionTexts, GatheringNothingStillMakesTheGroupsLabel) {
    LoggedWorld logged;
    ForeignText const text(logged.log, "G");
    logged.world.dimension.insertChild(text, {});
    EXPECT_EQ(logged.log.Take(), (Calls{"G: Clone", "G': destroy"}));
}

TEST(OmDimensionTexts, InsertingALeafClonesItIntoTheTableAndOnceForTheCaller) {
    LoggedWorld logged;
    logged.Add(logged.world.Root(), "a");
    ForeignText const text(logged.log, "n");
    OmDimensionNode const made =
        logged.world.dimension.insertCategory(text, NodeAt(logged.world.dimension, 0), logged.world.Root(), false);
    EXPECT_EQ(logged.log.cloneRegions, Regions(2, logged.Region()));
    EXPECT_EQ(logged.log.Take({"Clone", "SetTracker", "destroy"}),
              (Calls{"n: Clone", "n': SetTracker(null)", "n': Clone"}));
    EXPECT_EQ(made.Text()->AsString(), "n");
}

TEST(OmDimensionTexts, FailingCloneAddsNoChild) {
    LoggedWorld logged;
    logged.Add(logged.world.Root(), "b");
    ForeignText const text(logged.log, "a");
    OmDimension& dimension = logged.world.dimension;
    std::size_t const blocks = dimension.Region().LiveBlocks();
    for (int const clones : {0, 1, 2}) {
        logged.log.clonesUntilFailure = clones;
        EXPECT_THROW(dimension.Child(dimension.Root(), text, 0, false), std::bad_alloc);
        logged.log.clonesUntilFailure = clones;
        EXPECT_THROW(dimension.AddNewChild(dimension.Root(), text, 0, false), std::bad_alloc);
        EXPECT_EQ(Categories(dimension), "b");
        EXPECT_EQ(omtest::ChildIndexOf(dimension.Root()), "0");
        EXPECT_EQ(dimension.NumCategories(), 1);
        EXPECT_EQ(dimension.Region().LiveBlocks(), blocks);
    }
}

// --- trackers --------------------------------------------------------------------------------------------------------

TEST(OmDimensionTrackers, NewChildHasThatOfItsParentsLabel) {
    TrackedWorld world;
    ASSERT_NE(world.Tracker(), nullptr);
    EXPECT_EQ(world.dimension.Name().Tracker(), world.Tracker());
    Node const group = world.dimension.Child(world.Root(), Label("g"), 0, true);
    EXPECT_EQ(group.Value().Text()->Tracker(), world.Tracker());
    EXPECT_EQ(world.dimension.Child(group, Label("a"), 0, false).Value().Text()->Tracker(), world.Tracker());
    EXPECT_EQ(world.dimension.AddNewChild(group, Label("a"), 0, false).Value().Text()->Tracker(), world.Tracker());
    OmDimensionNode const value(Label("b"), 0, false, nullptr);
    EXPECT_EQ(world.dimension.Child(group, value).Value().Text()->Tracker(), world.Tracker());
}

TEST(OmDimensionTrackers, ParentDecidesAndNotTheTable) {
    TrackedWorld world;
    icuTracker own = MakeTracker();
    Node const group = world.dimension.Child(world.Root(), Label("g"), 0, true);
    group.Value().Text()->SetTracker(&own);
    EXPECT_EQ(world.dimension.Child(group, Label("a"), 0, false).Value().Text()->Tracker(), &own);
    EXPECT_EQ(world.dimension.AddNewChild(group, Label("b"), 0, false).Value().Text()->Tracker(), &own);
}

TEST(OmDimensionTrackers, ParentWithoutOneTakesTheChildsAway) {
    CategoryWorld world;
    icuTracker own = MakeTracker();
    OmDimensionNode value(Label("a"), 0, false, &world.dimension.Region());
    value.Text()->SetTracker(&own);
    EXPECT_EQ(world.dimension.Child(world.Root(), value).Value().Text()->Tracker(), nullptr);
    EXPECT_EQ(value.Text()->Tracker(), &own);
}

TEST(OmDimensionTrackers, ChildThatIsFoundKeepsItsOwn) {
    TrackedWorld world;
    icuTracker own = MakeTracker();
    Node const first = world.dimension.Child(world.Root(), Label("a"), 0, false);
    first.Value().Text()->SetTracker(&own);
    EXPECT_EQ(world.dimension.Child(world.Root(), Label("a"), 0, false).Value().Text()->Tracker(), &own);
}

// The label goes through a clone after it was given the tracker, and a foreign clone may start without one.
TEST(OmDimensionTrackers, LabelInPlaceHasItAlsoWhenClonesForgetIt) {
    TrackedWorld world;
    Forgetful const text("a");
    EXPECT_EQ(world.dimension.Child(world.Root(), text, 0, true).Value().Text()->Tracker(), world.Tracker());
    OmDimensionNode const value(Forgetful("b"), 0, false, nullptr);
    EXPECT_EQ(world.dimension.Child(world.Root(), value).Value().Text()->Tracker(), world.Tracker());
    EXPECT_EQ(world.dimension.AddNewChild(world.Root(), text, 0, false).Value().Text()->Tracker(), world.Tracker());
}

TEST(OmDimensionTrackers, NewGroupHasThatOfTheFirstListedLabel) {
    TrackedWorld world;
    icuTracker own = MakeTracker();
    CategoryReader(world.dimension).AddBelow(world.Root(), "a b c");
    NodeAt(world.dimension, 1).Value().Text()->SetTracker(&own);
    Node first = NodeAt(world.dimension, 1);
    Node second = NodeAt(world.dimension, 0);
    world.dimension.insertChild(Forgetful("G"), {&first, &second});
    EXPECT_EQ(NodeNamed(world.dimension, "G").Value().Text()->Tracker(), &own);
}

TEST(OmDimensionTrackers, NewLeafHasThatOfTheReferencesLabel) {
    TrackedWorld world;
    icuTracker own = MakeTracker();
    CategoryReader(world.dimension).AddBelow(world.Root(), "a b c");
    NodeAt(world.dimension, 1).Value().Text()->SetTracker(&own);
    for (bool const before : {true, false}) {
        Node const reference = NodeNamed(world.dimension, "b");
        world.dimension.insertCategory(Forgetful(before ? "m" : "n"), reference, world.Root(), before);
    }
    ASSERT_EQ(Categories(world.dimension), "a m b n c");
    EXPECT_EQ(NodeNamed(world.dimension, "m").Value().Text()->Tracker(), &own);
    EXPECT_EQ(NodeNamed(world.dimension, "n").Value().Text()->Tracker(), &own);
}

TEST(OmDimensionTrackers, StayWithLabelsThatMove) {
    TrackedWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "a B(p q) c D(r)");
    Node node = NodeNamed(world.dimension, "a");
    Node target = NodeNamed(world.dimension, "c");
    world.dimension.moveChild(node, &target, true);
    node = NodeNamed(world.dimension, "q");
    world.dimension.moveChild(node, nullptr, false);
    node = NodeNamed(world.dimension, "D");
    world.dimension.removeChild(node);
    node = NodeNamed(world.dimension, "c");
    world.dimension.insertChild(Label("G"), {&node});
    EXPECT_EQ(Categories(world.dimension), "G(c) B(p q) a r");
    OmDimension::Tree::WalkPreOrder(world.Root(), [&](OmDimension::ConstNode const& place) {
        EXPECT_EQ(place.Value().Text()->Tracker(), world.Tracker()) << place.Value().Text()->AsString();
        return true;
    });
}

// A tracker dies with its table.
TEST(OmDimensionTrackers, DoNotGoToACopyInAnotherTable) {
    TrackedWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "a B(p)");
    CategoryWorld other;
    OmDimension& copy = other.table.AddDimension(world.dimension);
    EXPECT_EQ(copy.Name().Tracker(), nullptr);
    EXPECT_EQ(NodeNamed(copy, "p").Value().Text()->Tracker(), nullptr);
}

TEST(OmDimensionTrackers, GoToACopyInTheSameTable) {
    TrackedWorld world;
    CategoryReader(world.dimension).AddBelow(world.Root(), "a B(p)");
    OmDimension& copy = world.table.AddDimension(world.dimension);
    EXPECT_EQ(copy.Name().Tracker(), world.Tracker());
    EXPECT_EQ(NodeNamed(copy, "p").Value().Text()->Tracker(), world.Tracker());
}
