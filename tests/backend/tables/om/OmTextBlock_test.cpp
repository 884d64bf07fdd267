#include "backend/tables/om/OmTextBlock.h"

#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <list>
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
using Lines = std::list<std::string>;

bool IsLog(std::string const& title) { return OmTextBlock(OmStringCell(title), "1252").IsLog(); }

} // namespace

TEST(OmTextBlock, AddsNoVirtualOperation) {
    EXPECT_TRUE(std::has_virtual_destructor_v<OmTextBlock>);
    EXPECT_EQ(SlotOf(&OmTextBlock::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmTextBlock::Size), NoSlot);
}

TEST(OmTextBlock, StartsWithoutLines) {
    OmTextBlock const block(OmStringCell("a"), "1252");
    EXPECT_EQ(block.Size(), 0U);
    EXPECT_TRUE(block.TextList().empty());
    EXPECT_EQ(block.Title()->AsString(), "a");
    EXPECT_EQ(block.LocaleCodePage(), "1252");
    static_assert(sizeof(block.Size()) == sizeof(std::uint64_t));
}

TEST(OmTextBlock, TakesTheBaseTheLinesTheFlagAndTheCodePage) {
    EXPECT_EQ(sizeof(OmTextBlock), sizeof(OmOutputPart) + sizeof(Lines) + sizeof(void*) + sizeof(std::string));
}

TEST(OmTextBlock, LinesAreFilledThroughTheListAndKeepTheirOrder) {
    OmTextBlock block(OmStringCell("a"), "1252");
    Lines& lines = block.TextList();
    lines.push_back("one");
    lines.push_back("");
    lines.push_front("zero");
    EXPECT_EQ(block.Size(), 3U);
    OmTextBlock const& readOnly = block;
    EXPECT_EQ(readOnly.TextList(), (Lines{"zero", "one", ""}));
    EXPECT_EQ(&readOnly.TextList(), &lines);
}

// --- the log ---------------------------------------------------------------------------------------------------------

TEST(OmTextBlock, TitledLogItIsALog) { EXPECT_TRUE(IsLog("Log")); }

TEST(OmTextBlock, AnyOtherTitleIsNoLog) {
    for (char const* const title : {"log", "LOG", "Log ", " Log", "Lo", "Logs", "", "Text"}) {
        EXPECT_FALSE(IsLog(title)) << title;
    }
    EXPECT_FALSE(IsLog(std::string("Log\0", 4)));
}

TEST(OmTextBlock, IsDecidedByTheStringOfTheTextGiven) {
    ForeignLog log;
    ForeignText const title(log, "t", "Log");
    OmTextBlock const block(title, "1252");
    EXPECT_TRUE(block.IsLog());
    EXPECT_EQ(log.Take(), (Calls{"t: Clone", "t: AsString"}));
}

TEST(OmTextBlock, StaysALogWhateverBecomesOfTheTitle) {
    ForeignLog log;
    OmTextBlock block(ForeignText(log, "t", "Log"), "1252");
    static_cast<ForeignText*>(block.Title())->spec().text = "Text";
    EXPECT_EQ(block.Title()->AsString(), "Text");
    EXPECT_TRUE(block.IsLog());
}

// --- shallow copies --------------------------------------------------------------------------------------------------

TEST(OmTextBlock, CopySharesTheTitleAndTakesTheLinesByValue) {
    OmTextBlock block(OmStringCell("Log"), "1252");
    block.TextList() = {"one", "two"};
    Undestroyed<OmTextBlock> copy(block);
    EXPECT_EQ(copy->Title(), block.Title());
    block.TextList().clear();
    EXPECT_EQ(copy->TextList(), (Lines{"one", "two"}));
    EXPECT_TRUE(copy->IsLog());
    EXPECT_EQ(copy->LocaleCodePage(), "1252");
    copy->TextList().clear();
}

TEST(OmTextBlock, DestroyingOneOfACopiedPairDestroysTheTitle) {
    ForeignLog log;
    Undestroyed<OmTextBlock> block(ForeignText(log, "t"), "1252");
    {
        OmTextBlock const copy(*block);
        log.Take();
    }
    EXPECT_EQ(log.Take(), Calls{"t': destroy"});
    EXPECT_EQ(log.alive, 0);
}

TEST(OmTextBlock, AssignmentSharesTheTitleAndFreesNothing) {
    ForeignLog log;
    OmTextBlock block(ForeignText(log, "a", "Log"), "850");
    block.TextList() = {"one"};
    Undestroyed<OmTextBlock> target(ForeignText(log, "b"), "1252");
    target->TextList() = {"two", "three"};
    std::unique_ptr<OmCellText> const title(target->Title());
    log.Take();
    *target = block;
    EXPECT_EQ(log.Take(), Calls{});
    EXPECT_EQ(title->AsString(), "b");
    EXPECT_EQ(target->Title(), block.Title());
    EXPECT_EQ(target->TextList(), Lines{"one"});
    EXPECT_TRUE(target->IsLog());
    EXPECT_EQ(target->LocaleCodePage(), "850");
    target->TextList().clear();
}
