#ifndef OMTREE_EXAMPLES_CROSSTAB_DECIMALSUM_H
#define OMTREE_EXAMPLES_CROSSTAB_DECIMALSUM_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace crosstab {

/// Adds decimal numbers without any rounding, so that 0.1 and 0.2 make 0.3 and the order of the lines of a file does
/// not matter. Only the finished sum is rounded, once, to the nearest double.
///
///     12345.6789     ...  | 000012345 | 678900000 | ...        one signed 64-bit entry for each nine decimal places
///                            block 0     block -1              that some number reached; carries wait for `value`
///
/// Costs O(digits) for each number; memory grows with the places reached, not with the number of lines.
class DecimalSum {
public:
    enum class Outcome {
        Added,
        NotANumber, ///< nothing was added
        OutOfRange  ///< a number, but not one that a double can hold; nothing was added
    };

    /// Adds a number as people and programs write them: blanks around it, a sign, digits with or without a decimal
    /// point, an exponent. "inf", "nan" and hexadecimal forms are no numbers here.
    Outcome add(std::string_view text);

    /// The double nearest to the sum; an infinity when it is beyond the largest one.
    double value() const;

private:
    /// Adds `sign` times the digits, the last of which stands at the power `lowest` of ten.
    void addDigits(std::string_view digits, long long lowest, int sign);
    void carry();

    std::map<long long, std::int64_t> _blocks;
    std::uint32_t _waiting = 0; ///< numbers added since the last carry
};

} // namespace crosstab

#endif
