#ifndef OMTREE_EXAMPLES_CROSSTAB_HEADINGCELLS_H
#define OMTREE_EXAMPLES_CROSSTAB_HEADINGCELLS_H

#include "omtree.h"

#include <cstddef>
#include <deque>
#include <vector>

namespace crosstab {

/// A merged cell of a row or column heading. Positions run along the axis, levels from the outermost label inwards.
struct HeadingCell {
    std::size_t position;
    std::size_t level;
    std::size_t positions; ///< how many it spans
    std::size_t levels;
    OmDimension::ConstNode const* node; ///< null for an empty cell
};

/// Merges the labels of an axis, given position by position, into cells.
class HeadingMerger {
public:
    using Nodes = std::deque<OmDimension::ConstNode*>;

    /// `extents` says how many levels each dimension takes, outermost first.
    explicit HeadingMerger(std::vector<std::size_t> const& extents);

    /// The next position's label on each level, and its category in each dimension. The nodes outlive the merger.
    void add(Nodes const& labels, Nodes const& categories);

    /// All cells, by position and then by level.
    std::vector<HeadingCell> const& cells() const { return _cells; }

private:
    static constexpr std::size_t NoCell = static_cast<std::size_t>(-1);

    std::size_t levelsFrom(Nodes const& labels, std::size_t level) const;

    std::vector<std::size_t> _dimensionOf; ///< by level
    std::vector<HeadingCell> _cells;
    std::vector<std::size_t> _open; ///< by level, the cell that begins there at the position before
    std::size_t _position = 0;
    Nodes _categories; ///< of the position before
};

} // namespace crosstab

#endif
