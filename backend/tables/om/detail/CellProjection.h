#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CELLPROJECTION_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CELLPROJECTION_H

#include "backend/tables/om/OmPivotTable.h"

#include <memory>
#include <type_traits>

/// What the headings ask of the cell store, without touching a text.
///
/// `OmPivotTable::PresentCells()` is the number of cells that stand in the store, in O(1).
///
/// `OmPivotTable::VisitPrefixes(lowest, wanted, visit)` tells the distinct prefixes of the stored cells: the store is a
/// trie whose root is indexed by the last dimension, so the subscripts of dimensions `lowest` to n - 1 are found
/// without a look at the levels below, beyond whether some cell stands there (for `lowest` 1 where the two lowest
/// levels stand in one node: its cells).
///
///     lowest 2 of 4 dimensions          index[3]   index[2]  | (1)   (0)
///                                       \___ the prefix ___/    first cell found ends the descent
///
///  - `wanted` has one entry for each dimension: a subscript that the dimension is restricted to, or -1 for all. The
///    restriction holds below the prefix as well: a prefix is told when a cell below it has the wanted subscripts.
///  - `visit(index)` is called once for each such prefix; `index[k]` is valid for k >= lowest alone. It returns whether
///    to go on. The order is unspecified. With `lowest` 0 every cell is told, with `lowest` n the empty prefix is,
///    once, when there is a cell.
///  - The table must not change on the way.
namespace om_detail {

/// A reference to a callable `bool(int const* index)`, which outlives the call that it is handed to. Two words, passed
/// by value; no allocation.
class PrefixVisitor {
public:
    template <typename Visit, typename = std::enable_if_t<!std::is_same_v<std::decay_t<Visit>, PrefixVisitor>>>
    PrefixVisitor(Visit&& visit)
        : _visit(std::addressof(visit)), _call([](void const* callable, int const* index) -> bool {
              return (*static_cast<std::remove_reference_t<Visit>*>(const_cast<void*>(callable)))(index);
          }) {}

    bool operator()(int const* index) const { return _call(_visit, index); }

private:
    void const* _visit;
    bool (*_call)(void const* callable, int const* index);
};

} // namespace om_detail

#endif
