#include "omcell/OmNumber.h"

#include "omcell/OmBlank.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

OmNumber::Format FormatOf(OmNumber::FormatType type, int decimals) {
    OmNumber::Format format;
    format.type = type;
    format.decimals = decimals;
    return format;
}

std::string Fixed(double value, int decimals) {
    return OmNumber(value, FormatOf(OmNumber::FixedFormat, decimals)).AsFormattedString();
}

std::string Scientific(double value, int decimals) {
    return OmNumber(value, FormatOf(OmNumber::ScientificFormat, decimals)).AsFormattedString();
}

double RandomDouble(std::mt19937_64& random) {
    std::uint64_t const bits = random();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

/// Adds one to the last digit of a decimal text, carrying over.
void Increment(std::string& digits) {
    for (std::size_t k = digits.size(); k > 0; --k) {
        char& digit = digits[k - 1];
        if (digit == '.') {
            continue;
        }
        if (digit != '9') {
            ++digit;
            return;
        }
        digit = '0';
    }
    digits.insert(0, "1");
}

/// Rounds by hand, from all the digits that the double has.
std::string FixedByHand(double magnitude, int decimals) {
    char text[1500];
    std::string digits(text, std::to_chars(text, text + sizeof(text), magnitude, std::chars_format::fixed, 1080).ptr);
    std::size_t const end = digits.find('.') + 1 + static_cast<std::size_t>(decimals);
    bool const up = digits[end] >= '5';
    digits.resize(decimals == 0 ? end - 1 : end);
    if (up) {
        Increment(digits);
    }
    return digits;
}

std::string ScientificByHand(double magnitude, int decimals) {
    char text[1500];
    std::string digits(text,
                       std::to_chars(text, text + sizeof(text), magnitude, std::chars_format::scientific, 1080).ptr);
    int exponent = std::stoi(digits.substr(digits.find('e') + 1));
    std::size_t const end = 2 + static_cast<std::size_t>(decimals);
    bool const up = digits[end] >= '5';
    digits.resize(decimals == 0 ? end - 1 : end);
    if (up) {
        Increment(digits);
    }
    if (digits.compare(0, 2, "10") == 0) {
        digits.pop_back();
        exponent += 1;
        digits = decimals == 0 ? "1" : "1." + std::string(static_cast<std::size_t>(decimals), '0');
    }
    std::string const power = std::to_string(std::abs(exponent));
    return digits + (exponent < 0 ? "E-" : "E+") + (power.size() < 2 ? "0" : "") + power;
}

/// Values that lie half way between two texts with `decimals` decimals, and their next neighbours.
std::vector<double> AroundHalfWay(std::mt19937_64& random, int decimals) {
    double const odd = static_cast<double>(random() % (std::uint64_t{1} << 40) * 2 + 1);
    double const half = std::ldexp(odd, -(decimals + 1));
    return {half, std::nextafter(half, 0.0), std::nextafter(half, Infinity)};
}

} // namespace

// --- text ------------------------------------------------------------------------------------------------------------

TEST(OmNumber, StringReadsBackAsTheSameDouble) {
    std::mt19937_64 random(20240607);
    for (int i = 0; i < 20000; ++i) {
        double const value = RandomDouble(random);
        if (std::isnan(value)) {
            continue;
        }
        std::string const text = OmNumber(value).AsString();
        double back = 0.0;
        auto const read = std::from_chars(text.data(), text.data() + text.size(), back);
        ASSERT_EQ(read.ptr, text.data() + text.size()) << text;
        ASSERT_EQ(std::memcmp(&back, &value, sizeof(value)), 0) << text;
    }
}

TEST(OmNumber, AllPlainFormsAreTheSameAndIgnoreTheFormat) {
    OmNumber const number(1234.5, FormatOf(OmNumber::FixedFormat, 0));
    EXPECT_EQ(number.AsString(), "1234.5");
    EXPECT_EQ(number.AsU8String(), "1234.5");
    EXPECT_EQ(number.AsEngString(), "1234.5");
    EXPECT_EQ(number.AsFormattedString(), "1235");
}

TEST(OmNumber, ProcessLocaleDoesNotShow) {
    char const* const before = std::setlocale(LC_ALL, nullptr);
    std::string const restored = before != nullptr ? before : "C";
    bool found = false;
    for (char const* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "C.UTF-8"}) {
        found = found || std::setlocale(LC_ALL, name) != nullptr;
    }
    EXPECT_TRUE(found);
    OmNumber::Format format = FormatOf(OmNumber::FixedFormat, 2);
    format.grouping = U' ';
    EXPECT_EQ(OmNumber(1234.5, format).AsString(), "1234.5");
    EXPECT_EQ(OmNumber(1234.5, format).AsFormattedString(), "1 234.50");
    std::setlocale(LC_ALL, restored.c_str());
}

TEST(OmNumber, FixedRoundingAgreesWithRoundingByHand) {
    for (std::uint64_t const seed : {11U, 12U, 13U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937_64 random(seed);
        for (int i = 0; i < 400; ++i) {
            int const decimals = static_cast<int>(random() % 20);
            for (double const value : AroundHalfWay(random, decimals)) {
                ASSERT_EQ(Fixed(value, decimals), FixedByHand(value, decimals)) << value << ' ' << decimals;
            }
            double const any = std::fabs(RandomDouble(random));
            if (std::isfinite(any)) {
                ASSERT_EQ(Fixed(any, decimals), FixedByHand(any, decimals)) << any << ' ' << decimals;
            }
        }
    }
}

TEST(OmNumber, ScientificRoundingAgreesWithRoundingByHand) {
    for (std::uint64_t const seed : {21U, 22U, 23U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937_64 random(seed);
        for (int i = 0; i < 400; ++i) {
            int const decimals = static_cast<int>(random() % 20);
            std::vector<double> values = AroundHalfWay(random, static_cast<int>(random() % 20));
            values.push_back(std::fabs(RandomDouble(random)));
            for (double const value : values) {
                if (std::isfinite(value) && value != 0.0) {
                    ASSERT_EQ(Scientific(value, decimals), ScientificByHand(value, decimals))
                        << value << ' ' << decimals;
                }
            }
        }
    }
}

// Half way values above the units: 25, 350, 4.5e22 and so on.
TEST(OmNumber, ScientificRoundingOfWholeTensGoesAwayFromZero) {
    double unit = 1.0;
    for (int power = 1; power <= 22; ++power) {
        unit *= 10.0;
        for (int digit = 1; digit <= 9; ++digit) {
            double const value = unit * digit + unit / 2.0;
            ASSERT_EQ(Scientific(value, 0), ScientificByHand(value, 0)) << value;
        }
    }
    EXPECT_EQ(Scientific(25.0, 0), "3E+01");
    EXPECT_EQ(Scientific(-25.0, 0), "-3E+01");
}

TEST(OmNumber, DecimalsBeyondThoseOfAnyDoubleAreCutToThem) {
    std::string const most = Fixed(std::numeric_limits<double>::denorm_min(), 1074);
    EXPECT_EQ(most.size(), 1076U);
    EXPECT_EQ(most.back(), '5');
    EXPECT_EQ(Fixed(std::numeric_limits<double>::denorm_min(), std::numeric_limits<int>::max()), most);
    EXPECT_EQ(Fixed(std::numeric_limits<double>::max(), 1074).size(), 309U + 1U + 1074U);
    EXPECT_EQ(Scientific(1.0, std::numeric_limits<int>::max()).size(), 2U + 1074U + 4U);
    EXPECT_EQ(Fixed(0.5, std::numeric_limits<int>::min()), "0.5");
}

TEST(OmNumber, EveryTypeShowsMissingAsAPoint) {
    for (int type = 0; type <= 4; ++type) {
        OmNumber::Format format = FormatOf(static_cast<OmNumber::FormatType>(type), 3);
        format.symbol = "$";
        OmNumber const missing(OmNumber::MissingValue(), format);
        EXPECT_EQ(missing.AsFormattedString(), ".") << type;
        EXPECT_EQ(missing.AsString(), ".");
        EXPECT_TRUE(missing.IsMissing());
    }
}

TEST(OmNumber, TypeBeyondTheNamedOnesCountsAsGeneral) {
    EXPECT_EQ(OmNumber(1.25, FormatOf(static_cast<OmNumber::FormatType>(77), 1)).AsFormattedString(), "1.3");
}

TEST(OmNumber, MarksMayTakeSeveralBytes) {
    OmNumber::Format format = FormatOf(OmNumber::FixedFormat, 1);
    format.decimalMark = U'\u066B';
    format.grouping = U'\u202F';
    EXPECT_EQ(OmNumber(1234567.25, format).AsFormattedString(), "1\u202F234\u202F567\u066B3");
    format.grouping = U'\U0001F600';
    EXPECT_EQ(OmNumber(-1000, format).AsFormattedString(), "-1\U0001F600000\u066B0");
}

TEST(OmNumber, MarksThatAreNoCharactersShowAsTheReplacementCharacter) {
    OmNumber::Format format = FormatOf(OmNumber::FixedFormat, 1);
    format.decimalMark = static_cast<char32_t>(0xD800);
    EXPECT_EQ(OmNumber(0.5, format).AsFormattedString(), "0\uFFFD5");
    format.decimalMark = static_cast<char32_t>(0x110000);
    EXPECT_EQ(OmNumber(0.5, format).AsFormattedString(), "0\uFFFD5");
    format.decimalMark = 0;
    EXPECT_EQ(OmNumber(0.5, format).AsFormattedString(), "0.5");
}

// --- value and order -------------------------------------------------------------------------------------------------

TEST(OmNumber, NumericValueIsTheValue) {
    EXPECT_EQ(OmNumber(-2.5).NumericValue(), -2.5);
    EXPECT_TRUE(std::isnan(OmNumber(OmNumber::MissingValue()).NumericValue()));
}

TEST(OmNumber, ComparesByValueAndNotByText) {
    EXPECT_LT(OmNumber(9).Compare(OmNumber(10)), 0);
    EXPECT_GT(OmNumber(10).Compare(OmNumber(9)), 0);
    EXPECT_LT(OmNumber(-Infinity).Compare(OmNumber(-1e308)), 0);
    EXPECT_LT(OmNumber(1e308).Compare(OmNumber(Infinity)), 0);
    EXPECT_EQ(OmNumber(1.5).Compare(OmNumber(1.5, FormatOf(OmNumber::PercentFormat, 0))), 0);
}

TEST(OmNumber, BothZerosAreEqual) { EXPECT_TRUE(OmCellText::Equal(OmNumber(-0.0), OmNumber(0.0))); }

TEST(OmNumber, MissingValueSortsBeforeEveryNumber) {
    OmNumber const missing(OmNumber::MissingValue());
    EXPECT_LT(missing.Compare(OmNumber(-Infinity)), 0);
    EXPECT_GT(OmNumber(-Infinity).Compare(missing), 0);
}

TEST(OmNumber, MissingValuesAreEqualWhateverTheirBits) {
    double const negative = std::copysign(OmNumber::MissingValue(), -1.0);
    OmNumber const a(OmNumber::MissingValue());
    OmNumber const b(negative);
    OmNumber const c(std::nan("123"));
    EXPECT_TRUE(OmCellText::Equal(a, a));
    EXPECT_TRUE(OmCellText::Equal(a, b));
    EXPECT_TRUE(OmCellText::Equal(b, c));
    EXPECT_EQ(b.AsString(), ".");
}

// Sorting by an order that is not consistent for NaN may run out of the range.
TEST(OmNumber, OrderIsConsistentAmongAllKindsOfValues) {
    std::vector<double> const values{
        OmNumber::MissingValue(), -Infinity, -1.0, -0.0, 0.0, 1.0, Infinity, std::nan("5")};
    for (double const a : values) {
        for (double const b : values) {
            EXPECT_EQ(OmNumber(a).Compare(OmNumber(b)), -OmNumber(b).Compare(OmNumber(a)));
            for (double const c : values) {
                if (OmNumber(a).Compare(OmNumber(b)) <= 0 && OmNumber(b).Compare(OmNumber(c)) <= 0) {
                    EXPECT_LE(OmNumber(a).Compare(OmNumber(c)), 0) << a << ' ' << b << ' ' << c;
                }
            }
        }
    }
}

TEST(OmNumber, OtherKindsCompareByOrderCode) {
    EXPECT_LT(OmNumber(1e9).Compare(OmBlank()), 0);
    omtest::ForeignLog log;
    omtest::ForeignText foreign(log, "1");
    foreign.spec().orderCode = OmNumber::Order;
    EXPECT_LT(OmNumber(5).Compare(foreign), 0);
    foreign.spec().orderCode = -3;
    EXPECT_GT(OmNumber(5).Compare(foreign), 0);
}

// --- format and storage ----------------------------------------------------------------------------------------------

TEST(OmNumber, NewNumberHasTheGeneralFormat) {
    OmNumber::Format const format = OmNumber(1.0).getFormat();
    EXPECT_EQ(format.type, OmNumber::GeneralFormat);
    EXPECT_EQ(format.decimals, OmNumber::AsNeeded);
    EXPECT_EQ(format.decimalMark, U'.');
    EXPECT_EQ(format.grouping, char32_t{0});
    EXPECT_EQ(format.symbol, "");
}

TEST(OmNumber, FormatIsReplaced) {
    OmNumber number(3.0);
    OmNumber::Format format = FormatOf(OmNumber::CurrencyFormat, 2);
    format.symbol = "CHF ";
    format.decimalMark = U',';
    format.grouping = U'\'';
    number.setFormat(format);
    EXPECT_EQ(number.getFormat().symbol, "CHF ");
    EXPECT_EQ(number.getFormat().decimals, 2);
    EXPECT_EQ(number.getFormat().grouping, U'\'');
    EXPECT_EQ(number.AsFormattedString(), "CHF 3,00");
}

TEST(OmNumber, SymbolLiesInTheRegion) {
    OmMemoryRegion arena(false);
    OmNumber::Format format = FormatOf(OmNumber::CurrencyFormat, 2);
    format.symbol = std::string(40, '$');
    OmNumber const number(1.0, format);
    {
        std::unique_ptr<OmCellText> const clone(number.Clone(&arena));
        EXPECT_EQ(arena.LiveBlocks(), 2U);
        EXPECT_EQ(clone->AsFormattedString(), std::string(40, '$') + "1.00");
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    number.Clone(&arena);
    arena.WorkingRelease(false);
}

TEST(OmNumber, CloneKeepsValueFormatAndMetadata) {
    OmNumber number(0.5, FormatOf(OmNumber::PercentFormat, 1));
    OmCellMetaData meta;
    meta.markers = {"a"};
    number.setMeta(&meta);
    std::unique_ptr<OmCellText> const clone(number.Clone(nullptr));
    EXPECT_EQ(clone->NumericValue(), 0.5);
    EXPECT_EQ(clone->AsFormattedString(), "0.5%");
    EXPECT_EQ(clone->getMarkers(), std::vector<std::string>{"a"});
    EXPECT_NE(dynamic_cast<OmNumber*>(clone.get()), nullptr);
}

TEST(OmNumber, TakesNoMoreThanNineWords) { EXPECT_LE(sizeof(OmNumber), 9 * sizeof(void*)); }
