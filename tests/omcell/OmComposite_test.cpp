#include "omcell/OmComposite.h"

#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using omtest::ForeignLog;
using omtest::ForeignText;

namespace {

constexpr int Million = 1000000;

using Tree = OmComposite::Tree;

std::unique_ptr<OmComposite> CloneOf(OmComposite const& text, OmMemoryRegion* region) {
    return std::unique_ptr<OmComposite>(static_cast<OmComposite*>(text.Clone(region)));
}

/// "Sum of " "squares" with " (" and "12.5" below, ")".
void FillExample(OmComposite& text) {
    text.Append(OmStringCell("Sum of "));
    Tree::Node const squares = text.Append(OmStringCell("squares"));
    text.Append(squares, OmStringCell(" ("));
    text.Append(squares, OmNumber(12.5));
    text.Append(OmStringCell(")"));
}

/// A chain of components, each below the one before, without a copy for each level.
void FillDeep(OmComposite& text, int levels, char const* part) {
    Tree::Node place = text.Components().Root();
    for (int i = 0; i < levels; ++i) {
        place = text.Append(place, OmStringCell(part));
    }
}

} // namespace

TEST(OmComposite, NewCompositeIsEmpty) {
    OmComposite const text;
    EXPECT_EQ(text.AsString(), "");
    EXPECT_EQ(text.Components().Root().ChildCount(), 0U);
    EXPECT_EQ(text.Components().Root().Value(), nullptr);
    EXPECT_EQ(text.TextLength(), 0U);
    EXPECT_FALSE(text.IsBlank());
    EXPECT_EQ(text.NumericValue(), 0.0);
}

TEST(OmComposite, JoinsItsComponentsDepthFirstWithNothingBetween) {
    OmComposite text;
    FillExample(text);
    EXPECT_EQ(text.AsString(), "Sum of squares (12.5)");
}

TEST(OmComposite, FormsReachTheComponents) {
    OmComposite text;
    OmStringCell cell("given");
    cell.SetU8String("utf-8");
    cell.SetEngString("english");
    OmNumber::Format format;
    format.type = OmNumber::PercentFormat;
    text.Append(text.Append(cell), OmNumber(1.0, format));
    EXPECT_EQ(text.AsString(), "given1");
    EXPECT_EQ(text.AsU8String(), "utf-81");
    EXPECT_EQ(text.AsEngString(), "english1");
    EXPECT_EQ(text.AsFormattedString(), "given1%");
}

TEST(OmComposite, AppendAddsALastChildAndReturnsItsHandle) {
    OmComposite text;
    text.Append(OmStringCell("a"));
    Tree::Node const b = text.Append(text.Components().Root(), OmStringCell("b"));
    EXPECT_EQ(b.Depth(), 1U);
    EXPECT_EQ(b.Value()->AsString(), "b");
    Tree::Node const c = text.Append(b, OmStringCell("c"));
    EXPECT_EQ(c.Depth(), 2U);
    EXPECT_EQ(text.Components().Root().Child(1).Child(0).Value(), c.Value());
    EXPECT_EQ(text.Components().Root().ChildCount(), 2U);
}

TEST(OmComposite, ComponentsAreClonesInItsRegionAndGoWithIt) {
    OmMemoryRegion arena(false);
    {
        OmComposite text(&arena);
        OmStringCell const part("part");
        Tree::Node const node = text.Append(part);
        EXPECT_NE(node.Value(), &part);
        EXPECT_EQ(arena.LiveBlocks(), 2U); // the block of children, and the cell
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmComposite, CompositeMayBeAppendedToItself) {
    OmComposite text;
    text.Append(OmStringCell("a"));
    text.Append(text);
    text.Append(text);
    EXPECT_EQ(text.AsString(), "aaaa");
}

TEST(OmComposite, TextsPutIntoTheTreeAreOwned) {
    OmMemoryRegion arena(false);
    {
        OmComposite text(&arena);
        text.Components().AddChild(text.Components().Root(), OmStringCell("x").Clone(&arena));
        EXPECT_EQ(text.AsString(), "x");
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmComposite, NullComponentsStandForNothing) {
    OmComposite text;
    Tree::Node const gap = text.Components().AddChild(text.Components().Root(), nullptr);
    text.Append(gap, OmStringCell("a"));
    text.Components().AddChild(text.Components().Root(), nullptr);
    text.Append(OmStringCell("b"));
    EXPECT_EQ(text.AsString(), "ab");
    EXPECT_EQ(text.TextLength(), 2U);
    std::unique_ptr<OmComposite> const clone = CloneOf(text, nullptr);
    EXPECT_EQ(clone->AsString(), "ab");
    EXPECT_EQ(clone->Components().Root().Child(0).Value(), nullptr);
    EXPECT_TRUE(OmCellText::Equal(text, *clone));
    clone->SetTracker(nullptr);
}

// An edit of the tree may leave parent pointers behind; destruction must not follow them.
TEST(OmComposite, ErasedComponentsAreTheCallersAndTheRestStaysOwned) {
    OmMemoryRegion arena(false);
    {
        OmComposite text(&arena);
        Tree::Node const first = text.Append(OmStringCell("gone"));
        OmCellText* const gone = first.Value();
        Tree::Node const second = text.Append(OmStringCell("a"));
        text.Append(text.Append(second, OmStringCell("b")), OmStringCell("c"));
        text.Append(OmStringCell("d"));
        Tree::EraseChild(text.Components().Root(), 0);
        delete gone;
        EXPECT_EQ(text.AsString(), "abcd");
        EXPECT_EQ(CloneOf(text, nullptr)->AsString(), "abcd");
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

// The children of a node that moved up still point at its old place, where another node stands now.
TEST(OmComposite, NodeWithSeveralChildrenThatMovedUpIsDestroyedWithAll) {
    OmMemoryRegion arena(false);
    {
        OmComposite text(&arena);
        OmCellText* const gone = text.Append(OmStringCell("gone")).Value();
        text.Append(OmStringCell("a"));
        for (char const* const below : {"b", "c", "d"}) {
            Tree::Node const node = text.Append(text.Components().Root().Child(1), OmStringCell(below));
            text.Append(node, OmStringCell("1"));
            text.Append(text.Components().Root().Child(1).Child(node.Parent().ChildCount() - 1), OmStringCell("2"));
        }
        text.Append(OmStringCell("e"));
        Tree::EraseChild(text.Components().Root(), 0);
        delete gone;
        EXPECT_EQ(text.AsString(), "ab12c12d12e");
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

// --- clone -----------------------------------------------------------------------------------------------------------

TEST(OmComposite, CloneHasTheSameShapeAndItsOwnTexts) {
    OmMemoryRegion arena(false);
    auto text = std::make_unique<OmComposite>();
    FillExample(*text);
    OmCellMetaData meta;
    meta.footnotes = {2};
    text->setMeta(&meta);
    {
        std::unique_ptr<OmComposite> const clone = CloneOf(*text, &arena);
        EXPECT_NE(clone->Components().Root().Child(0).Value(), text->Components().Root().Child(0).Value());
        text.reset();
        EXPECT_EQ(clone->AsString(), "Sum of squares (12.5)");
        EXPECT_EQ(clone->Components().Root().ChildCount(), 3U);
        EXPECT_EQ(clone->Components().Root().Child(1).ChildCount(), 2U);
        EXPECT_EQ(clone->Footnotes(), std::vector<short>{2});
        EXPECT_EQ(clone->Components().Region(), &arena);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmComposite, CloneTakesAppendsLikeAnyOther) {
    OmComposite text;
    FillExample(text);
    std::unique_ptr<OmComposite> const clone = CloneOf(text, nullptr);
    for (int i = 0; i < 20; ++i) {
        clone->Append(clone->Components().Root().Child(1), OmStringCell("x"));
        clone->Append(OmStringCell("y"));
    }
    EXPECT_EQ(clone->AsString(), "Sum of squares (12.5" + std::string(20, 'x') + ")" + std::string(20, 'y'));
    EXPECT_EQ(clone->Components().Root().Child(1).Child(0).Parent(), clone->Components().Root().Child(1));
}

TEST(OmComposite, ComponentsAreClonedIntoTheTargetRegionInOrder) {
    ForeignLog log;
    OmMemoryRegion arena(false);
    OmComposite text;
    Tree::Node const a = text.Append(ForeignText(log, "a"));
    text.Append(a, ForeignText(log, "b"));
    text.Append(ForeignText(log, "c"));
    log.Take();
    std::unique_ptr<OmComposite> const clone = CloneOf(text, &arena);
    EXPECT_EQ(log.cloneRegions, (std::vector<OmMemoryRegion*>{&arena, &arena, &arena}));
    EXPECT_EQ(log.Take({"Clone"}), (std::vector<std::string>{"a': Clone", "b': Clone", "c': Clone"}));
}

TEST(OmComposite, FailingCloneOfAComponentLeavesNothingBehind) {
    ForeignLog log;
    OmMemoryRegion arena(false);
    OmComposite text;
    OmComposite nested;
    nested.Append(ForeignText(log, "b"));
    text.Append(ForeignText(log, "a"));
    text.Append(nested);
    text.Append(ForeignText(log, "c"));
    int const alive = log.alive;
    for (int allowed = 0; allowed < 3; ++allowed) {
        log.clonesUntilFailure = allowed;
        EXPECT_THROW(text.Clone(&arena), std::bad_alloc);
        EXPECT_EQ(log.alive, alive);
        EXPECT_EQ(arena.LiveBlocks(), 0U);
    }
    log.clonesUntilFailure = 3;
    delete text.Clone(&arena);
    EXPECT_EQ(log.alive, alive);
}

TEST(OmComposite, FailingAppendChangesNothing) {
    ForeignLog log;
    OmComposite text;
    text.Append(OmStringCell("a"));
    log.clonesUntilFailure = 0;
    EXPECT_THROW(text.Append(ForeignText(log, "b")), std::bad_alloc);
    EXPECT_EQ(text.AsString(), "a");
    EXPECT_EQ(text.Components().Root().ChildCount(), 1U);
}

// --- order -----------------------------------------------------------------------------------------------------------

TEST(OmComposite, ComparesComponentByComponent) {
    OmComposite a;
    OmComposite b;
    a.Append(OmStringCell("x"));
    b.Append(OmStringCell("x"));
    EXPECT_TRUE(OmCellText::Equal(a, b));
    a.Append(OmNumber(9));
    EXPECT_GT(a.Compare(b), 0);
    b.Append(OmNumber(10));
    EXPECT_LT(a.Compare(b), 0);
    EXPECT_GT(b.Compare(a), 0);
}

// The joined texts are the same.
TEST(OmComposite, DifferentPartsOfTheSameTextAreNotEqual) {
    OmComposite a;
    OmComposite b;
    a.Append(OmStringCell("ab"));
    a.Append(OmStringCell("c"));
    b.Append(OmStringCell("a"));
    b.Append(OmStringCell("bc"));
    EXPECT_EQ(a.AsString(), b.AsString());
    EXPECT_GT(a.Compare(b), 0);
    EXPECT_LT(b.Compare(a), 0);
}

TEST(OmComposite, ShapeTakesPartInTheOrder) {
    OmComposite flat;
    OmComposite nested;
    flat.Append(OmStringCell("a"));
    flat.Append(OmStringCell("b"));
    nested.Append(nested.Append(OmStringCell("a")), OmStringCell("b"));
    EXPECT_LT(flat.Compare(nested), 0);
    EXPECT_GT(nested.Compare(flat), 0);
}

TEST(OmComposite, SortsBeforeEveryOtherKind) {
    EXPECT_LT(OmComposite().Compare(OmStringCell("")), 0);
    EXPECT_GT(OmStringCell("").Compare(OmComposite()), 0);
    ForeignLog log;
    ForeignText foreign(log, "");
    foreign.spec().orderCode = OmComposite::Order;
    EXPECT_LT(OmComposite().Compare(foreign), 0);
}

// --- tracker ---------------------------------------------------------------------------------------------------------

TEST(OmComposite, TrackerIsHandedToEveryComponentOnceInOrder) {
    icuTracker tracker({true, "en_US.UTF-8"});
    ForeignLog log;
    OmComposite text;
    OmComposite nested;
    nested.Append(nested.Append(ForeignText(log, "b")), ForeignText(log, "c"));
    text.Append(ForeignText(log, "a"));
    text.Append(nested);
    text.Append(ForeignText(log, "d"));
    log.Take();
    EXPECT_EQ(text.SetTracker(&tracker), &tracker);
    EXPECT_EQ(log.Take(), (std::vector<std::string>{"a': SetTracker(set)", "b'': SetTracker(set)",
                                                    "c'': SetTracker(set)", "d': SetTracker(set)"}));
    EXPECT_EQ(text.Tracker(), &tracker);
    OmCellText* const inner = text.Components().Root().Child(1).Value();
    EXPECT_EQ(inner->Tracker(), &tracker);
    EXPECT_EQ(static_cast<OmComposite*>(inner)->Components().Root().Child(0).Child(0).Value()->Tracker(), &tracker);
    EXPECT_EQ(text.SetTracker(nullptr), nullptr);
    EXPECT_EQ(inner->Tracker(), nullptr);
}

TEST(OmComposite, PartsOfACloneKeepTheTrackerInTheSameArenaOnly) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    OmComposite source;
    FillExample(source);
    std::unique_ptr<OmComposite> const text = CloneOf(source, &arena);
    text->SetTracker(&tracker);
    std::unique_ptr<OmComposite> const same = CloneOf(*text, &arena);
    std::unique_ptr<OmComposite> const elsewhere = CloneOf(*text, nullptr);
    EXPECT_EQ(same->Tracker(), &tracker);
    EXPECT_EQ(same->Components().Root().Child(1).Child(1).Value()->Tracker(), &tracker);
    EXPECT_EQ(elsewhere->Tracker(), nullptr);
    EXPECT_EQ(elsewhere->Components().Root().Child(1).Child(1).Value()->Tracker(), nullptr);
}

// --- size ------------------------------------------------------------------------------------------------------------

// Recursion by depth would end the process.
TEST(OmComposite, MillionLevelsOfComponentsWork) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    {
        OmComposite text;
        FillDeep(text, Million, "x");
        EXPECT_EQ(text.AsString(), std::string(Million, 'x'));
        EXPECT_EQ(text.TextLength(), static_cast<std::size_t>(Million));
        std::unique_ptr<OmComposite> const clone = CloneOf(text, &arena);
        EXPECT_EQ(clone->AsString().size(), static_cast<std::size_t>(Million));
        EXPECT_EQ(text.Compare(*clone), 0);
        clone->SetTracker(&tracker);
        EXPECT_EQ(clone->Components().Root().Child(0).Value()->Tracker(), &tracker);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmComposite, MillionComponentsSideBySideWork) {
    OmMemoryRegion arena(false);
    {
        OmComposite text;
        OmStringCell const part("x");
        for (int i = 0; i < Million; ++i) {
            text.Append(part);
        }
        std::unique_ptr<OmComposite> const clone = CloneOf(text, &arena);
        EXPECT_EQ(clone->AsString(), std::string(Million, 'x'));
        EXPECT_EQ(clone->Compare(text), 0);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmComposite, SweepLeavesNothingOfADeepComposite) {
    OmMemoryRegion arena(false);
    OmComposite source;
    FillDeep(source, 1000, "some text of more than a few bytes");
    OmCellMetaData meta;
    meta.markers = {"marker of more bytes than a string object holds by itself"};
    source.Components().Root().Child(0).Child(0).Value()->setMeta(&meta);
    source.Clone(&arena);
    OmCellText* const destroyed = source.Clone(&arena);
    arena.WorkingRelease(false);
    EXPECT_EQ(destroyed->AsString(), source.AsString());
    delete destroyed;
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}
