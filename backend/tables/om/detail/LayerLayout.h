#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_LAYERLAYOUT_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_LAYERLAYOUT_H

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/AxisIndexer.h"
#include "backend/tables/om/detail/DisplayRecord.h"
#include "backend/tables/om/detail/PositionSet.h"
#include "omcell/OmMemoryRegion.h"

#include <cstdint>
#include <vector>

namespace om_detail {

/// The axis back to front: a heading's first dimension is the axis's last.
PuppetVector<short> Reversed(PuppetVector<short> const& axis);

} // namespace om_detail

/// State of a layer heading, which the column and row headings over it read. It is the region that the display records
/// live in.
class OMTREE_LOCAL OmDisplayLayerHeading::Layout : public OmMemoryRegion {
public:
    Layout(OmPivotTable& itsTable, bool itSkipsEmpty);
    ~Layout();

    using Positions = om_detail::PositionSet::Positions;

    /// The positions along `axis` that hold a cell, ascending. `other` is the axis that they are probed against,
    /// `start` the subscripts of the dimensions on neither. With `layer`, cells whose subscripts on that axis differ
    /// from those of `start` do not count. REQUIRES: both axes are bound to the records.
    Positions NonEmpty(om_detail::AxisIndexer const& axis, om_detail::AxisIndexer const& other,
                       std::vector<int> const& start, om_detail::AxisIndexer const* layer) const;

    /// The sizes of the dimensions that have a record. One that the table got later counts as none.
    std::vector<int> Sizes() const;

    /// Resizes a cell index to the number of dimensions and writes the categories of a position into it.
    void Apply(om_detail::AxisIndexer const& axis, std::uint64_t position, std::vector<int>& index) const;

    /// The linear number of the current layer. False when no layer is current, or when the current layer (which may
    /// have been restored from the table) is not one of those enumerated.
    bool CurrentLayer(std::uint64_t& number) const;

    bool SwitchLayer(int n);

    /// Label path of layer dimension i in the current layer, or null.
    om_detail::DisplayRecord::Path CurrentPath(int i) const;

    OmPivotTable* table;
    bool skipEmpty;
    std::vector<int> currentCellIndex;
    om_detail::DisplayRecords records; ///< one for each dimension, in this region
    om_detail::AxisIndexer layerIndexer;
    Positions nonEmptyLayers; ///< filled when empty layers are skipped
    bool sparse = false;      ///< less than one possible cell in a hundred is present
    std::uint64_t layerCount = 0;
    int currentLayer = -1;
    om_detail::HeadingLayout* headings = nullptr; ///< over this one; told when it goes

private:
    void MakeRecords();
    void DestroyRecords();
    bool IsSparse() const;
    /// Whether a cell stands at a position of the other axis. Gives up, with false, when no step is left.
    bool AnyCell(om_detail::AxisIndexer const& other, std::vector<int>& index, std::uint64_t& stepsLeft) const;
    /// What probing from `start` to the end would give, by a walk over the cells.
    Positions FromCells(om_detail::AxisIndexer const& axis, om_detail::AxisIndexer const& other,
                        std::vector<int> const& start) const;
    Positions ProbePositions(om_detail::AxisIndexer const& axis, om_detail::AxisIndexer const& other,
                             std::vector<int> index) const;
    Positions ProjectCells(om_detail::AxisIndexer const& axis, std::vector<int> const& start,
                           om_detail::AxisIndexer const* layer) const;
};

#endif
