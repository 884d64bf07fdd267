// Operations that had done half when there was no more memory.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmMessage.h"
#include "omcell/OmStringCell.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/TableProbe.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <string>
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
