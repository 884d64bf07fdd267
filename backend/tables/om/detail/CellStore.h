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
///     root                    usually spans its leaves (see PointerVector): the cells stand in it
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

    /// What a look-up needs to know of an index before it follows it.
    struct Reach {
        bool inside;   ///< no subscript is past all that were ever stored on its level
        bool negative; ///< some subscript is, which is past everything
    };

    /// One comparison a level, no memory touched but the few extents: most absent positions of a dense table end here.
    Reach ReachOf(int const* index) const {
        std::uint32_t inside = 1;
        int signs = 0;
        for (std::size_t k = 0; k < _extents.size(); ++k) {
            inside &= static_cast<std::uint32_t>(index[k]) < _extents[k] ? 1U : 0U;
            signs |= index[k];
        }
        return {inside != 0, signs < 0};
    }

    /// The cell, or null. O(levels). REQUIRES: at least one level, and the index inside.
    OmCellText* Find(int const* index) const {
        PointerVector const* node = Root();
        for (std::size_t k = _extents.size() - 1; k > 0; --k) {
            if (node->SpansLeaves()) {
                return static_cast<OmCellText*>(node->Cell(Subscript(index, 1), Subscript(index, 0)));
            }
            void* const* const entries = node->DenseEntries();
            if (entries == nullptr) {
                return FindBelow(*node, k, index);
            }
            std::uint32_t const position = Subscript(index, k);
            if (position >= node->Length() || entries[position] == nullptr) {
                return nullptr;
            }
            node = static_cast<PointerVector const*>(entries[position]);
        }
        return static_cast<OmCellText*>(node->Entry(Subscript(index, 0)));
    }

    /// Where a cell stands. Valid until `Changes()` changes.
    using Place = PointerVector::Place;
    static OmCellText* CellAt(Place const& place) { return static_cast<OmCellText*>(*place.entry); }

    /// The place for an index, with every node on the way to it made and grown to hold it. Amortised O(levels).
    /// REQUIRES: at least one level. Throws std::bad_alloc; no cell has changed then.
    Place Grow(int const* index) {
        if (_lastChanges == _changes && IsBelowLast(index)) {
            // The node that spans the leaves of the last place. What it has seen before is in the extents.
            Place const place =
                static_cast<PointerVector*>(*_lastLink)->PlaceOfSeen(Subscript(index, 1), Subscript(index, 0));
            if (place.entry != nullptr) {
                return place;
            }
        }
        return GrowFromRoot(index);
    }

    void Put(Place const& place, OmCellText* cell) {
        bool const was = *place.entry != nullptr;
        *place.entry = cell;
        if (cell != nullptr && !was) {
            PointerVector::CountIn(place);
            ++_present;
        } else if (cell == nullptr && was) {
            PointerVector::CountOut(place);
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
    OmCellText* FindBelow(PointerVector const& start, std::size_t level, int const* index) const;
    bool IsBelowLast(int const* index) const {
        for (std::size_t k = 0; k < _lastAbove.size(); ++k) {
            if (_lastAbove[k] != index[k + 2]) {
                return false;
            }
        }
        return true;
    }
    PointerVector* Below(void**& link, std::uint32_t position);
    Place GrowFromRoot(int const* index);

    OmMemoryRegion& _region;
    void* _root = nullptr;
    std::vector<std::uint32_t> _extents; ///< one for each level: the largest length that a node on it has had
    std::size_t _present = 0;
    std::uint64_t _changes = 0;

    // Cells mostly come in the order of their subscripts, so that the node for one is that of the one before: found
    // again without going down from the root, a dense store takes a fifth fewer instructions.
    std::uint64_t _lastChanges = ~std::uint64_t{0};
    void** _lastLink = nullptr;
    std::vector<int> _lastAbove; ///< the subscripts of dimension 2 and up
};

#endif
