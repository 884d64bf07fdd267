// Texts of a program's kind that use their holder while they are cloned, visited or destroyed: defects that were found,
// each by a test named for it.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMemoryRegion.h"
#include "omcell/OmMessage.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "tests/support/ActingText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>

using omtest::ActingText;
using omtest::Acts;
using omtest::CellsOf;
using omtest::Text;

// --- cells -----------------------------------------------------------------------------------------------------------

namespace {

/// Acts before its copy is made; an ActingText does so afterwards.
class ActingFirst final : public omtest::MuteText {
public:
    explicit ActingFirst(Acts& acts, OmMemoryRegion* region = nullptr) : MuteText(region), _acts(acts) {
        ++_acts.alive;
    }
    ~ActingFirst() override { --_acts.alive; }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        Acts& acts = _acts; // the act may destroy this text
        if (std::function<void()> const act = std::exchange(acts.cloned, nullptr)) {
            act();
        }
        return new (region) ActingFirst(acts, region);
    }

private:
    Acts& _acts;
};

} // namespace

// The clone came to lie where the cell had lain, and was taken for a cell that is its own clone.
TEST(CellStoredIntoItsOwnPlace, IsStoredAlsoWhenTheCellHasGoneAndItsStorageIsUsedAgain) {
    for (bool const isEmptied : {false, true}) {
        Acts acts;
        OmPivotTable table(Text("title"), Text("template"), false);
        table.AddDimension(Text("d"));
        table.Cell({0}, ActingFirst(acts));
        acts.cloned = [&] {
            if (isEmptied) {
                table.Cell({0}, nullptr);
            } else {
                table.Cell({0}, Text("meanwhile"));
            }
        };
        table.Cell({0}, table.Cell({0}));
        EXPECT_EQ(CellsOf(table), "(0)=mute");
        table.deleteCell({0});
        EXPECT_EQ(acts.alive, 0);
    }
}

// --- footnotes -------------------------------------------------------------------------------------------------------

// The marker was read when the call began, and cloned after it had gone.
TEST(OwnFootnoteRegisteredAnew, ShowsTheMarkerThatItHasWhenItsTextIsThere) {
    for (std::function<void()> Acts::*const when : {&Acts::cloned, &Acts::visited}) {
        for (bool const isTakenOut : {false, true}) {
            Acts acts;
            {
                OmPivotTable table(Text("title"), Text("template"), false);
                OmStringCell const marker("m");
                table.Footnote(OmFootnote(ActingText(acts, "a"), &marker, 0), false);
                acts.*when = [&] {
                    if (isTakenOut) {
                        table.Footnotes().erase(0);
                    } else {
                        OmStringCell const other("n");
                        table.Footnotes()[0].Marker(&other);
                    }
                };
                table.Footnote(table.Footnotes()[0], true);
                ASSERT_EQ(table.Footnotes().size(), isTakenOut ? 1U : 2U);
                OmFootnote const& made = table.Footnotes().back();
                EXPECT_EQ(made.Text()->AsString(), "a");
                EXPECT_EQ(made.Marker() != nullptr ? made.Marker()->AsString() : "none", isTakenOut ? "none" : "n");
            }
            EXPECT_EQ(acts.alive, 0);
        }
    }
}

// The new record's text came to lie where the old one's had lain, and was taken for it.
TEST(FootnoteTakenOutMeanwhile, IsNotMistakenForAnotherOneInItsPlace) {
    Acts acts;
    Acts others;
    {
        OmPivotTable table(Text("title"), Text("template"), false);
        acts.visited = [&] {
            table.Footnotes().erase(0);
            table.Footnote(OmFootnote(ActingText(others, "other")), true);
        };
        OmStringCell const marker("m");
        table.Footnote(OmFootnote(ActingText(acts, "taken out"), &marker, 0), true);
        ASSERT_EQ(table.Footnotes().size(), 1U);
        EXPECT_EQ(table.Footnotes()[0].Text()->AsString(), "other");
        EXPECT_EQ(table.Footnotes()[0].Marker(), nullptr);
        EXPECT_EQ(table.Footnotes()[0].Count(), 1);
    }
    EXPECT_EQ(acts.alive + others.alive, 0);
}

// Both records were made in one place.
TEST(HeadingsFootnote, MayAddOthersWhileItIsAppendedInsertedOrCopied) {
    for (int way = 0; way < 3; ++way) {
        for (std::size_t const before : {0U, 2U, 4U}) {
            Acts acts;
            {
                OmProcedure procedure(Text("p"), "", "", "");
                OmVector<OmFootnote>& notes = procedure.Footnotes();
                for (std::size_t k = 0; k < before; ++k) {
                    notes.emplace_back(Text("before"));
                }
                OmVector<OmFootnote> source;
                source.emplace_back(ActingText(acts, "a"));
                acts.cloned = [&] {
                    for (int k = 0; k < 5; ++k) {
                        notes.emplace_back(Text("meanwhile"));
                    }
                };
                if (way == 0) {
                    notes.push_back(source[0]);
                } else if (way == 1) {
                    notes.insert(0, source[0]);
                } else {
                    notes = source;
                }
                EXPECT_EQ(notes.size(), way == 2 ? 6U : before + 6U);
                EXPECT_EQ(notes[way == 1 ? 0 : notes.size() - 1].Text()->AsString(), "a");
                for (OmFootnote const& note : notes) {
                    EXPECT_NE(note.Text(), nullptr);
                }
            }
            EXPECT_EQ(acts.alive, 0);
        }
    }
}

TEST(HeadingsFootnote, MayMoveTheRecordThatItIsCopiedFrom) {
    Acts acts;
    OmVector<OmFootnote> notes;
    OmStringCell const marker("m");
    notes.emplace_back(ActingText(acts, "a"), &marker, 7);
    acts.cloned = [&] {
        for (int k = 0; k < 5; ++k) {
            notes.emplace_back(Text("meanwhile"));
        }
    };
    OmFootnote const copy(notes[0]);
    EXPECT_EQ(copy.Marker()->AsString(), "m");
    EXPECT_EQ(copy.Count(), 7);
}

// What was added was never destroyed.
TEST(HeadingsFootnote, MayAddOthersWhileTheHeadingEnds) {
    Acts acts;
    {
        OmProcedure procedure(Text("p"), "", "", "");
        procedure.Footnotes().emplace_back(ActingText(acts, "a"));
        acts.gone = [&] { procedure.Footnotes().emplace_back(ActingText(acts, "b")); };
    }
    EXPECT_EQ(acts.alive, 0);
}

// --- the end of a table ----------------------------------------------------------------------------------------------

// What was added where all had gone before was never destroyed.
TEST(TableThatEnds, TakesAlongWhatItsTextsAddMeanwhile) {
    for (int which = 0; which < 4; ++which) {
        Acts acts;
        Acts added;
        {
            OmPivotTable table(Text("title"), Text("template"), false);
            OmDimension& dimension = table.AddDimension(Text("d"));
            dimension.Child(dimension.Root(), ActingText(acts, "category"), 0, false);
            acts.gone = [&] {
                ActingText const text(added, "added");
                switch (which) {
                case 0:
                    table.CornerText(&text);
                    return;
                case 1:
                    table.SetTableTitle(text);
                    return;
                case 2:
                    table.Footnote(OmFootnote(text, &text, 0), true);
                    return;
                default:
                    table.AddDimension(text);
                }
            };
        }
        EXPECT_EQ(acts.alive, 0);
        EXPECT_EQ(added.alive, 0) << which;
    }
}

// --- texts with parts ------------------------------------------------------------------------------------------------

// It was given up by then, and what was added never destroyed.
TEST(PartInsideAPart, MayAddToTheOutermostTextWhileThatEnds) {
    Acts acts;
    auto* const outermost = new OmComposite;
    {
        OmMessage message("{0}");
        message.Fill(0, ActingText(acts, "part"));
        OmComposite between;
        between.Append(message);
        outermost->Append(between);
    }
    acts.gone = [&] { outermost->Append(ActingText(acts, "added")); };
    delete outermost;
    EXPECT_FALSE(acts.gone);
    EXPECT_EQ(acts.alive, 0);
}

// The text between had gone by then.
TEST(PartInsideAPart, MayUseEveryTextThatHoldsItWhileTheOutermostEnds) {
    Acts acts;
    auto outermost = std::make_unique<OmMessage>("{0}");
    {
        OmComposite between;
        between.Append(OmComposite());
        outermost->Fill(0, between);
    }
    auto* const between = dynamic_cast<OmComposite*>(const_cast<OmCellText*>(outermost->Filler(0)));
    auto* const inner = dynamic_cast<OmComposite*>(between->Components().Root().Child(0).Value());
    inner->Append(ActingText(acts, "part"));
    std::string seen;
    acts.gone = [&] {
        between->Append(ActingText(acts, "added"));
        inner->Append(ActingText(acts, "added too"));
        seen = between->AsString() + "," + inner->AsString();
    };
    outermost.reset();
    EXPECT_EQ(seen, "added,added too");
    EXPECT_EQ(acts.alive, 0);
}

// A clone was asked of a base class, and the number of a text that was not there any more.
TEST(PartOfAValueOrVariable, MayAskItForAnythingWhileItEnds) {
    for (bool const isValue : {true, false}) {
        for (bool const actsInLabel : {true, false}) {
            Acts acts;
            Acts still;
            auto const part = [&](bool isActing) { return std::make_unique<ActingText>(isActing ? acts : still); };
            std::unique_ptr<ActingText> const meant = part(!actsInLabel);
            std::unique_ptr<ActingText> const label = part(actsInLabel);
            OmLabelledText* const text = isValue ? static_cast<OmLabelledText*>(new OmValue(*meant, label.get()))
                                                 : new OmVariable(*meant, label.get());
            text->Mode(OmCellText::BothMode);
            std::string seen;
            acts.gone = [&] {
                std::unique_ptr<OmCellText> const clone(text->Clone(nullptr));
                EXPECT_EQ(clone->AsString(), text->AsString());
                EXPECT_EQ(clone->Compare(*text), 0);
                EXPECT_EQ(text->NumericValue(), 0.0);
                seen = "[" + text->AsString() + "]";
            };
            delete text;
            EXPECT_EQ(seen, actsInLabel ? "[]" : "[acting]");
            EXPECT_EQ(acts.alive + still.alive, 2);
        }
    }
}
