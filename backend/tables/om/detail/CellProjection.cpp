#include "backend/tables/om/detail/CellProjection.h"

#include "backend/tables/om/detail/PivotTableData.h"
#include "backend/tables/om/detail/PointerVector.h"

#include <cstddef>
#include <vector>

std::size_t OmPivotTable::PresentCells() const { return _my->presentCells; }

// One loop with a place for each level: tables may have more dimensions than a native stack has frames to spare.
void OmPivotTable::VisitPrefixes(std::size_t lowest, std::vector<int> const& wanted,
                                 om_detail::PrefixVisitor visit) const {
    struct Level {
        PointerVector const* node;
        std::size_t next; ///< where the search for the next entry begins
    };
    if (_my->cellRoot == nullptr) {
        return;
    }
    std::size_t const n = NDimensions();
    std::vector<Level> levels(n);
    std::vector<int> index(n, 0);
    std::size_t k = n - 1;
    levels[k] = {_my->cellRoot, 0};
    while (k < n) {
        Level& here = levels[k];
        std::size_t const length = here.node->Length();
        std::size_t position = length;
        if (wanted[k] < 0) {
            position = here.node->NextNonNull(here.next);
        } else if (here.next == 0 && here.node->EntryOrNull(static_cast<std::size_t>(wanted[k])) != nullptr) {
            position = static_cast<std::size_t>(wanted[k]);
        }
        if (position >= length) {
            ++k;
            continue;
        }
        here.next = position + 1;
        index[k] = static_cast<int>(position);
        if (k > 0) {
            --k;
            levels[k] = {static_cast<PointerVector const*>(here.node->Entry(position)), 0};
            continue;
        }
        if (!visit(index.data())) {
            return;
        }
        k = lowest;
    }
}
