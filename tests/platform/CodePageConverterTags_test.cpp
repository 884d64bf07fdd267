// Characters that no older code page knows, and that the C library passes over without a word.
#include "platform/CodePageConverter.h"
#include "platform/icuTracker.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

/// The first and the last tag character, the last before and the first after the boundary between their leading bytes.
constexpr char const* Tags[] = {"\xF3\xA0\x80\x80", "\xF3\xA0\x80\xBF", "\xF3\xA0\x81\x80", "\xF3\xA0\x81\xBF"};
/// Their neighbours, which are characters like others.
constexpr char const* Neighbours[] = {"\xF3\x9F\xBF\xBD", "\xF3\xA0\x82\x80"};

/// What the code page makes of the text, or "refused" when it fails and leaves the output alone.
std::string Converted(char const* codePage, std::string const& text) {
    std::unique_ptr<QUORMBConverter, decltype(&QUORMBConverterDelete_A)> const converter(QUORMBConverterNew_A(codePage),
                                                                                         QUORMBConverterDelete_A);
    EXPECT_NE(converter, nullptr) << codePage;
    std::string out = "before";
    if (QUORMBU8ToGeneric(converter.get(), out, text) == 0) {
        return out;
    }
    EXPECT_EQ(out, "before");
    return "refused";
}

// The text would come out one character short.
TEST(CodePageConverterTags, AreRefusedByCodePagesWithoutThem) {
    for (char const* const codePage : {"windows-1252", "ISO-8859-1", "US-ASCII", "Shift_JIS", "EUC-KR", "Big5",
                                       "ibm-037", "ISO-2022-JP", "ISO-2022-KR"}) {
        for (char const* const tag : Tags) {
            EXPECT_EQ(Converted(codePage, std::string("a") + tag + "b"), "refused") << codePage;
        }
        EXPECT_EQ(Converted(codePage, Neighbours[0]), "refused") << codePage;
        EXPECT_EQ(Converted(codePage, Neighbours[1]), "refused") << codePage;
    }
}

TEST(CodePageConverterTags, AreHeldByCodePagesOfAllUnicode) {
    for (char const* const tag : Tags) {
        std::string const text = std::string("a") + tag + "b";
        EXPECT_EQ(Converted("en_US.UTF-8", text), text);
        std::string back;
        EXPECT_TRUE(icuTracker({false, "zh_CN.GB18030"}).ToU8(Converted("GB18030", text), back));
        EXPECT_EQ(back, text);
    }
}

TEST(CodePageConverterTags, AreRefusedByTrackersToo) {
    std::string out = "before";
    EXPECT_FALSE(icuTracker({false, "en_US.ISO-8859-1"}).FromU8(Tags[0], out));
    EXPECT_EQ(out, "before");
}

} // namespace
