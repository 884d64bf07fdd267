#include "platform/icuTracker.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

namespace {

TEST(icuTracker, IsMadeFromThePairOfUnicodeSwitchAndLocale) {
    icuTracker const unicode(std::pair<bool, std::string>(true, "en_US.UTF-8"));
    EXPECT_TRUE(unicode.Unicode());
    EXPECT_EQ(unicode.Locale(), "en_US.UTF-8");
    icuTracker const other({false, "ja_JP.Shift_JIS"});
    EXPECT_FALSE(other.Unicode());
    EXPECT_EQ(other.Locale(), "ja_JP.Shift_JIS");
}

TEST(icuTracker, KeepsACopyOfThePair) {
    std::pair<bool, std::string> settings(true, "before");
    icuTracker const tracker(settings);
    settings = {false, "after"};
    EXPECT_TRUE(tracker.Unicode());
    EXPECT_EQ(tracker.Locale(), "before");
}

TEST(icuTracker, LocaleMayBeAnyString) {
    EXPECT_EQ(icuTracker({true, ""}).Locale(), "");
    EXPECT_EQ(icuTracker({true, std::string(300, 'x')}).Locale(), std::string(300, 'x'));
}

// --- conversions -----------------------------------------------------------------------------------------------------

/// The conversion's result, or "failed" when it failed and left its output alone.
template <typename Convert>
std::string Converted(icuTracker const& tracker, Convert convert, std::string const& text) {
    std::string out = "as before";
    if ((tracker.*convert)(text, out)) {
        return out;
    }
    EXPECT_EQ(out, "as before");
    return "failed";
}
std::string ToU8(icuTracker const& tracker, std::string const& text) {
    return Converted(tracker, &icuTracker::ToU8, text);
}
std::string FromU8(icuTracker const& tracker, std::string const& text) {
    return Converted(tracker, &icuTracker::FromU8, text);
}

TEST(icuTracker, ConvertsBetweenTheLocalesCodePageAndUtf8) {
    icuTracker const latin9({false, "de_DE.ISO-8859-15"});
    EXPECT_EQ(ToU8(latin9, "\xA4 caf\xE9"), "\xE2\x82\xAC caf\xC3\xA9");
    EXPECT_EQ(FromU8(latin9, "\xE2\x82\xAC caf\xC3\xA9"), "\xA4 caf\xE9");
    icuTracker const japanese({false, "ja_JP.Shift_JIS"});
    EXPECT_EQ(ToU8(japanese, "\x83\x65"), "\xE3\x83\x86");
    EXPECT_EQ(FromU8(japanese, "\xE3\x83\x86"), "\x83\x65");
}

TEST(icuTracker, UnicodeDataIsCopied) {
    icuTracker const unicode({true, "de_DE.ISO-8859-15"});
    EXPECT_EQ(ToU8(unicode, "caf\xC3\xA9"), "caf\xC3\xA9");
    EXPECT_EQ(FromU8(unicode, "caf\xC3\xA9"), "caf\xC3\xA9");
}

TEST(icuTracker, LocaleWithoutAKnownCodePageFails) {
    for (char const* const locale : {"", "de_DE", "de_DE.nonsense", "de_DE.ISO-8859-15//TRANSLIT"}) {
        icuTracker const tracker({false, locale});
        EXPECT_EQ(ToU8(tracker, "a"), "failed") << locale;
        EXPECT_EQ(FromU8(tracker, "a"), "failed") << locale;
    }
}

TEST(icuTracker, TextThatCannotBeConvertedFailsAndTheNextOneDoesNot) {
    icuTracker const japanese({false, "ja_JP.Shift_JIS"});
    EXPECT_EQ(ToU8(japanese, "\x83"), "failed");
    EXPECT_EQ(ToU8(japanese, "a"), "a");
    EXPECT_EQ(FromU8(japanese, "\xE2\x82\xAC"), "failed");
    EXPECT_EQ(FromU8(japanese, "\xC3"), "failed");
    EXPECT_EQ(FromU8(japanese, "a"), "a");
}

// Texts point at it, so it has one identity.
TEST(icuTracker, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<icuTracker>);
    EXPECT_FALSE(std::is_copy_assignable_v<icuTracker>);
}

} // namespace
