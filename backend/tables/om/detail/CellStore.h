#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CELLSTORE_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CELLSTORE_H

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/PointerVector.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

class OmCellText;

/// A table's cells by index: one level of nodes for each dimension, the last dimension's at the root, dimension 0's in
/// the leaves.
///
///     level 2                 level 1                      level 0 (leaves)
///     +---+   +---+---+---+   +----+----+----+             +------+------+------+
///     | ---->| 0 | 1 | 2 |--->| 0  | 1  | 2  |  ---------> | cell | null | cell |
///     +---+   +---+---+---+   +----+----+----+             +------+------+------+
///     root                    scattered (see PointerVector): its cells stand in it, and there are no leaves below
///
/// Nodes live in the table's region, which its end sweeps as a whole. Indexes are given as a pointer to as many
/// subscripts as there are levels, none of them negative. The store owns no cell and calls none.
class OMTREE_LOCAL OmPivotTable::CellStore {
public:
    explicit CellStore(OmMemoryRegion& region) : _region(region) {}

    CellStore(CellStore const&) = delete;
    CellStore& operator=(CellStore const&) = delete;

    std::size_t Levels() const { return _extents.size(); }
    PointerVector* Root() const { return static_cast<PointerVector*>(_root); }

    /// Puts a new root above the old one, if there is one, for a dimension just about to be added: every cell has
    /// subscript 0 on it. Throws std::bad_alloc; nothing has changed then.
    void AddLevel();

    /// Whether no subscript is past all that were ever stored on its level. One comparison a level, no memory touched
    /// but the few extents: most absent positions of a dense table end here. A negative subscript is past everything.
    bool IsInside(int const* index) const {
        bool inside = true;
        for (std::size_t k = 0; k < _extents.size(); ++k) {
            inside &= static_cast<std::uint32_t>(index[k]) < _extents[k];
        }
        return inside;
    }

    /// The cell, or null. O(levels). REQUIRES: at least one level, `IsInside(index)`.
    OmCellText* Find(int const* index) const {
        PointerVector const* node = Root();
        for (std::size_t k = _extents.size() - 1; k > 0; --k) {
            if (node->IsScattered()) {
                return static_cast<OmCellText*>(node->Cell(Subscript(index, 1), Subscript(index, 0)));
            }
            node = static_cast<PointerVector const*>(node->Entry(Subscript(index, k)));
            if (node == nullptr) {
                return nullptr;
            }
        }
        return static_cast<OmCellText*>(node->Entry(Subscript(index, 0)));
    }

    /// Where a cell stands. Valid until `Changes()` changes.
    class Place {
    public:
        OmCellText* Cell() const { return static_cast<OmCellText*>(*_entry); }

    private:
        friend class CellStore;
        PointerVector* _node;
        void** _entry;
    };

    /// The place for an index, with every node on the way to it made and grown to hold it. Amortised O(levels).
    /// REQUIRES: at least one level. Throws std::bad_alloc; no cell has changed then.
    Place Grow(int const* index);

    void Put(Place place, OmCellText* cell) {
        int const more = (cell != nullptr ? 1 : 0) - (place.Cell() != nullptr ? 1 : 0);
        *place._entry = cell;
        if (more > 0) {
            place._node->CountIn();
            ++_present;
        } else if (more < 0) {
            place._node->CountOut();
            --_present;
        }
    }

    /// What became of `Remove`.
    enum class Removal { Done, NothingThere, OutsideOfNode };

    /// Takes a cell out, gives it to the caller, and destroys the nodes above it that have become empty, the root
    /// excepted. REQUIRES: a root. Throws std::bad_alloc; no cell has changed then.
    Removal Remove(int const* index, OmCellText*& cell);

    /// The second half of `Remove`, after the caller has destroyed the cell.
    void DestroyEmptyNodes(int const* index);

    /// Cells that are present.
    std::size_t Present() const { return _present; }

    /// Counts the times that places and nodes moved. Whoever remembers one looks whether it still holds.
    std::uint64_t Changes() const { return _changes; }

private:
    static std::uint32_t Subscript(int const* index, std::size_t level) {
        return static_cast<std::uint32_t>(index[level]);
    }
    bool PathTo(int const* index, std::vector<void**>& links);

    OmMemoryRegion& _region;
    void* _root = nullptr;
    std::vector<std::uint32_t> _extents; ///< one for each level: the largest length that a node on it has had
    std::size_t _present = 0;
    std::uint64_t _changes = 0;
};

#endif
