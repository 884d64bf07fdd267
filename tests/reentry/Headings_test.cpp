// Every pair of operations of a procedure heading, its footnotes and the parts around it, the inner one called by a
// text that the outer one clones, asks or destroys.
#include "backend/tables/om/OmFootnote.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/reentry/Reentry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::reentry::Changes;
using omtest::reentry::Driver;
using omtest::reentry::ExpectReadable;
using omtest::reentry::IsQuestion;
using omtest::reentry::Member;
using omtest::reentry::Stage;
using omtest::reentry::Tally;
using omtest::reentry::WildText;

/// A procedure with a wild title and two footnotes of wild texts and markers, and a record that stands in no list.
class World {
public:
    explicit World(Stage& itsStage) : stage(itsStage) {
        procedure = std::make_unique<OmProcedure>(Wild("title"), "en", "utf-8", "en_US");
        for (char const* const text : {"one", "two"}) {
            procedure->Footnotes().push_back(OmFootnote(Wild(text), Own("marker").get(), 1));
        }
        record = std::make_unique<OmFootnote>(Wild("record"), Own("marker").get(), 1);
        others.push_back(OmFootnote(Wild("other")));
    }

    WildText Wild(char const* text) const { return WildText(stage, text); }
    std::unique_ptr<WildText> Own(char const* text) const { return std::make_unique<WildText>(stage, text); }
    bool IsOver() const { return procedure == nullptr; }
    OmVector<OmFootnote>& Notes() const { return procedure->Footnotes(); }
    bool Has(char const* text) const {
        return std::any_of(Notes().begin(), Notes().end(),
                           [&](OmFootnote const& note) { return note.Text()->AsString() == text; });
    }

    void Check() const {
        ExpectReadable(stage, procedure->Title());
        for (OmVector<OmFootnote> const* const notes : std::vector<OmVector<OmFootnote> const*>{&Notes(), &others}) {
            for (OmFootnote const& note : *notes) {
                Check(note);
            }
        }
        Check(*record);
    }

    void Use() {
        procedure->setOutlineText(Wild("used"));
        EXPECT_EQ(procedure->Title()->AsString(), "used");
        EXPECT_EQ(procedure->Command(), "used");
        std::size_t const before = Notes().size();
        Notes().push_back(OmFootnote(Wild("used")));
        EXPECT_EQ(Notes().size(), before + 1);
        EXPECT_EQ(Notes().back().Text()->AsString(), "used");
        Notes().erase(0);
        record->Text(Wild("used"));
        EXPECT_EQ(record->Text()->AsString(), "used");
    }

    Stage& stage;
    bool isEnding = false;
    std::unique_ptr<OmProcedure> procedure{};
    std::unique_ptr<OmFootnote> record{};
    OmVector<OmFootnote> others{};

private:
    void Check(OmFootnote const& note) const {
        ExpectReadable(stage, note.Text());
        if (note.Marker() != nullptr) {
            ExpectReadable(stage, note.Marker());
        }
    }
};

using Row = omtest::reentry::Row<World>;

std::vector<Row> Rows() {
    auto const first = [](World& w, auto act) {
        if (!w.Notes().empty()) {
            act(w.Notes()[0]);
        }
    };
    return {
        {"set the outline text", "title", [](World& w) { w.procedure->setOutlineText(w.Wild("set")); },
         [](World& w) { return w.procedure->Title()->AsString() == "set"; }},
        {"set a string as outline text", "title", [](World& w) { w.procedure->setOutlineText(OmStringCell("string")); },
         [](World& w) { return w.procedure->Title()->AsString() == "string"; }},
        {"set the command", "command", [](World& w) { w.procedure->SetCommand(w.procedure->LocaleName()); },
         [](World& w) { return !w.procedure->Command().empty(); }},
        {"read", "",
         [](World& w) {
             if (w.procedure->Title() != nullptr) {
                 w.procedure->Title()->AsString();
             }
             for (OmFootnote const& note : w.Notes()) {
                 note.Text()->AsString();
             }
         }},
        {"append a footnote", "notes last", [](World& w) { w.Notes().push_back(OmFootnote(w.Wild("appended"))); },
         [](World& w) { return w.Has("appended"); }},
        {"append a string", "notes string", [](World& w) { w.Notes().emplace_back(OmStringCell("string")); },
         [](World& w) { return w.Has("string"); }},
        {"append many footnotes", "notes many",
         [](World& w) {
             for (int k = 0; k < 9; ++k) {
                 w.Notes().emplace_back(OmStringCell("many"));
             }
         },
         [](World& w) { return w.Has("many"); }},
        {"insert a footnote", "notes inserted",
         [](World& w) { w.Notes().insert(std::min<std::size_t>(1, w.Notes().size()), OmFootnote(w.Wild("inserted"))); },
         [](World& w) { return w.Has("inserted"); }},
        {"erase the first footnote", "notes",
         [](World& w) {
             if (!w.Notes().empty()) {
                 w.Notes().erase(0);
             }
         }},
        {"clear the footnotes", "notes", [](World& w) { w.Notes().clear(); }},
        {"assign footnotes", "notes", [](World& w) { w.Notes() = w.others; }},
        {"assign its footnotes to others", "others", [](World& w) { w.others = w.Notes(); }},
        {"copy the footnotes", "",
         [](World& w) {
             OmMemoryRegion region(false);
             OmVector<OmFootnote> const copy(w.Notes(), &region);
         }},
        {"swap the footnotes", "",
         [](World& w) {
             w.Notes().swap(w.others);
             w.Notes().swap(w.others);
         }},
        {"compare the footnotes", "", [](World& w) { static_cast<void>(w.Notes() == w.others); }},
        {"set a record's text", "record text", [](World& w) { w.record->Text(w.Wild("set")); },
         [](World& w) { return w.record->Text()->AsString() == "set"; }},
        {"set a record's own text", "record text", [](World& w) { w.record->Text(*w.record->Text()); }},
        {"set a record's marker", "record marker", [](World& w) { w.record->Marker(w.Own("set").get()); },
         [](World& w) { return w.record->Marker()->AsString() == "set"; }},
        {"take a record's marker away", "record marker", [](World& w) { w.record->Marker(nullptr); },
         [](World& w) { return w.record->Marker() == nullptr; }},
        {"assign a record", "record", [](World& w) { *w.record = OmFootnote(w.Wild("assigned")); }},
        {"assign a record of the list", "record",
         [first](World& w) { first(w, [&](OmFootnote& note) { *w.record = note; }); }},
        {"set a text in the list", "notes first",
         [first](World& w) { first(w, [&](OmFootnote& note) { note.Text(w.Wild("in the list")); }); }},
        {"set a marker in the list", "notes first",
         [first](World& w) { first(w, [&](OmFootnote& note) { note.Marker(w.Own("in the list").get()); }); }},
        {"make a text block", "", [](World& w) { OmTextBlock const block(w.Wild("Log"), "utf-8"); }},
        {"make a procedure", "", [](World& w) { OmProcedure const made(w.Wild("made"), "", "", ""); }},
        {"destroy the procedure",
         "all",
         [](World& w) {
             w.isEnding = true;
             delete w.procedure.get();
             static_cast<void>(w.procedure.release());
         },
         {},
         true},
    };
}

/// The title is the last that goes; the footnotes have gone then.
std::vector<Row> WhileThereAreFootnotes(std::vector<Row> rows) {
    for (Row& row : rows) {
        row.run = [run = row.run](World& w) {
            if (!w.isEnding || w.procedure->Title() != nullptr) {
                run(w);
            }
        };
    }
    return rows;
}

bool Is(Row const& row, char const* name) { return std::string(row.name) == name; }

char const* ReasonFor(Row const& outer, Row const& inner, Member member) {
    if (IsQuestion(member) && Changes(inner)) {
        return "a text that is asked changes nothing";
    }
    bool const isCloned = member == Member::Clone || member == Member::CloneDone;
    bool const copies = Is(outer, "assign footnotes") || Is(outer, "assign its footnotes to others") ||
                        Is(outer, "copy the footnotes") || Is(outer, "assign a record of the list");
    bool const takesOut = Is(inner, "erase the first footnote") || Is(inner, "clear the footnotes") ||
                          Is(inner, "assign footnotes") || Is(inner, "assign its footnotes to others") ||
                          Is(inner, "swap the footnotes") || Is(inner, "set a text in the list") ||
                          Is(inner, "set a marker in the list");
    if (copies && takesOut) {
        return "the record that is copied stays, with its texts";
    }
    bool const isInList = Is(outer, "set a text in the list") || Is(outer, "set a marker in the list");
    if (isCloned && isInList && std::string(inner.place).find("notes") == 0) {
        return "a text that is cloned into a record leaves that where it is";
    }
    bool const isOfProcedure =
        Is(inner, "set the outline text") || Is(inner, "set a string as outline text") || Is(inner, "set the command");
    if (Is(outer, "destroy the procedure") && isOfProcedure) {
        return "what a derived class adds to a part has ended when the texts of its base go";
    }
    return nullptr;
}

} // namespace

TEST(HeadingReentry, EveryPairLeavesAHeadingThatIsWhole) {
    Tally const tally = Driver<World>(WhileThereAreFootnotes(Rows()), ReasonFor,
                                      {Member::Clone, Member::CloneDone, Member::Compare, Member::TextLength,
                                       Member::AsString, Member::OrderCode, Member::Destroy})
                            .Run();
    tally.Print("headings");
    EXPECT_EQ(tally.pairs, 4550);
    EXPECT_GE(tally.Driven(), 1100);
}
