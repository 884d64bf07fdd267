#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CELLCURSOR_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CELLCURSOR_H

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/CellStore.h"
#include "backend/tables/om/detail/PointerVector.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Where an iteration over a table's cells stands: one level for each dimension, level 0 in the leaf.
///
/// The cursor remembers nodes, and the order of those that have none of their own. When the store says that something
/// moved it finds its place anew by the subscripts, so that it goes on behind the cell that it stood on, whatever was
/// stored or deleted.
struct OMTREE_LOCAL OmPivotTable::Iterator::Data {
    struct Level {
        std::uint64_t position; ///< subscript
        std::size_t size;       ///< the dimension's size when the iteration began
        PointerVector const* node;
        std::vector<std::uint64_t> order; ///< of a hash, its entries by key (PointerVector::Sort)
        std::size_t at;                   ///< how many of these are passed
    };

    explicit Data(CellStore const& itsStore) : store(&itsStore) {}

    /// To the first cell.
    void Start();
    /// To the next cell. REQUIRES: a cell.
    void Next();

    CellStore const* store;
    std::uint64_t changes = 0; ///< of the store, when the nodes were looked up
    bool inScattered = false;  ///< level 1 stands in a scattered node, level 0 has no node
    std::vector<Level> levels;
    OmCellText* cell = nullptr; ///< null when the iteration is over

private:
    /// Goes to the first entry of `level` at or after the key `from`, and down to the first cell below it. Entries
    /// without a cell below are passed over, and so are whole levels; the levels above advance then.
    void Seek(std::size_t level, std::uint64_t from);
    void Enter(Level& level, void const* node);
    void* EntryAtOrAfter(std::size_t number, std::uint64_t from);
    void* DenseEntryAtOrAfter(Level& level, void* const* entries, std::uint64_t from);
    void TakeKey(std::size_t number, std::uint64_t key);
    PointerVector const* Top() const;
    void FindAgain();

    std::vector<std::uint64_t> _scratch;
};

#endif
