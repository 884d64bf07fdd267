// Footnotes of a table: numbers, counts and markers.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::ForeignLog;
using omtest::ForeignSpec;
using omtest::ForeignText;
using omtest::Text;
using Log = std::vector<std::string>;

class Table : public OmPivotTable {
public:
    Table() : OmPivotTable(Text("title"), Text("template"), false) {}

    /// Registers a note without marker.
    int Note(std::string const& text, bool alwaysNew = false, int count = 0) {
        return Footnote(OmFootnote(Text(text), nullptr, count), alwaysNew);
    }
    int Marked(std::string const& text, std::string const& marker) {
        OmStringCell const mark(marker);
        return Footnote(OmFootnote(Text(text), &mark, 0), false);
    }
    /// "a*2 b[m]*1": text, marker where there is one, count.
    std::string Shown() const {
        std::string shown;
        for (OmFootnote const& note : Footnotes()) {
            shown += shown.empty() ? "" : " ";
            shown += note.Text() != nullptr ? note.Text()->AsString() : "null";
            shown += note.Marker() != nullptr ? "[" + note.Marker()->AsString() + "]" : "";
            shown += "*" + std::to_string(note.Count());
        }
        return shown;
    }
};

TEST(PivotTableFootnotes, SameTextIsOneFootnote) {
    Table table;
    EXPECT_EQ(table.Note("a"), 0);
    EXPECT_EQ(table.Note("a"), 0);
    EXPECT_EQ(table.Note("a"), 0);
    EXPECT_EQ(table.Shown(), "a*3");
}

TEST(PivotTableFootnotes, AlwaysNewMakesARecordEachTime) {
    Table table;
    EXPECT_EQ(table.Note("a", true), 0);
    EXPECT_EQ(table.Note("a", true), 1);
    EXPECT_EQ(table.Note("a", true), 2);
    EXPECT_EQ(table.Shown(), "a*1 a*1 a*1");
}

TEST(PivotTableFootnotes, NumbersArePositionsInOrderOfFirstUse) {
    Table table;
    EXPECT_EQ(table.Note("b"), 0);
    EXPECT_EQ(table.Note("a"), 1);
    EXPECT_EQ(table.Note("b"), 0);
    EXPECT_EQ(table.Note("c"), 2);
    EXPECT_EQ(table.Shown(), "b*2 a*1 c*1");
}

TEST(PivotTableFootnotes, FirstOfEqualRecordsIsTaken) {
    Table table;
    table.Note("x");
    table.Note("a", true);
    table.Note("a", true);
    EXPECT_EQ(table.Note("a"), 1);
    EXPECT_EQ(table.Shown(), "x*1 a*2 a*1");
}

TEST(PivotTableFootnotes, MarkerReplacesTheStoredOne) {
    Table table;
    table.Marked("a", "x");
    EXPECT_EQ(table.Marked("a", "y"), 0);
    EXPECT_EQ(table.Shown(), "a[y]*2");
}

TEST(PivotTableFootnotes, MarkerIsAddedToARecordWithoutOne) {
    Table table;
    table.Note("a");
    table.Marked("a", "y");
    EXPECT_EQ(table.Shown(), "a[y]*2");
}

TEST(PivotTableFootnotes, NoteWithoutMarkerLeavesTheStoredOne) {
    Table table;
    table.Marked("a", "x");
    table.Note("a");
    EXPECT_EQ(table.Shown(), "a[x]*2");
}

TEST(PivotTableFootnotes, MarkersAndCountsTakeNoPartInTheSearch) {
    Table table;
    table.Marked("a", "x");
    table.Footnotes()[0].Count(40);
    EXPECT_EQ(table.Marked("a", "y"), 0);
    EXPECT_EQ(table.Marked("b", "y"), 1);
    EXPECT_EQ(table.Shown(), "a[y]*41 b[y]*1");
}

// A count that started at 1 would stay -5 and then become 2, or lose the sign.
TEST(PivotTableFootnotes, NegativeCountIsKeptAndCountedUpFrom) {
    Table table;
    EXPECT_EQ(table.Note("a", false, -5), 0);
    EXPECT_EQ(table.Shown(), "a*-5");
    EXPECT_EQ(table.Note("a"), 0);
    EXPECT_EQ(table.Shown(), "a*-4");
}

TEST(PivotTableFootnotes, NegativeCountGoesOnThroughZero) {
    Table table;
    table.Note("a", false, -1);
    table.Note("a");
    EXPECT_EQ(table.Shown(), "a*0");
    table.Note("a");
    EXPECT_EQ(table.Shown(), "a*1");
}

// The note's own count is taken only when it is negative and the record is new.
TEST(PivotTableFootnotes, NoteCountCountsOnlyInANewRecordAndOnlyBelowZero) {
    Table table;
    table.Note("a", false, 9);
    EXPECT_EQ(table.Shown(), "a*1");
    table.Note("a", false, -9);
    EXPECT_EQ(table.Shown(), "a*2");
    table.Note("a", true, -9);
    EXPECT_EQ(table.Shown(), "a*2 a*-9");
}

// The record asks; and it asks for the length first.
TEST(PivotTableFootnotes, StoredTextIsTheOneThatIsAsked) {
    ForeignLog log;
    Table table;
    table.Note("string cell");
    table.Footnote(OmFootnote(ForeignText(log, "longer")), false);
    table.Footnote(OmFootnote(ForeignText(log, "stored", "x")), false);
    OmFootnote const note(ForeignText(log, "note", "x"));
    log.Take();
    EXPECT_EQ(table.Footnote(note, false), 2);
    EXPECT_EQ(log.Take({"Compare"}), (Log{"stored'': Compare(note')"}));
}

TEST(PivotTableFootnotes, TextsThatCompareAsEqualButDifferInLengthAreTwo) {
    ForeignLog log;
    ForeignSpec spec{"a", "a"};
    spec.compare = static_cast<short>(0);
    Table table;
    table.Footnote(OmFootnote(ForeignText(log, spec)), false);
    spec.length = 9;
    EXPECT_EQ(table.Footnote(OmFootnote(ForeignText(log, spec)), false), 1);
}

TEST(PivotTableFootnotes, NoSearchIsMadeForANewRecord) {
    ForeignLog log;
    Table table;
    table.Footnote(OmFootnote(ForeignText(log, "a")), false);
    OmFootnote const note(ForeignText(log, "b"));
    log.Take();
    table.Footnote(note, true);
    EXPECT_EQ(log.Take({"TextLength", "Compare"}), Log());
}

TEST(PivotTableFootnotes, TextAndMarkerAreClonedIntoTheTableAndVisited) {
    ForeignLog log;
    Table table;
    OmMemoryRegion* const region = &table.AddDimension(Text("d")).Region();
    ForeignText const text(log, "t");
    ForeignText const marker(log, "m");
    OmFootnote const note(text, &marker, 0);
    log.Take();
    table.Footnote(note, false);
    EXPECT_EQ(log.cloneRegions, (std::vector<OmMemoryRegion*>{region, region}));
    EXPECT_EQ(log.Take(), (Log{"t': Clone", "t'': Accept", "m': Clone", "m'': Accept"}));
    EXPECT_EQ(table.Footnotes()[0].Region(), region);
}

TEST(PivotTableFootnotes, NewMarkerIsVisitedAndTheTextIsNotAgain) {
    ForeignLog log;
    Table table;
    ForeignText const text(log, "t");
    ForeignText const marker(log, "m");
    OmFootnote const note(text, &marker, 0);
    table.Footnote(note, false);
    log.Take();
    table.Footnote(note, false);
    EXPECT_EQ(log.Take({"Clone", "Accept", "destroy"}), (Log{"m': Clone", "m'': destroy", "m'': Accept"}));
}

TEST(PivotTableFootnotes, TextAndMarkerAreVisitedInTheirPlaceBeforeTheCountGoesUp) {
    ForeignLog log;
    Table table;
    Log seen;
    ForeignSpec spec{"", ""};
    spec.accept = [&](ForeignText& text, OmCellText::Visitor&) { seen.push_back(text.name() + ": " + table.Shown()); };
    spec.name = "t";
    spec.text = "text";
    ForeignText const text(log, spec);
    spec.name = "m";
    spec.text = "mark";
    ForeignText const marker(log, spec);
    OmFootnote const note(text, &marker, 0);
    table.Footnote(note, false);
    table.Footnote(note, false);
    EXPECT_EQ(seen, (Log{"t'': text*0", "m'': text[mark]*0", "m'': text[mark]*1"}));
    EXPECT_EQ(table.Shown(), "text[mark]*2");
}

// Appending moves the records, the one that was handed in among them.
TEST(PivotTableFootnotes, TablesOwnRecordCanBeRegistered) {
    Table table;
    for (char const* const text : {"a", "b", "c", "d"}) {
        table.Marked(text, "m");
    }
    EXPECT_EQ(table.Footnote(table.Footnotes()[1], true), 4);
    EXPECT_EQ(table.Footnote(table.Footnotes()[0], false), 0);
    EXPECT_EQ(table.Shown(), "a[m]*2 b[m]*1 c[m]*1 d[m]*1 b[m]*1");
}

TEST(PivotTableFootnotes, NoteWithoutTextMakesARecordWithoutText) {
    Table table;
    EXPECT_EQ(table.Footnote(OmFootnote(), false), 0);
    EXPECT_EQ(table.Note("a"), 1);
    EXPECT_EQ(table.Footnote(OmFootnote(), false), 0);
    EXPECT_EQ(table.Shown(), "null*2 a*1");
}

TEST(PivotTableFootnotes, ManyRecordsKeepTheirTexts) {
    Table table;
    for (int k = 0; k < 100; ++k) {
        EXPECT_EQ(table.Marked(std::to_string(k), "m" + std::to_string(k)), k);
    }
    for (int k = 0; k < 100; ++k) {
        EXPECT_EQ(table.Footnotes()[static_cast<std::size_t>(k)].Text()->AsString(), std::to_string(k));
        EXPECT_EQ(table.Note(std::to_string(k)), k);
    }
    EXPECT_EQ(&std::as_const(table).Footnotes(), &table.Footnotes());
}

// Half a record would answer later searches.
TEST(PivotTableFootnotes, FailingCloneLeavesNoRecord) {
    ForeignLog log;
    Table table;
    ForeignText const text(log, "t");
    ForeignText const marker(log, "m");
    OmFootnote const note(text, &marker, 0);
    int const before = log.alive;
    for (int clones = 0; clones < 2; ++clones) {
        log.clonesUntilFailure = clones;
        EXPECT_THROW(table.Footnote(note, false), std::bad_alloc);
        EXPECT_TRUE(table.Footnotes().empty());
        EXPECT_EQ(log.alive, before);
    }
    log.clonesUntilFailure = -1;
    EXPECT_EQ(table.Footnote(note, false), 0);
}

TEST(PivotTableFootnotes, FailingMarkerLeavesTheFoundRecordAsItWas) {
    ForeignLog log;
    Table table;
    table.Marked("t", "old");
    ForeignText const marker(log, "m");
    OmFootnote const note(Text("t"), &marker, 0);
    log.clonesUntilFailure = 0;
    EXPECT_THROW(table.Footnote(note, false), std::bad_alloc);
    EXPECT_EQ(table.Shown(), "t[old]*1");
}

TEST(PivotTableFootnotes, RemovedFlagIsKeptAndActedOnByNobody) {
    Table table;
    table.Note("a");
    EXPECT_FALSE(table.HasRemovedFootnotes());
    table.RemovedFootnotes(true);
    EXPECT_TRUE(table.HasRemovedFootnotes());
    EXPECT_EQ(table.Shown(), "a*1");
    table.RemovedFootnotes(false);
    EXPECT_FALSE(table.HasRemovedFootnotes());
}

TEST(PivotTableFootnotes, MarkersFlagCanOnlyBeRaised) {
    Table table;
    table.Marked("a", "m");
    EXPECT_FALSE(table.hasMarkers());
    table.setHasMarkers();
    EXPECT_TRUE(table.hasMarkers());
    table.setHasMarkers();
    EXPECT_TRUE(table.hasMarkers());
}

} // namespace
