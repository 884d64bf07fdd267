#include "examples/crosstab/DecimalSum.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <limits>
#include <optional>
#include <system_error>

namespace crosstab {

namespace {

constexpr int PlacesPerBlock = 9;
constexpr std::int64_t BlockBase = 1'000'000'000;
// Entries stay below 2^30 times the block base plus a carry, well inside 64 bits.
constexpr std::uint32_t MostWaiting = 1U << 30U;
// Exponents beyond are as good as infinite, and sums with the length of a text cannot overflow.
constexpr long long ExponentLimit = std::numeric_limits<long long>::max() / 4;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

long long quotientDown(long long dividend, long long divisor) {
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

template <typename Blocks>
std::int64_t entryOf(Blocks const& blocks, long long block) {
    auto const found = blocks.find(block);
    return found != blocks.end() ? found->second : 0;
}

/// A number taken apart: sign, digits without a point, and the power of ten of the last digit.
struct Decimal {
    int sign = 1;
    std::string digits;
    long long lowest = 0;
};

class DecimalScanner {
public:
    explicit DecimalScanner(std::string_view text) : _rest(text) {}

    std::optional<Decimal> scan() {
        Decimal number;
        if (take('-')) {
            number.sign = -1;
        } else {
            take('+');
        }
        takeDigits(number.digits);
        if (take('.')) {
            std::size_t const whole = number.digits.size();
            takeDigits(number.digits);
            number.lowest = -static_cast<long long>(number.digits.size() - whole);
        }
        if (number.digits.empty()) {
            return std::nullopt;
        }
        if (take('e') || take('E')) {
            std::optional<long long> const exponent = takeExponent();
            if (!exponent) {
                return std::nullopt;
            }
            number.lowest += *exponent;
        }
        return _rest.empty() ? std::optional(number) : std::nullopt;
    }

private:
    bool take(char wanted) {
        if (_rest.empty() || _rest.front() != wanted) {
            return false;
        }
        _rest.remove_prefix(1);
        return true;
    }

    void takeDigits(std::string& digits) {
        auto const end = std::find_if_not(_rest.begin(), _rest.end(), isDigit);
        auto const length = static_cast<std::size_t>(end - _rest.begin());
        digits += _rest.substr(0, length);
        _rest.remove_prefix(length);
    }

    std::optional<long long> takeExponent() {
        bool const negative = take('-');
        if (!negative) {
            take('+');
        }
        std::string digits;
        takeDigits(digits);
        if (digits.empty()) {
            return std::nullopt;
        }
        long long exponent = 0;
        for (char const digit : digits) {
            exponent = exponent > ExponentLimit / 10 ? ExponentLimit : exponent * 10 + (digit - '0');
        }
        return negative ? -exponent : exponent;
    }

    std::string_view _rest;
};

} // namespace

DecimalSum::Outcome DecimalSum::add(std::string_view text) {
    std::optional<Decimal> const number = DecimalScanner(trimmed(text)).scan();
    if (!number) {
        return Outcome::NotANumber;
    }
    std::string_view digits = number->digits;
    std::size_t const leading = digits.find_first_not_of('0');
    if (leading == std::string_view::npos) {
        return Outcome::Added;
    }
    std::size_t const trailing = digits.size() - 1 - digits.find_last_not_of('0');
    digits = digits.substr(leading, digits.size() - leading - trailing);
    long long const lowest = number->lowest + static_cast<long long>(trailing);

    // Whether a double can hold it is for the conversion to say, once the exponent is small enough to be written.
    constexpr long long Far = 1000;
    long long const highest = lowest + static_cast<long long>(digits.size());
    if (highest > Far || highest < -Far) {
        return Outcome::OutOfRange;
    }
    std::string const scientific = "0." + std::string(digits) + 'e' + std::to_string(highest);
    double rounded = 0;
    if (std::from_chars(scientific.data(), scientific.data() + scientific.size(), rounded).ec != std::errc()) {
        return Outcome::OutOfRange;
    }
    addDigits(digits, lowest, number->sign);
    return Outcome::Added;
}

void DecimalSum::addDigits(std::string_view digits, long long lowest, int sign) {
    if (_waiting == MostWaiting) {
        carry();
    }
    ++_waiting;
    long long block = quotientDown(lowest, PlacesPerBlock);
    std::int64_t weight = 1;
    for (long long place = block * PlacesPerBlock; place < lowest; ++place) {
        weight *= 10;
    }
    std::int64_t part = 0;
    for (std::size_t i = digits.size(); i > 0; --i) {
        part += weight * (digits[i - 1] - '0');
        weight *= 10;
        if (weight == BlockBase) {
            _blocks[block++] += sign * part;
            part = 0;
            weight = 1;
        }
    }
    if (part != 0) {
        _blocks[block] += sign * part;
    }
}

/// Leaves every entry but the highest between 0 and the block base; that one alone may be negative, and then is -1.
void DecimalSum::carry() {
    _waiting = 0;
    for (auto entry = _blocks.begin(); entry != _blocks.end(); ++entry) {
        long long const over = quotientDown(entry->second, BlockBase);
        bool const highest = std::next(entry) == _blocks.end();
        if (over == 0 || (highest && over == -1 && entry->second == -1)) {
            continue;
        }
        entry->second -= over * BlockBase;
        _blocks[entry->first + 1] += over;
    }
}

double DecimalSum::value() const {
    DecimalSum sum(*this);
    sum.carry();
    bool const negative = !sum._blocks.empty() && sum._blocks.rbegin()->second < 0;
    if (negative) {
        for (auto& [block, entry] : sum._blocks) {
            entry = -entry;
        }
        sum.carry();
    }
    if (sum._blocks.empty()) {
        return 0;
    }

    std::string text;
    long long highest = sum._blocks.rbegin()->first;
    while (highest > sum._blocks.begin()->first && entryOf(sum._blocks, highest) == 0) {
        --highest;
    }
    long long const lowest = sum._blocks.begin()->first;
    for (long long block = highest; block >= lowest; --block) {
        std::string const entry = std::to_string(entryOf(sum._blocks, block));
        text.append(PlacesPerBlock - entry.size(), '0').append(entry);
    }
    text += 'e' + std::to_string(lowest * PlacesPerBlock);
    double result = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), result).ec != std::errc()) {
        // What is too small for a double is what is left when all but the last digits cancel.
        result = highest < 0 ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative && result != 0 ? -result : result;
}

} // namespace crosstab
