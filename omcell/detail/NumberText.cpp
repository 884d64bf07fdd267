#include "omcell/detail/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace om_detail {
namespace {

constexpr int MostDecimals = 1074;      // the smallest double is 2 to the power of -1074
constexpr double GeneralFrom = 1e-4;    // below, and
constexpr double GeneralTo = 1e15;      // from here up, the general format is scientific
constexpr int ExactPowers = 22;         // 10 to the power of 22 is the last one that is a double
constexpr std::size_t TextBytes = 1408; // 309 digits, a mark and MostDecimals fit

std::string ToChars(double magnitude, std::chars_format notation) {
    char text[TextBytes];
    return {text, std::to_chars(text, text + TextBytes, magnitude, notation).ptr};
}

std::string ToChars(double magnitude, std::chars_format notation, int decimals) {
    char text[TextBytes];
    return {text, std::to_chars(text, text + TextBytes, magnitude, notation, decimals).ptr};
}

std::size_t PartEnd(std::string const& digits) { return std::min(digits.find('e'), digits.size()); }

int DecimalsIn(std::string const& digits) {
    std::size_t const mark = digits.find('.');
    return mark == std::string::npos ? 0 : static_cast<int>(PartEnd(digits) - mark - 1);
}

int ExponentIn(std::string const& digits) {
    std::size_t start = digits.find('e') + 1;
    start += digits[start] == '+' ? 1 : 0;
    int exponent = 0;
    std::from_chars(digits.data() + start, digits.data() + digits.size(), exponent);
    return exponent;
}

// Whether the exact value lies half way between two neighbours with that many decimals (a negative number of them
// stands for whole tens, hundreds ...). With D decimals that is an odd multiple of 1/2 * 10^-D; powers of five do not
// divide a double's denominator, so it is an odd multiple of 2^-(D+1). For whole powers of ten above 10^22 a double
// lacks the bits.
bool IsHalfWay(double magnitude, int decimals) {
    if (decimals >= 0) {
        return std::fmod(std::ldexp(magnitude, decimals + 1), 2.0) == 1.0;
    }
    double unit = 1.0;
    for (int power = std::min(-decimals, ExactPowers); power > 0; --power) {
        unit *= 10.0;
    }
    return -decimals <= ExactPowers && std::fmod(magnitude, unit) == unit / 2.0;
}

// Adds one to the last digit of a decimal text that may have a mark in it.
void Increment(std::string& digits) {
    std::size_t place = digits.find_last_not_of("9.");
    if (place == std::string::npos) {
        digits.insert(digits.begin(), '0');
        place = 0;
    }
    ++digits[place];
    for (++place; place < digits.size(); ++place) {
        digits[place] = digits[place] == '9' ? '0' : digits[place];
    }
}

void AppendExponent(std::string& digits, int exponent) {
    std::string const power = std::to_string(std::abs(exponent));
    digits += exponent < 0 ? "e-" : "e+";
    digits.append(power.size() < 2 ? 1 : 0, '0');
    digits += power;
}

// std::to_chars goes to the even neighbour from half way. One decimal more shows such a value exactly, with a 5 at the
// end; without it, and one up, that is the neighbour away from zero.
std::string HalfWayUp(double magnitude, std::chars_format notation, int decimals) {
    std::string digits = ToChars(magnitude, notation, decimals + 1);
    std::size_t const end = PartEnd(digits);
    std::string const rest = digits.substr(end);
    digits.resize(end - (decimals == 0 ? 2 : 1));
    Increment(digits);
    if (rest.empty()) {
        return digits;
    }
    bool const carried = digits.size() > 1 && digits[1] == '0';
    if (carried) {
        digits.erase(1, 1);
    }
    AppendExponent(digits, ExponentIn(rest) + (carried ? 1 : 0));
    return digits;
}

std::string FixedDigits(double magnitude, int decimals) {
    if (decimals < 0) {
        return ToChars(magnitude, std::chars_format::fixed);
    }
    return IsHalfWay(magnitude, decimals) ? HalfWayUp(magnitude, std::chars_format::fixed, decimals)
                                          : ToChars(magnitude, std::chars_format::fixed, decimals);
}

std::string ScientificDigits(double magnitude, int decimals) {
    std::string shortest = ToChars(magnitude, std::chars_format::scientific);
    if (decimals < 0) {
        return shortest;
    }
    return IsHalfWay(magnitude, decimals - ExponentIn(shortest))
               ? HalfWayUp(magnitude, std::chars_format::scientific, decimals)
               : ToChars(magnitude, std::chars_format::scientific, decimals);
}

void DropEndZeros(std::string& digits) {
    if (DecimalsIn(digits) == 0) {
        return;
    }
    std::size_t const end = PartEnd(digits);
    std::size_t kept = digits.find_last_not_of('0', end - 1);
    kept += digits[kept] == '.' ? 0 : 1;
    digits.erase(kept, end - kept);
}

std::string GeneralDigits(double magnitude, int decimals) {
    bool const scientific = magnitude != 0.0 && (magnitude < GeneralFrom || magnitude >= GeneralTo);
    auto* const digitsOf = scientific ? ScientificDigits : FixedDigits;
    std::string digits = digitsOf(magnitude, OmNumber::AsNeeded);
    if (decimals >= 0 && DecimalsIn(digits) > decimals) {
        digits = digitsOf(magnitude, decimals);
        DropEndZeros(digits);
    }
    return digits;
}

std::string DigitsOf(double magnitude, NumberStyle const& style) {
    int const decimals = std::min(style.decimals, MostDecimals);
    switch (style.type) {
    case OmNumber::FixedFormat:
    case OmNumber::PercentFormat:
    case OmNumber::CurrencyFormat:
        return FixedDigits(magnitude, decimals);
    case OmNumber::ScientificFormat:
        return ScientificDigits(magnitude, decimals);
    case OmNumber::GeneralFormat:
        break;
    }
    return GeneralDigits(magnitude, decimals);
}

void AppendU8(std::string& text, char32_t point) {
    bool const isCharacter = point < 0xD800 || (point > 0xDFFF && point <= 0x10FFFF);
    char32_t const shown = isCharacter ? point : U'\uFFFD';
    if (shown < 0x80) {
        text += static_cast<char>(shown);
        return;
    }
    int const more = shown < 0x800 ? 1 : shown < 0x10000 ? 2 : 3;
    constexpr char32_t Lead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(Lead[more] | shown >> 6 * more);
    for (int k = more - 1; k >= 0; --k) {
        text += static_cast<char>(0x80 | (shown >> 6 * k & 0x3F));
    }
}

void AppendWholePart(std::string& text, std::string_view whole, char32_t grouping) {
    for (std::size_t k = 0; k < whole.size(); ++k) {
        if (k > 0 && grouping != 0 && (whole.size() - k) % 3 == 0) {
            AppendU8(text, grouping);
        }
        text += whole[k];
    }
}

void AppendDigits(std::string& text, std::string_view digits, NumberStyle const& style) {
    std::size_t const whole = std::min(digits.find_first_of(".e"), digits.size());
    AppendWholePart(text, digits.substr(0, whole), style.grouping);
    for (char const digit : digits.substr(whole)) {
        if (digit == '.') {
            AppendU8(text, style.decimalMark != 0 ? style.decimalMark : U'.');
        } else {
            text += digit == 'e' ? 'E' : digit;
        }
    }
}

bool IsZero(std::string const& digits) { return digits.find_first_of("123456789") >= PartEnd(digits); }

} // namespace

std::string ShortestText(double value) {
    if (std::isnan(value)) {
        return ".";
    }
    char text[64];
    return {text, std::to_chars(text, text + sizeof(text), value).ptr};
}

std::string FormattedText(double value, NumberStyle const& style) {
    if (!std::isfinite(value)) {
        return ShortestText(value);
    }
    std::string const digits = DigitsOf(std::fabs(value), style);
    std::string text;
    if (std::signbit(value) && !IsZero(digits)) {
        text += '-';
    }
    if (style.type == OmNumber::CurrencyFormat) {
        text += style.symbol;
    }
    AppendDigits(text, digits, style);
    if (style.type == OmNumber::PercentFormat) {
        text += '%';
    }
    return text;
}

} // namespace om_detail
