#include "backend/tables/om/OmDimensionNode.h"

#include "omcell/OmStringCell.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"
#include "tests/support/MuteText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::CategoryWorld;
using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::Label;
using omtest::PrintedBy;
using Calls = std::vector<std::string>;

constexpr unsigned long long AllOnes = 0xFFFFFFFFFFFFFFFFULL;

OmDimensionNode Leaf(std::string const& label, unsigned long long subscript) {
    return OmDimensionNode(Label(label), subscript, false, nullptr);
}
OmDimensionNode Group(std::string const& label, unsigned long long subscript) {
    return OmDimensionNode(Label(label), subscript, true, nullptr);
}

/// A text whose destructor notes how many blocks its arena still holds.
class Witness final : public omtest::MuteText {
public:
    Witness(OmMemoryRegion& arena, std::size_t& blocks) : _arena(arena), _blocks(blocks) {}
    ~Witness() override { _blocks = _arena.LiveBlocks(); }
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) Witness(_arena, _blocks); }

private:
    OmMemoryRegion& _arena;
    std::size_t& _blocks;
};

/// Keeps what is written and counts how often it was flushed.
class FlushCounter : public std::stringbuf {
public:
    int flushes = 0;

private:
    int sync() override {
        ++flushes;
        return 0;
    }
};

} // namespace

// --- construction ----------------------------------------------------------------------------------------------------

TEST(OmDimensionNode, MadeFromARegionAloneIsBlank) {
    OmMemoryRegion arena(false);
    OmDimensionNode const node(&arena);
    EXPECT_EQ(node.Text(), nullptr);
    EXPECT_EQ(node.Subscript(), AllOnes);
    EXPECT_EQ(node.Sort(), OmSort::None);
    EXPECT_FALSE(node.IsGroup());
    EXPECT_FALSE(node.Hide());
    EXPECT_FALSE(node.HideLabels());
    EXPECT_EQ(node.Region(), &arena);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmDimensionNode, RegionIsTheDefaultHeapWhenNoneIsGiven) {
    EXPECT_EQ(OmDimensionNode().Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(Leaf("a", 0).Region(), OmMemoryRegion::DefaultHeap());
}

TEST(OmDimensionNode, ClonesItsLabelIntoItsRegion) {
    OmMemoryRegion arena(false);
    ForeignLog log;
    ForeignText const text(log, "a");
    {
        OmDimensionNode const node(text, 3, true, &arena);
        EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{&arena});
        EXPECT_EQ(log.Take(), Calls{"a: Clone"});
        EXPECT_EQ(node.Subscript(), 3U);
        EXPECT_TRUE(node.IsGroup());
        EXPECT_EQ(node.Sort(), OmSort::None);
        EXPECT_FALSE(node.Hide());
        EXPECT_FALSE(node.HideLabels());
        EXPECT_EQ(node.Region(), &arena);
        EXPECT_EQ(arena.LiveBlocks(), 1U);
    }
    EXPECT_EQ(log.Take(), Calls{"a': destroy"});
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmDimensionNode, SortOrdersAreNumberedAsStored) {
    EXPECT_EQ(sizeof(OmSort::Order), 4U);
    EXPECT_EQ(static_cast<int>(OmSort::Up), 0);
    EXPECT_EQ(static_cast<int>(OmSort::Down), 1);
    EXPECT_EQ(static_cast<int>(OmSort::None), 2);
}

TEST(OmDimensionNode, AccessorPairsReadWhatTheyWrote) {
    OmDimensionNode node;
    node.IsGroup(true);
    node.Sort(OmSort::Down);
    node.Hide(true);
    node.HideLabels(true);
    node.Subscript(0x123456789ABCDEF0ULL);
    EXPECT_TRUE(node.IsGroup());
    EXPECT_EQ(node.Sort(), OmSort::Down);
    EXPECT_TRUE(node.Hide());
    EXPECT_TRUE(node.HideLabels());
    EXPECT_EQ(node.Subscript(), 0x123456789ABCDEF0ULL);
    static_assert(std::is_same_v<decltype(std::as_const(node).Subscript()), unsigned long long>);
}

// --- copies ----------------------------------------------------------------------------------------------------------

TEST(OmDimensionNode, CopyIntoARegionTakesEverythingAlong) {
    CategoryWorld world;
    omtest::CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q r)");
    OmDimensionNode& source = world.Root().Child(0).Value();
    source.Subscript(11);
    source.Sort(OmSort::Down);
    source.Hide(true);
    source.HideLabels(true);
    OmMemoryRegion arena(false);
    {
        OmDimensionNode const copy(source, &arena);
        EXPECT_EQ(copy.Region(), &arena);
        EXPECT_EQ(PrintedBy(copy, 0), "Subscript: 11, Group: yes, hide: yes, hideLabels: yes, Sort: down, "
                                      "Children: 0, 1, 2, Text: \"A\"\n");
        EXPECT_GT(arena.LiveBlocks(), 0U);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmDimensionNode, CopyClonesTheLabelIntoTheGivenRegion) {
    OmMemoryRegion arena(false);
    ForeignLog log;
    OmDimensionNode const source(ForeignText(log, "a"), 0, false, nullptr);
    log.Take();
    OmDimensionNode const copy(source, &arena);
    EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{&arena});
    EXPECT_EQ(log.Take(), Calls{"a': Clone"});
    EXPECT_NE(copy.Text(), source.Text());
}

// The usual copy would go to the default heap.
TEST(OmDimensionNode, CopyWithoutARegionStaysInTheSourcesRegion) {
    OmMemoryRegion arena(false);
    ForeignLog log;
    OmDimensionNode const source(ForeignText(log, "a"), 0, false, &arena);
    log.Take();
    OmDimensionNode const copy(source);
    EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{&arena});
    EXPECT_EQ(copy.Region(), &arena);
    EXPECT_EQ(arena.LiveBlocks(), 2U);
}

TEST(OmDimensionNode, CopyOfATextlessNodeHasNoText) {
    OmMemoryRegion arena(false);
    OmDimensionNode const source(&arena);
    EXPECT_EQ(OmDimensionNode(source).Text(), nullptr);
    EXPECT_EQ(OmDimensionNode(source, nullptr).Text(), nullptr);
}

TEST(OmDimensionNode, FailingCloneLeavesNothingBehind) {
    OmMemoryRegion arena(false);
    ForeignLog log;
    OmDimensionNode const source(ForeignText(log, "a"), 0, false, nullptr);
    log.clonesUntilFailure = 0;
    EXPECT_THROW(OmDimensionNode(*source.Text(), 0, false, &arena), std::bad_alloc);
    EXPECT_THROW(OmDimensionNode(source, &arena), std::bad_alloc);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    EXPECT_EQ(log.alive, 1);
}

// --- assignment ------------------------------------------------------------------------------------------------------

// A copy would leave the source its label and clone it.
TEST(OmDimensionNode, AssignmentTakesTheSourcesTextAway) {
    ForeignLog log;
    OmDimensionNode const source(ForeignText(log, "b"), 5, true, nullptr);
    OmDimensionNode target(ForeignText(log, "a"), 1, false, nullptr);
    OmCellText const* const moved = source.Text();
    log.Take();
    target = source;
    EXPECT_EQ(log.Take(), Calls{"a': destroy"});
    EXPECT_EQ(target.Text(), moved);
    EXPECT_EQ(source.Text(), nullptr);
}

TEST(OmDimensionNode, AssignmentCopiesTheOtherFieldsAndLeavesThemToTheSource) {
    CategoryWorld world;
    omtest::CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q)");
    OmDimensionNode& source = world.Root().Child(0).Value();
    source.Subscript(11);
    source.Sort(OmSort::Up);
    source.Hide(true);
    source.HideLabels(true);
    OmMemoryRegion arena(false);
    {
        OmDimensionNode target(&arena);
        target = source;
        EXPECT_EQ(PrintedBy(target, 0), "Subscript: 11, Group: yes, hide: yes, hideLabels: yes, Sort: up, "
                                        "Children: 0, 1, Text: \"A\"\n");
        EXPECT_EQ(PrintedBy(source, 0), "Subscript: 11, Group: yes, hide: yes, hideLabels: yes, Sort: up, "
                                        "Children: 0, 1\n");
        EXPECT_EQ(target.Region(), &arena);
        EXPECT_EQ(arena.LiveBlocks(), 1U); // the child index; the label stayed where it was
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmDimensionNode, AssignmentFreesTheTargetsOwnChildIndex) {
    CategoryWorld world;
    omtest::CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q r s t) b");
    OmMemoryRegion arena(false);
    OmDimensionNode target(world.Root().Child(0).Value(), &arena);
    target = OmDimensionNode(&arena);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    EXPECT_EQ(PrintedBy(target, 0), "Subscript: -1, Group: no, hide: no, hideLabels: no\n");
}

TEST(OmDimensionNode, AssignmentToItselfKeepsTheText) {
    ForeignLog log;
    OmDimensionNode node(ForeignText(log, "a"), 5, true, nullptr);
    log.Take();
    OmDimensionNode const& same = node;
    node = same;
    EXPECT_EQ(log.Take(), Calls{});
    ASSERT_NE(node.Text(), nullptr);
    EXPECT_EQ(node.Subscript(), 5U);
}

TEST(OmDimensionNode, AssignmentFromATextlessNodeDestroysTheText) {
    ForeignLog log;
    OmDimensionNode node(ForeignText(log, "a"), 5, true, nullptr);
    log.Take();
    node = OmDimensionNode();
    EXPECT_EQ(log.Take(), Calls{"a': destroy"});
    EXPECT_EQ(node.Text(), nullptr);
}

TEST(OmDimensionNode, AssignmentBetweenTextlessNodesCopiesTheRest) {
    OmDimensionNode source;
    source.Subscript(9);
    OmDimensionNode target;
    target = source;
    EXPECT_EQ(target.Text(), nullptr);
    EXPECT_EQ(target.Subscript(), 9U);
}

// --- text and destruction --------------------------------------------------------------------------------------------

TEST(OmDimensionNode, NewTextIsClonedBeforeTheOldOneIsDestroyed) {
    OmMemoryRegion arena(false);
    ForeignLog log;
    OmDimensionNode node(ForeignText(log, "a"), 0, false, &arena);
    ForeignText const text(log, "b");
    log.Take();
    node.Text(text);
    EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{&arena});
    EXPECT_EQ(log.Take(), (Calls{"b: Clone", "a': destroy"}));
    EXPECT_EQ(node.Text()->AsString(), "b");
}

TEST(OmDimensionNode, OwnTextMayBeSetAgain) {
    OmDimensionNode node = Leaf("a", 0);
    node.Text(*node.Text());
    EXPECT_EQ(node.Text()->AsString(), "a");
}

TEST(OmDimensionNode, TextReplacesNoText) {
    OmDimensionNode node;
    node.Text(Label("a"));
    ASSERT_NE(node.Text(), nullptr);
    EXPECT_EQ(node.Text()->AsString(), "a");
}

TEST(OmDimensionNode, FailingCloneKeepsTheOldText) {
    ForeignLog log;
    OmDimensionNode node(ForeignText(log, "a"), 0, false, nullptr);
    ForeignText const text(log, "b");
    log.clonesUntilFailure = 0;
    EXPECT_THROW(node.Text(text), std::bad_alloc);
    EXPECT_EQ(node.Text()->AsString(), "a");
}

// Destroying the old text unasked would leave the node with a dead one.
TEST(OmDimensionNode, CloneThatIsTheTextHeldAlreadyIsKept) {
    int destroyed = 0;
    {
        omtest::SelfCloning* const text = new omtest::SelfCloning(destroyed);
        OmDimensionNode node(*text, 0, false, nullptr);
        ASSERT_EQ(node.Text(), text);
        node.Text(*text);
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(node.Text(), text);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(OmDimensionNode, ChildIndexIsFreedBeforeTheTextIsDestroyed) {
    CategoryWorld world;
    omtest::CategoryReader(world.dimension).AddBelow(world.Root(), "A(p q)");
    OmMemoryRegion arena(false);
    std::size_t blocks = 99;
    {
        OmDimensionNode node(world.Root().Child(0).Value(), &arena);
        node.Text(Witness(arena, blocks));
        EXPECT_EQ(arena.LiveBlocks(), 2U); // the text and the child index
    }
    EXPECT_EQ(blocks, 1U);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

// --- order and equality ----------------------------------------------------------------------------------------------

TEST(OmDimensionNode, GroupsSortBeforeNonGroupsWhateverTheirLabels) {
    EXPECT_TRUE(Group("z", 0) < Leaf("a", 0));
    EXPECT_FALSE(Leaf("a", 0) < Group("z", 0));
}

TEST(OmDimensionNode, SortsByLabelAmongItsKind) {
    EXPECT_TRUE(Leaf("a", 9) < Leaf("b", 1));
    EXPECT_FALSE(Leaf("b", 1) < Leaf("a", 9));
    EXPECT_TRUE(Group("a", 9) < Group("b", 1));
    EXPECT_FALSE(Group("b", 1) < Group("a", 9));
}

TEST(OmDimensionNode, SubscriptTakesNoPartInTheOrder) {
    EXPECT_FALSE(Leaf("a", 1) < Leaf("a", 2));
    EXPECT_FALSE(Leaf("a", 2) < Leaf("a", 1));
}

TEST(OmDimensionNode, OrderAsksTheFirstLabelToCompareItself) {
    ForeignLog log;
    OmDimensionNode const a(ForeignText(log, "a"), 0, false, nullptr);
    OmDimensionNode const b(ForeignText(log, "b"), 0, false, nullptr);
    log.Take();
    EXPECT_TRUE(a < b);
    EXPECT_EQ(log.Take(), Calls{"a': Compare(b')"});
}

TEST(OmDimensionNode, OrderOfAGroupAndALeafAsksNoLabel) {
    ForeignLog log;
    OmDimensionNode const a(ForeignText(log, "a"), 0, true, nullptr);
    OmDimensionNode const b(ForeignText(log, "b"), 0, false, nullptr);
    log.Take();
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b < a);
    EXPECT_EQ(log.Take(), Calls{});
}

// A length would make two texts different that compare equal.
TEST(OmDimensionNode, TextLengthTakesNoPartInTheOrder) {
    ForeignLog log;
    ForeignText a(log, "a");
    ForeignText b(log, "b");
    a.spec().compare = b.spec().compare = short{0};
    a.spec().length = 5;
    OmDimensionNode const first(a, 0, false, nullptr);
    OmDimensionNode const second(b, 0, false, nullptr);
    EXPECT_FALSE(first < second);
    EXPECT_FALSE(second < first);
}

TEST(OmDimensionNode, EqualNodesHaveFlagSubscriptAndLabelAlike) {
    EXPECT_TRUE(Leaf("a", 1) == Leaf("a", 1));
    EXPECT_FALSE(Leaf("a", 1) != Leaf("a", 1));
    EXPECT_FALSE(Leaf("a", 1) == Leaf("b", 1));
    EXPECT_FALSE(Leaf("a", 1) == Leaf("a", 2));
    EXPECT_FALSE(Leaf("a", 1) == Group("a", 1));
}

TEST(OmDimensionNode, EqualityGoesByAll64BitsOfTheSubscript) {
    EXPECT_FALSE(Leaf("a", 1) == Leaf("a", 0x100000001ULL));
}

TEST(OmDimensionNode, EqualityIgnoresFlagsForDisplay) {
    OmDimensionNode a = Leaf("a", 1);
    a.Hide(true);
    a.HideLabels(true);
    a.Sort(OmSort::Up);
    EXPECT_TRUE(a == Leaf("a", 1));
}

TEST(OmDimensionNode, EqualityAsksForTheLengthsFirst) {
    ForeignLog log;
    ForeignText a(log, "a");
    ForeignText b(log, "b");
    a.spec().compare = b.spec().compare = short{0};
    OmDimensionNode const first(a, 0, false, nullptr);
    OmDimensionNode const second(b, 0, false, nullptr);
    log.Take();
    EXPECT_TRUE(first == second);
    Calls const calls = log.Take();
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[2], "a': Compare(b')");
}

TEST(OmDimensionNode, TextsOfDifferentLengthAreNotCompared) {
    ForeignLog log;
    ForeignText a(log, "a");
    ForeignText b(log, "b");
    a.spec().compare = b.spec().compare = short{0};
    a.spec().length = 5;
    OmDimensionNode const first(a, 0, false, nullptr);
    OmDimensionNode const second(b, 0, false, nullptr);
    log.Take();
    EXPECT_FALSE(first == second);
    EXPECT_EQ(log.Take({"Compare"}), Calls{});
}

TEST(OmDimensionNode, TextlessNodesHaveTheirPlaceInTheOrder) {
    EXPECT_TRUE(OmDimensionNode() == OmDimensionNode());
    EXPECT_FALSE(OmDimensionNode() == Leaf("", AllOnes));
    EXPECT_TRUE(OmDimensionNode() < Leaf("", 0));
    EXPECT_FALSE(Leaf("", 0) < OmDimensionNode());
    EXPECT_FALSE(OmDimensionNode() < OmDimensionNode());
}

// --- print -----------------------------------------------------------------------------------------------------------

TEST(OmDimensionNode, PrintsALeafOnOneLine) {
    EXPECT_EQ(PrintedBy(Leaf("Male", 3), 0), "Subscript: 3, Group: no, hide: no, hideLabels: no, Text: \"Male\"\n");
}

TEST(OmDimensionNode, PrintIndentsByTwoBlanksEach) {
    EXPECT_EQ(PrintedBy(Leaf("a", 0), 3), "      Subscript: 0, Group: no, hide: no, hideLabels: no, Text: \"a\"\n");
}

TEST(OmDimensionNode, PrintOfAGroupWithSubscriptAllOnesShowsMinusOne) {
    EXPECT_EQ(PrintedBy(Group("G", AllOnes), 0), "Subscript: -1, Group: yes, hide: no, hideLabels: no, Text: \"G\"\n");
}

// Printed whole, the 64-bit value would read 4294967299.
TEST(OmDimensionNode, PrintShowsTheLow32BitsOfTheSubscriptWithASign) {
    EXPECT_EQ(PrintedBy(Leaf("a", 0x100000003ULL), 0).substr(0, 14), "Subscript: 3, ");
    EXPECT_EQ(PrintedBy(Leaf("a", 0x80000000ULL), 0).substr(0, 24), "Subscript: -2147483648, ");
    EXPECT_EQ(PrintedBy(Leaf("a", AllOnes - 1), 0).substr(0, 15), "Subscript: -2, ");
}

TEST(OmDimensionNode, PrintShowsHiddenFlags) {
    OmDimensionNode node = Leaf("a", 0);
    node.Hide(true);
    EXPECT_EQ(PrintedBy(node, 0), "Subscript: 0, Group: no, hide: yes, hideLabels: no, Text: \"a\"\n");
    node.Hide(false);
    node.HideLabels(true);
    EXPECT_EQ(PrintedBy(node, 0), "Subscript: 0, Group: no, hide: no, hideLabels: yes, Text: \"a\"\n");
}

TEST(OmDimensionNode, PrintNamesTheTwoDirectionsOfSortingOnly) {
    OmDimensionNode node = Leaf("a", 0);
    node.Sort(OmSort::Up);
    EXPECT_EQ(PrintedBy(node, 0), "Subscript: 0, Group: no, hide: no, hideLabels: no, Sort: up, Text: \"a\"\n");
    node.Sort(OmSort::Down);
    EXPECT_EQ(PrintedBy(node, 0), "Subscript: 0, Group: no, hide: no, hideLabels: no, Sort: down, Text: \"a\"\n");
    for (std::int32_t const other : {2, 3, -1, 77}) {
        node.Sort(static_cast<OmSort::Order>(other));
        EXPECT_EQ(PrintedBy(node, 0), "Subscript: 0, Group: no, hide: no, hideLabels: no, Text: \"a\"\n") << other;
    }
}

TEST(OmDimensionNode, PrintListsTheChildIndex) {
    CategoryWorld world;
    for (char const* const label : {"c", "a", "b"}) {
        world.dimension.Child(world.Root(), Label(label), 0, false);
    }
    EXPECT_EQ(PrintedBy(world.Root().Value(), 1),
              "  Subscript: -1, Group: yes, hide: no, hideLabels: no, Children: 1, 2, 0, Text: \"D\"\n");
}

TEST(OmDimensionNode, PrintOfATextlessNodeEndsBeforeTheText) {
    EXPECT_EQ(PrintedBy(OmDimensionNode(), 0), "Subscript: -1, Group: no, hide: no, hideLabels: no\n");
}

TEST(OmDimensionNode, PrintAsksTheTextToPrintItselfWithoutIndent) {
    ForeignLog log;
    OmDimensionNode const node(ForeignText(log, "a"), 0, false, nullptr);
    log.Take();
    EXPECT_EQ(PrintedBy(node, 4), "        Subscript: 0, Group: no, hide: no, hideLabels: no, Text: \"a\"\n");
    EXPECT_EQ(log.Take({"Print"}), Calls{"a': Print(0)"});
}

TEST(OmDimensionNode, PrintEndsTheLineWithAFlush) {
    FlushCounter counter;
    std::streambuf* const before = std::cout.rdbuf(&counter);
    Leaf("a", 0).Print(0);
    std::cout.rdbuf(before);
    EXPECT_EQ(counter.flushes, 1);
    EXPECT_EQ(counter.str().back(), '\n');
}

TEST(OmDimensionNode, PrintIsDecimalWhateverTheStreamIsSetTo) {
    std::ios_base::fmtflags const before = std::cout.setf(std::ios_base::hex, std::ios_base::basefield);
    std::string const line = PrintedBy(Leaf("a", 12345678), 0);
    std::cout.flags(before);
    EXPECT_EQ(line, "Subscript: 12345678, Group: no, hide: no, hideLabels: no, Text: \"a\"\n");
}

// --- accounting ------------------------------------------------------------------------------------------------------

TEST(OmDimensionNode, ReplacingTextsForHoursDoesNotGrowTheArena) {
    OmMemoryRegion arena(false);
    OmDimensionNode node(Label("start"), 0, false, &arena);
    node.Text(Label(std::string(50, 'a')));
    std::size_t const reserved = arena.ReservedBytes();
    for (int k = 0; k < 10000; ++k) {
        node.Text(Label(std::string(50, 'b')));
        OmDimensionNode const copy(node);
        OmDimensionNode other(&arena);
        other = copy;
    }
    EXPECT_LE(arena.ReservedBytes(), reserved + 4096);
}
