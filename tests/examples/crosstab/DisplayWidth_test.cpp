#include "examples/crosstab/DisplayWidth.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace {

using crosstab::displayWidth;

TEST(DisplayWidth, LettersOfAlphabetsTakeOneColumn) {
    EXPECT_EQ(displayWidth("Titanic"), 7U);
    EXPECT_EQ(displayWidth("Zürich"), 6U);
    EXPECT_EQ(displayWidth("Ελλάδα"), 6U);
    EXPECT_EQ(displayWidth("Россия"), 6U);
}

TEST(DisplayWidth, EastAsianCharactersTakeTwo) {
    EXPECT_EQ(displayWidth("東京"), 4U);
    EXPECT_EQ(displayWidth("한국"), 4U);
    EXPECT_EQ(displayWidth("ひらカナ"), 8U);
    EXPECT_EQ(displayWidth("ＡＢ"), 4U);
    EXPECT_EQ(displayWidth("ｱｲ"), 2U); // the halfwidth forms
}

TEST(DisplayWidth, PictographsTakeTwo) { EXPECT_EQ(displayWidth("🦉🚢"), 4U); }

TEST(DisplayWidth, CombiningMarksTakeNone) {
    EXPECT_EQ(displayWidth("e\u0301te\u0301"), 3U);
    EXPECT_EQ(displayWidth("\u05D0\u05B8"), 1U);
    EXPECT_EQ(displayWidth("\u1112\u1161\u11AB"), 2U); // one syllable, spelled by its consonants and vowel
}

TEST(DisplayWidth, InvisibleFormatCharactersTakeNone) {
    EXPECT_EQ(displayWidth("a\u200Bb\uFEFFc\u200D"), 3U);
    EXPECT_EQ(displayWidth("❤\uFE0F"), 1U);
}

TEST(DisplayWidth, TheSoftHyphenTakesOneColumn) { EXPECT_EQ(displayWidth("\u00AD"), 1U); }

TEST(DisplayWidth, TheEndsOfRangesBelongToThem) {
    EXPECT_EQ(displayWidth(U'\u02FF'), 1U);
    EXPECT_EQ(displayWidth(U'\u0300'), 0U);
    EXPECT_EQ(displayWidth(U'\u036F'), 0U);
    EXPECT_EQ(displayWidth(U'\u0370'), 1U);
    EXPECT_EQ(displayWidth(U'\u10FF'), 1U);
    EXPECT_EQ(displayWidth(U'\u1100'), 2U);
    EXPECT_EQ(displayWidth(U'\u115F'), 2U);
    EXPECT_EQ(displayWidth(U'\u1160'), 0U);
    EXPECT_EQ(displayWidth(U'\U0003FFFD'), 2U);
    EXPECT_EQ(displayWidth(U'\U000E01EF'), 0U);
    EXPECT_EQ(displayWidth(U'\U0010FFFF'), 1U);
}

TEST(DisplayWidth, IllFormedBytesTakeTheColumnOfTheirReplacement) { EXPECT_EQ(displayWidth("a\xFF\xC3"), 3U); }

// wcwidth would give other answers in the C locale than in a UTF-8 one.
TEST(DisplayWidth, TheLocaleHasNoSay) {
    for (char const* const locale : {"C", "C.UTF-8", "POSIX"}) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
        EXPECT_EQ(displayWidth("東京e\u0301"), 5U) << locale;
    }
    std::setlocale(LC_ALL, "C");
}

} // namespace
