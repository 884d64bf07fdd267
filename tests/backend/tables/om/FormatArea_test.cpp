#include "backend/tables/om/FormatArea.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using IntGet = int (FormatArea::*)() const;
using IntSet = void (FormatArea::*)(int);
using StringGet = std::string (FormatArea::*)() const;
using StringSet = void (FormatArea::*)(std::string const&);

struct IntPair {
    IntGet get;
    IntSet set;
    int initial;
};
std::vector<IntPair> const Ints{
    {&FormatArea::getFontStyle, &FormatArea::setFontStyle, -1},
    {&FormatArea::getMarginLeft, &FormatArea::setMarginLeft, 6},
    {&FormatArea::getMarginRight, &FormatArea::setMarginRight, 2},
    {&FormatArea::getMarginTop, &FormatArea::setMarginTop, 2},
    {&FormatArea::getMarginBottom, &FormatArea::setMarginBottom, 2},
    {&FormatArea::getHorizontalAlignment, &FormatArea::setHorizontalAlignment, -1},
    {&FormatArea::getVerticalAlignment, &FormatArea::setVerticalAlignment, -1},
};

struct StringPair {
    StringGet get;
    StringSet set;
};
std::vector<StringPair> const Strings{
    {&FormatArea::getFontName, &FormatArea::setFontName},
    {&FormatArea::getTextColor, &FormatArea::setTextColor},
    {&FormatArea::getBackgroundColor, &FormatArea::setBackgroundColor},
    {&FormatArea::getAlternateTextColor, &FormatArea::setAlternateTextColor},
    {&FormatArea::getAlternateBackgroundColor, &FormatArea::setAlternateBackgroundColor},
};

TEST(FormatArea, LeftMarginIsSixAndTheOthersTwo) {
    FormatArea const format(FormatArea::Data);
    EXPECT_EQ(format.getMarginLeft(), 6);
    EXPECT_EQ(format.getMarginRight(), 2);
    EXPECT_EQ(format.getMarginTop(), 2);
    EXPECT_EQ(format.getMarginBottom(), 2);
}

TEST(FormatArea, FontSizeStartsAtZeroAndStyleAndAlignmentsAtMinusOne) {
    FormatArea const format(FormatArea::Data);
    EXPECT_EQ(format.getFontSize(), 0.0F);
    EXPECT_EQ(format.getFontStyle(), -1);
    EXPECT_EQ(format.getHorizontalAlignment(), -1);
    EXPECT_EQ(format.getVerticalAlignment(), -1);
}

TEST(FormatArea, StringsStartEmptyAndFlagsFalse) {
    FormatArea const format(FormatArea::Data);
    for (StringPair const& each : Strings) {
        EXPECT_EQ((format.*each.get)(), "");
    }
    EXPECT_FALSE(format.getUnderline());
    EXPECT_FALSE(format.getUseAltRowColors());
}

TEST(FormatArea, NumbersComeBackUnchangedAndApart) {
    FormatArea format(FormatArea::Data);
    for (int const base : {100, -100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max() - 10}) {
        int value = base;
        for (IntPair const& each : Ints) {
            (format.*each.set)(value++);
        }
        value = base;
        for (IntPair const& each : Ints) {
            EXPECT_EQ((format.*each.get)(), value++);
        }
    }
}

TEST(FormatArea, StringsComeBackUnchangedAndApart) {
    FormatArea format(FormatArea::Data);
    char letter = 'a';
    for (StringPair const& each : Strings) {
        (format.*each.set)(std::string("not a colour \0", 14) + letter++);
    }
    letter = 'a';
    for (StringPair const& each : Strings) {
        EXPECT_EQ((format.*each.get)(), std::string("not a colour \0", 14) + letter++);
    }
}

TEST(FormatArea, FontSizeComesBackUnchanged) {
    FormatArea format(FormatArea::Data);
    for (float const size : {9.25F, -1.0F, 0.1F, std::numeric_limits<float>::max()}) {
        format.setFontSize(size);
        EXPECT_EQ(format.getFontSize(), size);
    }
}

TEST(FormatArea, FlagsAreKeptApart) {
    FormatArea format(FormatArea::Data);
    format.setUnderline(true);
    EXPECT_TRUE(format.getUnderline());
    EXPECT_FALSE(format.getUseAltRowColors());
    format.setUseAltRowColors(true);
    format.setUnderline(false);
    EXPECT_FALSE(format.getUnderline());
    EXPECT_TRUE(format.getUseAltRowColors());
}

TEST(FormatArea, AreasAreNumberedFromTitleToTable) {
    std::vector<FormatArea::Area> const areas{FormatArea::Title,     FormatArea::Caption,      FormatArea::Corner,
                                              FormatArea::RowLabels, FormatArea::ColumnLabels, FormatArea::Data,
                                              FormatArea::Footnotes, FormatArea::Layers,       FormatArea::Table};
    int number = 0;
    for (FormatArea::Area const area : areas) {
        EXPECT_EQ(area, number++);
        EXPECT_EQ(FormatArea(area).getArea(), area);
    }
}

TEST(FormatArea, AreaHasThirtyTwoBitsAndAnyValue) {
    EXPECT_EQ(sizeof(FormatArea::Area), 4U);
    EXPECT_TRUE(std::is_signed_v<std::underlying_type_t<FormatArea::Area>>);
    for (int const value : {9, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(FormatArea(static_cast<FormatArea::Area>(value)).getArea(), value);
    }
}

TEST(FormatArea, HoldsOnePointer) { EXPECT_EQ(sizeof(FormatArea), sizeof(void*)); }

} // namespace
