#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

// What the kinds show, a line for each input.

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double Missing = std::numeric_limits<double>::quiet_NaN();
constexpr int Any = OmNumber::AsNeeded;

constexpr auto General = OmNumber::GeneralFormat;
constexpr auto Fixed = OmNumber::FixedFormat;
constexpr auto Percent = OmNumber::PercentFormat;
constexpr auto Scientific = OmNumber::ScientificFormat;
constexpr auto Currency = OmNumber::CurrencyFormat;

struct NumberRow {
    double value;
    OmNumber::FormatType type;
    int decimals;
    char32_t mark;
    char32_t grouping;
    char const* symbol;
    char const* plain;
    char const* formatted;
};

// clang-format off
NumberRow const Numbers[] = {
    // general
    {0.0,                  General,    Any, '.', 0,    "",     "0",                      "0"},
    {-0.0,                 General,    Any, '.', 0,    "",     "-0",                     "0"},
    {1.0,                  General,    Any, '.', 0,    "",     "1",                      "1"},
    {-12.5,                General,    Any, '.', 0,    "",     "-12.5",                  "-12.5"},
    {0.1,                  General,    Any, '.', 0,    "",     "0.1",                    "0.1"},
    {0.1 + 0.2,            General,    Any, '.', 0,    "",     "0.30000000000000004",    "0.30000000000000004"},
    {0.1 + 0.2,            General,    3,   '.', 0,    "",     "0.30000000000000004",    "0.3"},
    {1.0 / 3.0,            General,    3,   '.', 0,    "",     "0.3333333333333333",     "0.333"},
    {2.0 / 3.0,            General,    3,   ',', 0,    "",     "0.6666666666666666",     "0,667"},
    {1.9999,               General,    2,   '.', 0,    "",     "1.9999",                 "2"},
    {1.5,                  General,    2,   '.', 0,    "",     "1.5",                    "1.5"},
    {0.5,                  General,    0,   '.', 0,    "",     "0.5",                    "1"},
    {-0.0004,              General,    2,   '.', 0,    "",     "-4e-04",                 "0"},
    {100000.0,             General,    Any, '.', 0,    "",     "1e+05",                  "100000"},
    {100000.0,             General,    Any, '.', ',',  "",     "1e+05",                  "100,000"},
    {123456789012345.0,    General,    Any, '.', ',',  "",     "123456789012345",        "123,456,789,012,345"},
    {1e15,                 General,    Any, '.', ',',  "",     "1e+15",                  "1E+15"},
    {1.25e300,             General,    1,   ',', ' ',  "",     "1.25e+300",              "1,3E+300"},
    {2e300,                General,    1,   ',', ' ',  "",     "2e+300",                 "2E+300"},
    {0.0001,               General,    Any, '.', 0,    "",     "1e-04",                  "0.0001"},
    {0.00001,              General,    Any, '.', 0,    "",     "1e-05",                  "1E-05"},
    {1.2004e-7,            General,    3,   '.', 0,    "",     "1.2004e-07",             "1.2E-07"},
    // fixed: decimals, signs, rounding at the last place
    {1234.5,               Fixed,      2,   '.', ',',  "",     "1234.5",                 "1,234.50"},
    {1234.5,               Fixed,      2,   ',', '.',  "",     "1234.5",                 "1.234,50"},
    {-1234567.891,         Fixed,      2,   '.', ',',  "",     "-1234567.891",           "-1,234,567.89"},
    {999.0,                Fixed,      0,   '.', ',',  "",     "999",                    "999"},
    {1000.0,               Fixed,      0,   '.', ',',  "",     "1000",                   "1,000"},
    {-1000.0,              Fixed,      0,   '.', ',',  "",     "-1000",                  "-1,000"},
    {999999.5,             Fixed,      0,   '.', ',',  "",     "999999.5",               "1,000,000"},
    {0.125,                Fixed,      2,   '.', 0,    "",     "0.125",                  "0.13"},
    {-0.125,               Fixed,      2,   '.', 0,    "",     "-0.125",                 "-0.13"},
    {0.375,                Fixed,      2,   '.', 0,    "",     "0.375",                  "0.38"},
    {2.675,                Fixed,      2,   '.', 0,    "",     "2.675",                  "2.67"},
    {1.005,                Fixed,      2,   '.', 0,    "",     "1.005",                  "1.00"},
    {0.5,                  Fixed,      0,   '.', 0,    "",     "0.5",                    "1"},
    {1.5,                  Fixed,      0,   '.', 0,    "",     "1.5",                    "2"},
    {2.5,                  Fixed,      0,   '.', 0,    "",     "2.5",                    "3"},
    {-2.5,                 Fixed,      0,   '.', 0,    "",     "-2.5",                   "-3"},
    {9.995,                Fixed,      2,   '.', 0,    "",     "9.995",                  "9.99"},
    {9.996,                Fixed,      2,   '.', 0,    "",     "9.996",                  "10.00"},
    {99.5,                 Fixed,      0,   '.', 0,    "",     "99.5",                   "100"},
    {0.049,                Fixed,      1,   '.', 0,    "",     "0.049",                  "0.0"},
    {-0.001,               Fixed,      2,   '.', 0,    "",     "-0.001",                 "0.00"},
    {-0.005,               Fixed,      2,   '.', 0,    "",     "-0.005",                 "-0.01"},
    {-0.0,                 Fixed,      1,   '.', 0,    "",     "-0",                     "0.0"},
    {3.0,                  Fixed,      Any, '.', 0,    "",     "3",                      "3"},
    {0.1,                  Fixed,      20,  '.', 0,    "",     "0.1",                    "0.10000000000000000555"},
    {1e22,                 Fixed,      1,   '.', ' ',  "",     "1e+22",                  "10 000 000 000 000 000 000 000.0"},
    {1234.0,               Fixed,      0,   0,   0,    "",     "1234",                   "1234"},
    {5572043010.41796875,  Fixed,      7,   '.', 0,    "",     "5572043010.417969",      "5572043010.4179688"},
    // percent
    {12.5,                 Percent,    1,   '.', 0,    "",     "12.5",                   "12.5%"},
    {12.25,                Percent,    1,   ',', 0,    "",     "12.25",                  "12,3%"},
    {-0.04,                Percent,    1,   '.', 0,    "",     "-0.04",                  "0.0%"},
    {100.0,                Percent,    0,   '.', 0,    "",     "100",                    "100%"},
    {1250.0,               Percent,    1,   '.', ',',  "$",    "1250",                   "1,250.0%"},
    {33.333,               Percent,    Any, '.', 0,    "",     "33.333",                 "33.333%"},
    // scientific
    {0.00042,              Scientific, 2,   '.', 0,    "",     "0.00042",                "4.20E-04"},
    {123456.0,             Scientific, 2,   '.', ',',  "",     "123456",                 "1.23E+05"},
    {-123456.0,            Scientific, 3,   ',', 0,    "",     "-123456",                "-1,235E+05"},
    {0.0,                  Scientific, 1,   '.', 0,    "",     "0",                      "0.0E+00"},
    {-0.0,                 Scientific, 1,   '.', 0,    "",     "-0",                     "0.0E+00"},
    {9.5,                  Scientific, 0,   '.', 0,    "",     "9.5",                    "1E+01"},
    {2.5,                  Scientific, 0,   '.', 0,    "",     "2.5",                    "3E+00"},
    {9.96875,              Scientific, 4,   '.', 0,    "",     "9.96875",                "9.9688E+00"},
    {99950.0,              Scientific, 2,   '.', 0,    "",     "99950",                  "1.00E+05"},
    {0.09375,              Scientific, 2,   '.', 0,    "",     "0.09375",                "9.38E-02"},
    {6.02214076e23,        Scientific, Any, '.', 0,    "",     "6.02214076e+23",         "6.02214076E+23"},
    {1e100,                Scientific, 1,   '.', 0,    "",     "1e+100",                 "1.0E+100"},
    // currency
    {1234.5,               Currency,   2,   '.', ',',  "$",    "1234.5",                 "$1,234.50"},
    {-7.0,                 Currency,   2,   '.', 0,    "$",    "-7",                     "-$7.00"},
    {1234.5,               Currency,   2,   ',', '.',  "\u20AC ", "1234.5",              "\u20AC 1.234,50"},
    {-0.001,               Currency,   2,   '.', 0,    "$",    "-0.001",                 "$0.00"},
    {5.0,                  Currency,   0,   '.', 0,    "",     "5",                      "5"},
    // missing and infinite, in every format
    {Missing,              General,    Any, '.', 0,    "",     ".",                      "."},
    {Missing,              Fixed,      2,   ',', '.',  "",     ".",                      "."},
    {Missing,              Percent,    1,   '.', 0,    "",     ".",                      "."},
    {Missing,              Scientific, 2,   '.', 0,    "",     ".",                      "."},
    {Missing,              Currency,   2,   '.', 0,    "$",    ".",                      "."},
    {-Missing,             Fixed,      2,   '.', 0,    "",     ".",                      "."},
    {Infinity,             General,    Any, '.', 0,    "",     "inf",                    "inf"},
    {-Infinity,            Fixed,      2,   '.', ',',  "",     "-inf",                   "-inf"},
    {Infinity,             Percent,    1,   '.', 0,    "",     "inf",                    "inf"},
    {-Infinity,            Currency,   2,   '.', 0,    "$",    "-inf",                   "-inf"},
};

struct LabelRow {
    char const* meant;
    char const* label; // empty for none
    OmCellText::ModeType mode;
    char const* text;
};

LabelRow const Labels[] = {
    {"sex", "Sex of passenger", OmCellText::NameMode,        "sex"},
    {"sex", "Sex of passenger", OmCellText::LabelMode,       "Sex of passenger"},
    {"sex", "Sex of passenger", OmCellText::LabelOrNameMode, "Sex of passenger"},
    {"sex", "Sex of passenger", OmCellText::BothMode,        "sex Sex of passenger"},
    {"sex", "",                 OmCellText::NameMode,        "sex"},
    {"sex", "",                 OmCellText::LabelMode,       ""},
    {"sex", "",                 OmCellText::LabelOrNameMode, "sex"},
    {"sex", "",                 OmCellText::BothMode,        "sex"},
    {"",    "Sex",              OmCellText::NameMode,        ""},
    {"",    "Sex",              OmCellText::BothMode,        " Sex"},
    {"sex", "sex",              OmCellText::BothMode,        "sex sex"},
};

struct ValueRow {
    double value;
    char const* label;
    OmCellText::ModeType mode;
    char const* text;
    char const* formatted; // with one decimal
};

ValueRow const Values[] = {
    {1.0,     "Male", OmCellText::NameMode,        "1",      "1.0"},
    {1.0,     "Male", OmCellText::LabelMode,       "Male",   "Male"},
    {1.0,     "Male", OmCellText::LabelOrNameMode, "Male",   "Male"},
    {1.0,     "Male", OmCellText::BothMode,        "1 Male", "1.0 Male"},
    {2.25,    "",     OmCellText::NameMode,        "2.25",   "2.3"},
    {2.25,    "",     OmCellText::LabelMode,       "",       ""},
    {2.25,    "",     OmCellText::LabelOrNameMode, "2.25",   "2.3"},
    {2.25,    "",     OmCellText::BothMode,        "2.25",   "2.3"},
    {Missing, "",     OmCellText::LabelOrNameMode, ".",      "."},
    {Missing, "none", OmCellText::BothMode,        ". none", ". none"},
};

struct MessageRow {
    char const* pattern;
    std::vector<std::pair<std::size_t, char const*>> fillers;
    char const* text;
};

MessageRow const Messages[] = {
    {"",                        {},                             ""},
    {"no slots",                {{0, "x"}},                     "no slots"},
    {"{0}",                     {{0, "a"}},                     "a"},
    {"{0} of {1} cases",        {{0, "12"}, {1, "30"}},         "12 of 30 cases"},
    {"{1}, {0}",                {{0, "a"}, {1, "b"}},           "b, a"},
    {"{2}{0}{1}",               {{0, "a"}, {1, "b"}, {2, "c"}}, "cab"},
    {"{0}{0} {0}",              {{0, "a"}},                     "aa a"},
    {"{0} and {1}",             {{1, "b"}},                     "{0} and b"},
    {"{0}",                     {},                             "{0}"},
    {"{7}{0}",                  {{0, "a"}},                     "{7}a"},
    {"{10}{1}",                 {{1, "a"}, {10, "b"}},          "ba"},
    {"{00}{001}",               {{0, "a"}, {1, "b"}},           "ab"},
    {"{00}",                    {},                             "{00}"},
    {"[{0}]",                   {{0, ""}},                      "[]"},
    {"{{0}} is {0}",            {{0, "a"}},                     "{0} is a"},
    {"{{{0}}}",                 {{0, "a"}},                     "{a}"},
    {"{{",                      {},                             "{"},
    {"}}",                      {},                             "}"},
    {"{{{{}}}}",                {},                             "{{}}"},
    {"{",                       {{0, "a"}},                     "{"},
    {"}",                       {{0, "a"}},                     "}"},
    {"{}",                      {{0, "a"}},                     "{}"},
    {"{0",                      {{0, "a"}},                     "{0"},
    {"{0 }",                    {{0, "a"}},                     "{0 }"},
    {"{-1}{+1}{a}{0x}",         {{0, "a"}, {1, "b"}},           "{-1}{+1}{a}{0x}"},
    {"a}b{c",                   {},                             "a}b{c"},
    {"{ {0}",                   {{0, "a"}},                     "{ a"},
    {"{0}}",                    {{0, "a"}},                     "a}"},
    {"{18446744073709551616}",  {{0, "a"}},                     "{18446744073709551616}"},
    {"F\u00E4lle: {0}\u20AC",   {{0, "3"}},                     "F\u00E4lle: 3\u20AC"},
};
// clang-format on

OmNumber NumberOf(NumberRow const& row) {
    OmNumber::Format format;
    format.type = row.type;
    format.decimals = row.decimals;
    format.decimalMark = row.mark;
    format.grouping = row.grouping;
    format.symbol = row.symbol;
    return OmNumber(row.value, format);
}

} // namespace

TEST(TextTable, NumbersShowAsTheirFormatSays) {
    for (NumberRow const& row : Numbers) {
        SCOPED_TRACE("line " + std::to_string(&row - Numbers + 1));
        EXPECT_EQ(NumberOf(row).AsString(), row.plain);
        EXPECT_EQ(NumberOf(row).AsFormattedString(), row.formatted);
    }
}

TEST(TextTable, VariablesShowAsTheirModeSays) {
    for (LabelRow const& row : Labels) {
        SCOPED_TRACE("line " + std::to_string(&row - Labels + 1));
        OmVariable const variable(row.meant, row.label, nullptr, row.mode);
        EXPECT_EQ(variable.AsString(), row.text);
        EXPECT_EQ(variable.AsU8String(), row.text);
        EXPECT_EQ(variable.AsEngString(), row.text);
        EXPECT_EQ(variable.AsFormattedString(), row.text);
        EXPECT_EQ(OmValue(row.meant, row.label, nullptr, row.mode).AsString(), row.text);
    }
}

TEST(TextTable, ValuesShowAsTheirModeSays) {
    OmNumber::Format format;
    format.type = Fixed;
    format.decimals = 1;
    for (ValueRow const& row : Values) {
        SCOPED_TRACE("line " + std::to_string(&row - Values + 1));
        EXPECT_EQ(OmValue(row.value, row.label, nullptr, row.mode).AsString(), row.text);
        OmStringCell const label(row.label);
        OmCellText const* const given = label.TextLength() > 0 ? &label : nullptr;
        OmValue const formatted(OmNumber(row.value, format), given, nullptr, row.mode);
        EXPECT_EQ(formatted.AsString(), row.text);
        EXPECT_EQ(formatted.AsFormattedString(), row.formatted);
    }
}

TEST(TextTable, MessagesShowTheirSlots) {
    for (MessageRow const& row : Messages) {
        SCOPED_TRACE("line " + std::to_string(&row - Messages + 1));
        OmMessage message(row.pattern);
        OmMessage onlyEnglish("other", row.pattern);
        for (auto const& [slot, text] : row.fillers) {
            message.Fill(slot, OmStringCell(text));
            onlyEnglish.Fill(slot, OmStringCell(text));
        }
        EXPECT_EQ(message.AsString(), row.text);
        EXPECT_EQ(message.AsU8String(), row.text);
        EXPECT_EQ(message.AsEngString(), row.text);
        EXPECT_EQ(onlyEnglish.AsEngString(), *row.pattern != '\0' ? row.text : "other");
    }
}
