#include "backend/tables/om/OmHeading.h"

#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::NoSlot;
using omtest::SlotOf;
using omtest::Undestroyed;

using Calls = std::vector<std::string>;

TEST(OmHeading, AddsNoVirtualOperation) {
    EXPECT_TRUE(std::has_virtual_destructor_v<OmHeading>);
    EXPECT_EQ(SlotOf(&OmHeading::Accept), 2U);
    EXPECT_EQ(SlotOf(static_cast<OmVector<OmFootnote>& (OmHeading::*)()>(&OmHeading::Footnotes)), NoSlot);
}

TEST(OmHeading, IsTitledByACloneAndStartsWithoutFootnotes) {
    ForeignLog log;
    OmHeading const heading(ForeignText(log, "t"));
    EXPECT_EQ(static_cast<ForeignText const*>(heading.Title())->name(), "t'");
    EXPECT_TRUE(heading.Footnotes().empty());
    EXPECT_EQ(heading.Footnotes().Region(), OmMemoryRegion::DefaultHeap());
}

TEST(OmHeading, FootnotesAreOneListForReadingAndWriting) {
    OmHeading heading(OmStringCell("a"));
    heading.Footnotes().push_back(OmFootnote(OmStringCell("note")));
    OmHeading const& readOnly = heading;
    static_assert(std::is_same_v<decltype(readOnly.Footnotes()), OmVector<OmFootnote> const&>);
    EXPECT_EQ(&readOnly.Footnotes(), &heading.Footnotes());
    ASSERT_EQ(readOnly.Footnotes().size(), 1U);
    EXPECT_EQ(readOnly.Footnotes()[0].Text()->AsString(), "note");
}

TEST(OmHeading, FootnotesGoBeforeTheTitle) {
    ForeignLog log;
    ForeignText const title(log, "t");
    ForeignText const note(log, "n");
    auto heading = std::make_unique<OmHeading>(title);
    heading->Footnotes().emplace_back(note);
    log.Take();
    heading.reset();
    EXPECT_EQ(log.Take(), (Calls{"n': destroy", "t': destroy"}));
    EXPECT_EQ(log.alive, 2);
}

TEST(OmHeading, CopySharesTitleAndFootnotes) {
    ForeignLog log;
    OmHeading heading(ForeignText(log, "t"));
    heading.Footnotes().emplace_back(OmStringCell("note"));
    log.Take();
    Undestroyed<OmHeading> copy(heading);
    EXPECT_EQ(log.Take(), Calls{});
    EXPECT_EQ(copy->Title(), heading.Title());
    EXPECT_EQ(&copy->Footnotes(), &heading.Footnotes());
}

TEST(OmHeading, DestroyingOneOfACopiedPairDestroysWhatBothHold) {
    ForeignLog log;
    Undestroyed<OmHeading> heading(ForeignText(log, "t"));
    heading->Footnotes().emplace_back(ForeignText(log, "n"));
    {
        OmHeading const copy(*heading);
        log.Take();
    }
    EXPECT_EQ(log.Take(), (Calls{"n': destroy", "t': destroy"}));
    EXPECT_EQ(log.alive, 0);
}

// A usual assignment would free the title and the footnotes that it replaces.
TEST(OmHeading, AssignmentSharesAndFreesNothing) {
    ForeignLog log;
    OmHeading heading(ForeignText(log, "a"));
    Undestroyed<OmHeading> target(ForeignText(log, "b"));
    target->Footnotes().emplace_back(ForeignText(log, "n"));
    std::unique_ptr<OmCellText> const title(target->Title());
    std::unique_ptr<OmVector<OmFootnote>> const footnotes(&target->Footnotes());
    log.Take();
    *target = heading;
    EXPECT_EQ(log.Take(), Calls{});
    EXPECT_EQ(&target->Footnotes(), &heading.Footnotes());
    EXPECT_EQ(target->Title(), heading.Title());
    EXPECT_EQ((*footnotes)[0].Text()->AsString(), "n");
    EXPECT_EQ(title->AsString(), "b");
}
