#include "backend/tables/om/OmFootnote.h"

#include "backend/tables/om/OmVector.h"
#include "omcell/OmMemoryRegion.h"
#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::ForeignLog;
using omtest::ForeignSpec;
using omtest::ForeignText;
using omtest::Text;
using Log = std::vector<std::string>;
using Regions = std::vector<OmMemoryRegion*>;

/// "text[marker]*count", "null" for no text.
std::string Shown(OmFootnote const& note) {
    return (note.Text() != nullptr ? note.Text()->AsString() : "null") +
           (note.Marker() != nullptr ? "[" + note.Marker()->AsString() + "]" : "") + "*" + std::to_string(note.Count());
}

OmFootnote Note(std::string const& text, std::string const& marker, int count, OmMemoryRegion* region = nullptr) {
    OmStringCell const mark(marker);
    return OmFootnote(Text(text), &mark, count, region);
}

TEST(OmFootnote, NewRecordHasNoTextsAndCountZero) {
    OmMemoryRegion arena(false);
    OmFootnote const note(&arena);
    EXPECT_EQ(note.Text(), nullptr);
    EXPECT_EQ(note.Marker(), nullptr);
    EXPECT_EQ(note.Count(), 0);
    EXPECT_EQ(note.Region(), &arena);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmFootnote, NullRegionIsTheDefaultHeap) {
    EXPECT_EQ(OmFootnote().Region(), OmMemoryRegion::DefaultHeap());
    EXPECT_EQ(OmFootnote(Text("a")).Region(), OmMemoryRegion::DefaultHeap());
    OmFootnote const note(Text("a"));
    EXPECT_EQ(OmFootnote(note, nullptr).Region(), OmMemoryRegion::DefaultHeap());
}

TEST(OmFootnote, TextsAreClonesInTheRecordsRegion) {
    ForeignLog log;
    OmMemoryRegion arena(false);
    ForeignText const text(log, "t");
    ForeignText const marker(log, "m");
    OmFootnote note(text, &marker, -3, &arena);
    EXPECT_EQ(log.cloneRegions, (Regions{&arena, &arena}));
    EXPECT_EQ(Shown(note), "t[m]*-3");
    log.Take();
    note.Text(marker);
    note.Marker(&text);
    EXPECT_EQ(log.cloneRegions, (Regions{&arena, &arena}));
    EXPECT_EQ(Shown(note), "m[t]*-3");
}

TEST(OmFootnote, TextAloneHasNoMarkerAndCountZero) { EXPECT_EQ(Shown(OmFootnote(Text("a"))), "a*0"); }

TEST(OmFootnote, NullMarkerIsNone) {
    OmFootnote note(Text("a"), nullptr, 2);
    EXPECT_EQ(Shown(note), "a*2");
    OmStringCell const marker("m");
    note.Marker(&marker);
    EXPECT_EQ(Shown(note), "a[m]*2");
    note.Marker(nullptr);
    EXPECT_EQ(Shown(note), "a*2");
}

TEST(OmFootnote, CountIsKeptAsGiven) {
    OmFootnote note;
    for (int const count : {5, -5, 0, 2147483647}) {
        note.Count(count);
        EXPECT_EQ(note.Count(), count);
    }
}

TEST(OmFootnote, ConstAndModifiableFormsGiveTheSameTexts) {
    OmFootnote note = Note("a", "m", 0);
    EXPECT_EQ(std::as_const(note).Text(), note.Text());
    EXPECT_EQ(std::as_const(note).Marker(), note.Marker());
}

TEST(OmFootnote, SettersCloneFirstThenDestroy) {
    ForeignLog log;
    OmFootnote note(ForeignText(log, "old"));
    ForeignText const text(log, "new");
    log.Take();
    note.Text(text);
    EXPECT_EQ(log.Take(), (Log{"new: Clone", "old': destroy"}));
    note.Marker(&text);
    note.Marker(&text);
    EXPECT_EQ(log.Take(), (Log{"new: Clone", "new: Clone", "new': destroy"}));
}

TEST(OmFootnote, OwnTextsCanBeSetAgain) {
    OmFootnote note = Note("a", "m", 0);
    note.Text(*note.Text());
    note.Marker(note.Marker());
    EXPECT_EQ(Shown(note), "a[m]*0");
}

TEST(OmFootnote, FailingCloneKeepsTheOldText) {
    ForeignLog log;
    OmFootnote note(Text("old"));
    ForeignText const text(log, "new");
    log.clonesUntilFailure = 0;
    EXPECT_THROW(note.Text(text), std::bad_alloc);
    EXPECT_THROW(note.Marker(&text), std::bad_alloc);
    EXPECT_EQ(Shown(note), "old*0");
}

TEST(OmFootnote, FailingConstructorLeavesNoText) {
    ForeignLog log;
    ForeignText const text(log, "t");
    log.clonesUntilFailure = 1;
    EXPECT_THROW(OmFootnote(text, &text, 0), std::bad_alloc);
    EXPECT_EQ(log.alive, 1);
}

TEST(OmFootnote, CopyIsDeepInTheSourcesRegion) {
    OmMemoryRegion arena(false);
    OmFootnote const note = Note("a", "m", 4, &arena);
    OmFootnote const copy(note);
    EXPECT_EQ(Shown(copy), "a[m]*4");
    EXPECT_NE(copy.Text(), note.Text());
    EXPECT_NE(copy.Marker(), note.Marker());
    EXPECT_EQ(copy.Region(), &arena);
}

TEST(OmFootnote, CopyIntoARegionClonesThere) {
    ForeignLog log;
    OmMemoryRegion first(false);
    OmMemoryRegion second(false);
    ForeignText const text(log, "t");
    std::optional<OmFootnote> note(std::in_place, text, &text, 1, &first);
    log.Take();
    OmFootnote const copy(*note, &second);
    EXPECT_EQ(log.cloneRegions, (Regions{&second, &second}));
    EXPECT_EQ(copy.Region(), &second);
    note.reset();
    EXPECT_EQ(first.LiveBlocks(), 0U);
    EXPECT_EQ(Shown(copy), "t[t]*1");
    EXPECT_EQ(Shown(OmFootnote(OmFootnote(&first), &second)), "null*0");
}

TEST(OmFootnote, AssignmentIsDeepAndKeepsTheOwnRegion) {
    OmMemoryRegion first(false);
    OmMemoryRegion second(false);
    OmFootnote const source = Note("a", "m", 4, &first);
    OmFootnote target = Note("b", "n", 9, &second);
    target = source;
    EXPECT_EQ(Shown(target), "a[m]*4");
    EXPECT_EQ(target.Region(), &second);
    EXPECT_NE(target.Text(), source.Text());
    target = OmFootnote();
    EXPECT_EQ(Shown(target), "null*0");
    EXPECT_EQ(second.LiveBlocks(), 0U);
}

TEST(OmFootnote, AssignmentToItselfKeepsTheTexts) {
    OmFootnote note = Note("a", "m", 4);
    OmCellText const* const text = note.Text();
    OmFootnote const& same = note;
    note = same;
    EXPECT_EQ(note.Text(), text);
    EXPECT_EQ(Shown(note), "a[m]*4");
}

TEST(OmFootnote, DestructorDestroysBothTexts) {
    ForeignLog log;
    OmMemoryRegion arena(false);
    {
        ForeignText const text(log, "t");
        OmFootnote const note(text, &text, 0, &arena);
        EXPECT_EQ(log.alive, 3);
    }
    EXPECT_EQ(log.alive, 0);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmFootnote, EqualTextsAreTheSameFootnote) {
    EXPECT_TRUE(Note("a", "m", 1) == Note("a", "n", -2));
    EXPECT_FALSE(Note("a", "m", 1) != Note("a", "n", -2));
    EXPECT_FALSE(Note("a", "m", 1) == Note("b", "m", 1));
    EXPECT_TRUE(Note("a", "m", 1) != Note("b", "m", 1));
}

TEST(OmFootnote, MissingTextsAreEqualToEachOtherOnly) {
    EXPECT_TRUE(OmFootnote() == OmFootnote());
    EXPECT_FALSE(OmFootnote() == OmFootnote(Text("")));
    EXPECT_FALSE(OmFootnote(Text("")) == OmFootnote());
}

TEST(OmFootnote, EqualityAsksTheLeftTextForLengthsFirst) {
    ForeignLog log;
    OmFootnote const a(ForeignText(log, "a", "x"));
    OmFootnote const b(ForeignText(log, "b", "x"));
    OmFootnote const longer(ForeignText(log, "longer"));
    log.Take();
    EXPECT_TRUE(a == b);
    EXPECT_EQ(log.Take({"Compare"}), (Log{"a': Compare(b')"}));
    EXPECT_FALSE(a == longer);
    EXPECT_EQ(log.Take({"Compare"}), Log());
}

// A vector of footnotes relocates its records byte for byte.
TEST(OmFootnote, RecordsInAVectorKeepTheirTexts) {
    ForeignLog log;
    {
        OmMemoryRegion arena(false);
        OmVector<OmFootnote> notes(&arena);
        for (int k = 0; k < 20; ++k) {
            notes.emplace_back(ForeignText(log, std::to_string(k)), &arena);
        }
        notes.erase(0);
        EXPECT_EQ(Shown(notes[0]), "1*0");
        EXPECT_EQ(Shown(notes[18]), "19*0");
        EXPECT_EQ(log.alive, 19);
    }
    EXPECT_EQ(log.alive, 0);
}

} // namespace
