#include "omcell/OmCellText.h"

#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/ForeignText.h"
#include "tests/support/HeapInUse.h"
#include "tests/support/SlotOrder.h"

#include "tests/support/MuteText.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>
#include <locale>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::NoSlot;
using omtest::PrintedBy;
using omtest::SlotOf;

namespace {

using Visitor = OmCellText::Visitor;

template <typename Kind>
std::size_t VisitSlot() {
    return SlotOf(static_cast<void (Visitor::*)(Kind&)>(&Visitor::Visit));
}

OmCellMetaData Meta(std::vector<short> footnotes, std::vector<std::string> markers, int style = -1) {
    OmCellMetaData meta;
    meta.footnotes = std::move(footnotes);
    meta.markers = std::move(markers);
    meta.style = style;
    return meta;
}

} // namespace

// --- order of the virtual operations ---------------------------------------------------------------------------------

TEST(OmCellText, VirtualOperationsStandInTheirDocumentedOrder) {
    EXPECT_EQ(SlotOf(&OmCellText::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmCellText::OrderCode), 3U);
    EXPECT_EQ(SlotOf(&OmCellText::AsString), 4U);
    EXPECT_EQ(SlotOf(&OmCellText::AsU8String), 5U);
    EXPECT_EQ(SlotOf(&OmCellText::AsEngString), 6U);
    EXPECT_EQ(SlotOf(&OmCellText::AsFormattedString), 7U);
    EXPECT_EQ(SlotOf(&OmCellText::NumericValue), 8U);
    EXPECT_EQ(SlotOf(&OmCellText::TextLength), 9U);
    EXPECT_EQ(SlotOf(&OmCellText::Compare), 10U);
    EXPECT_EQ(SlotOf(&OmCellText::Clone), 11U);
    EXPECT_EQ(SlotOf(&OmCellText::SetTracker), 12U);
    EXPECT_EQ(SlotOf(&OmCellText::Print), 13U);
    EXPECT_EQ(SlotOf(&OmCellText::IsBlank), 14U);
}

// Also shows that the base class ends with the fourteenth.
TEST(OmCellText, StringCellsAddTheFifteenthOperation) { EXPECT_EQ(SlotOf(&OmStringCell::SetAltText), 15U); }

TEST(OmCellText, StringCellsKeepTheInheritedOrder) {
    EXPECT_EQ(SlotOf(&OmStringCell::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmStringCell::AsEngString), 6U);
    EXPECT_EQ(SlotOf(&OmStringCell::TextLength), 9U);
    EXPECT_EQ(SlotOf(&OmStringCell::Clone), 11U);
}

TEST(OmCellText, ReadersOfTheMetadataAreNotVirtual) {
    EXPECT_EQ(SlotOf(&OmCellText::Footnotes), NoSlot);
    EXPECT_EQ(SlotOf(&OmCellText::getMarkers), NoSlot);
    EXPECT_EQ(SlotOf(&OmCellText::hasMeta), NoSlot);
    EXPECT_EQ(SlotOf(&OmCellText::getMeta), NoSlot);
    EXPECT_EQ(SlotOf(&OmCellText::setMeta), NoSlot);
}

TEST(OmCellText, VisitorHasItsDestructorAndSevenKindsInOrder) {
    EXPECT_EQ(VisitSlot<OmComposite>(), 2U);
    EXPECT_EQ(VisitSlot<OmStringCell>(), 3U);
    EXPECT_EQ(VisitSlot<OmNumber>(), 4U);
    EXPECT_EQ(VisitSlot<OmVariable>(), 5U);
    EXPECT_EQ(VisitSlot<OmValue>(), 6U);
    EXPECT_EQ(VisitSlot<OmMessage>(), 7U);
    EXPECT_EQ(VisitSlot<OmBlank>(), 8U);
}

// --- what the base does ----------------------------------------------------------------------------------------------

TEST(OmCellText, BaseGivesTheStringAsFormattedString) {
    OmStringCell const text("a");
    EXPECT_EQ(text.OmCellText::AsFormattedString(), "a");
}

TEST(OmCellText, BaseHasNoNumberNoLengthAndIsNotBlank) {
    OmStringCell const text("12");
    EXPECT_EQ(text.OmCellText::NumericValue(), 0.0);
    EXPECT_EQ(text.OmCellText::TextLength(), 0U);
    EXPECT_FALSE(text.OmCellText::IsBlank());
}

TEST(OmCellText, DisplayModesHaveTheirNumbersInThirtyTwoBits) {
    static_assert(sizeof(OmCellText::ModeType) == 4);
    EXPECT_EQ(OmCellText::NameMode, 0);
    EXPECT_EQ(OmCellText::LabelMode, 1);
    EXPECT_EQ(OmCellText::LabelOrNameMode, 2);
    EXPECT_EQ(OmCellText::BothMode, 3);
}

// --- printing --------------------------------------------------------------------------------------------------------

TEST(OmCellText, PrintOfAnEmptyStringIsTwoQuotesAndNothingElse) { EXPECT_EQ(PrintedBy(OmStringCell(""), 0), "\"\""); }

TEST(OmCellText, PrintIndentsByTwoBlanksForEachLevel) { EXPECT_EQ(PrintedBy(OmStringCell("a"), 3), "      \"a\""); }

TEST(OmCellText, PrintDoesNotEscape) { EXPECT_EQ(PrintedBy(OmStringCell("a\"b\\\n"), 0), "\"a\"b\\\n\""); }

TEST(OmCellText, PrintListsFootnotesAndMarkersWhereThereAreAny) {
    OmStringCell text("a");
    OmCellMetaData const both = Meta({3, -1}, {"x", "y"});
    text.setMeta(&both);
    EXPECT_EQ(PrintedBy(text, 1), "  \"a\", Footnotes = 3, -1, Markers = x, y");

    OmCellMetaData const footnote = Meta({7}, {});
    text.setMeta(&footnote);
    EXPECT_EQ(PrintedBy(text, 0), "\"a\", Footnotes = 7");

    OmCellMetaData const marker = Meta({}, {"*"});
    text.setMeta(&marker);
    EXPECT_EQ(PrintedBy(text, 0), "\"a\", Markers = *");
}

TEST(OmCellText, PrintOfEmptyMetadataAddsNothing) {
    OmStringCell text("a");
    OmCellMetaData const empty;
    text.setMeta(&empty);
    EXPECT_EQ(PrintedBy(text, 0), "\"a\"");
}

// --- equality --------------------------------------------------------------------------------------------------------

TEST(OmCellText, TextsOfDifferentLengthsAreNotEqualAlthoughTheyCompareAsEqual) {
    ForeignLog log;
    ForeignText a(log, "a");
    ForeignText b(log, "b");
    a.spec().compare = 0;
    b.spec().length = 2;
    EXPECT_EQ(a.Compare(b), 0);
    EXPECT_FALSE(OmCellText::Equal(a, b));
    b.spec().length = 1;
    EXPECT_TRUE(OmCellText::Equal(a, b));
}

TEST(OmCellText, EqualityAsksForTheLengthsFirst) {
    ForeignLog log;
    ForeignText const a(log, "a");
    ForeignText const longer(log, "bb");
    ForeignText const same(log, "c");
    EXPECT_FALSE(OmCellText::Equal(a, longer));
    EXPECT_EQ(log.Take({"Compare"}), std::vector<std::string>());
    EXPECT_FALSE(OmCellText::Equal(a, same));
    std::vector<std::string> const calls = log.Take({"TextLength", "Compare"});
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls.back(), "a: Compare(c)");
}

// --- metadata --------------------------------------------------------------------------------------------------------

TEST(OmCellText, TextStartsWithoutMetadata) {
    OmStringCell const text("a");
    EXPECT_FALSE(text.hasMeta());
    EXPECT_EQ(text.getMeta(), nullptr);
    EXPECT_TRUE(text.Footnotes().empty());
    EXPECT_TRUE(text.getMarkers().empty());
}

TEST(OmCellText, MetadataRecordIsCopied) {
    OmStringCell text("a");
    OmCellMetaData meta = Meta({1, 2}, {"m"}, 5);
    text.setMeta(&meta);
    meta.footnotes.clear();
    meta.style = 0;
    ASSERT_TRUE(text.hasMeta());
    EXPECT_NE(text.getMeta(), &meta);
    EXPECT_EQ(*text.getMeta(), Meta({1, 2}, {"m"}, 5));
    EXPECT_EQ(text.Footnotes(), (std::vector<short>{1, 2}));
    EXPECT_EQ(text.getMarkers(), std::vector<std::string>{"m"});
}

TEST(OmCellText, NullTakesTheMetadataAway) {
    OmStringCell text("a");
    OmCellMetaData const meta = Meta({1}, {});
    text.setMeta(&meta);
    text.setMeta(nullptr);
    EXPECT_FALSE(text.hasMeta());
    text.setMeta(nullptr);
    EXPECT_FALSE(text.hasMeta());
}

TEST(OmCellText, OwnRecordMayBeSetAgain) {
    OmStringCell text("a");
    OmCellMetaData const meta = Meta({1}, {"m"});
    text.setMeta(&meta);
    text.setMeta(text.getMeta());
    ASSERT_TRUE(text.hasMeta());
    EXPECT_EQ(*text.getMeta(), meta);
}

TEST(OmCellText, MetadataOfACloneIsItsOwn) {
    OmMemoryRegion region(false);
    auto text = std::make_unique<OmStringCell>("a");
    OmCellMetaData const meta = Meta({1}, {"m"}, 3);
    text->setMeta(&meta);
    std::unique_ptr<OmCellText> const clone(text->Clone(&region));
    ASSERT_TRUE(clone->hasMeta());
    EXPECT_NE(clone->getMeta(), text->getMeta());
    text->getMeta()->footnotes.push_back(9);
    text.reset();
    EXPECT_EQ(*clone->getMeta(), meta);
}

TEST(OmCellText, CloneOfATextWithoutMetadataHasNone) {
    std::unique_ptr<OmCellText> const clone(OmStringCell("a").Clone(nullptr));
    EXPECT_FALSE(clone->hasMeta());
}

// --- tracker ---------------------------------------------------------------------------------------------------------

/// A kind that can be copied, as a program's may be.
class CopiedText final : public omtest::MuteText {
public:
    explicit CopiedText(OmMemoryRegion* home) : MuteText(home) {}
    CopiedText(CopiedText const&) = default;
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) CopiedText(*this); }
    OmMemoryRegion* HomeRegion() const { return Home(); }
};

// A tracker dies with its table, and the arena that the copy would name as home may, too.
TEST(OmCellText, CopyConstructorTakesTheMetadataAndNeitherTrackerNorHome) {
    OmMemoryRegion region(false);
    icuTracker tracker({true, "en_US.UTF-8"});
    OmCellMetaData const meta = Meta({1}, {"m"});
    CopiedText source(&region);
    source.SetTracker(&tracker);
    source.setMeta(&meta);
    CopiedText const copy(source);
    EXPECT_EQ(copy.Tracker(), nullptr);
    EXPECT_EQ(copy.HomeRegion(), OmMemoryRegion::DefaultHeap());
    ASSERT_TRUE(copy.hasMeta());
    EXPECT_EQ(*copy.getMeta(), meta);
    EXPECT_NE(copy.getMeta(), source.getMeta());
    EXPECT_EQ(source.Tracker(), &tracker);
}

TEST(OmCellText, TrackerIsNullUntilSetAndReturnedWhenSet) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmStringCell text("a");
    EXPECT_EQ(text.Tracker(), nullptr);
    EXPECT_EQ(text.SetTracker(&tracker), &tracker);
    EXPECT_EQ(text.Tracker(), &tracker);
    EXPECT_EQ(text.SetTracker(nullptr), nullptr);
    EXPECT_EQ(text.Tracker(), nullptr);
}

TEST(OmCellText, CloneInTheSameArenaKeepsTheTracker) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    std::unique_ptr<OmCellText> const text(OmStringCell("a").Clone(&arena));
    text->SetTracker(&tracker);
    std::unique_ptr<OmCellText> const clone(text->Clone(&arena));
    EXPECT_EQ(clone->Tracker(), &tracker);
}

// A tracker dies with its table; a clone that outlives the table must not point at it.
TEST(OmCellText, CloneElsewhereStartsWithoutTracker) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    OmMemoryRegion other(false);
    std::unique_ptr<OmCellText> const text(OmStringCell("a").Clone(&arena));
    text->SetTracker(&tracker);
    std::unique_ptr<OmCellText> const inOther(text->Clone(&other));
    std::unique_ptr<OmCellText> const inHeap(text->Clone(nullptr));
    EXPECT_EQ(inOther->Tracker(), nullptr);
    EXPECT_EQ(inHeap->Tracker(), nullptr);
}

// The default heap is no table's arena.
TEST(OmCellText, CloneFromHeapToHeapStartsWithoutTracker) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmStringCell text("a");
    text.SetTracker(&tracker);
    std::unique_ptr<OmCellText> const clone(text.Clone(nullptr));
    std::unique_ptr<OmCellText> const named(text.Clone(OmMemoryRegion::DefaultHeap()));
    EXPECT_EQ(clone->Tracker(), nullptr);
    EXPECT_EQ(named->Tracker(), nullptr);
}

// --- storage ---------------------------------------------------------------------------------------------------------

TEST(OmCellText, DeletingATextGivesItsStorageBackToTheArena) {
    OmMemoryRegion arena(false);
    OmCellText* const text = OmStringCell("some text").Clone(&arena);
    EXPECT_GT(arena.LiveBlocks(), 0U);
    delete text;
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    EXPECT_EQ(arena.LiveBytes(), 0U);
}

// The global delete would hand an address to the allocator that never came from it.
TEST(OmCellText, DeletingATextOfTheDefaultHeapReleasesItThere) {
    std::string const bytes(100, 'x');
    auto const makeAndDelete = [&bytes] {
        delete OmStringCell(bytes).Clone(nullptr);
        delete OmStringCell(bytes).Clone(OmMemoryRegion::DefaultHeap());
        delete new OmStringCell(bytes);
        delete new (static_cast<OmMemoryRegion*>(nullptr)) OmStringCell(bytes);
    };
    EXPECT_LT(omtest::HeapGrowth(1000, makeAndDelete), 1000); // a byte a text would be too much
}

TEST(OmCellText, SweepOfTheArenaFreesTheMetadataOfTextsThatAreNeverDestroyed) {
    OmMemoryRegion arena(false);
    OmCellMetaData const meta = Meta({1, 2, 3}, {"a marker that is too long for the string object itself"});
    for (int i = 0; i < 3; ++i) {
        OmCellText* const text = OmStringCell("text").Clone(&arena);
        text->setMeta(&meta);
        EXPECT_TRUE(text->hasMeta());
    }
    arena.WorkingRelease(false);
    EXPECT_EQ(arena.LiveBlocks(), 0U); // the leak checker sees the records
}

TEST(OmCellText, SweptTextMayStillBeReadAndDestroyed) {
    OmMemoryRegion arena(false);
    OmCellText* const text = OmStringCell("text").Clone(&arena);
    OmCellMetaData const meta = Meta({1}, {"m"});
    text->setMeta(&meta);
    arena.WorkingRelease(false);
    EXPECT_EQ(text->AsString(), "text");
    EXPECT_FALSE(text->hasMeta());
    delete text;
}

TEST(OmCellText, MetadataSetAfterTheSweepIsFreedWithTheText) {
    OmMemoryRegion arena(false);
    OmCellText* const destroyed = OmStringCell("a").Clone(&arena);
    OmCellText* const left = OmStringCell("b").Clone(&arena);
    arena.WorkingRelease(false);
    OmCellMetaData const meta = Meta({1}, {"m"});
    destroyed->setMeta(&meta);
    left->setMeta(&meta);
    EXPECT_EQ(left->Footnotes(), std::vector<short>{1});
    delete destroyed;
}

TEST(OmCellText, ForeignTextThatNamesItsArenaLeavesNothingBehindEither) {
    ForeignLog log;
    OmMemoryRegion arena(false);
    ForeignText const source(log, "a");
    OmCellText* const text = source.Clone(&arena);
    OmCellMetaData const meta = Meta({1}, {"m"});
    text->setMeta(&meta);
    arena.WorkingRelease(false);
    EXPECT_FALSE(text->hasMeta());
    EXPECT_EQ(log.Take({"Clone", "destroy"}), std::vector<std::string>{"a: Clone"});
}

namespace {

struct Grouping final : std::numpunct<char> {
    std::string do_grouping() const override { return "\1"; }
};

} // namespace

// A program that has changed its standard output still gets plain decimal numbers.
TEST(OmCellText, PrintIsDecimalWhateverTheStreamIsSetTo) {
    OmStringCell text("t");
    OmCellMetaData const meta = Meta({1234, 10}, {"m"});
    text.setMeta(&meta);
    std::locale const before = std::cout.imbue(std::locale(std::locale::classic(), new Grouping));
    std::cout << std::hex << std::showpos << std::setw(12) << std::setfill('*');
    std::string const shown = PrintedBy(text, 1);
    std::cout << std::dec << std::noshowpos << std::setw(0) << std::setfill(' ');
    std::cout.imbue(before);
    EXPECT_EQ(shown, "  \"t\", Footnotes = 1234, 10, Markers = m");
}

TEST(OmCellText, ContractAndItsVisitorAreAbstract) {
    EXPECT_TRUE(std::is_abstract_v<OmCellText>);
    EXPECT_TRUE(std::has_virtual_destructor_v<OmCellText>);
    EXPECT_TRUE(std::is_abstract_v<OmCellText::Visitor>);
    EXPECT_TRUE(std::has_virtual_destructor_v<OmCellText::Visitor>);
}
