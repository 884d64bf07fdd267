// Defects of code pages: names that nobody writes, texts that do not read back, and cost.
#include "platform/CodePageConverter.h"
#include "platform/icuTracker.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <dlfcn.h>
#include <iconv.h>
#include <memory>
#include <optional>
#include <string>

namespace {

using Converter = std::unique_ptr<QUORMBConverter, decltype(&QUORMBConverterDelete_A)>;

Converter Open(std::string const& codePage) {
    return Converter(QUORMBConverterNew_A(codePage.c_str()), QUORMBConverterDelete_A);
}

/// What the code page makes of the text; nothing when the conversion fails or the name is refused.
std::optional<std::string> Converted(std::string const& codePage, std::string const& text) {
    Converter const converter = Open(codePage);
    std::string out;
    if (QUORMBU8ToGeneric(converter.get(), out, text) != 0) {
        return std::nullopt;
    }
    return out;
}

/// Calls of iconv since the last reset; the function below stands in front of the C library's.
std::size_t conversions = 0;

} // namespace

extern "C" __attribute__((visibility("default"))) std::size_t iconv(iconv_t handle, char** from, std::size_t* fromLeft,
                                                                    char** to, std::size_t* toLeft) {
    using Function = std::size_t (*)(iconv_t, char**, std::size_t*, char**, std::size_t*);
    static Function const original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "iconv"));
    ++conversions;
    return original(handle, from, fromLeft, to, toLeft);
}

// --- names -----------------------------------------------------------------------------------------------------------

namespace {

struct NameRow {
    char const* name;
    char const* sample;   ///< a text that tells the code page from its likes
    char const* expected; ///< its bytes
};

constexpr NameRow Accepted[] = {
    {"windows-1252", "€", "\x80"},
    {"Windows-1252", "€", "\x80"},
    {"WINDOWS_1252", "€", "\x80"},
    {"windows1252", "€", "\x80"},
    {"win1252", "€", "\x80"},
    {"win-1252", "€", "\x80"},
    {"cp1252", "€", "\x80"},
    {"CP-1252", "€", "\x80"},
    {"cp_1252", "€", "\x80"},
    {"ms1252", "€", "\x80"},
    {"ibm-1252", "€", "\x80"},
    {"codepage1252", "€", "\x80"},
    {"code-page-1252", "€", "\x80"},
    {"1252", "€", "\x80"},
    {"English.1252", "€", "\x80"},
    {"de_DE.cp1252", "€", "\x80"},
    {"de_DE.windows-1252@euro", "€", "\x80"},
    {"ibm-850", "Ð", "\xD1"},
    {"IBM850", "Ð", "\xD1"},
    {"cp850", "Ð", "\xD1"},
    {"ibm037", "é", "\x51"},
    {"ibm-37", "é", "\x51"},
    {"utf-8", "€", "€"},
    {"UTF8", "€", "€"},
    {"utf_8", "€", "€"},
    {"65001", "€", "€"},
    {"cp65001", "€", "€"},
    {"C.UTF-8", "€", "€"},
    {"en_US.utf8", "€", "€"},
    {"sr_RS.UTF-8@latin", "€", "€"},
    {"zh-Hans-CN.UTF-8", "€", "€"},
    {"ascii", "a", "a"},
    {"US-ASCII", "a", "a"},
    {"ANSI_X3.4-1968", "a", "a"},
    {"en_US.ANSI_X3.4-1968", "a", "a"},
    {"ISO-8859-15", "€", "\xA4"},
    {"ISO_8859-15", "€", "\xA4"},
    {"ISO8859-15", "€", "\xA4"},
    {"iso8859_15", "€", "\xA4"},
    {"iso885915", "€", "\xA4"},
    {"en_US.ISO-8859-15", "€", "\xA4"},
    {"en_US.iso885915", "€", "\xA4"},
    {"28605", "€", "\xA4"},
    {"latin-9", "€", "\xA4"},
    {"latin9", "€", "\xA4"},
    {"L9", "€", "\xA4"},
    {"ISO-8859-5", "Ж", "\xB6"},
    {"iso88595", "Ж", "\xB6"},
    {"KOI8-R", "Ж", "\xF6"},
    {"koi8r", "Ж", "\xF6"},
    {"Shift_JIS", "日", "\x93\xFA"},
    {"shift-jis", "日", "\x93\xFA"},
    {"SJIS", "日", "\x93\xFA"},
    {"s-jis", "日", "\x93\xFA"},
    {"EUC_KR", "글", "\xB1\xDB"},
    {"euckr", "글", "\xB1\xDB"},
    {"ko_KR.eucKR", "글", "\xB1\xDB"},
    {"KS_C_5601-1987", "글", "\xB1\xDB"},
    {"windows-949", "글", "\xB1\xDB"},
    {"ms949", "글", "\xB1\xDB"},
    {"GB2312", "中", "\xD6\xD0"},
    {"gb18030", "中", "\xD6\xD0"},
    {"Big5-HKSCS", "香", "\xAD\xBB"},
    {"big5_hkscs", "香", "\xAD\xBB"},
    {"mac-cyrillic", "Ж", "\x86"},
    {"macintosh", "é", "\x8E"},
    {"tis-620", "ก", "\xA1"},
    // Microsoft's table and the other maker's have one number; the second has two signs apart.
    {"windows-932", "\\~", "\\~"},
    {"cp932", "①", "\x87\x40"},
    {"ms932", "①", "\x87\x40"},
    {"windows-31j", "①", "\x87\x40"},
    {"ibm-932", "日", "\x93\xFA"},
    {"IBM932", "¢", "\x80"},
};

constexpr char const* Refused[] = {
    // Separators where no writer puts one.
    "1-2-5-2", "1_252", "12-52", "u-t-f-8", "ut-f8", "utf--8", "utf-_8", "utf-8-", "-utf-8", "_utf8", "utf-8_",
    "w-indows-1252", "win-dows-1252", "windows--1252", "windows_-1252", "windows-12-52", "windows-1252-", "cp-12_52",
    "c-p1252", "i-b-m-850", "ibm-8-50", "iso-88591-5", "iso-8859-1-5", "iso-88-59-15", "i-s-o-8859-1", "iso--8859-1",
    "iso-8859--1", "iso-8859-1-", "is-o88591", "iso-8859-1_5", "latin-1-0", "lat-in-1", "la-tin1", "l-1", "shif-tjis",
    "shift-j-is", "e-u-c-kr", "euc-k-r", "big5-hk-scs", "gb-23-12", "g-b-2312", "us-asc-ii", "a-scii", "tis-62-0",
    "6-5001", "k-oi8-r", "j-ohab", "gb-k", "u-hc", "mac-in-tosh", "utf-8_1", "iso-2022j-p",
    // What stands alone, or before the wrong number.
    "iso8859", "iso-8859", "iso-8859-", "ISO_8859_", "en_US.iso8859", "iso", "8859-1", "ibm", "ibm-", "cp-", "ms",
    "latin", "latin-", "utf", "utf-", "euc", "windows", "codepage", "cp01252", "windows-01252", "cp+1252", "cp-1252.0",
    "ibm-cp1252", "windows-cp1252", "cpibm850", "iso-8859-15a", "iso-8859-1 5", "iso-8859-00", "iso-8859-115",
    "iso-8859-18446744073709551617", "99999999999999999999", "latin-11", "koi8", "utf-88", "utf-7", "utf-16",
    // Tables of the other maker that the C library does not have.
    "ibm-936", "ibm-949", "ibm-950", "ibm-1361", "ibm-65001", "ibm-28591", "ibm-10000",
    // Odd locales and modifiers.
    "en/US.UTF-8", "en+US.UTF-8", "en US.1252", "é.UTF-8", ".UTF-8", "@.UTF-8", "en_US@euro.UTF-8", "1.1252", "_.UTF-8",
    "-.UTF-8", "en_.UTF-8", "_US.UTF-8", "en__US.UTF-8", "en-_US.UTF-8", "en_US..UTF-8", "en:US.UTF-8", "en_US.UTF-8@",
    "en_US.UTF-8@//IGNORE", "en_US.UTF-8@euro//TRANSLIT", "en_US.UTF-8@eu ro", "en_US.UTF-8@a@b", "en_US.@euro",
    "UTF-8@euro", "en_US.UTF-8 ", "en_US. UTF-8", "\ten_US.UTF-8", "en_US.u-t-f-8", "en_US.1-2-5-2",
    "en_US.iso-88591-5"};

} // namespace

TEST(CodePageNames, AreTakenAsWritersSpellThem) {
    for (NameRow const& row : Accepted) {
        EXPECT_EQ(Converted(row.name, row.sample), row.expected) << row.name;
        std::string out;
        EXPECT_TRUE(icuTracker({false, row.name}).FromU8(row.sample, out)) << row.name;
        EXPECT_EQ(out, row.expected) << row.name;
    }
}

// Separators were dropped before a name was looked up, so it was known wherever they stood.
TEST(CodePageNames, AreRefusedWhereNobodyWritesThemSo) {
    for (char const* const name : Refused) {
        EXPECT_EQ(Open(name), nullptr) << name;
        std::string out = "before";
        EXPECT_FALSE(icuTracker({false, name}).FromU8("a", out)) << name;
        EXPECT_FALSE(icuTracker({false, name}).ToU8("a", out)) << name;
        EXPECT_EQ(out, "before");
    }
    std::string const withZero("UTF-8\0", 6);
    std::string out;
    EXPECT_FALSE(icuTracker({false, withZero}).FromU8("a", out));
}

// --- texts that do not read back -------------------------------------------------------------------------------------

// The characters that switch such an encoding's state were passed through, and read as a switch.
TEST(EscapingCodePages, RefuseTheCharactersThatTheyEscapeWith) {
    for (std::string const codePage : {"ISO-2022-JP", "ISO-2022-KR"}) {
        std::string const wide = codePage == "ISO-2022-JP" ? "日" : "한";
        for (unsigned int control = 0; control < 0xA0; ++control) {
            if (control >= 0x20 && control < 0x7F) {
                continue;
            }
            std::string const character = control < 0x80 ? std::string(1, static_cast<char>(control))
                                                         : std::string{'\xC2', static_cast<char>(control)};
            bool const escapes = control == 0x0E || control == 0x0F || control == 0x1B;
            for (std::string const& text : {character, "a" + character + "b", wide + character + wide,
                                            character + "$B" + wide, character + "$)C" + character + wide}) {
                std::optional<std::string> const bytes = Converted(codePage, text);
                EXPECT_FALSE(escapes && bytes) << codePage << ' ' << control;
                std::string back = "refused";
                if (bytes) {
                    EXPECT_TRUE(icuTracker({false, codePage}).ToU8(*bytes, back)) << codePage << ' ' << control;
                    EXPECT_EQ(back, text) << codePage << ' ' << control;
                }
            }
        }
        EXPECT_TRUE(Converted(codePage, "a\n" + wide + "\t" + wide + "\r\n")) << codePage;
    }
    // They are characters like others elsewhere.
    EXPECT_EQ(Converted("windows-1252", "\x1B\x0E\x0F"), "\x1B\x0E\x0F");
    EXPECT_EQ(Converted("EUC-KR", "\x1B\x0E\x0F"), "\x1B\x0E\x0F");
}

// --- ill-formed texts ------------------------------------------------------------------------------------------------

TEST(IllFormedUtf8, FailsWhereverTheBadByteStands) {
    struct Row {
        char const* text;
        bool wellFormed;
    };
    constexpr Row rows[] = {
        {"\xE2\x82\xAC", true},      {"\xE2\x82\x7F", false},
        {"\xE2\x82\xC0", false},     {"\xE2\x82", false},
        {"\xE2\x82\x20", false},     {"\xF0\x9F\x98\x80", true},
        {"\xF0\x9F\x98", false},     {"\xF0\x9F\x98\x7F", false},
        {"\xF0\x9F\x98\xC0", false}, {"\xF0\x9F\x7F\x80", false},
        {"\xF0\x9F\xC0\x80", false}, {"\xF0\x9F\x20\x80", false},
        {"\xF0\x90\x80\x80", true},  {"\xF0\x8F\xBF\xBF", false},
        {"\xF4\x8F\xBF\xBF", true},  {"\xF4\x8F\xBF\xC0", false},
        {"\xF4\x90\x80\x80", false}, {"\xF4\x80\x80\x80", true},
        {"\xF4\xC0\x80\x80", false}, {"\xF5\x80\x80\x80", false},
        {"\xF5\x8F\xBF\xBF", false}, {"\xF8\x88\x80\x80\x80", false},
        {"\xED\x9F\xBF", true},      {"\xED\xA0\x80", false},
        {"\xEE\x80\x80", true},      {"\xE0\xA0\x80", true},
        {"\xE0\x9F\xBF", false},     {"\xC2\x80", true},
        {"\xC1\xBF", false},         {"\xDF\xBF", true},
        {"\xDF\xC0", false},         {"\xDF\x7F", false},
    };
    for (char const* const codePage : {"UTF-8", "GB18030"}) {
        for (Row const& row : rows) {
            std::string const text = row.text;
            EXPECT_EQ(Converted(codePage, text).has_value(), row.wellFormed) << testing::PrintToString(text);
            EXPECT_EQ(Converted(codePage, "ab" + text + "cd").has_value(), row.wellFormed);
            EXPECT_EQ(Converted(codePage, std::string(70, 'x') + text).has_value(), row.wellFormed);
        }
    }
}

// --- cost ------------------------------------------------------------------------------------------------------------

// Each 256 bytes of the result were a call, and a copy.
TEST(LongTexts, AreConvertedInFewCalls) {
    std::string const given(std::size_t{1} << 20, '\xE9');
    icuTracker const latin({false, "en_US.ISO-8859-1"});
    std::string text;
    ASSERT_TRUE(latin.ToU8("a", text)); // makes the converters
    conversions = 0;
    ASSERT_TRUE(latin.ToU8(given, text));
    EXPECT_EQ(text.size(), 2 * given.size());
    EXPECT_GT(conversions, 0U);
    EXPECT_LE(conversions, 8U);
    std::string bytes;
    conversions = 0;
    ASSERT_TRUE(latin.FromU8(text, bytes));
    EXPECT_EQ(bytes, given);
    EXPECT_GT(conversions, 0U);
    EXPECT_LE(conversions, 4U);

    // A result of several times the length.
    std::string wide;
    for (int i = 0; i < 100000; ++i) {
        wide += "日a";
    }
    icuTracker const escaping({false, "ja_JP.ISO-2022-JP"});
    conversions = 0;
    ASSERT_TRUE(escaping.FromU8(wide, bytes));
    EXPECT_GT(bytes.size(), 2 * wide.size());
    EXPECT_LE(conversions, 8U);
    conversions = 0;
    ASSERT_TRUE(escaping.ToU8(bytes, text));
    EXPECT_EQ(text, wide);
    EXPECT_LE(conversions, 4U);
}

// Wherever the room for the result ends: inside a character, before an escape, at the very end.
TEST(LongTexts, OfEveryLengthAreConvertedWhole) {
    for (char const* const locale :
         {"en_US.ISO-8859-1", "ja_JP.ISO-2022-JP", "ja_JP.SJIS", "zh_CN.GB18030", "C.UTF-8"}) {
        icuTracker const tracker({false, locale});
        std::string const unit = std::string(locale) == "en_US.ISO-8859-1" ? "é" : "日a本";
        std::string text;
        for (int units = 0; units < 200; ++units) {
            std::string bytes;
            std::string back;
            ASSERT_TRUE(tracker.FromU8(text, bytes)) << locale << units;
            ASSERT_TRUE(tracker.ToU8(bytes, back)) << locale << units;
            ASSERT_EQ(back, text) << locale << units;
            text += unit;
        }
    }
}

TEST(LongTexts, MayBeTheirOwnOutput) {
    icuTracker const latin({false, "en_US.ISO-8859-1"});
    std::string text(100000, '\xE9');
    ASSERT_TRUE(latin.ToU8(text, text));
    EXPECT_EQ(text.size(), 200000U);
    ASSERT_TRUE(latin.FromU8(text, text));
    EXPECT_EQ(text, std::string(100000, '\xE9'));
    text += "\xC3\xA9";
    EXPECT_FALSE(latin.FromU8(text, text));
    EXPECT_EQ(text.size(), 100002U);
}
