#include "examples/crosstab/HeadingCells.h"

#include <algorithm>

namespace crosstab {

namespace {

/// Whether two labels stand for one node of a category tree. Headings hand out one handle for each leaf below a group,
/// so it is the nodes behind the handles that count.
bool sameNode(OmDimension::ConstNode const* a, OmDimension::ConstNode const* b) {
    return a != nullptr && b != nullptr && *a == *b;
}

/// Whether a label goes on with the cell that is open beside it, given that all outside of both is the same.
bool continues(HeadingCell const& open, OmDimension::ConstNode const* label, std::size_t levels, bool sameCategory) {
    bool const sameLabel = label == nullptr && open.node == nullptr ? sameCategory : sameNode(label, open.node);
    return sameLabel && open.levels == levels;
}

} // namespace

HeadingMerger::HeadingMerger(std::vector<std::size_t> const& extents) {
    for (std::size_t dimension = 0; dimension < extents.size(); ++dimension) {
        _dimensionOf.insert(_dimensionOf.end(), extents[dimension], dimension);
    }
    _open.assign(_dimensionOf.size(), NoCell);
}

void HeadingMerger::add(Nodes const& labels, Nodes const& categories) {
    bool sameOutside = _position != 0;
    std::size_t outside = 0; // dimensions whose categories went into `sameOutside`
    for (std::size_t level = 0; level < _open.size();) {
        std::size_t const dimension = _dimensionOf[level];
        // Even where no label tells them apart, what lies inside of different categories is different.
        for (; outside < dimension; ++outside) {
            sameOutside = sameOutside && sameNode(categories[outside], _categories[outside]);
        }
        std::size_t const levels = levelsFrom(labels, level);
        sameOutside = sameOutside && _open[level] != NoCell &&
                      continues(_cells[_open[level]], labels[level], levels,
                                sameNode(categories[dimension], _categories[dimension]));
        if (sameOutside) {
            ++_cells[_open[level]].positions;
        } else {
            _open[level] = _cells.size();
            _cells.push_back({_position, level, 1, levels, labels[level]});
        }
        std::fill_n(_open.begin() + static_cast<std::ptrdiff_t>(level) + 1, levels - 1, NoCell);
        level += levels;
    }
    _categories = categories;
    ++_position;
}

/// How many levels a label takes: its own, and the empty ones that follow in its dimension.
std::size_t HeadingMerger::levelsFrom(Nodes const& labels, std::size_t level) const {
    std::size_t end = level + 1;
    while (end < labels.size() && _dimensionOf[end] == _dimensionOf[level] && labels[end] == nullptr) {
        ++end;
    }
    return end - level;
}

} // namespace crosstab
