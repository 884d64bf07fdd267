#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_AXISINDEXER_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_AXISINDEXER_H

#include "backend/tables/MultiBase.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/detail/DisplayRecord.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace om_detail {

/// Display records by dimension number; not owned.
using DisplayRecords = std::vector<DisplayRecord*>;
using Digits = std::vector<std::uint32_t>;

/// The positions along one axis: its dimensions as the digits of a mixed-radix number, first one most significant, with
/// their sizes as bases. A size below 0 counts as 0; an axis entry that names no dimension counts as a digit with the
/// one value 0, and takes part in nothing else.
class AxisIndexer {
public:
    AxisIndexer(PuppetVector<short> const& axis, std::vector<int> const& sizes);

    std::size_t NDimensions() const { return _dimensions.size(); }

    /// Dimension number of entry i as it stands on the axis; the axis's fill value past its end.
    int DimensionAt(int i) const { return i >= 0 ? _axis[static_cast<std::size_t>(i)] : _axis.Fill(); }

    /// The display record of entry i, or null when it names no dimension.
    DisplayRecord* RecordAt(std::size_t i, DisplayRecords const& records) const;

    std::uint64_t Count() const { return _indexer.Count(); }

    /// The digits of a position. False, and no digits, for a position that has none (some dimension behind the first
    /// has size 0). A position of at least `Count()` has an oversized first digit.
    bool DigitsOf(std::uint64_t position, Digits& digits) const;

    /// Steps to the next position; false at the end, with all digits 0 again.
    bool Next(Digits& digits) const;

    /// Writes the categories of the digits into a cell index, at the axis's dimensions. A digit past the shown
    /// categories leaves its entry as it is.
    void Apply(Digits const& digits, DisplayRecords const& records, std::vector<int>& index) const;

    /// The same for a probe: false when some digit is past the shown categories or its category cannot be a subscript.
    bool ApplyAll(Digits const& digits, DisplayRecords const& records, std::vector<int>& index) const;

    /// Writes the digits themselves into a cell index.
    void Scatter(Digits const& digits, std::vector<int>& index) const;

    /// Position of the shown categories of a cell. False when one of them is not shown or lies past its dimension's
    /// size.
    bool PositionOf(std::vector<int> const& cell, DisplayRecords const& records, std::uint64_t& position) const;

    /// Whether two cells have the same subscripts on this axis.
    bool SameSubscripts(std::vector<int> const& a, std::vector<int> const& b) const;

private:
    bool Names(std::size_t i, std::size_t dimensions) const {
        return _dimensions[i] >= 0 && static_cast<std::size_t>(_dimensions[i]) < dimensions;
    }
    std::size_t Number(std::size_t i) const { return static_cast<std::size_t>(_dimensions[i]); }

    PuppetVector<short> _axis;
    std::vector<int> _dimensions;
    MultiBase _indexer;
};

} // namespace om_detail

#endif
