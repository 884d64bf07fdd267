#include "omcell/OmBlank.h"

#include "omcell/OmStringCell.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <memory>

TEST(OmBlank, IsBlankAndEmptyInEveryForm) {
    OmBlank const blank;
    EXPECT_TRUE(blank.IsBlank());
    EXPECT_EQ(blank.AsString(), "");
    EXPECT_EQ(blank.AsU8String(), "");
    EXPECT_EQ(blank.AsEngString(), "");
    EXPECT_EQ(blank.AsFormattedString(), "");
    EXPECT_EQ(blank.TextLength(), 0U);
    EXPECT_EQ(blank.NumericValue(), 0.0);
}

TEST(OmBlank, PrintsAsAnEmptyText) { EXPECT_EQ(omtest::PrintedBy(OmBlank(), 1), "  \"\""); }

TEST(OmBlank, BlanksAreEqual) { EXPECT_TRUE(OmCellText::Equal(OmBlank(), OmBlank())); }

TEST(OmBlank, EmptyStringCellIsNotABlank) {
    EXPECT_FALSE(OmStringCell("").IsBlank());
    EXPECT_FALSE(OmCellText::Equal(OmBlank(), OmStringCell("")));
    EXPECT_GT(OmBlank().Compare(OmStringCell("")), 0);
    EXPECT_LT(OmStringCell("").Compare(OmBlank()), 0);
}

TEST(OmBlank, ForeignTextWithTheSameCodeIsNotTakenForABlank) {
    omtest::ForeignLog log;
    omtest::ForeignText foreign(log, "");
    foreign.spec().orderCode = OmBlank::Order;
    EXPECT_LT(OmBlank().Compare(foreign), 0);
}

TEST(OmBlank, CloneIsBlankAndKeepsTheMetadata) {
    OmMemoryRegion arena(false);
    OmBlank blank;
    OmCellMetaData meta;
    meta.footnotes = {4};
    blank.setMeta(&meta);
    {
        std::unique_ptr<OmCellText> const clone(blank.Clone(&arena));
        EXPECT_TRUE(clone->IsBlank());
        EXPECT_EQ(clone->Footnotes(), std::vector<short>{4});
        EXPECT_EQ(arena.LiveBlocks(), 1U);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}
