#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_DISPLAYRECORD_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_DISPLAYRECORD_H

#include "backend/tables/om/OmDimension.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace om_detail {

/// Which categories of one dimension are shown, and in which order.
///
/// Shown positions count the leaves of the category tree in pre-order, hidden ones included (hiding takes a label out
/// of the heading, not a category out of the table). A position's category is the leaf's subscript, low 32 bits. A
/// label path runs from the leaf up; its last entry is the dimension's root, which carries the dimension's name.
///
/// The paths of all leaves share their upper parts: there is one entry for each node, which knows the one above.
///
///     entries   0 Age   1 Young   2 Child   3 Youth   4 Old          leaves  2  3  4
///     above     -       0         1         1         0              paths   2 1 0,  3 1 0,  4 0
///
/// So memory grows with the nodes of the tree, neither with the lengths of the paths nor with the largest subscript.
class DisplayRecord {
public:
    using ConstNode = OmDimension::ConstNode;
    class Path;

    /// Reads the dimension's tree once; the record holds handles into it afterwards.
    explicit DisplayRecord(OmDimension const& dimension);

    std::size_t Shown() const { return _leaves.size(); }

    /// The label path of a shown position, or null past the shown ones. Its nodes stay in place as long as the record.
    Path PathAt(std::uint64_t position);

    /// REQUIRES of both: position < Shown().
    int CategoryAt(std::size_t position) const { return _categories[position]; }
    unsigned int DepthAt(std::size_t position) const { return _entries[_leaves[position]].labels; }

    /// The categories of all shown positions, as subscripts; valid as long as the record.
    std::vector<int> const& Categories() const { return _categories; }

    /// Shown position of a category, or -1. The last of several leaves with one subscript wins.
    std::int64_t PositionOf(int category) const {
        std::size_t const number = static_cast<std::uint32_t>(category);
        return number < _categoryToPosition.size() ? _categoryToPosition[number] : FarPositionOf(category);
    }

    /// Largest label depth: heading lines or columns that the dimension needs when everything is shown.
    int Width() const { return _width; }

private:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    struct Entry {
        ConstNode node;
        std::size_t above;   ///< the parent's entry; None for the root
        unsigned int labels; ///< heading cells that the path from here takes: its visible nodes above `ends`
        bool ends;           ///< this node or one above is a group with hidden labels
    };
    using FarCategory = std::pair<std::uint32_t, std::int32_t>;

    Entry Below(std::size_t above, ConstNode const& node) const;
    void IndexCategories();
    std::int64_t FarPositionOf(int category) const;

    std::vector<Entry> _entries;
    std::vector<std::size_t> _leaves; ///< entry of each shown position
    std::vector<int> _categories;     ///< position to category
    int _width = 0;
    /// Category to position: a dense list (-1 for not shown) up to a length that the number of shown leaves justifies,
    /// and the rest, which only subscripts far apart leave, in a list sorted by category, later positions first.
    std::vector<std::int32_t> _categoryToPosition;
    std::vector<FarCategory> _farCategories;
};

/// One node of a label path with everything above it, or null. Two words, copied freely; valid as long as the record.
///
///     for (Path step = path; step; step = step.Above()) ... step.Node()      // from the leaf to the root
class DisplayRecord::Path {
public:
    Path() = default;

    explicit operator bool() const { return _at != None; }

    /// REQUIRES of all below: the path is not null.
    ConstNode& Node() const { return _entries[_at].node; }
    Path Above() const { return {_entries, _entries[_at].above}; }
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): a path that is not null has entries
    ConstNode& Root() const { return _entries[0].node; }
    std::size_t Length() const { return Node().Depth() + std::size_t{1}; }

    /// Appends the nodes from the root down to this one.
    template <typename Nodes>
    void AppendFromRoot(Nodes& nodes) const {
        std::size_t place = nodes.size() + Length();
        nodes.resize(place, nullptr);
        for (Path step = *this; step; step = step.Above()) {
            nodes[--place] = &step.Node();
        }
    }

private:
    friend class DisplayRecord;
    Path(Entry* entries, std::size_t at) : _entries(entries), _at(at) {}

    Entry* _entries = nullptr;
    std::size_t _at = None;
};

inline DisplayRecord::Path DisplayRecord::PathAt(std::uint64_t position) {
    return position < _leaves.size() ? Path(_entries.data(), _leaves[static_cast<std::size_t>(position)]) : Path();
}

} // namespace om_detail

#endif
