#include "examples/crosstab/Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace crosstab;
using namespace std::string_literals;

std::vector<long> decoded(std::string const& text) {
    std::vector<long> result;
    for (std::size_t position = 0; position < text.size();) {
        std::optional<char32_t> const codePoint = nextCodePoint(text, position);
        result.push_back(codePoint ? static_cast<long>(*codePoint) : -1);
    }
    return result;
}

TEST(Utf8, EveryCodePointSurvivesEncodingAndDecoding) {
    for (char32_t codePoint = 0; codePoint < 0x110000; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            continue;
        }
        std::string text;
        appendUtf8(text, codePoint);
        std::size_t position = 0;
        ASSERT_EQ(nextCodePoint(text, position), codePoint);
        ASSERT_EQ(position, text.size());
    }
}

TEST(Utf8, OverlongFormsAreIllFormed) {
    EXPECT_FALSE(isUtf8("\xC0\x80"));
    EXPECT_FALSE(isUtf8("\xC1\xBF"));
    EXPECT_FALSE(isUtf8("\xE0\x9F\xBF"));
    EXPECT_FALSE(isUtf8("\xF0\x8F\xBF\xBF"));
}

TEST(Utf8, SurrogatesAndNumbersPastTheLastAreIllFormed) {
    EXPECT_FALSE(isUtf8("\xED\xA0\x80"));
    EXPECT_FALSE(isUtf8("\xED\xBF\xBF"));
    EXPECT_FALSE(isUtf8("\xF4\x90\x80\x80"));
    EXPECT_TRUE(isUtf8("\xF4\x8F\xBF\xBF"));
}

TEST(Utf8, ACutSequenceAtTheEndIsIllFormed) {
    EXPECT_FALSE(isUtf8("a\xE6\x9D"));
    EXPECT_FALSE(isUtf8("\xF0\x9F\x98"));
}

TEST(Utf8, AnIllFormedByteIsSteppedOverAlone) {
    EXPECT_EQ(decoded("\xE6"
                      "a"),
              (std::vector<long>{-1, 'a'}));
    EXPECT_EQ(decoded("\xFFé"), (std::vector<long>{-1, 0xE9}));
}

TEST(Printable, LineBreaksAndTabsBecomeBlanks) { EXPECT_EQ(printable("a\r\nb\nc\rd\te"), "a b c d e"); }

// A label could otherwise clear the screen or ring the bell.
TEST(Printable, ControlCharactersBecomePictures) {
    EXPECT_EQ(printable("\x1B[2J\x07\x7F"), "␛[2J␇␡");
    EXPECT_EQ(printable("a\0b"s), "a␀b");
    EXPECT_EQ(printable("\xC2\x9B"), "\uFFFD");
}

TEST(Printable, MarksThatReorderTheLineBecomeReplacementCharacters) {
    EXPECT_EQ(printable("a\u202Eb\u2066c\u2028d"), "a\uFFFDb\uFFFDc\uFFFDd");
}

TEST(Printable, IllFormedBytesBecomeReplacementCharacters) { EXPECT_EQ(printable("Z\xFCrich"), "Z\uFFFDrich"); }

TEST(Printable, OtherTextStaysAsItIs) { EXPECT_EQ(printable("Zürich 東京 😀"), "Zürich 東京 😀"); }

TEST(InQuotes, LongTextsAreCutAfterSixtyCodePoints) {
    std::string sixty;
    for (int i = 0; i < 60; ++i) {
        sixty += "é";
    }
    EXPECT_EQ(inQuotes(sixty), '"' + sixty + '"');
    EXPECT_EQ(inQuotes(sixty + "é"), '"' + sixty + "...\"");
}

} // namespace
