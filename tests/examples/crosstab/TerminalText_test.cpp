#include "examples/crosstab/TerminalText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace crosstab;
using Lines = std::vector<std::string>;

std::string aligned(std::string const& text, std::size_t width, Side side) {
    std::string out = "<";
    appendAligned(out, text, width, side);
    return out + '>';
}

TEST(LinesOf, ATextThatFitsStaysWhole) { EXPECT_EQ(linesOf("one two", 7), Lines{"one two"}); }

TEST(LinesOf, AnEmptyTextIsOneEmptyLine) { EXPECT_EQ(linesOf("", 7), Lines{""}); }

TEST(LinesOf, BreaksAtTheLastBlankThatFits) {
    EXPECT_EQ(linesOf("one two three", 7), (Lines{"one two", "three"}));
    EXPECT_EQ(linesOf("one two three", 6), (Lines{"one", "two", "three"}));
}

TEST(LinesOf, AWordThatIsTooWideStaysWhole) {
    EXPECT_EQ(linesOf("a incomprehensible b", 6), (Lines{"a", "incomprehensible", "b"}));
}

TEST(LinesOf, WideCharactersCountDouble) { EXPECT_EQ(linesOf("東京 大阪", 8), (Lines{"東京", "大阪"})); }

TEST(LinesOf, LineBreaksOfTheTextAreKept) {
    EXPECT_EQ(linesOf("a\nb\r\nc\rd\n\ne", 9), (Lines{"a", "b", "c", "d", "", "e"}));
    EXPECT_EQ(linesOf("a\n", 9), (Lines{"a", ""}));
}

TEST(LinesOf, NoLineEndsWithABlank) { EXPECT_EQ(linesOf("one   two  \nx ", 4), (Lines{"one", "two", "x"})); }

TEST(LinesOf, BlanksWithinALineAreKept) { EXPECT_EQ(linesOf("  a  b", 9), Lines{"  a  b"}); }

TEST(LinesOf, ControlCharactersAreMadeVisible) { EXPECT_EQ(linesOf("a\tb\x1B", 9), Lines{"a b␛"}); }

TEST(WithMarkers, MarkersStandInBrackets) {
    EXPECT_EQ(withMarkers({"Total", {}}), "Total");
    EXPECT_EQ(withMarkers({"Total", {"a"}}), "Total [a]");
    EXPECT_EQ(withMarkers({"Total", {"a", "b"}}), "Total [a,b]");
    EXPECT_EQ(withMarkers({"", {"a"}}), "[a]");
}

TEST(AppendAligned, FillsTheWidthOnTheOtherSide) {
    EXPECT_EQ(aligned("ab", 5, Side::Left), "<ab   >");
    EXPECT_EQ(aligned("ab", 5, Side::Right), "<   ab>");
    EXPECT_EQ(aligned("ab", 5, Side::Centre), "< ab  >");
    EXPECT_EQ(aligned("東", 5, Side::Right), "<   東>");
    EXPECT_EQ(aligned("e\u0301", 2, Side::Right), "< e\u0301>");
    EXPECT_EQ(aligned("abc", 2, Side::Left), "<abc>");
}

} // namespace
