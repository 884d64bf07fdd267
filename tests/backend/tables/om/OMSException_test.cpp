#include "backend/tables/om/OMSException.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/SlotOrder.h"

#include <gtest/gtest.h>

#include <exception>
#include <limits>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

std::string What(double value1, double value2) { return OMSException("m", value1, value2).what(); }

/// Writes 1234.5 as 1.234,5.
class CommaPoint : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class GlobalLocale {
public:
    explicit GlobalLocale(std::locale const& locale) : _before(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(_before); }
    GlobalLocale(GlobalLocale const&) = delete;
    GlobalLocale& operator=(GlobalLocale const&) = delete;

private:
    std::locale _before;
};

} // namespace

TEST(OMSException, MessageAloneEndsInTwoZeros) {
    EXPECT_STREQ(OMSException("OmPivotTable::Size() -- which < 0").what(),
                 "OmPivotTable::Size() -- which < 0, value 1 == 0, value 2 == 0");
}

TEST(OMSException, MessageAndFirstValueLeaveTheSecondZero) {
    EXPECT_STREQ(OMSException("OmPivotTable::Size() -- which < 0", -2).what(),
                 "OmPivotTable::Size() -- which < 0, value 1 == -2, value 2 == 0");
}

TEST(OMSException, MessageAndBothValues) {
    EXPECT_STREQ(OMSException("OmPivotTable::Dimension() -- which < NDimensions()", 7, 3).what(),
                 "OmPivotTable::Dimension() -- which < NDimensions(), value 1 == 7, value 2 == 3");
}

TEST(OMSException, MessageMayBeEmptyOrHoldPatternCharacters) {
    EXPECT_STREQ(OMSException("").what(), ", value 1 == 0, value 2 == 0");
    EXPECT_STREQ(OMSException("100%s %n {0}", 1).what(), "100%s %n {0}, value 1 == 1, value 2 == 0");
}

// Printing as an integer or with %f would show all digits or trailing zeros.
TEST(OMSException, ValuesHaveSixSignificantDigitsAndNoTrailingZeros) {
    EXPECT_EQ(What(0.1, 3.14159265), "m, value 1 == 0.1, value 2 == 3.14159");
    EXPECT_EQ(What(123456, 1234567), "m, value 1 == 123456, value 2 == 1.23457e+06");
    EXPECT_EQ(What(2147483647, 999999.5), "m, value 1 == 2.14748e+09, value 2 == 1e+06");
    EXPECT_EQ(What(100, 2.50), "m, value 1 == 100, value 2 == 2.5");
}

TEST(OMSException, SmallAndLargeValuesUseAnExponent) {
    EXPECT_EQ(What(0.0001, 0.00001), "m, value 1 == 0.0001, value 2 == 1e-05");
    EXPECT_EQ(What(1e300, -1.5e-300), "m, value 1 == 1e+300, value 2 == -1.5e-300");
    EXPECT_EQ(What(18446744073709551615.0, 5e-324), "m, value 1 == 1.84467e+19, value 2 == 4.94066e-324");
}

// The exact reference: a stream as it comes out of its constructor.
TEST(OMSException, ValuesReadAsAStandardStreamWritesThem) {
    std::vector<double> const values{0.0,
                                     -0.0,
                                     1.0,
                                     -1.0,
                                     0.5,
                                     999999,
                                     1000000,
                                     999999.5,
                                     1e-4,
                                     9.9999e-5,
                                     123456.5,
                                     1.0 / 3.0,
                                     2e9,
                                     -2e9,
                                     1e15,
                                     1e16,
                                     4294967295,
                                     1e-7,
                                     std::numeric_limits<double>::max(),
                                     std::numeric_limits<double>::min(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN()};
    for (double const value : values) {
        std::ostringstream expected;
        expected << "m, value 1 == " << value << ", value 2 == " << -value;
        EXPECT_EQ(What(value, -value), expected.str());
    }
}

TEST(OMSException, GlobalLocaleDoesNotChangeTheText) {
    GlobalLocale const locale(std::locale(std::locale::classic(), new CommaPoint));
    std::ostringstream control;
    control << 123456.0 << " " << 0.5;
    ASSERT_EQ(control.str(), "123.456 0,5");
    EXPECT_EQ(What(123456, 0.5), "m, value 1 == 123456, value 2 == 0.5");
}

// Texts of one length: a buffer that the objects shared would be overwritten in place.
TEST(OMSException, PointerStaysValidUntilTheNextCallOnTheSameObject) {
    OMSException const first("first", 1, 2);
    OMSException const other("other", 3, 4);
    char const* const text = first.what();
    EXPECT_STREQ(other.what(), "other, value 1 == 3, value 2 == 4");
    EXPECT_STREQ(text, "first, value 1 == 1, value 2 == 2");
    OMSException const copy = first;
    EXPECT_NE(copy.what(), text);
    EXPECT_STREQ(text, "first, value 1 == 1, value 2 == 2");
}

TEST(OMSException, SecondCallGivesTheSameText) {
    OMSException const exception("m", 7, 3);
    std::string const before = exception.what();
    EXPECT_EQ(exception.what(), before);
}

TEST(OMSException, CopyOutlivesItsSource) {
    auto source = std::make_unique<OMSException>("a message too long for a small string buffer", 7, 3);
    source->what();
    OMSException const copy = *source;
    OMSException assigned("other");
    assigned = *source;
    source.reset();
    EXPECT_STREQ(copy.what(), "a message too long for a small string buffer, value 1 == 7, value 2 == 3");
    EXPECT_STREQ(assigned.what(), copy.what());
}

TEST(OMSException, IsCaughtAsStandardExceptionAcrossTheLibrary) {
    try {
        throw OMSException("m", 1, 2);
    } catch (std::exception const& caught) {
        EXPECT_STREQ(caught.what(), "m, value 1 == 1, value 2 == 2");
        EXPECT_NE(dynamic_cast<OMSException const*>(&caught), nullptr);
    }
}

TEST(OMSException, KeepsMessageAndValuesReadable) {
    OMSException const exception("m", 1.5, -2);
    EXPECT_EQ(exception.Message(), "m");
    EXPECT_EQ(exception.Value1(), 1.5);
    EXPECT_EQ(exception.Value2(), -2.0);
}

TEST(OMSException, AskingForTheTextNeverThrows) {
    static_assert(noexcept(std::declval<OMSException const&>().what()));
    static_assert(std::is_base_of_v<std::exception, OMSException>);
    static_assert(std::has_virtual_destructor_v<OMSException>);
    static_assert(!std::is_convertible_v<std::string, OMSException>, "a string is no exception by accident");
    EXPECT_STREQ(OMSException("m", 1).what(), "m, value 1 == 1, value 2 == 0");
}

// A stream swallows the failure and would give a text that breaks off anywhere.
TEST(OMSException, WithoutMemoryTheTextIsTheMessageAlone) {
    OMSException const exception("OmPivotTable::Size() -- which < 0", -1, 0);
    omtest::Heap().untilFailure = 0;
    char const* const text = exception.what();
    omtest::Heap().untilFailure = -1;
    EXPECT_STREQ(text, "OmPivotTable::Size() -- which < 0");
    EXPECT_STREQ(exception.what(), "OmPivotTable::Size() -- which < 0, value 1 == -1, value 2 == 0");
}

TEST(OMSException, DestructorAndWhatAreItsVirtualOperations) {
    EXPECT_EQ(omtest::SlotOf(&OMSException::what), 2U);
    EXPECT_EQ(omtest::SlotOf(&OMSException::Message), omtest::NoSlot);
    EXPECT_EQ(omtest::SlotOf(&OMSException::Value1), omtest::NoSlot);
    EXPECT_EQ(omtest::SlotOf(&OMSException::Value2), omtest::NoSlot);
    EXPECT_TRUE(std::has_virtual_destructor_v<OMSException>);
}
