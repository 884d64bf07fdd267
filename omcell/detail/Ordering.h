#ifndef OMTREE_OMCELL_DETAIL_ORDERING_H
#define OMTREE_OMCELL_DETAIL_ORDERING_H

#include "omcell/OmCellText.h"

#include <string_view>

/// The pieces that the kinds' `Compare` operations are made of.
namespace om_detail {

/// -1, 0 or 1 as `a` is less than, equal to or greater than `b`.
template <typename T>
short Order(T const& a, T const& b) {
    return static_cast<short>(static_cast<int>(b < a) - static_cast<int>(a < b));
}

/// By unsigned bytes, a prefix before the longer text.
inline short OrderBytes(std::string_view a, std::string_view b) {
    // char_traits<char> compares as unsigned char, whatever the sign of char is.
    return Order(a.compare(b), 0);
}

/// How `text`, of a kind of ours, sorts against a text of another kind: by order code. A foreign kind that uses one of
/// our codes sorts behind every text of ours with that code: its contents are unknown, so the two are never equal, and
/// the order among texts of ours stays what it was.
inline short OrderKinds(OmCellText const& text, OmCellText const& otherKind) {
    short const order = Order(text.OrderCode(), otherKind.OrderCode());
    return order != 0 ? order : short{-1};
}

} // namespace om_detail

#endif
