#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CELLCURSOR_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CELLCURSOR_H

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/PointerVector.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Where an iteration over a table's cells stands: one level for each dimension, level 0 in the leaf vector.
struct OMTREE_LOCAL OmPivotTable::Iterator::Data {
    struct Level {
        std::uint64_t position; ///< subscript
        std::size_t size;       ///< the dimension's size when the iteration began
        PointerVector* node;
    };

    std::vector<Level> levels;
    OmCellText* cell = nullptr; ///< null when the iteration is over

    /// Goes to the first non-null entry of `level` at or after `from` and down to the first cell below it. Entries
    /// without a cell below are passed over, and so are whole levels; the levels above advance then.
    void Seek(std::size_t level, std::uint64_t from);
};

#endif
