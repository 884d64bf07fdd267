// Operations that had done half when there was no more memory.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmMessage.h"
#include "omcell/OmStringCell.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/FailingMalloc.h"
#include "tests/support/TableProbe.h"
#include "tests/support/TableSketch.h"
#include "tests/support/Undestroyed.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

using omtest::FailEachRequest;
using omtest::Heap;
using omtest::TableSketch;

namespace {

/// A text with parts, which takes memory to be told of a tracker.
class Parted {
public:
    Parted() : text("{1} of {2}") {
        text.Fill(1, OmStringCell("first"));
        text.Fill(2, OmStringCell("second"));
    }
    OmMessage text;
};

std::string String(OmCellText const* text) { return text != nullptr ? text->AsString() : "none"; }

/// For a part that must not be destroyed, as another one shares what it has; its strings cannot be given back.
void Keep(void const* part) {
    static auto* const kept = new std::vector<void const*>(); // never ends, so that leak checkers find the parts
    kept->push_back(part);
}

} // namespace

TEST(NoMemory, ADimensionWhoseNameCannotBeTrackedIsNotAdded) {
    Parted const name;
    TableSketch sketch;
    EXPECT_GT(FailEachRequest([&] { sketch.table.AddDimension(name.text); },
                              [&] { EXPECT_EQ(sketch.table.NDimensions(), 0U); }),
              0);
    EXPECT_EQ(sketch.table.NDimensions(), 1U);
}

TEST(NoMemory, ATextThatCannotBeTrackedTakesNoPlace) {
    Parted const parted;
    TableSketch sketch;
    sketch.Dimension("d", "a b");
    OmPivotTable& table = sketch.table;
    std::vector<int> const index{1};
    OmStringCell const old("old");
    OmFootnote const note(OmStringCell("note"), &parted.text, 0);
    table.SetTableTitle(old);
    table.Footnote(OmFootnote(OmStringCell("note"), &old, 0), true);
    EXPECT_GT(FailEachRequest([&] { table.Cell(index, parted.text); }, [&] { EXPECT_EQ(table.Cell(index), nullptr); }),
              0);
    EXPECT_GT(FailEachRequest([&] { table.Caption(&parted.text); }, [&] { EXPECT_EQ(table.Caption(), nullptr); }), 0);
    EXPECT_GT(FailEachRequest([&] { table.SetTableTitle(parted.text); },
                              [&] { EXPECT_EQ(String(table.GetTableTitle()), "old"); }),
              0);
    EXPECT_GT(FailEachRequest([&] { table.Footnote(note, false); },
                              [&] { EXPECT_EQ(String(table.Footnotes()[0].Marker()), "old"); }),
              0);
    EXPECT_EQ(String(table.Footnotes()[0].Marker()), "first of second");
}

TEST(NoMemory, AFootnoteThatCannotBeAssignedWholeIsAsBefore) {
    OmFootnote const source(OmStringCell("new text"), nullptr, 7);
    Parted const parted;
    OmFootnote const marked(parted.text, &parted.text, 7);
    for (OmFootnote const* const from : {&source, &marked}) {
        OmFootnote note(OmStringCell("old text"), nullptr, 1);
        FailEachRequest([&] { note = *from; }, [&] { EXPECT_EQ(String(note.Text()), "old text"); });
        EXPECT_EQ(note.Count(), 7);
        EXPECT_EQ(String(note.Marker()), String(from->Marker()));
    }
}

// The comma used to stay behind.
TEST(NoMemory, APropertyThatCannotBeAddedLeavesNoComma) {
    TableSketch sketch;
    sketch.table.addMiscProperty("short");
    std::string const property(200, 'p');
    EXPECT_GT(FailEachRequest([&] { sketch.table.addMiscProperty(property); },
                              [&] { EXPECT_EQ(sketch.table.getMiscProperties(), "short"); }),
              0);
    EXPECT_EQ(sketch.table.getMiscProperties(), "short," + property);
}

TEST(NoMemory, DimensionsThatCannotAllBeCopiedAreNotThere) {
    TableSketch source;
    source.Dimension("d", "a b");
    source.Dimension("e", "c G(f)");
    TableSketch target;
    EXPECT_GT(FailEachRequest([&] { target.table.CopyDimensions(source.table); },
                              [&] { EXPECT_EQ(target.table.NDimensions(), 0U); }),
              1);
    ASSERT_EQ(target.table.NDimensions(), 2U);
    target.Put({1, 1}, "cell");
    EXPECT_EQ(omtest::CellsOf(target.table), "(1,1)=cell");
}

TEST(NoMemory, LabelsWithoutATrackerGetItFromTheNextSettings) {
    Parted const label;
    BackendSettings settings;
    settings.setLocale("en_US.UTF-8, or a name that is longer than what a string holds");
    for (long allowed = 0;; ++allowed) {
        TableSketch sketch;
        OmDimension& dimension = sketch.Dimension("d", "a b");
        dimension.AddNewChild(dimension.Root(), label.text, 2, false);
        sketch.table.Footnote(OmFootnote(label.text), true);
        Heap().once = true;
        Heap().untilFailure = allowed;
        bool thrown = false;
        try {
            sketch.table.setBackendSettings(settings);
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
        Heap().untilFailure = -1;
        if (!thrown) {
            EXPECT_GT(allowed, 4);
            break;
        }
        sketch.table.setBackendSettings(settings);
        icuTracker const* const tracker = sketch.table.getICUTracker();
        ASSERT_NE(tracker, nullptr);
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(dimension.Root().Child(k).Value().Text()->Tracker(), tracker) << allowed;
        }
        EXPECT_EQ(label.text.Tracker(), nullptr);
        EXPECT_EQ(sketch.table.Footnotes()[0].Text()->Tracker(), tracker) << allowed;
    }
    Heap().once = false;
}

TEST(NoMemory, SettingsThatCannotBeCopiedAreNotTakenByHalf) {
    TableSketch sketch;
    BackendSettings settings;
    sketch.table.setBackendSettings(settings);
    settings.setMaxCells(7);
    settings.setLocale("a name that is longer than what a string holds");
    EXPECT_GT(FailEachRequest([&] { sketch.table.setBackendSettings(settings); },
                              [&] { EXPECT_GT(sketch.table.getBackendSettings().getMaxCells(), 7); }),
              0);
    EXPECT_EQ(sketch.table.getBackendSettings().getMaxCells(), 7);
}

// The base of the copy used to take the shared title with it.
TEST(NoMemory, APartThatCannotBeCopiedWholeLeavesTheSourceItsTitle) {
    std::string const text(200, 't');
    OmTextBlock block(OmStringCell("block"), text);
    block.TextList().push_back(text);
    std::unique_ptr<omtest::Undestroyed<OmTextBlock>> blockCopy;
    EXPECT_GT(
        FailEachRequest([&] { blockCopy = std::make_unique<omtest::Undestroyed<OmTextBlock>>(std::as_const(block)); },
                        [&] { EXPECT_EQ(String(block.Title()), "block"); }),
        2);
    EXPECT_EQ((*blockCopy)->Title(), block.Title());
    EXPECT_EQ((*blockCopy)->TextList(), block.TextList());
    EXPECT_EQ((*blockCopy)->LocaleCodePage(), text);
    (*blockCopy)->TextList().clear();
    Keep(&**blockCopy.release()); // its code page cannot be given back

    OmProcedure procedure(OmStringCell("procedure"), text, text, text);
    procedure.Footnotes().push_back(OmFootnote(OmStringCell("note")));
    procedure.TableVarDisplay(OmCellText::BothMode);
    std::unique_ptr<omtest::Undestroyed<OmProcedure>> copy;
    EXPECT_GT(
        FailEachRequest([&] { copy = std::make_unique<omtest::Undestroyed<OmProcedure>>(std::as_const(procedure)); },
                        [&] {
                            EXPECT_EQ(String(procedure.Title()), "procedure");
                            EXPECT_EQ(String(procedure.Footnotes()[0].Text()), "note");
                        }),
        2);
    EXPECT_EQ((*copy)->Title(), procedure.Title());
    EXPECT_EQ((*copy)->LocaleName(), text);
    EXPECT_EQ((*copy)->TableVarDisplay(), OmCellText::BothMode);
    Keep(&**copy.release());
}

TEST(NoMemory, APartThatCannotBeAssignedWholeKeepsItsOwnTitle) {
    std::string const text(200, 't');
    OmTextBlock const source(OmStringCell("source"), text);
    auto target = std::make_unique<OmTextBlock>(OmStringCell("target"), "");
    std::unique_ptr<OmCellText> const own(target->Title());
    EXPECT_GT(FailEachRequest([&] { *target = source; }, [&] { EXPECT_EQ(target->Title(), own.get()); }), 0);
    EXPECT_EQ(target->Title(), source.Title());
    EXPECT_EQ(target->LocaleCodePage(), text);
    Keep(target.release());

    OmProcedure const other(OmStringCell("source"), text, text, text);
    auto procedure = std::make_unique<OmProcedure>(OmStringCell("target"), "", "", "");
    std::unique_ptr<OmCellText> const ownTitle(procedure->Title());
    OmVector<OmFootnote>* const ownNotes = &procedure->Footnotes();
    EXPECT_GT(FailEachRequest([&] { *procedure = other; }, [&] { EXPECT_EQ(procedure->Title(), ownTitle.get()); }), 0);
    EXPECT_EQ(procedure->Title(), other.Title());
    EXPECT_EQ(procedure->LanguageCode(), text);
    delete ownNotes;
    Keep(procedure.release());
}

TEST(NoMemory, AnOutlineTextThatCannotBeTakenLeavesTheCommand) {
    OmProcedure procedure(OmStringCell("old"), "", "", "");
    Parted const text;
    EXPECT_GT(FailEachRequest([&] { procedure.setOutlineText(text.text); },
                              [&] {
                                  EXPECT_EQ(procedure.Command(), "old");
                                  EXPECT_EQ(String(procedure.Title()), "old");
                              }),
              0);
    EXPECT_EQ(procedure.Command(), "first of second");
}

// A refusal inside of the C library used to pass for an unknown code page, for good.
TEST(NoMemory, ATrackerThatCannotOpenAConverterTriesAgain) {
    std::pair<bool, std::string> const latin9{false, "de_DE.ISO-8859-15"};
    icuTracker const loaded(latin9);
    std::string out;
    ASSERT_TRUE(loaded.ToU8("caf\xE9", out));
    for (long allowed = 0;; ++allowed) {
        icuTracker const tracker(latin9);
        omtest::mallocBooks.failed = false;
        omtest::mallocBooks.once = true;
        omtest::mallocBooks.untilFailure = allowed;
        bool thrown = false;
        bool converted = false;
        try {
            converted = tracker.ToU8("caf\xE9", out);
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
        omtest::mallocBooks.untilFailure = -1;
        EXPECT_NE(converted, thrown) << allowed;
        EXPECT_TRUE(tracker.ToU8("caf\xE9", out)) << allowed;
        if (!omtest::mallocBooks.failed) {
            EXPECT_GT(allowed, 4);
            break;
        }
    }
    omtest::mallocBooks.once = false;
}
