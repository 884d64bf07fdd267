#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_DISPLAYRECORD_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_DISPLAYRECORD_H

#include "backend/tables/om/OmDimension.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>
#include <vector>

namespace om_detail {

/// Which categories of one dimension are shown, and in which order.
///
/// Shown positions count the leaves of the category tree in pre-order, hidden ones included (hiding takes a label out
/// of the heading, not a category out of the table). A position's category is the leaf's subscript, low 32 bits. A
/// label path is stored leaf first; its last entry is the dimension's root, which carries the dimension's name.
///
/// Memory grows with the shown leaves and the lengths of their paths, not with the largest subscript.
class DisplayRecord {
public:
    using ConstNode = OmDimension::ConstNode;
    using Path = std::vector<ConstNode>;

    /// Reads the dimension's tree once; the record holds handles into it afterwards.
    explicit DisplayRecord(OmDimension const& dimension);

    std::size_t Shown() const { return _shownPaths.size(); }

    /// The label path of a shown position, or null past the shown ones. Entries stay in place as long as the record.
    Path* PathAt(std::uint64_t position) {
        return position < _shownPaths.size() ? &_shownPaths[static_cast<std::size_t>(position)] : nullptr;
    }

    /// REQUIRES of both: position < Shown().
    std::uint32_t CategoryAt(std::size_t position) const { return _positionToCategory[position]; }
    unsigned int DepthAt(std::size_t position) const { return _leafDepths[position]; }

    /// Shown position of a category, or -1. The last of several leaves with one subscript wins.
    std::int64_t PositionOf(std::uint32_t category) const;

    /// Largest label depth: heading lines or columns that the dimension needs when everything is shown.
    int Width() const { return _width; }

private:
    void Append(Path path);
    void IndexCategories();

    std::deque<Path> _shownPaths;
    std::vector<unsigned int> _leafDepths;
    int _width = 0;
    std::vector<std::uint32_t> _positionToCategory;
    /// Category to position: a dense list (-1 for not shown) up to a length that the number of shown leaves justifies,
    /// and the rest, which only subscripts far apart leave, in a hash.
    std::vector<std::int32_t> _categoryToPosition;
    std::unordered_map<std::uint32_t, std::int32_t> _farCategories;
};

} // namespace om_detail

#endif
