#include "omcell/OmMessage.h"

#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

using omtest::ForeignLog;
using omtest::ForeignText;

namespace {

OmNumber Percent(double value) {
    OmNumber::Format format;
    format.type = OmNumber::PercentFormat;
    format.decimals = 1;
    return OmNumber(value, format);
}

} // namespace

TEST(OmMessage, FillersShowInTheFormThatIsAskedFor) {
    OmMessage message("{0}: {1}");
    OmStringCell name("given");
    name.SetU8String("utf-8");
    name.SetEngString("english");
    message.Fill(0, name);
    message.Fill(1, Percent(5));
    EXPECT_EQ(message.AsString(), "given: 5");
    EXPECT_EQ(message.AsU8String(), "utf-8: 5");
    EXPECT_EQ(message.AsEngString(), "english: 5");
    EXPECT_EQ(message.AsFormattedString(), "given: 5.0%");
}

TEST(OmMessage, EnglishFormUsesTheEnglishPatternAndOnlyIt) {
    OmMessage message("{0} von {1}", "{0} of {1}");
    message.Fill(0, OmNumber(1));
    message.Fill(1, OmNumber(2));
    EXPECT_EQ(message.AsEngString(), "1 of 2");
    EXPECT_EQ(message.AsString(), "1 von 2");
    EXPECT_EQ(message.AsU8String(), "1 von 2");
    EXPECT_EQ(message.AsFormattedString(), "1 von 2");
    EXPECT_EQ(message.Pattern(), "{0} von {1}");
    EXPECT_EQ(message.EnglishPattern(), "{0} of {1}");
}

// A text with a brace in it, a file name say, must show as it is.
TEST(OmMessage, FillersAreNotReadForSlots) {
    OmMessage message("{0}{1}");
    message.Fill(0, OmStringCell("{1}{{"));
    message.Fill(1, OmStringCell("x"));
    EXPECT_EQ(message.AsString(), "{1}{{x");
}

TEST(OmMessage, MessagesNest) {
    OmMessage inner("<{0}>");
    inner.Fill(0, OmStringCell("a"));
    OmMessage outer("{0}{0}");
    outer.Fill(0, inner);
    inner.Fill(0, OmStringCell("b"));
    EXPECT_EQ(outer.AsString(), "<a><a>");
    EXPECT_EQ(outer.Filler(0)->AsString(), "<a>");
}

TEST(OmMessage, LongSlotNumbersDoNotOverflow) {
    std::size_t const most = std::numeric_limits<std::size_t>::max();
    std::string const beyond = std::to_string(most) + "0";
    OmMessage message("{" + std::to_string(most) + "} {" + beyond + "} {99999999999999999999999999999999999999999}");
    message.Fill(most, OmStringCell("last"));
    message.Fill(0, OmStringCell("first"));
    message.Fill(9, OmStringCell("nine"));
    EXPECT_EQ(message.AsString(), "last {" + beyond + "} {99999999999999999999999999999999999999999}");
}

// 2^64 wraps to 0.
TEST(OmMessage, NumberJustPastTheLargestOneIsNotSlotZero) {
    OmMessage message("{18446744073709551616}");
    message.Fill(0, OmStringCell("zero"));
    EXPECT_EQ(message.AsString(), "{18446744073709551616}");
}

TEST(OmMessage, FarSlotsTakeNoRoomForTheOnesBefore) {
    OmMemoryRegion arena(false);
    OmMessage message("{4000000000}", &arena);
    message.Fill(4000000000U, OmStringCell("far"));
    EXPECT_EQ(message.AsString(), "far");
    EXPECT_LT(arena.ReservedBytes(), 16384U);
}

TEST(OmMessage, FillerIsFoundByItsNumber) {
    OmMessage message("");
    for (std::size_t const slot : {5U, 1U, 3U}) {
        message.Fill(slot, OmNumber(static_cast<double>(slot)));
    }
    EXPECT_EQ(message.Filler(1)->AsString(), "1");
    EXPECT_EQ(message.Filler(3)->AsString(), "3");
    EXPECT_EQ(message.Filler(5)->AsString(), "5");
    EXPECT_EQ(message.Filler(0), nullptr);
    EXPECT_EQ(message.Filler(4), nullptr);
    EXPECT_EQ(message.Filler(6), nullptr);
}

TEST(OmMessage, FillingASlotAnewClonesBeforeItDestroys) {
    ForeignLog log;
    OmMessage message("{0}");
    message.Fill(0, ForeignText(log, "old"));
    ForeignText const fresh(log, "new");
    log.Take();
    message.Fill(0, fresh);
    EXPECT_EQ(log.Take({"Clone", "destroy"}), (std::vector<std::string>{"new: Clone", "old': destroy"}));
    EXPECT_EQ(message.AsString(), "new");
}

TEST(OmMessage, SlotMayBeFilledWithItsOwnFiller) {
    OmMessage message("{0}");
    message.Fill(0, OmStringCell("a"));
    message.Fill(0, *message.Filler(0));
    EXPECT_EQ(message.AsString(), "a");
    message.Fill(0, message);
    EXPECT_EQ(message.AsString(), "a");
}

TEST(OmMessage, FailingFillChangesNothing) {
    ForeignLog log;
    OmMessage message("{0}");
    message.Fill(0, OmStringCell("a"));
    log.clonesUntilFailure = 0;
    EXPECT_THROW(message.Fill(0, ForeignText(log, "x")), std::bad_alloc);
    EXPECT_THROW(message.Fill(1, ForeignText(log, "x")), std::bad_alloc);
    EXPECT_EQ(message.AsString(), "a");
    EXPECT_EQ(message.Filler(1), nullptr);
}

TEST(OmMessage, ComparesByPatternThenEnglishThenSlots) {
    OmMessage const a("a", "x");
    EXPECT_LT(a.Compare(OmMessage("b", "a")), 0);
    EXPECT_LT(a.Compare(OmMessage("a", "y")), 0);
    EXPECT_LT(OmMessage("a").Compare(a), 0);
    OmMessage one("{0}");
    OmMessage two("{0}");
    EXPECT_TRUE(OmCellText::Equal(one, two));
    one.Fill(0, OmNumber(9));
    EXPECT_GT(one.Compare(two), 0);
    two.Fill(0, OmNumber(10));
    EXPECT_LT(one.Compare(two), 0);
    EXPECT_GT(two.Compare(one), 0);
}

// The slot's number counts, not the place among the filled ones.
TEST(OmMessage, SameFillerInAnotherSlotIsAnotherMessage) {
    OmMessage one("{0}{1}");
    OmMessage two("{0}{1}");
    one.Fill(0, OmStringCell("a"));
    two.Fill(1, OmStringCell("a"));
    EXPECT_LT(one.Compare(two), 0);
    EXPECT_GT(two.Compare(one), 0);
}

TEST(OmMessage, LengthIsThatOfPatternAndFillers) {
    OmMessage message("{0}{0}");
    message.Fill(0, OmStringCell("abc"));
    EXPECT_EQ(message.TextLength(), 6U + 3U);
}

TEST(OmMessage, CloneHasItsOwnFillersInItsRegion) {
    OmMemoryRegion arena(false);
    auto message = std::make_unique<OmMessage>("{1}-{0}", "{0}+{1}");
    message->Fill(1, OmStringCell("one"));
    message->Fill(0, OmStringCell("zero"));
    {
        std::unique_ptr<OmCellText> const clone(message->Clone(&arena));
        message.reset();
        EXPECT_EQ(clone->AsString(), "one-zero");
        EXPECT_EQ(clone->AsEngString(), "zero+one");
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}
