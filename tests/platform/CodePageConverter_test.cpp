#include "platform/CodePageConverter.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

namespace {

using Converter = std::unique_ptr<QUORMBConverter, decltype(&QUORMBConverterDelete_A)>;

Converter Open(char const* codePage) { return Converter(QUORMBConverterNew_A(codePage), QUORMBConverterDelete_A); }

/// A code page under three names that people write, two characters with the bytes that its published chart gives them,
/// and one that it has no place for.
struct Row {
    char const* names[3];
    char const* first;
    char const* firstBytes;
    char const* second;
    char const* secondBytes;
    char const* missing;
};

// The bytes were taken from the mapping tables behind Python's codecs, which the C library has no part in.
constexpr Row Rows[] = {
    {{"437", "cp437", "IBM-437"}, "é", "\x82", "Ñ", "\xA5", "Ж"},
    {{"737", "cp737", "ibm737"}, "Ω", "\x97", "ά", "\xE1", "é"},
    {{"775", "CP775", "ibm-775"}, "Ā", "\xA0", "ž", "\xD8", "Ж"},
    {{"850", "ibm-850", "cp850"}, "é", "\x82", "Ð", "\xD1", "Ж"},
    {{"852", "ibm852", "CP852"}, "Ł", "\x9D", "ő", "\x8B", "Ж"},
    {{"855", "ibm-855", "cp855"}, "Ж", "\xEA", "Ю", "\x9D", "é"},
    {{"857", "cp857", "IBM857"}, "ğ", "\xA7", "İ", "\x98", "Ж"},
    {{"858", "CP858", "ibm-858"}, "€", "\xD5", "é", "\x82", "Ж"},
    {{"860", "cp860", "ibm860"}, "ã", "\x84", "Õ", "\x99", "Ж"},
    {{"861", "ibm-861", "cp861"}, "Þ", "\x8D", "ð", "\x8C", "Ж"},
    {{"862", "cp862", "IBM-862"}, "א", "\x80", "ת", "\x9A", "Ж"},
    {{"863", "cp863", "ibm863"}, "ç", "\x87", "Ê", "\x92", "Ж"},
    {{"865", "ibm-865", "cp865"}, "ø", "\x9B", "Å", "\x8F", "Ж"},
    {{"866", "cp866", "IBM866"}, "Я", "\x9F", "ё", "\xF1", "é"},
    {{"869", "ibm869", "cp869"}, "Ά", "\x86", "ω", "\xFA", "é"},
    {{"874", "windows-874", "cp874"}, "ก", "\xA1", "ฮ", "\xCE", "é"},
    {{"932", "windows-932", "Windows-31J"}, "表", "\x95\x5C", "日", "\x93\xFA", "한"},
    {{"936", "cp936", "windows-936"}, "中", "\xD6\xD0", "国", "\xB9\xFA", "́"},
    {{"949", "windows-949", "UHC"}, "한", "\xC7\xD1", "글", "\xB1\xDB", "é"},
    {{"950", "cp950", "windows-950"}, "中", "\xA4\xA4", "文", "\xA4\xE5", "한"},
    {{"1250", "windows-1250", "cp1250"}, "Š", "\x8A", "Ł", "\xA3", "Ж"},
    {{"1251", "cp1251", "Windows_1251"}, "Ж", "\xC6", "я", "\xFF", "é"},
    {{"windows-1252", "cp1252", "1252"}, "€", "\x80", "é", "\xE9", "Ж"},
    {{"1253", "WINDOWS-1253", "cp1253"}, "Ω", "\xD9", "έ", "\xDD", "é"},
    {{"1254", "cp-1254", "windows-1254"}, "İ", "\xDD", "ş", "\xFE", "Ж"},
    {{"1255", "cp1255", "win1255"}, "ש", "\xF9", "ם", "\xED", "Ж"},
    {{"1256", "windows1256", "cp1256"}, "ع", "\xDA", "پ", "\x81", "Ж"},
    {{"1257", "cp1257", "windows-1257"}, "Š", "\xD0", "ų", "\xF8", "Ж"},
    {{"1258", "windows-1258", "CP1258"}, "₫", "\xFE", "ơ", "\xF5", "Ж"},
    {{"ISO-8859-1", "latin1", "28591"}, "é", "\xE9", "ÿ", "\xFF", "€"},
    {{"ISO-8859-2", "iso8859-2", "Latin2"}, "Ł", "\xA3", "ő", "\xF5", "Ж"},
    {{"ISO-8859-3", "iso_8859_3", "latin3"}, "Ħ", "\xA1", "Ĝ", "\xD8", "Ж"},
    {{"ISO-8859-4", "ISO8859-4", "latin4"}, "Ā", "\xC0", "ŋ", "\xBF", "Ж"},
    {{"ISO-8859-5", "iso88595", "cyrillic"}, "Ж", "\xB6", "ё", "\xF1", "é"},
    {{"ISO-8859-6", "arabic", "iso8859-6"}, "ع", "\xD9", "ب", "\xC8", "é"},
    {{"ISO-8859-7", "greek", "iso_8859-7"}, "Ω", "\xD9", "ά", "\xDC", "é"},
    {{"ISO-8859-8", "hebrew", "iso8859_8"}, "א", "\xE0", "ש", "\xF9", "é"},
    {{"ISO-8859-9", "latin5", "tr_TR.ISO-8859-9"}, "ğ", "\xF0", "İ", "\xDD", "Ж"},
    {{"ISO-8859-10", "latin6", "iso8859-10"}, "Ŋ", "\xAF", "Đ", "\xA9", "Ж"},
    {{"ISO-8859-11", "iso8859-11", "iso_8859_11"}, "ก", "\xA1", "ๆ", "\xE6", "é"},
    {{"ISO-8859-13", "latin7", "iso8859-13"}, "Š", "\xD0", "ų", "\xF8", "Ж"},
    {{"ISO-8859-14", "latin8", "iso8859-14"}, "ŵ", "\xF0", "Ḃ", "\xA1", "Ж"},
    {{"ISO-8859-15", "Latin-9", "en_US.ISO-8859-15"}, "€", "\xA4", "Š", "\xA6", "Ж"},
    {{"ISO-8859-16", "latin10", "iso8859-16"}, "Ș", "\xAA", "Ł", "\xA3", "Ж"},
    {{"KOI8-R", "koi8r", "ru_RU.KOI8-R"}, "Ж", "\xF6", "ё", "\xA3", "é"},
    {{"KOI8-U", "koi8_u", "uk_UA.KOI8-U"}, "ї", "\xA7", "Є", "\xB4", "é"},
    {{"KOI8-T", "koi8t", "tg_TJ.KOI8-T"}, "ҷ", "\x8D", "ӣ", "\xA5", "é"},
    {{"macintosh", "MacRoman", "10000"}, "é", "\x8E", "π", "\xB9", "Ж"},
    {{"Shift_JIS", "sjis", "ja_JP.SJIS"}, "日", "\x93\xFA", "本", "\x96\x7B", "한"},
    {{"EUC-JP", "eucjp", "ja_JP.eucJP"}, "日", "\xC6\xFC", "本", "\xCB\xDC", "한"},
    {{"EUC_KR", "euc-kr", "ko_KR.eucKR"}, "한", "\xC7\xD1", "글", "\xB1\xDB", "é"},
    {{"GB2312", "gb-2312", "zh_CN.GB2312"}, "中", "\xD6\xD0", "国", "\xB9\xFA", "́"},
    {{"GBK", "gbk", "zh_CN.GBK"}, "中", "\xD6\xD0", "國", "\x87\xF8", "한"},
    {{"Big5", "BIG-5", "zh_TW.Big5"}, "中", "\xA4\xA4", "文", "\xA4\xE5", "한"},
    {{"Big5-HKSCS", "big5hkscs", "zh_HK.BIG5-HKSCS"}, "香", "\xAD\xBB", "港", "\xB4\xE4", "한"},
    {{"JOHAB", "johab", "1361"}, "한", "\xD0\x65", "글", "\x8B\x69", "é"},
    {{"TIS-620", "tis620", "th_TH.TIS-620"}, "ก", "\xA1", "ๆ", "\xE6", "é"},
    {{"PT154", "pt-154", "pt_154"}, "Қ", "\x8D", "Ж", "\xC6", "é"},
    {{"RK1048", "rk-1048", "kk_KZ.RK1048"}, "Қ", "\x8D", "Ж", "\xC6", "é"},
    {{"1125", "cp1125", "ibm-1125"}, "Ї", "\xF8", "ж", "\xA6", "é"},
    {{"37", "cp037", "ibm-037"}, "é", "\x51", "ñ", "\x49", "Ж"},
    {{"273", "cp273", "ibm-273"}, "ä", "\xC0", "ß", "\xA1", "Ж"},
    {{"500", "cp500", "IBM-500"}, "é", "\x51", "ñ", "\x49", "Ж"},
    {{"1026", "cp1026", "ibm-1026"}, "ğ", "\xD0", "İ", "\x5B", "Ж"},
    {{"1140", "cp1140", "ibm-1140"}, "€", "\x9F", "é", "\x51", "Ж"},
    {{"MacCyrillic", "mac-cyrillic", "MAC_CYRILLIC"}, "Ж", "\x86", "я", "\xDF", "é"},
    {{"ISO-2022-JP", "iso2022jp", "50220"},
     "日",
     "\x1B\x24\x42\x46\x7C\x1B\x28\x42",
     "本",
     "\x1B\x24\x42\x4B\x5C\x1B\x28\x42",
     "한"},
};

/// Calls `check` with a converter for every name of every row.
template <typename Check>
void ForEachName(Check check) {
    for (Row const& row : Rows) {
        for (char const* const name : row.names) {
            SCOPED_TRACE(name);
            Converter const converter = Open(name);
            ASSERT_NE(converter, nullptr);
            check(row, converter.get());
        }
    }
}

TEST(CodePageConverter, TableHoldsAtLeastSixtyCodePages) {
    std::set<std::string> firstNames;
    for (Row const& row : Rows) {
        firstNames.insert(row.names[0]);
    }
    EXPECT_GE(firstNames.size(), 60u);
}

TEST(CodePageConverter, EverySpellingConvertsToThePublishedBytes) {
    ForEachName([](Row const& row, QUORMBConverter* converter) {
        std::string out = "before";
        EXPECT_EQ(QUORMBU8ToGeneric(converter, out, row.first), 0);
        EXPECT_EQ(out, row.firstBytes);
        EXPECT_EQ(QUORMBU8ToGeneric(converter, out, row.second), 0);
        EXPECT_EQ(out, row.secondBytes);
    });
}

TEST(CodePageConverter, ACharacterWithoutAPlaceFailsAndLeavesTheOutputAlone) {
    ForEachName([](Row const& row, QUORMBConverter* converter) {
        std::string out = "before";
        EXPECT_NE(QUORMBU8ToGeneric(converter, out, std::string(row.first) + row.missing), 0);
        EXPECT_EQ(out, "before");
    });
}

TEST(CodePageConverter, AFailureLeavesNothingBehindForTheNextText) {
    ForEachName([](Row const& row, QUORMBConverter* converter) {
        std::string out;
        EXPECT_NE(QUORMBU8ToGeneric(converter, out, std::string(row.second) + row.missing), 0);
        EXPECT_EQ(QUORMBU8ToGeneric(converter, out, row.first), 0);
        EXPECT_EQ(out, row.firstBytes);
    });
}

TEST(CodePageConverter, IllFormedUtf8Fails) {
    for (char const* const name : {"windows-1252", "UTF-8", "Shift_JIS"}) {
        Converter const converter = Open(name);
        ASSERT_NE(converter, nullptr) << name;
        for (std::string const text : {"\xFF", "a\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\x80"}) {
            std::string out = "before";
            EXPECT_NE(QUORMBU8ToGeneric(converter.get(), out, text), 0) << name;
            EXPECT_EQ(out, "before");
        }
    }
}

TEST(CodePageConverter, UnknownAndMisspeltNamesAreRefused) {
    for (char const* const name : {"",
                                   " ",
                                   "windows 1252",
                                   " 1252",
                                   "1252 ",
                                   "cp1252//TRANSLIT",
                                   "UTF-8//IGNORE",
                                   "ISO-8859-15//",
                                   "no-such-page",
                                   "cp",
                                   "windows-",
                                   "1259",
                                   "ISO-8859-12",
                                   "ISO-8859-0",
                                   "ISO-8859-99",
                                   "ISO-8859-015",
                                   "en_US",
                                   "en_US.",
                                   ".1252",
                                   "en US.UTF-8",
                                   "en_US.UTF-8.UTF-8",
                                   "\xC3\xA9",
                                   "12\t52",
                                   "../gconv",
                                   "UTF-8,CP1252",
                                   "cpcp1252"}) {
        EXPECT_EQ(Open(name), nullptr) << '"' << name << '"';
    }
    EXPECT_EQ(Open(nullptr), nullptr);
}

TEST(CodePageConverter, ALocaleModifierIsLeftAside) {
    Converter const converter = Open("de_DE.ISO-8859-15@euro");
    ASSERT_NE(converter, nullptr);
    std::string out;
    EXPECT_EQ(QUORMBU8ToGeneric(converter.get(), out, "€"), 0);
    EXPECT_EQ(out, "\xA4");
}

TEST(CodePageConverter, UnicodeAndGb18030HoldEveryCharacter) {
    std::string out;
    EXPECT_EQ(QUORMBU8ToGeneric(Open("en_US.UTF-8").get(), out, "é日😀"), 0);
    EXPECT_EQ(out, "é日😀");
    EXPECT_EQ(QUORMBU8ToGeneric(Open("GB18030").get(), out, "中é"), 0);
    EXPECT_EQ(out, "\xD6\xD0\xA8\xA6");
}

TEST(CodePageConverter, ZeroBytesAndLongTextsAreConvertedWhole) {
    Converter const converter = Open("windows-1252");
    std::string text;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        text += std::string("\0é", 3);
        expected += std::string("\0\xE9", 2);
    }
    std::string out;
    EXPECT_EQ(QUORMBU8ToGeneric(converter.get(), out, text), 0);
    EXPECT_EQ(out, expected);
}

TEST(CodePageConverter, AShiftStateIsClosedAtTheEnd) {
    std::string out;
    EXPECT_EQ(QUORMBU8ToGeneric(Open("ISO-2022-JP").get(), out, "日"), 0);
    EXPECT_EQ(out, "\x1B$B\x46\x7C\x1B(B");
}

TEST(CodePageConverter, TheTextMayBeTheOutputItself) {
    Converter const converter = Open("windows-1252");
    std::string text = "é";
    EXPECT_EQ(QUORMBU8ToGeneric(converter.get(), text, text), 0);
    EXPECT_EQ(text, "\xE9");
}

TEST(CodePageConverter, ANullConverterFailsTheConversionAndMayBeDeleted) {
    std::string out = "before";
    EXPECT_NE(QUORMBU8ToGeneric(nullptr, out, "text"), 0);
    EXPECT_EQ(out, "before");
    QUORMBConverterDelete_A(nullptr);
}

} // namespace
