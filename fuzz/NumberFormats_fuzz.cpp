// Numbers in their formats: against the exact decimal expansion of the double, rounded by hand, and by reading back
// what is shown.

#include "FuzzTarget.h"
#include "Require.h"
#include "Script.h"
#include "omcell/OmNumber.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

namespace {

using omfuzz::Require;
using omfuzz::RequireSame;

constexpr int MostDecimals = 1074;

std::string Printed(char const* how, int precision, double value) {
    char text[2048];
    int const length = std::snprintf(text, sizeof(text), how, precision, value);
    return {text, static_cast<std::size_t>(length)};
}

/// Digits without a mark, and how many of them stand before it.
struct Decimal {
    std::string digits;
    int whole;
};

/// The double as it is: 1074 decimals hold every bit of the smallest.
Decimal Exact(double magnitude) {
    std::string text = Printed("%.*f", MostDecimals, magnitude);
    auto const mark = text.find('.');
    text.erase(mark, 1);
    return {text, static_cast<int>(mark)};
}

/// Cuts behind `kept` digits, the last of which goes up when the rest is a half or more.
void RoundTo(Decimal& decimal, int kept) {
    if (kept < 0 || kept >= static_cast<int>(decimal.digits.size())) {
        if (kept < 0) {
            decimal = {std::string(static_cast<std::size_t>(decimal.whole), '0'), decimal.whole};
        }
        return;
    }
    bool up = decimal.digits[static_cast<std::size_t>(kept)] >= '5';
    decimal.digits.resize(static_cast<std::size_t>(kept));
    for (std::size_t k = decimal.digits.size(); up && k-- > 0;) {
        up = decimal.digits[k] == '9';
        decimal.digits[k] = up ? '0' : static_cast<char>(decimal.digits[k] + 1);
    }
    if (up) {
        decimal.digits.insert(decimal.digits.begin(), '1');
        ++decimal.whole;
    }
}

std::string Fixed(double magnitude, int decimals) {
    Decimal decimal = Exact(magnitude);
    RoundTo(decimal, decimal.whole + decimals);
    std::string text = decimal.digits;
    text.resize(static_cast<std::size_t>(decimal.whole + decimals), '0');
    if (decimals > 0) {
        text.insert(static_cast<std::size_t>(decimal.whole), ".");
    }
    return text;
}

std::string Scientific(double magnitude, int decimals) {
    Decimal decimal = Exact(magnitude);
    std::size_t const first = std::min(decimal.digits.find_first_not_of('0'), decimal.digits.size() - 1);
    bool const zero = decimal.digits[first] == '0';
    int exponent = zero ? 0 : decimal.whole - 1 - static_cast<int>(first);
    decimal.digits.erase(0, zero ? 0 : first);
    decimal.whole = 1;
    RoundTo(decimal, 1 + decimals);
    exponent += decimal.whole - 1; // it became 10
    std::string text = decimal.digits;
    text.resize(static_cast<std::size_t>(1 + decimals), '0');
    if (decimals > 0) {
        text.insert(1, ".");
    }
    char power[16];
    std::snprintf(power, sizeof(power), "E%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
    return text + power;
}

std::size_t MantissaEnd(std::string const& text) { return std::min(text.find('E'), text.size()); }

int DecimalsOf(std::string const& text) {
    auto const mark = text.find('.');
    return mark == std::string::npos ? 0 : static_cast<int>(MantissaEnd(text) - mark) - 1;
}

std::string WithoutEndZeros(std::string text) {
    if (text.find('.') == std::string::npos) {
        return text;
    }
    std::size_t const end = MantissaEnd(text);
    std::size_t kept = end;
    while (text[kept - 1] == '0') {
        --kept;
    }
    kept -= text[kept - 1] == '.' ? 1 : 0;
    return text.erase(kept, end - kept);
}

double Read(std::string const& text) { return std::strtod(text.c_str(), nullptr); }

/// As short as can be and read back as the same double. Two texts may be; `shown` is taken when it is one of them.
std::string AsNeeded(double magnitude, bool scientific, std::string const& shown) {
    int decimals = 0;
    while (Read(scientific ? Scientific(magnitude, decimals) : Printed("%.*f", decimals, magnitude)) != magnitude) {
        ++decimals;
    }
    std::string const shortest = scientific ? Scientific(magnitude, decimals) : Printed("%.*f", decimals, magnitude);
    bool const formed = (shown.find('E') != std::string::npos) == scientific && shown == WithoutEndZeros(shown);
    return formed && Read(shown) == magnitude && DecimalsOf(shown) <= decimals ? shown : shortest;
}

bool IsScientific(double magnitude) { return magnitude != 0.0 && (magnitude < 1e-4 || magnitude >= 1e15); }

/// `shown` decides between equally short texts where there are several.
std::string Digits(double magnitude, OmNumber::Format const& format, std::string const& shown) {
    int const decimals = std::min(format.decimals, MostDecimals);
    bool const known = format.type > OmNumber::GeneralFormat && format.type <= OmNumber::CurrencyFormat;
    bool const scientific = known ? format.type == OmNumber::ScientificFormat : IsScientific(magnitude);
    auto const rounded = [&] { return scientific ? Scientific(magnitude, decimals) : Fixed(magnitude, decimals); };
    if (known) {
        return decimals < 0 ? AsNeeded(magnitude, scientific, shown) : rounded();
    }
    std::string const whole = AsNeeded(magnitude, scientific, shown);
    return decimals < 0 || DecimalsOf(whole) <= decimals ? whole : WithoutEndZeros(rounded());
}

std::string Utf8(char32_t point) {
    if (point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) {
        point = 0xFFFD;
    }
    std::string text;
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += static_cast<char>(0xC0 + point / 64);
        text += static_cast<char>(0x80 + point % 64);
    } else if (point < 0x10000) {
        text += static_cast<char>(0xE0 + point / 4096);
        text += static_cast<char>(0x80 + point / 64 % 64);
        text += static_cast<char>(0x80 + point % 64);
    } else {
        text += static_cast<char>(0xF0 + point / 262144);
        text += static_cast<char>(0x80 + point / 4096 % 64);
        text += static_cast<char>(0x80 + point / 64 % 64);
        text += static_cast<char>(0x80 + point % 64);
    }
    return text;
}

std::string Dressed(double value, OmNumber::Format const& format, std::string const& digits) {
    std::size_t const mark = digits.find('.');
    std::size_t const whole = std::min({mark, MantissaEnd(digits)});
    std::string text;
    for (std::size_t k = 0; k < whole; ++k) {
        bool const starts = k > 0 && (whole - k) % 3 == 0;
        text += starts && format.grouping != 0 ? Utf8(format.grouping) : "";
        text += digits[k];
    }
    for (std::size_t k = whole; k < digits.size(); ++k) {
        text += k == mark ? Utf8(format.decimalMark != 0 ? format.decimalMark : U'.') : std::string(1, digits[k]);
    }
    bool const zero = digits.substr(0, MantissaEnd(digits)).find_first_not_of("0.") == std::string::npos;
    std::string const sign = std::signbit(value) && !zero ? "-" : "";
    std::string const symbol = format.type == OmNumber::CurrencyFormat ? format.symbol : "";
    return sign + symbol + text + (format.type == OmNumber::PercentFormat ? "%" : "");
}

std::string Plain(double value, OmNumber::Format format) {
    format.decimalMark = U'.';
    format.grouping = 0;
    format.symbol.clear();
    std::string text = OmNumber(value, format).AsFormattedString();
    text.erase(0, text.front() == '-' ? 1 : 0);
    text.resize(std::min(text.find('%'), text.size()));
    return text;
}

double AnyValue(omfuzz::ByteDice& dice) {
    switch (dice.Below(6)) {
    case 0:
        return static_cast<double>(dice.Int(-1000, 1000)) / static_cast<double>(1 << dice.Below(12));
    case 1:
        return static_cast<double>(dice.Int(-100000, 100000)) / 1000.0;
    case 2:
        return std::ldexp(static_cast<double>(dice.Below(std::size_t(1) << 32)), dice.Int(-200, 200));
    case 3: {
        std::string const text = std::to_string(dice.Below(100000)) + "e" + std::to_string(dice.Int(-330, 310));
        return Read(text);
    }
    default: {
        std::uint64_t bits = dice.Below(~std::size_t(0));
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof(value));
        return value;
    }
    }
}

OmNumber::Format AnyFormat(omfuzz::ByteDice& dice) {
    char32_t const marks[] = {0,         U'.',    U',',    U'\'',     U' ',      U'\u00A0',
                              U'\u2019', 0xD800U, 0xFFFFU, 0x10FFFFU, 0x110000U, 0xFFFFFFFFU};
    OmNumber::Format format;
    format.type = static_cast<OmNumber::FormatType>(dice.Int(-1, 6));
    format.decimals = dice.Percent(90) ? dice.Int(-2, 20) : dice.Int(0, 1100);
    format.decimalMark = marks[dice.Below(std::size(marks))];
    format.grouping = marks[dice.Below(std::size(marks))];
    format.symbol = dice.Text(4);
    return format;
}

void CheckPlainForms(OmNumber const& number, double value) {
    std::string const text = number.AsString();
    Require(number.AsU8String() == text && number.AsEngString() == text, "three forms are one");
    Require(!std::isnan(value) || text == ".", "a missing value is a point");
    if (!std::isnan(value)) {
        double const back = Read(text);
        Require(back == value && std::signbit(back) == std::signbit(value), "the plain form reads back");
        Require(text.size() <= Printed("%.*g", 17, value).size() + 1, "and is short");
    }
}

void CheckNumber(double value, OmNumber::Format const& format) {
    OmNumber const number(value, format);
    CheckPlainForms(number, value);
    std::string const shown = number.AsFormattedString();
    if (!std::isfinite(value)) {
        RequireSame(shown, std::isnan(value) ? "." : value < 0 ? "-inf" : "inf", "what is no number");
    } else {
        double const magnitude = std::fabs(value);
        RequireSame(shown, Dressed(value, format, Digits(magnitude, format, Plain(value, format))),
                    "the formatted form");
    }
    std::unique_ptr<OmCellText> const copy(number.Clone(nullptr));
    RequireSame(copy->AsFormattedString(), shown, "a copy shows the same");
    Require(copy->Compare(number) == 0, "a copy is equal");
}

void CheckOrder(double a, double b) {
    short const order = OmNumber(a).Compare(OmNumber(b));
    int const expected = std::isnan(a) || std::isnan(b)
                             ? static_cast<int>(std::isnan(b)) - static_cast<int>(std::isnan(a))
                             : static_cast<int>(a > b) - static_cast<int>(a < b);
    Require((order > 0) - (order < 0) == expected, "numbers are ordered by value, a missing one first");
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    omfuzz::ByteDice dice(data, size);
    double before = 0.0;
    for (int k = 0; k < 20 && !dice.Spent(); ++k) {
        double const value = AnyValue(dice);
        CheckNumber(value, AnyFormat(dice));
        CheckOrder(before, value);
        before = value;
    }
    return 0;
}
