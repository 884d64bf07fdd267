// Defects in what a table, its footnotes and a procedure do with the texts that they are handed.
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/ActingText.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/ForeignText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <ios>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::ActingText;
using omtest::Acts;
using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::CellsOf;
using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::SelfCloning;
using omtest::Text;

/// A table with a dimension, a procedure and a footnote: holders of texts.
struct Holders {
    OmPivotTable table{Text("title"), Text("template"), false};
    OmProcedure procedure{Text("first"), "en", "1252", "en_US"};
    OmFootnote footnote{};

    Holders() { table.AddDimension(Text("d")); }
};

/// One place that holds a text.
struct Place {
    char const* name;
    OmCellText const* (*read)(Holders& holders);
    void (*write)(Holders& holders, OmCellText const& text);
    bool clonesFirst = false; ///< whatever the texts are
};

std::ostream& operator<<(std::ostream& out, Place const& place) { return out << place.name; }

std::vector<Place> Places() {
    return {{"Cell", [](Holders& h) -> OmCellText const* { return h.table.Cell({2}); },
             [](Holders& h, OmCellText const& text) { h.table.Cell({2}, text); }},
            {"CornerText", [](Holders& h) -> OmCellText const* { return h.table.CornerText(); },
             [](Holders& h, OmCellText const& text) { h.table.CornerText(&text); }},
            {"Caption", [](Holders& h) -> OmCellText const* { return h.table.Caption(); },
             [](Holders& h, OmCellText const& text) { h.table.Caption(&text); }},
            {"TableTitle", [](Holders& h) -> OmCellText const* { return h.table.GetTableTitle(); },
             [](Holders& h, OmCellText const& text) { h.table.SetTableTitle(text); }},
            {"OutlineText", [](Holders& h) -> OmCellText const* { return h.procedure.Title(); },
             [](Holders& h, OmCellText const& text) { h.procedure.setOutlineText(text); }},
            {"FootnoteText", [](Holders& h) -> OmCellText const* { return h.footnote.Text(); },
             [](Holders& h, OmCellText const& text) { h.footnote.Text(text); }, true},
            {"FootnoteMarker", [](Holders& h) -> OmCellText const* { return h.footnote.Marker(); },
             [](Holders& h, OmCellText const& text) { h.footnote.Marker(&text); }, true},
            {"RegisteredMarker",
             [](Holders& h) -> OmCellText const* {
                 return h.table.Footnotes().empty() ? nullptr : h.table.Footnotes()[0].Marker();
             },
             [](Holders& h, OmCellText const& text) {
                 OmFootnote note(Text("note"));
                 h.table.Footnote(note, false);
                 h.table.Footnotes()[0].Marker(&text);
             },
             true},
            {"CategoryText", [](Holders& h) -> OmCellText const* { return h.table.Dimension(0).Root().Value().Text(); },
             [](Holders& h, OmCellText const& text) { h.table.Dimension(0).Root().Value().Text(text); }, true}};
}

class HeldText : public ::testing::TestWithParam<Place> {
protected:
    OmCellText const* Read() { return GetParam().read(holders); }
    void Write(OmCellText const& text) { GetParam().write(holders, text); }

    Acts acts{};
    ForeignLog log{};
    Holders holders{};
};

INSTANTIATE_TEST_SUITE_P(All, HeldText, ::testing::ValuesIn(Places()),
                         [](auto const& place) { return std::string(place.param.name); });

/// A text with parts, and a part of it.
struct PartedCase {
    std::function<std::unique_ptr<OmCellText>()> make;
    std::function<OmCellText const*(OmCellText const& held)> part;
    char const* reads;
};

OmCellText const* ComponentOf(OmCellText const& text, std::size_t position) {
    return dynamic_cast<OmComposite const&>(text).Components().Root().Child(position).Value();
}

std::unique_ptr<OmComposite> CompositeOf(std::vector<OmCellText const*> const& parts) {
    auto composite = std::make_unique<OmComposite>();
    for (OmCellText const* const part : parts) {
        composite->Append(*part);
    }
    return composite;
}

std::unique_ptr<OmComposite> AAndB() {
    OmStringCell const a("a");
    OmStringCell const b("b");
    return CompositeOf({&a, &b});
}

std::vector<PartedCase> PartedCases() {
    return {
        {[] { return AAndB(); }, [](OmCellText const& held) { return ComponentOf(held, 1); }, "b"},
        {[] {
             std::unique_ptr<OmComposite> const inner = AAndB();
             return CompositeOf({inner.get(), inner.get()});
         },
         [](OmCellText const& held) { return ComponentOf(*ComponentOf(held, 1), 0); }, "a"},
        {[] {
             auto message = std::make_unique<OmMessage>("{0} of {7}");
             message->Fill(0, Text("a"));
             message->Fill(7, Text("b"));
             return message;
         },
         [](OmCellText const& held) { return dynamic_cast<OmMessage const&>(held).Filler(7); }, "b"},
        {[] { return std::make_unique<OmValue>(1.5, "label"); },
         [](OmCellText const& held) { return &dynamic_cast<OmValue const&>(held).Value(); }, "1.5"},
        {[] { return std::make_unique<OmValue>(1.5, "label"); },
         [](OmCellText const& held) { return dynamic_cast<OmValue const&>(held).Label(); }, "label"},
        {[] { return std::make_unique<OmVariable>("name", "label"); },
         [](OmCellText const& held) { return &dynamic_cast<OmVariable const&>(held).Name(); }, "name"},
        {[] { return std::make_unique<OmVariable>("name", "label"); }, [](OmCellText const& held) { return &held; },
         "label"},
        {[] { return std::make_unique<OmStringCell>("plain"); }, [](OmCellText const& held) { return &held; }, "plain"},
    };
}

// --- a text is handed back to its holder -----------------------------------------------------------------------------

// The held text went first, and the part with it.
TEST_P(HeldText, OfOurKindsMayBeReplacedByItselfOrAPartOfIt) {
    AssertionCatcher const caught(AfterReport::Return);
    for (PartedCase const& parted : PartedCases()) {
        Write(*parted.make());
        Write(*parted.part(*Read()));
        ASSERT_NE(Read(), nullptr);
        EXPECT_EQ(Read()->AsString(), parted.reads);
    }
    EXPECT_EQ(caught.Reports(), std::vector<std::string>());
}

TEST_P(HeldText, PartAtAnyDepthIsFound) {
    int const depth = 100'000;
    auto* innermost = new OmComposite();
    OmComposite* text = innermost;
    for (int k = 0; k < depth; ++k) {
        auto* const outer = new OmComposite();
        OmCellText* const inner = text;
        outer->Components().AddChild(outer->Components().Root(), inner);
        text = outer;
    }
    innermost->Append(Text("deep"));
    Write(*text);
    delete text;
    OmCellText const* part = Read();
    for (int k = 0; k < depth; ++k) {
        part = static_cast<OmComposite const*>(part)->Components().Root().Child(0).Value();
    }
    Write(*part);
    EXPECT_EQ(Read()->AsString(), "deep");
}

#if OMTREE_HARDENED

TEST_P(HeldText, PartBesideAForeignOneIsReportedAndTheTextStays) {
    OmStringCell const a("a");
    ForeignText const foreign(log, "f");
    std::unique_ptr<OmComposite> const inner = CompositeOf({&a, &foreign});
    Write(*CompositeOf({&a, inner.get()}));
    OmCellText const* const held = Read();
    for (OmCellText const* const part :
         {ComponentOf(*held, 0), ComponentOf(*ComponentOf(*held, 1), 0), ComponentOf(*ComponentOf(*held, 1), 1)}) {
        if (GetParam().clonesFirst) {
            break;
        }
        AssertionCatcher const caught(AfterReport::Return);
        log.Take();
        Write(*part);
        ASSERT_EQ(caught.Failures().size(), 1U);
        EXPECT_EQ(caught.Failures()[0].condition.substr(caught.Failures()[0].condition.find(' ')), " != held");
        EXPECT_EQ(log.Take(), std::vector<std::string>());
        EXPECT_EQ(Read(), held);
    }
    EXPECT_EQ(Read()->AsString(), "aaf");
    if (GetParam().clonesFirst) {
        Write(*ComponentOf(*Read(), 0));
        EXPECT_EQ(Read()->AsString(), "a");
    }
}

TEST(ProcedureTitle, RefusedOutlineTextLeavesTheCommand) {
    ForeignLog log;
    OmProcedure procedure(ForeignText(log, "title"), "en", "1252", "en_US");
    procedure.SetCommand("command");
    AssertionCatcher const caught(AfterReport::Return);
    procedure.setOutlineText(*procedure.Title());
    EXPECT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(procedure.Command(), "command");
    EXPECT_EQ(procedure.Title()->AsString(), "title");
}

#endif

// A foreign text beside ours sees the order, so it is the class's own.
TEST_P(HeldText, ForeignPartOfTheNewTextSeesTheOldOneGoFirst) {
    ForeignText const foreign(log, "f");
    Write(Text("old"));
    OmCellText const* whileCloned = nullptr;
    acts.cloned = [&] { whileCloned = Read(); };
    ActingText const acting(acts);
    OmComposite* const text = new OmComposite();
    OmCellText* const part = new ActingText(acts);
    text->Components().AddChild(text->Components().Root(), part);
    Write(*text);
    delete text;
    EXPECT_EQ(whileCloned != nullptr, GetParam().clonesFirst);
    Write(Text("new"));
}

// --- a text is its own clone -----------------------------------------------------------------------------------------

TEST_P(HeldText, TextThatIsItsOwnCloneMayBeGivenTwice) {
    int destroyed = 0;
    auto* const text = new SelfCloning(destroyed);
    {
        AssertionCatcher const caught(AfterReport::Return);
        Write(*text);
        Write(*text);
        EXPECT_EQ(caught.Reports(), std::vector<std::string>());
    }
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(Read(), text);
    Write(Text("other"));
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(Read()->AsString(), "other");
}

TEST(TableFootnotes, MarkerThatIsItsOwnCloneMayBeRegisteredTwice) {
    int destroyed = 0;
    {
        Holders holders;
        auto* const marker = new SelfCloning(destroyed);
        alignas(OmFootnote) unsigned char storage[sizeof(OmFootnote)];
        auto* const note = new (storage) OmFootnote(Text("note"), marker, 0); // never destroyed: it shares the marker
        std::unique_ptr<OmCellText> const text(note->Text());
        holders.table.Footnote(*note, false);
        holders.table.Footnote(*note, false);
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(holders.table.Footnotes()[0].Marker(), marker);
        EXPECT_EQ(holders.table.Footnotes()[0].Count(), 2);
    }
    EXPECT_EQ(destroyed, 1);
}

// --- texts that use their holder while they are replaced -------------------------------------------------------------

TEST_P(HeldText, WhatACloneSetsIsReplacedByIt) {
    acts.cloned = [&] { Write(ActingText(acts, "inner")); };
    Write(Text("old"));
    Write(ActingText(acts, "outer"));
    EXPECT_EQ(Read()->AsString(), "outer");
    EXPECT_EQ(acts.alive, 1);
    Write(Text("last"));
    EXPECT_EQ(acts.alive, 0);
}

TEST_P(HeldText, WhatTheOldTextSetsWhileItGoesIsDestroyedOrStays) {
    acts.gone = [&] { Write(ActingText(acts, "inner")); };
    Write(ActingText(acts, "old"));
    Write(Text("outer"));
    ASSERT_NE(Read(), nullptr);
    EXPECT_EQ(Read()->AsString(), GetParam().clonesFirst ? "inner" : "outer");
    Write(Text("last"));
    EXPECT_EQ(acts.alive, 0);
}

TEST_P(HeldText, OldTextThatAsksForItselfWhileItGoesDoesNotFindItself) {
    OmCellText const* found = nullptr;
    OmCellText const* old = nullptr;
    acts.gone = [&] { found = Read(); };
    Write(ActingText(acts, "old"));
    old = Read();
    Write(Text("new"));
    EXPECT_NE(found, old);
    EXPECT_EQ(Read()->AsString(), "new");
}

TEST_P(HeldText, WhatAVisitedTextSetsStays) {
    bool const visits = !GetParam().clonesFirst && GetParam().name != std::string("OutlineText");
    acts.visited = [&] { Write(Text("inner")); };
    Write(ActingText(acts, "outer"));
    EXPECT_EQ(Read()->AsString(), visits ? "inner" : "outer");
    EXPECT_EQ(acts.alive, visits ? 0 : 1);
}

TEST_P(HeldText, WhatAFailingCloneSetStays) {
    Write(Text("old"));
    acts.cloned = [&] {
        Write(Text("inner"));
        throw std::bad_alloc();
    };
    EXPECT_THROW(Write(ActingText(acts, "outer")), std::bad_alloc);
    ASSERT_NE(Read(), nullptr);
    EXPECT_EQ(Read()->AsString(), "inner");
    EXPECT_EQ(acts.alive, 0);
}

// What was stored meanwhile was overwritten and never destroyed.
TEST(TableCells, CloneMayStoreIntoItsOwnEmptyPlace) {
    Acts acts;
    Holders holders;
    OmCellMetaData meta;
    meta.markers = {"m"};
    acts.cloned = [&] {
        holders.table.Cell({2}, ActingText(acts, "inner"));
        holders.table.Cell({2})->setMeta(&meta);
    };
    holders.table.Cell({2}, ActingText(acts, "outer"));
    EXPECT_EQ(CellsOf(holders.table), "(2)=outer");
    EXPECT_EQ(acts.alive, 1);
    EXPECT_EQ(holders.table.Cell({2})->getMarkers(), meta.markers);
    holders.table.deleteCell({2});
    EXPECT_EQ(acts.alive, 0);
}

// The metadata went to a text that was gone.
TEST(TableCells, VisitedCellMayBeDeletedOrReplaced) {
    OmBlank const inner; // the smallest kind, so its clone does not stand where the visited text stood
    for (bool const replaced : {true, false}) {
        Acts acts;
        Holders holders;
        OmCellMetaData meta;
        meta.markers = {"m"};
        holders.table.Cell({2}, Text("old"));
        holders.table.Cell({2})->setMeta(&meta);
        acts.visited = [&] {
            replaced ? static_cast<void>(holders.table.Cell({2}, inner)) : holders.table.deleteCell({2});
        };
        holders.table.Cell({2}, ActingText(acts, "outer"));
        EXPECT_EQ(acts.alive, 0);
        EXPECT_EQ(CellsOf(holders.table), replaced ? "(2)=" : "");
        if (replaced) {
            EXPECT_EQ(holders.table.Cell({2})->getMarkers(), meta.markers);
        }
    }
}

TEST(TableCells, VisitedCellMayAddADimension) {
    Acts acts;
    Holders holders;
    OmCellMetaData meta;
    meta.markers = {"m"};
    holders.table.Cell({2}, Text("old"));
    holders.table.Cell({2})->setMeta(&meta);
    acts.visited = [&] { holders.table.AddDimension(Text("new")); };
    holders.table.Cell({2}, ActingText(acts, "outer"));
    EXPECT_EQ(CellsOf(holders.table), "(2,0)=outer");
    EXPECT_EQ(holders.table.Cell({2, 0})->getMarkers(), meta.markers);
}

TEST(TableCells, CellClonedIntoItsOwnPlaceMayBeReplacedMeanwhile) {
    Acts acts;
    Holders holders;
    acts.cloned = nullptr;
    holders.table.Cell({2}, ActingText(acts, "old"));
    acts.cloned = [&] { holders.table.Cell({3}, ActingText(acts, "beside")); };
    holders.table.Cell({2}, holders.table.Cell({2}));
    EXPECT_EQ(CellsOf(holders.table), "(2)=old (3)=beside");
    EXPECT_EQ(acts.alive, 2);
}

// The third subscript was read from behind the index. What lies there is freed memory, filled here with a number that
// shows.
TEST(TableCells, PlaceIsFoundAgainByAWidenedIndex) {
    Acts acts;
    OmPivotTable table(Text("title"), Text("template"), false);
    for (int k = 0; k < 4; ++k) {
        table.AddDimension(Text("d"));
    }
    table.Cell({0, 0, 0, 0}, Text("first"));
    acts.cloned = [&] {
        table.AddDimension(Text("new"));
        std::vector<std::vector<int>> filled(64, std::vector<int>(6, 3));
        EXPECT_EQ(filled[63][5], 3);
    };
    table.Cell({1, 2, 3, 4}, ActingText(acts, "x"));
    EXPECT_EQ(CellsOf(table), "(0,0,0,0,0)=first (1,2,3,4,0)=x");
}

TEST(TableCells, DeletedCellMayEmptyTheNodesAboveIt) {
    for (bool const refill : {false, true}) {
        Acts acts;
        OmPivotTable table(Text("title"), Text("template"), false);
        for (int k = 0; k < 4; ++k) {
            table.AddDimension(Text("d"));
        }
        table.Cell({1, 2, 3, 4}, ActingText(acts, "x"));
        table.Cell({0, 2, 3, 4}, Text("same leaf"));
        table.Cell({0, 1, 3, 4}, Text("same node"));
        table.Cell({0, 0, 1, 4}, Text("node above"));
        table.Cell({0, 0, 0, 1}, Text("root"));
        acts.gone = [&] {
            for (std::vector<int> const& index :
                 std::vector<std::vector<int>>{{0, 2, 3, 4}, {0, 1, 3, 4}, {0, 0, 1, 4}, {0, 0, 0, 1}}) {
                table.deleteCell(index);
            }
            if (refill) {
                table.Cell({5, 2, 3, 4}, Text("new"));
            }
        };
        table.deleteCell({1, 2, 3, 4});
        EXPECT_EQ(CellsOf(table), refill ? "(5,2,3,4)=new" : "");
        table.Cell({1, 2, 3, 4}, Text("again"));
        EXPECT_EQ(CellsOf(table), refill ? "(1,2,3,4)=again (5,2,3,4)=new" : "(1,2,3,4)=again");
        EXPECT_EQ(acts.alive, 0);
    }
}

// --- footnotes -------------------------------------------------------------------------------------------------------

/// "a*1 b[m]*2"
std::string Shown(OmPivotTable const& table) {
    std::string shown;
    for (OmFootnote const& note : table.Footnotes()) {
        shown += shown.empty() ? "" : " ";
        shown += note.Text() != nullptr ? note.Text()->AsString() : "null";
        shown += note.Marker() != nullptr ? "[" + note.Marker()->AsString() + "]" : "";
        shown += "*" + std::to_string(note.Count());
    }
    return shown;
}

/// Registers five notes, which moves the records.
void AddFive(OmPivotTable& table, std::string* seen = nullptr) {
    if (seen != nullptr) {
        *seen = Shown(table);
    }
    for (char const* const text : {"1", "2", "3", "4", "5"}) {
        table.Footnote(OmFootnote(Text(text)), true);
    }
}

TEST(TableFootnotes, ClonedTextMayAddFootnotesAndSeesNoRecordWithoutText) {
    Acts acts;
    Holders holders;
    std::string seen;
    OmFootnote const note(ActingText(acts, "a"));
    acts.cloned = [&] { AddFive(holders.table, &seen); };
    EXPECT_EQ(holders.table.Footnote(note, false), 5);
    EXPECT_EQ(seen, "");
    EXPECT_EQ(Shown(holders.table), "1*1 2*1 3*1 4*1 5*1 a*1");
}

TEST(TableFootnotes, VisitedTextMayAddFootnotes) {
    Acts acts;
    Holders holders;
    OmStringCell const marker("m");
    OmFootnote const note(ActingText(acts, "a"), &marker, -3);
    acts.visited = [&] { AddFive(holders.table); };
    EXPECT_EQ(holders.table.Footnote(note, false), 0);
    EXPECT_EQ(Shown(holders.table), "a[m]*-3 1*1 2*1 3*1 4*1 5*1");
}

TEST(TableFootnotes, MarkerMayAddFootnotesWhileItIsClonedVisitedAndDestroyed) {
    for (std::function<void()> Acts::*const when : {&Acts::cloned, &Acts::visited, &Acts::gone}) {
        for (bool const isNew : {true, false}) {
            Acts acts;
            Holders holders;
            ActingText const marker(acts, "m");
            OmFootnote const note(Text("a"), &marker, 0);
            if (!isNew) {
                holders.table.Footnote(note, false);
            }
            acts.*when = [&] { AddFive(holders.table); };
            EXPECT_EQ(holders.table.Footnote(note, false), 0);
            acts.gone = nullptr;
            bool const added = !isNew || when != &Acts::gone;
            EXPECT_EQ(Shown(holders.table),
                      std::string(isNew ? "a[m]*1" : "a[m]*2") + (added ? " 1*1 2*1 3*1 4*1 5*1" : ""));
        }
    }
}

TEST(TableFootnotes, MarkerMayTakeItsOwnRecordAway) {
    for (std::function<void()> Acts::*const when : {&Acts::cloned, &Acts::visited}) {
        Acts acts;
        {
            Holders holders;
            ActingText const marker(acts, "m");
            OmFootnote const note(Text("a"), &marker, 0);
            holders.table.Footnote(OmFootnote(Text("before")), false);
            acts.*when = [&] {
                if (when == &Acts::cloned) {
                    holders.table.Footnotes().erase(1);
                } else {
                    holders.table.Footnotes().erase(0);
                }
            };
            int const number = holders.table.Footnote(note, false);
            EXPECT_EQ(number, when == &Acts::cloned ? 1 : 0);
            EXPECT_EQ(Shown(holders.table), when == &Acts::cloned ? "before*1" : "a[m]*1");
        }
        EXPECT_EQ(acts.alive, 0);
    }
}

TEST(TableFootnotes, FailingVisitTakesItsOwnRecordAwayAndNoOther) {
    Acts acts;
    Holders holders;
    OmFootnote const note(ActingText(acts, "a"));
    acts.visited = [&] {
        AddFive(holders.table);
        throw std::runtime_error("visit");
    };
    EXPECT_THROW(holders.table.Footnote(note, false), std::runtime_error);
    EXPECT_EQ(Shown(holders.table), "1*1 2*1 3*1 4*1 5*1");
    EXPECT_EQ(acts.alive, 1);
}

TEST(TableFootnotes, OwnRecordMayBeRegisteredByATextThatMovesIt) {
    for (bool const alwaysNew : {true, false}) {
        Acts acts;
        Holders holders;
        ActingText const marker(acts, "m");
        holders.table.Footnote(OmFootnote(Text("a"), &marker, 0), false);
        acts.cloned = [&] { AddFive(holders.table); };
        EXPECT_EQ(holders.table.Footnote(holders.table.Footnotes()[0], alwaysNew), alwaysNew ? 1 : 0);
        EXPECT_EQ(Shown(holders.table), alwaysNew ? "a[m]*1 a[m]*1 1*1 2*1 3*1 4*1 5*1" : "a[m]*2 1*1 2*1 3*1 4*1 5*1");
    }
}

TEST(TableFootnotes, CountStopsAtTheLargestNumber) {
    int const largest = std::numeric_limits<int>::max();
    int const smallest = std::numeric_limits<int>::min();
    Holders holders;
    OmFootnote const note(Text("a"));
    holders.table.Footnote(note, false);
    holders.table.Footnotes()[0].Count(largest - 1);
    holders.table.Footnote(note, false);
    EXPECT_EQ(holders.table.Footnotes()[0].Count(), largest);
    holders.table.Footnote(note, false);
    EXPECT_EQ(holders.table.Footnotes()[0].Count(), largest);
    EXPECT_EQ(holders.table.Footnote(OmFootnote(Text("b"), nullptr, smallest), false), 1);
    EXPECT_EQ(holders.table.Footnotes()[1].Count(), smallest);
    holders.table.Footnote(OmFootnote(Text("b")), false);
    EXPECT_EQ(holders.table.Footnotes()[1].Count(), smallest + 1);
}

// --- dimensions and trackers -----------------------------------------------------------------------------------------

TEST(TableDimensions, CopiedNameMayAddDimensionsToBothTables) {
    Acts acts;
    OmPivotTable source(Text("title"), Text("template"), false);
    OmPivotTable table(Text("title"), Text("template"), false);
    source.AddDimension(ActingText(acts, "a"));
    source.AddDimension(Text("b"));
    acts.cloned = [&] {
        for (int k = 0; k < 6; ++k) {
            source.AddDimension(Text("added"));
        }
        table.AddDimension(Text("own"));
    };
    table.CopyDimensions(source);
    std::string names;
    for (int k = 0; k < static_cast<int>(table.NDimensions()); ++k) {
        names += table.Dimension(k).Name().AsString() + " ";
    }
    EXPECT_EQ(names, "own a b ");
    EXPECT_EQ(source.NDimensions(), 8U);
}

BackendSettings Fast(bool unicode) {
    BackendSettings settings;
    settings.setFastTables(true);
    settings.setUnicode(unicode);
    return settings;
}

/// What may happen to a table while its texts get the tracker.
void ChangeEverything(OmPivotTable& table) {
    for (int k = 0; k < 6; ++k) {
        table.AddDimension(Text("added"));
    }
    OmDimension& first = table.Dimension(0);
    for (int k = 0; k < 9; ++k) {
        first.AddNewChild(first.Root(), Text("added"), 0, false);
    }
    AddFive(table);
    OmStringCell const text("other");
    table.SetTableTitle(text);
    table.Caption(&text);
    table.CornerText(&text);
    table.setBackendSettings(Fast(false));
}

TEST(TableSettings, TextMayChangeTheTableWhenItGetsTheTracker) {
    for (int which = 0; which < 6; ++which) {
        Acts acts;
        Acts still;
        auto const acting = [&](int place, std::string const& text) -> std::unique_ptr<OmCellText> {
            return std::make_unique<ActingText>(place == which ? acts : still, text);
        };
        OmPivotTable table(*acting(0, "title"), *acting(1, "template"), false);
        OmDimension& dimension = table.AddDimension(*acting(2, "d"));
        dimension.AddNewChild(dimension.Root(), *acting(3, "first"), 0, true);
        dimension.AddNewChild(dimension.Root().Child(0), Text("below"), 0, false);
        dimension.AddNewChild(dimension.Root(), Text("last"), 1, false);
        table.AddDimension(Text("second"));
        std::unique_ptr<OmCellText> const marker = acting(5, "m");
        table.Footnote(OmFootnote(*acting(4, "note"), marker.get(), 0), false);
        table.Footnote(OmFootnote(Text("note 2")), false);
        acts.visited = [&] { ChangeEverything(table); };
        table.setBackendSettings(Fast(true));
        EXPECT_FALSE(acts.visited);
        icuTracker* const tracker = table.getICUTracker();
        ASSERT_NE(tracker, nullptr);
        for (int k = 0; k < static_cast<int>(table.NDimensions()); ++k) {
            OmDimension::Tree::WalkPreOrder(table.Dimension(k).Root(), [&](OmDimension::ConstNode const& node) {
                // The program's own kind takes none from a visitor, only from whoever sets it.
                EXPECT_TRUE(node.Value().Text()->Tracker() == tracker || node.Value().Text()->AsString() == "added")
                    << which << node.Value().Text()->AsString();
                return true;
            });
        }
        EXPECT_EQ(table.Footnotes()[1].Text()->Tracker(), tracker);
        EXPECT_EQ(table.Footnotes().size(), 7U);
    }
}

TEST(TableSettings, LabelMayTakeItsOwnBranchAwayWhenItGetsTheTracker) {
    Acts acts;
    OmPivotTable table(Text("title"), Text("template"), false);
    OmDimension& dimension = table.AddDimension(Text("d"));
    OmDimension::Node const group = dimension.AddNewChild(dimension.Root(), Text("group"), 0, true);
    dimension.AddNewChild(group, ActingText(acts, "a"), 0, true);
    dimension.AddNewChild(group, Text("b"), 0, true);
    dimension.AddNewChild(dimension.Root(), Text("last"), 1, false);
    acts.visited = [&] {
        OmDimension::Node first = dimension.Root().Child(0);
        dimension.Delete(first);
    };
    table.setBackendSettings(Fast(true));
    EXPECT_EQ(acts.alive, 0);
    EXPECT_EQ(dimension.Root().ChildCount(), 1U);
    EXPECT_NE(table.getU8Tracker(), nullptr);
}

TEST(TableSettings, SecondTrackerIsNotMadeWhenATextTurnsFastTablesOffMeanwhile) {
    Acts acts;
    OmPivotTable table(Text("title"), Text("template"), false);
    table.Footnote(OmFootnote(ActingText(acts, "note")), false);
    acts.visited = [&] { table.setFastTable(false); };
    table.setBackendSettings(Fast(false));
    EXPECT_NE(table.getICUTracker(), nullptr);
    EXPECT_EQ(table.getU8Tracker(), nullptr);
    table.setBackendSettings(Fast(false));
    EXPECT_NE(table.getU8Tracker(), nullptr);
    EXPECT_NE(table.getU8Tracker(), table.getICUTracker());
}

// --- a table is given what is its own
// ---------------------------------------------------------------------------------

TEST(TableItself, MayBeGivenWhatIsItsOwn) {
    OmPivotTable table(Text("title"), Text("template"), false);
    OmDimension& dimension = table.AddDimension(Text("d"));
    dimension.Child(dimension.Root(), Text("a"), 0, false);
    table.AddDimension(table.Dimension(0));
    EXPECT_EQ(table.AddDimension(table.Dimension(0).Name()).Index(), 2);
    EXPECT_EQ(table.FindDimension(table.Dimension(1).Name()), 0);
    EXPECT_EQ(table.SizeVector(), (std::vector<int>{1, 1, 0}));
    EXPECT_EQ(omtest::WhatOf([&] { table.CopyDimensions(table); }),
              "OmPivotTable::CopyDimensions() -- _my->_dimensions.size() != 0, value 1 == 3, value 2 == 0");
    OmPivotTable empty(Text("title"), Text("template"), false);
    empty.CopyDimensions(empty);
    EXPECT_EQ(empty.NDimensions(), 0U);

    table.Cell({0, 0, 0}, Text("cell"));
    table.Cell({1, 0, 0}, table.Cell({0, 0, 0}));
    table.Cell({0, 0, 0}, *table.Dimension(0).Root().Child(0).Value().Text());
    EXPECT_EQ(CellsOf(table), "(0,0,0)=a (1,0,0)=cell");

    std::string const full(300, 'x');
    table.addMiscProperty(full);
    table.addMiscProperty(table.getMiscProperties());
    EXPECT_EQ(table.getMiscProperties(), full + "," + full);
    table.setTableCustomWidths({1, 2, 3});
    table.setTableCustomWidths(table.getTableCustomWidths());
    table.setTableCustomHeights(table.getTableCustomWidths());
    EXPECT_EQ(table.getTableCustomWidths(), (std::vector<unsigned int>{1, 2, 3}));
    EXPECT_EQ(table.getTableCustomHeights(), (std::vector<unsigned int>{1, 2, 3}));
    table.TableLocale(full);
    table.TableLocale(table.TableLocale());
    EXPECT_EQ(table.TableLocale(), full);

    BackendSettings settings;
    settings.setLocale(full);
    table.setBackendSettings(settings);
    table.setBackendSettings(table.getBackendSettings());
    EXPECT_EQ(table.getBackendSettings().getLocale(), full);
    table.setHelper(*table.Title());
    EXPECT_EQ(table.Title()->Tracker(), table.getICUTracker());
}

#if OMTREE_HARDENED
TEST(TableItself, IsNotGivenAFormatThatIsItsOwn) {
    OmPivotTable table(Text("title"), Text("template"), false);
    auto* const format = new FormatArea(FormatArea::Corner);
    table.setAreaFormat(format);
    AssertionCatcher const caught(AfterReport::Return);
    table.setAreaFormat(table.getAreaFormat(FormatArea::Corner));
    EXPECT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(table.getAreaFormat(FormatArea::Corner), format);
    auto* const hidden = new FormatArea(static_cast<FormatArea::Area>(9));
    table.setAreaFormat(hidden);
    table.setAreaFormat(hidden); // it takes its own place
    EXPECT_EQ(caught.Failures().size(), 1U);
}
#endif

TEST(TableItself, FormatKeepsWhatItIsGivenOfItsOwnAndNumbersAtTheirEnds) {
    int const largest = std::numeric_limits<int>::max();
    int const smallest = std::numeric_limits<int>::min();
    FormatArea format(static_cast<FormatArea::Area>(smallest));
    format.setFontName("a name that is too long to lie inside its string");
    format.setFontName(format.getFontName());
    EXPECT_EQ(format.getFontName(), "a name that is too long to lie inside its string");
    for (int const value : {largest, smallest}) {
        format.setMarginLeft(value);
        format.setFontStyle(value);
        format.setVerticalAlignment(value);
        EXPECT_EQ(format.getMarginLeft(), value);
        EXPECT_EQ(format.getFontStyle(), value);
        EXPECT_EQ(format.getVerticalAlignment(), value);
    }
    format.setFontSize(std::numeric_limits<float>::infinity());
    EXPECT_EQ(format.getFontSize(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(static_cast<int>(format.getArea()), smallest);
}

TEST(TableItself, TakesNumbersAtTheirEnds) {
    long const largest = std::numeric_limits<std::int32_t>::max();
    long const smallest = std::numeric_limits<std::int32_t>::min();
    OmPivotTable table(Text("title"), Text("template"), false);
    table.AddDimension(Text("d"));
    for (long const value : {largest, smallest}) {
        table.setStartColor(value);
        table.setEndColor(value);
        EXPECT_EQ(table.getStartColor(), value);
        EXPECT_EQ(table.getEndColor(), value);
        EXPECT_NE(omtest::WhatOf([&] { table.Dimension(static_cast<int>(value)); }), "nothing thrown");
        EXPECT_NE(omtest::WhatOf([&] { static_cast<void>(table.Size(static_cast<int>(value))); }), "nothing thrown");
    }
    EXPECT_EQ(table.Cell({static_cast<int>(largest)}), nullptr);
    BackendSettings settings;
    for (long const limit : {-1L, std::numeric_limits<long>::min()}) {
        settings.setMaxCells(limit);
        table.setBackendSettings(settings);
        table.Scratch(false);
        EXPECT_FALSE(table.Cell({0}, Text("x")));
        EXPECT_TRUE(table.IsScratched());
    }
    settings.setMaxCells(std::numeric_limits<long>::max());
    table.setBackendSettings(settings);
    EXPECT_TRUE(table.Cell({0}, Text("x")));
}

// --- the end of a table ----------------------------------------------------------------------------------------------

TEST(TableEnd, TextsThatGoMayStillAskTheTable) {
    for (int which = 0; which < 7; ++which) {
        Acts acts;
        Acts still;
        {
            auto const acting = [&](int place) { return std::make_unique<ActingText>(place == which ? acts : still); };
            OmPivotTable table(Text("title"), *acting(0), false);
            table.CornerText(acting(1).get());
            table.Caption(acting(2).get());
            table.SetTableTitle(*acting(3));
            std::unique_ptr<OmCellText> const marker = acting(5);
            table.Footnote(OmFootnote(*acting(4), marker.get(), 0), false);
            OmDimension& dimension = table.AddDimension(Text("d"));
            dimension.AddNewChild(dimension.Root(), *acting(6), 0, false);
            table.AddDimension(Text("e"));
            table.Cell({0, 0}, Text("cell"));
            acts.gone = [&] {
                EXPECT_TRUE(table.CornerText() == nullptr || which == 0 || table.CornerText()->AsString() == "acting");
                for (std::size_t k = 0; k < table.NDimensions(); ++k) {
                    EXPECT_NE(table.Dimension(static_cast<int>(k)).Name().AsString(), "");
                }
                Shown(table);
                AddFive(table);
                std::vector<int> const index(table.NDimensions(), 0);
                table.Cell(index);
                if (!index.empty()) {
                    table.Cell(index, Text("new"));
                    table.deleteCell(index);
                }
                EXPECT_NE(omtest::WhatOf([&] { table.Cell({0, 0, 0}); }), "nothing thrown");
                EXPECT_EQ(CellsOf(table), "");
            };
        }
        EXPECT_FALSE(acts.gone);
        EXPECT_EQ(acts.alive, 0);
        EXPECT_EQ(still.alive, 0);
    }
}

// The optimiser dropped what the destructor wrote last.
TEST(PartTitle, PointerToItIsNullAfterTheEnd) {
    alignas(OmHeading) unsigned char storage[sizeof(OmHeading)];
    auto* const part = new (storage) OmHeading(Text("title"));
    OmCellText* title = part->Title();
    std::size_t const place = sizeof(void*);
    ASSERT_EQ(std::memcmp(storage + place, &title, sizeof(title)), 0);
    OmOutputPart* const base = part;
    base->~OmOutputPart();
    void* left = storage;
    std::memcpy(&left, storage + place, sizeof(left));
    EXPECT_EQ(left, nullptr);
}

// --- dumps
// ------------------------------------------------------------------------------------------------------------

/// Sets everything that a program may set on a stream.
void Decorate(std::ostream& stream) {
    stream.width(30);
    stream.fill('*');
    stream.precision(2);
    stream.setf(std::ios::hex, std::ios::basefield);
    stream.setf(std::ios::internal, std::ios::adjustfield);
    stream.setf(std::ios::showbase | std::ios::showpos | std::ios::uppercase | std::ios::boolalpha);
}

// Base and capitals showed in the addresses, the width and what fills it in the first word.
TEST(Dumps, ReadTheSameWhateverIsSetOnTheStreamAndLeaveItSo) {
    OmPivotTable table(Text("title"), Text("template"), false);
    table.SetTableTitle(Text("T"));
    OmDimension& dimension = table.AddDimension(Text("d"));
    OmDimension::Node const group = dimension.Child(dimension.Root(), Text("group"), 31, true);
    group.Value().Sort(OmSort::Down);
    dimension.Child(group, Text("leaf"), 17, false);
    table.AddDimension(Text("e"));
    table.Cell({17, 11}, Text("cell"));
    table.Cell({300, 3}, OmNumber(255.0));
    OmStringCell const text("text");
    table.Caption(&text);
    table.CornerText(&text);
    table.Footnote(OmFootnote(text), false);
    OmCellMetaData meta;
    meta.footnotes = {16};
    dimension.Root().Value().Text()->setMeta(&meta);
    std::vector<std::function<void()>> const dumps{[&] { table.Print(); }, [&] { table.PrintCells(); },
                                                   [&] { group.Value().Print(3); },
                                                   [&] { dimension.Root().Value().Text()->Print(2); }};
    for (std::function<void()> const& dump : dumps) {
        std::string plain;
        {
            omtest::CapturedOutput const output;
            dump();
            plain = output.Text();
        }
        std::ios before(nullptr);
        before.copyfmt(std::cout);
        Decorate(std::cout);
        std::ios::fmtflags const flags = std::cout.flags();
        std::string decorated;
        {
            omtest::CapturedOutput const output;
            dump();
            decorated = output.Text();
        }
        EXPECT_EQ(std::cout.width(), 30);
        EXPECT_EQ(std::cout.fill(), '*');
        EXPECT_EQ(std::cout.precision(), 2);
        EXPECT_EQ(std::cout.flags(), flags);
        std::cout.copyfmt(before);
        std::cout.width(0);
        EXPECT_NE(plain, "");
        EXPECT_EQ(decorated, plain);
    }
}

} // namespace
