#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CELLPOSITIONS_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CELLPOSITIONS_H

#include "backend/tables/om/detail/AxisIndexer.h"
#include "backend/tables/om/detail/PositionSet.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace om_detail {

/// The positions of an axis from which probing would find a cell, told by the cells.
///
/// A cell is found from every position whose digits show its subscripts. Most often that is one, but
///
///  - several leaves with one subscript are several digits that show it;
///  - a digit whose dimension stands on the axis again, further in, or on the other axis too, shows nothing that
///    counts: there every digit will do that shows a category at all.
///
/// So the digits of an axis entry fall into chains of digits that do for the same cells, and a cell stands for all
/// positions with one digit out of each chain. Cells are collected by the lowest of these positions.
///
///     leaves       a=4  b=0  c=4  d=7       chains   0 > 2   1   3       a cell with subscript 4 is found from 0 and 2
///
/// O(shown leaves) to make, O(dimensions of the axis) to add a cell, O(positions) to take them.
class CellPositions {
public:
    using Positions = PositionSet::Positions;

    /// Both axes outlive this object. REQUIRES: both are bound to the records.
    CellPositions(AxisIndexer const& axis, AxisIndexer const& other);

    /// Does nothing with a cell that no position shows.
    void Add(int const* cell);

    /// All positions, ascending; the object is used up. Throws std::length_error or std::bad_alloc when there are too
    /// many to list.
    Positions Take();

private:
    static constexpr std::uint32_t End = static_cast<std::uint32_t>(-1);

    /// The digits of one axis entry.
    struct Choice {
        bool counts;                      ///< the cell's subscript decides, so there are several chains
        std::vector<std::uint32_t> first; ///< of each chain; by shown position of the subscript, or just one
        std::vector<std::uint32_t> next;  ///< in the chain of each digit
    };

    Choice ChoiceOf(AxisIndexer::Entry const& entry, bool counts);
    /// Product of the lengths of the chains that start at these digits, all ones when it does not fit; 0 for digits
    /// that are none, as a number of an axis too long for 64 bits may have them.
    std::uint64_t Combinations(Digits const& start) const;
    void AppendAll(Digits const& start, Positions& positions) const;

    AxisIndexer const& _axis;
    std::vector<Choice> _choices;
    PositionSet _found;
    bool _branches = false; ///< some chain has more than one digit
};

} // namespace om_detail

#endif
