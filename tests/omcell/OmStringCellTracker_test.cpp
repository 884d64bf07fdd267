// A string cell's UTF-8 form when its tracker says that the data is in a code page.
#include "omcell/OmMemoryRegion.h"
#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace {

constexpr char const* Latin9Bytes = "\xA4 caf\xE9";
constexpr char const* Latin9Text = "\xE2\x82\xAC caf\xC3\xA9";

icuTracker InCodePage(std::string locale) { return icuTracker({false, std::move(locale)}); }

TEST(OmStringCellTracker, GivenBytesAreConvertedFromTheTrackersCodePage) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmStringCell text(Latin9Bytes);
    text.SetTracker(&latin9);
    EXPECT_EQ(text.AsU8String(), Latin9Text);
    icuTracker japanese = InCodePage("ja_JP.Shift_JIS");
    OmStringCell other("\x93\xFA\x96\x7B");
    other.SetTracker(&japanese);
    EXPECT_EQ(other.AsU8String(), "\xE6\x97\xA5\xE6\x9C\xAC");
}

// The UTF-8 copy would be what a cell without a tracker gives.
TEST(OmStringCellTracker, GivenBytesComeBeforeTheUtf8Copy) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmStringCell text("caf\xE9");
    text.SetU8String("copy");
    text.SetTracker(&latin9);
    EXPECT_EQ(text.AsU8String(), "caf\xC3\xA9");
}

TEST(OmStringCellTracker, WithoutATrackerTheUtf8CopyIsGiven) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmStringCell text(Latin9Bytes);
    text.SetU8String("copy");
    EXPECT_EQ(text.AsU8String(), "copy");
    text.SetTracker(&latin9);
    text.SetTracker(nullptr);
    EXPECT_EQ(text.AsU8String(), "copy");
}

// The locale of Unicode data names a code page that its texts are not in.
TEST(OmStringCellTracker, UnicodeDataGivesTheUtf8Copy) {
    icuTracker unicode({true, "de_DE.ISO-8859-15"});
    OmStringCell text("caf\xE9");
    text.SetU8String("copy");
    text.SetTracker(&unicode);
    EXPECT_EQ(text.AsU8String(), "copy");
}

TEST(OmStringCellTracker, FlaggedTextIsNeverConverted) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmStringCell text(Latin9Bytes, nullptr, true);
    text.SetTracker(&latin9);
    EXPECT_EQ(text.AsU8String(), Latin9Bytes);
}

TEST(OmStringCellTracker, LocaleWithoutAKnownCodePageGivesTheUtf8Copy) {
    for (char const* const locale : {"", "de_DE", "de_DE.", "de_DE.nonsense", "de_DE.ISO-8859-15//IGNORE"}) {
        icuTracker tracker = InCodePage(locale);
        OmStringCell text("caf\xE9");
        text.SetU8String("copy");
        text.SetTracker(&tracker);
        EXPECT_EQ(text.AsU8String(), "copy") << locale;
        EXPECT_EQ(text.AsU8String(), "copy") << locale << ", again";
    }
}

TEST(OmStringCellTracker, IllFormedBytesGiveTheUtf8CopyAndTheNextTextIsConverted) {
    icuTracker japanese = InCodePage("ja_JP.Shift_JIS");
    OmStringCell broken("\x93\xFA\x96");
    broken.SetU8String("copy");
    broken.SetTracker(&japanese);
    EXPECT_EQ(broken.AsU8String(), "copy");
    OmStringCell whole("\x93\xFA");
    whole.SetTracker(&japanese);
    EXPECT_EQ(whole.AsU8String(), "\xE6\x97\xA5");
}

// Nothing is converted before it is asked for, and nothing of a conversion is kept.
TEST(OmStringCellTracker, ConversionChangesNeitherTheCopiesNorWhatGoesByThem) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmStringCell text("caf\xE9");
    OmStringCell const same("caf\xE9");
    text.SetTracker(&latin9);
    EXPECT_EQ(text.AsU8String(), "caf\xC3\xA9");
    EXPECT_EQ(text.AsString(), "caf\xE9");
    EXPECT_EQ(text.AsEngString(), "caf\xE9");
    EXPECT_EQ(text.TextLength(), 4U);
    EXPECT_EQ(text.Compare(same), 0);
    text.SetTracker(nullptr);
    EXPECT_EQ(text.AsU8String(), "caf\xE9");
}

TEST(OmStringCellTracker, ConvertedTextMayBeEmptyOrHoldZeroBytes) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmStringCell empty("");
    empty.SetU8String("copy");
    empty.SetTracker(&latin9);
    EXPECT_EQ(empty.AsU8String(), "");
    OmStringCell zeros(std::string("\xE9\0\xE9", 3));
    zeros.SetTracker(&latin9);
    EXPECT_EQ(zeros.AsU8String(), std::string("\xC3\xA9\0\xC3\xA9", 5));
}

TEST(OmStringCellTracker, CloneConvertsWhereItKeepsTheTracker) {
    icuTracker latin9 = InCodePage("de_DE.ISO-8859-15");
    OmMemoryRegion arena(false);
    std::unique_ptr<OmCellText> const text(new (&arena) OmStringCell(Latin9Bytes, &arena));
    text->SetTracker(&latin9);
    std::unique_ptr<OmCellText> const beside(text->Clone(&arena));
    std::unique_ptr<OmCellText> const outside(text->Clone(nullptr));
    EXPECT_EQ(beside->AsU8String(), Latin9Text);
    EXPECT_EQ(outside->AsU8String(), Latin9Bytes);
}

} // namespace
