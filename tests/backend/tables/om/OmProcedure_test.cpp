#include "backend/tables/om/OmProcedure.h"

#include "omcell/OmStringCell.h"
#include "tests/support/AssertionCatcher.h"
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

namespace {

using Calls = std::vector<std::string>;
using Mode = OmCellText::ModeType;

OmProcedure Made(OmCellText const& title) { return OmProcedure(title, "en", "1252", "en_US"); }

} // namespace

TEST(OmProcedure, AddsNoVirtualOperation) {
    EXPECT_TRUE(std::has_virtual_destructor_v<OmProcedure>);
    EXPECT_EQ(SlotOf(&OmProcedure::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmProcedure::setOutlineText), NoSlot);
    EXPECT_TRUE((std::is_base_of_v<OmHeading, OmProcedure>));
}

TEST(OmProcedure, TakesTheCommandFromTheTitleAndTheThreeStringsInOrder) {
    OmProcedure const procedure(OmStringCell("Cross tabulation"), "fr", "ibm-850", "fr_CA");
    EXPECT_EQ(procedure.Title()->AsString(), "Cross tabulation");
    EXPECT_EQ(procedure.Command(), "Cross tabulation");
    EXPECT_EQ(procedure.LanguageCode(), "fr");
    EXPECT_EQ(procedure.LocaleCodePage(), "ibm-850");
    EXPECT_EQ(procedure.LocaleName(), "fr_CA");
}

TEST(OmProcedure, StartsWithoutATranslatedCommandAndWithAllModesAtTwo) {
    OmProcedure const procedure = Made(OmStringCell("a"));
    EXPECT_EQ(procedure.TransCommand(), "");
    EXPECT_EQ(procedure.OutlineVarDisplay(), 2);
    EXPECT_EQ(procedure.OutlineValueDisplay(), 2);
    EXPECT_EQ(procedure.TableVarDisplay(), 2);
    EXPECT_EQ(procedure.TableValueDisplay(), 2);
    EXPECT_TRUE(procedure.Footnotes().empty());
}

TEST(OmProcedure, CommandsAreSetWithoutTouchingTheTitle) {
    OmProcedure procedure = Made(OmStringCell("a"));
    procedure.SetCommand("b");
    procedure.SetTransCommand("c");
    EXPECT_EQ(procedure.Command(), "b");
    EXPECT_EQ(procedure.TransCommand(), "c");
    EXPECT_EQ(procedure.Title()->AsString(), "a");
}

TEST(OmProcedure, DisplayModesAreFourFieldsOfTheirOwn) {
    OmProcedure procedure = Made(OmStringCell("a"));
    procedure.OutlineVarDisplay(OmCellText::NameMode);
    procedure.OutlineValueDisplay(OmCellText::LabelMode);
    procedure.TableVarDisplay(OmCellText::BothMode);
    procedure.TableValueDisplay(static_cast<Mode>(99)); // kept as it stands
    EXPECT_EQ(procedure.OutlineVarDisplay(), 0);
    EXPECT_EQ(procedure.OutlineValueDisplay(), 1);
    EXPECT_EQ(procedure.TableVarDisplay(), 3);
    EXPECT_EQ(procedure.TableValueDisplay(), 99);
}

// --- outline text ----------------------------------------------------------------------------------------------------

TEST(OmProcedure, OutlineTextChangesCommandAndTitle) {
    OmProcedure procedure = Made(OmStringCell("a"));
    procedure.SetTransCommand("t");
    procedure.setOutlineText(OmStringCell("b"));
    EXPECT_EQ(procedure.Command(), "b");
    EXPECT_EQ(procedure.Title()->AsString(), "b");
    EXPECT_EQ(procedure.TransCommand(), "t");
}

// Most of the library clones before it destroys.
TEST(OmProcedure, OutlineTextDestroysTheOldTitleBeforeItClonesTheNew) {
    ForeignLog log;
    ForeignText const text(log, "new");
    OmProcedure procedure = Made(ForeignText(log, "old"));
    log.Take();
    procedure.setOutlineText(text);
    EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{nullptr});
    EXPECT_EQ(log.Take(), (Calls{"new: AsString", "old': destroy", "new: Clone"}));
    EXPECT_EQ(static_cast<ForeignText const*>(procedure.Title())->name(), "new'");
}

TEST(OmProcedure, OutlineTextOutlivesTheTextItWasMadeFrom) {
    OmProcedure procedure = Made(OmStringCell("a"));
    procedure.setOutlineText(*std::make_unique<OmStringCell>("b"));
    EXPECT_EQ(procedure.Title()->AsString(), "b");
}

// The old title is gone by then; the procedure is left without one and can still be used and destroyed.
TEST(OmProcedure, OutlineTextThatCannotBeClonedLeavesNoTitle) {
    ForeignLog log;
    ForeignText const text(log, "new");
    {
        OmProcedure procedure = Made(ForeignText(log, "old"));
        log.clonesUntilFailure = 0;
        EXPECT_THROW(procedure.setOutlineText(text), std::bad_alloc);
        EXPECT_EQ(procedure.Title(), nullptr);
        log.clonesUntilFailure = -1;
        procedure.setOutlineText(text);
        EXPECT_EQ(procedure.Title()->AsString(), "new");
    }
    EXPECT_EQ(log.alive, 1);
}

// --- construction and shallow copies ---------------------------------------------------------------------------------

TEST(OmProcedure, ConstructionClonesTheTitleAndThenReadsIt) {
    ForeignLog log;
    ForeignText const title(log, "t");
    OmProcedure const procedure(title, "en", "1252", "en_US");
    EXPECT_EQ(log.Take(), (Calls{"t: Clone", "t: AsString"}));
}

TEST(OmProcedure, CopySharesTitleAndFootnotesAndTakesTheRestByValue) {
    OmProcedure procedure = Made(OmStringCell("a"));
    procedure.SetTransCommand("t");
    procedure.TableVarDisplay(OmCellText::BothMode);
    Undestroyed<OmProcedure> copy(procedure);
    EXPECT_EQ(copy->Title(), procedure.Title());
    EXPECT_EQ(&copy->Footnotes(), &procedure.Footnotes());
    procedure.SetCommand("b");
    procedure.SetTransCommand("u");
    procedure.TableVarDisplay(OmCellText::NameMode);
    EXPECT_EQ(copy->Command(), "a");
    EXPECT_EQ(copy->TransCommand(), "t");
    EXPECT_EQ(copy->LanguageCode(), "en");
    EXPECT_EQ(copy->LocaleCodePage(), "1252");
    EXPECT_EQ(copy->LocaleName(), "en_US");
    EXPECT_EQ(copy->TableVarDisplay(), OmCellText::BothMode);
}

TEST(OmProcedure, DestroyingOneOfACopiedPairDestroysWhatBothHold) {
    ForeignLog log;
    Undestroyed<OmProcedure> procedure(ForeignText(log, "t"), "en", "1252", "en_US");
    procedure->Footnotes().emplace_back(ForeignText(log, "n"));
    {
        OmProcedure const copy(*procedure);
        log.Take();
    }
    EXPECT_EQ(log.Take(), (Calls{"n': destroy", "t': destroy"}));
    EXPECT_EQ(log.alive, 0);
}

TEST(OmProcedure, AssignmentSharesAndFreesNothing) {
    ForeignLog log;
    OmProcedure procedure(ForeignText(log, "a"), "fr", "850", "fr_CA");
    procedure.OutlineVarDisplay(OmCellText::LabelMode);
    Undestroyed<OmProcedure> target(ForeignText(log, "b"), "en", "1252", "en_US");
    std::unique_ptr<OmCellText> const title(target->Title());
    std::unique_ptr<OmVector<OmFootnote>> const footnotes(&target->Footnotes());
    log.Take();
    *target = procedure;
    EXPECT_EQ(log.Take(), Calls{});
    EXPECT_EQ(title->AsString(), "b");
    EXPECT_EQ(target->Title(), procedure.Title());
    EXPECT_EQ(&target->Footnotes(), &procedure.Footnotes());
    EXPECT_EQ(target->Command(), "a");
    EXPECT_EQ(target->LocaleName(), "fr_CA");
    EXPECT_EQ(target->OutlineVarDisplay(), OmCellText::LabelMode);
}

#if OMTREE_HARDENED
TEST(OmProcedure, OwnTitleOfAForeignKindIsNoOutlineText) {
    ForeignLog log;
    OmProcedure procedure(ForeignText(log, "Averages"), "en", "1252", "en_US");
    omtest::AssertionCatcher const caught(omtest::AfterReport::Return);
    procedure.setOutlineText(*procedure.Title());
    ASSERT_EQ(caught.Failures().size(), 1u);
    EXPECT_EQ(caught.Failures()[0].condition, "title != held");
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/OmOutputPart");
    EXPECT_EQ(procedure.Title()->AsString(), "Averages");
}
#endif
