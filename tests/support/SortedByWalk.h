#ifndef OMTREE_TESTS_SUPPORT_SORTEDBYWALK_H
#define OMTREE_TESTS_SUPPORT_SORTEDBYWALK_H

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/CellCursor.h"

#include <cstddef>
#include <cstdint>

/// How many entries a walk over a table put in order on its way: what a walk costs besides its steps.
namespace omtest {

// An explicit instantiation may name a private member.
template <auto Member>
struct RecordOfIterator {
    friend OmPivotTable::Iterator::Data& WalkRecord(OmPivotTable::Iterator& iterator) {
        return static_cast<OmPivotTable::Iterator::Data&>(*(iterator.*Member));
    }
};
OmPivotTable::Iterator::Data& WalkRecord(OmPivotTable::Iterator& iterator);
template struct RecordOfIterator<&OmPivotTable::Iterator::_data>;

/// Looked at before the first step and after each one.
///
/// It turns the top bit of the first word of each order, which the walk neither reads (it takes the place out of the
/// low bits) nor keeps when it makes the order anew.
class SortedByWalk {
public:
    void Look(OmPivotTable::Iterator& iterator) {
        for (auto& level : WalkRecord(iterator).levels) {
            if (!level.order.empty() && (level.order.front() & Mark) == 0) {
                level.order.front() |= Mark;
                _entries += level.order.size();
            }
        }
    }
    std::size_t Entries() const { return _entries; }

private:
    static constexpr std::uint64_t Mark = std::uint64_t{1} << 63;
    std::size_t _entries = 0;
};

} // namespace omtest

#endif
