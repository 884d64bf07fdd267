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
/// subscripts as there are levels. The store owns no cell and calls none.
class OMTREE_LOCAL OmPivotTable::CellStore {
public:
    explicit CellStore(OmMemoryRegion& region) : _region(region) {}

    CellStore(CellStore const&) = delete;
    CellStore& operator=(CellStore const&) = delete;

    std::size_t Levels() const { return _largest.size(); }
    PointerVector* Root() const { return static_cast<PointerVector*>(_root); }

    /// Puts a new root above the old one, if there is one, for a dimension just about to be added: every cell has
    /// subscript 0 on it. Amortised O(1). Throws std::bad_alloc; nothing has changed then.
    void AddLevel();

    /// Becomes a store without levels; what it held is the region's to give back.
    void Forget() {
        _root = nullptr;
        _largest.clear();
        _present = 0;
        ++_changes;
    }

    /// What a look-up needs to know of an index before it follows it.
    struct Reach {
        int beyond;   ///< negative when some subscript is past all that were ever stored on its level, or there is none
        int negative; ///< negative when some subscript is
        bool IsInside() const { return (beyond | negative) >= 0; }
    };

    /// A few instructions a level, no memory touched but the largest subscripts: most absent positions of a dense table
    /// end here. `levels` is `Levels()`, as a number or, of this and `Find`, as an integral constant.
    template <typename Number>
    Reach ReachOf(int const* index, Number levels) const {
        // Signs are all that counts. A difference can only overflow where the subscript is negative, which shows.
        std::uint32_t beyond = static_cast<std::uint32_t>(levels) - 1;
        int negative = 0;
        for (std::size_t k = 0; k < levels; ++k) {
            beyond |= static_cast<std::uint32_t>(_largest[k]) - static_cast<std::uint32_t>(index[k]);
            negative |= index[k];
        }
        return {static_cast<int>(beyond), negative};
    }

    /// The cell, or null. O(levels). REQUIRES: at least one level, and the index inside.
    template <typename Number>
    OmCellText* Find(int const* index, Number levels) const {
        PointerVector const* node = Root();
        for (std::size_t k = levels - 1; k > 0; --k) {
            void* const* const entries = node->DenseEntries();
            if (entries == nullptr) {
                return node->SpansLeaves()
                           ? static_cast<OmCellText*>(node->Cell(Subscript(index, 1), Subscript(index, 0)))
                           : FindBelow(*node, k, index);
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
        // The way of nearly every cell: through slots that are there to a node that spans its leaves and has room. A
        // store takes a tenth less time by it than by the general way.
        std::size_t k = _largest.size();
        PointerVector* node = k > 1 ? Root() : nullptr;
        while (node != nullptr && node->DenseEntries() != nullptr) {
            node = --k > 1 ? node->ChildInSlot(Subscript(index, k)) : nullptr;
        }
        Place const place = node != nullptr ? node->PlaceIfRoom(Subscript(index, 1), Subscript(index, 0)) : Place{};
        if (place.entry == nullptr) {
            return GrowFromRoot(index);
        }
        // On the levels above there was a cell before.
        _largest[1] = std::max(_largest[1], index[1]);
        _largest[0] = std::max(_largest[0], index[0]);
        return place;
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
    enum class Removal { Done, OutsideOfNode };

    /// Takes a cell out, if there is one, and gives it to the caller, who destroys it and then calls
    /// `DestroyEmptyNodes`. A negative subscript is outside of its node. O(levels) but for nodes of keys, see
    /// PointerVector. REQUIRES: a root. Throws std::bad_alloc; no cell has changed then.
    Removal Remove(int const* index, OmCellText*& cell);

    /// The second half of `Remove`: destroys the nodes on the way to a place that have become empty, the root excepted.
    void DestroyEmptyNodes(int const* index) noexcept;

    /// Cells that are present.
    std::size_t Present() const { return _present; }

    /// Counts the times that places and nodes moved. Whoever remembers one looks whether it still holds.
    std::uint64_t Changes() const { return _changes; }

private:
    static std::uint32_t Subscript(int const* index, std::size_t level) {
        return static_cast<std::uint32_t>(index[level]);
    }
    static OmCellText* FindBelow(PointerVector const& start, std::size_t level, int const* index);
    static PointerVector* Below(PointerVector& node, std::uint32_t position, void**& link);
    Place GrowFromRoot(int const* index);

    OmMemoryRegion& _region;
    void* _root = nullptr;
    std::vector<int> _largest; ///< one for each level: the largest subscript stored on it so far, or -1
    std::size_t _present = 0;
    std::uint64_t _changes = 0;
};

#endif
