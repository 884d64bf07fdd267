#ifndef OMTREE_OMCELL_DETAIL_NUMBERTEXT_H
#define OMTREE_OMCELL_DETAIL_NUMBERTEXT_H

#include "omcell/OmNumber.h"

#include <string>
#include <string_view>

/// Turns doubles into text without the process's locale.
namespace om_detail {

/// `OmNumber::Format` with a borrowed symbol.
struct NumberStyle {
    OmNumber::FormatType type;
    int decimals;
    char32_t decimalMark;
    char32_t grouping;
    std::string_view symbol;
};

/// The shortest text that reads back as `value`; "." when it is not a number.
std::string ShortestText(double value);

/// `value` as `style` shows it; the rules stand at `OmNumber::Format`.
std::string FormattedText(double value, NumberStyle const& style);

} // namespace om_detail

#endif
