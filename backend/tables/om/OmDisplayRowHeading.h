#ifndef OMTREE_BACKEND_TABLES_OM_OMDISPLAYROWHEADING_H
#define OMTREE_BACKEND_TABLES_OM_OMDISPLAYROWHEADING_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"

#include <deque>
#include <memory>
#include <vector>

class OmCellText;

/// The row heading of a pivot table for the layer that is current in a layer heading: how many rows the body has, how
/// many heading columns it needs, and which category stands in each heading cell.
///
///     corner
///     Sex   Male     Age   Adult      `Row(1)` is (Sex, Male, Age, Child)
///     Sex   Male     Age   Child      `Column(1)` lists the sexes of all rows
///     Sex   Female   Age   Adult
///
/// Heading dimension 0, the LAST dimension of the table's row axis, is outermost.
///
/// It is the column heading turned by a quarter, and adds the corner: the texts in the block above the row heading and
/// beside the column heading. With dimension names in the corner, each visible dimension name moves there and frees the
/// heading column that it would take.
///
/// Row numbers are places in the shown sequence. With skipping, rows without a cell in the current layer are left out;
/// build a new heading after the layer heading has switched. With skipping, a number past the sequence gives null
/// pointers; without, the outermost dimension takes what is left of the number and has null pointers, while the inner
/// ones go on counting; a negative number counts back from 2^64. An axis of 2^64 positions or more is counted in 64
/// bits, which wrap.
///
/// The layer heading is not owned and outlives this heading; once it is gone, asking for nodes or for categories to be
/// filled in is a failed hardened check "_layers != 0", after which nothing is given or written. Node pointers are
/// valid as long as the layer heading.
class OMTREE_API OmDisplayRowHeading {
public:
    using ConstNode = OmDimension::ConstNode;

    /// Lays out the table's row axis for the current layer. Without skipping O(dimensions of the axis).
    ///
    /// With skipping, in a dense table, one look-up for each shown row at best, and O(cells of the table, shown
    /// rows, leaves of the axis) at worst. In a sparse one the cell store is walked down to the lowest dimension of
    /// the axis and of the layers: dimensions with higher numbers than the layers' are walked for all layers together.
    /// So it is O(cells of the layer) or less where the layers' dimensions were added last, and O(cells of the table)
    /// where they were added first. Throws std::length_error or std::bad_alloc when there are more rows with a cell
    /// than a list can hold.
    OmDisplayRowHeading(OmDisplayLayerHeading& layers, bool skipEmpty, bool dimNamesInCorner);
    ~OmDisplayRowHeading();

    OmDisplayRowHeading(OmDisplayRowHeading const&) = delete;
    OmDisplayRowHeading& operator=(OmDisplayRowHeading const&) = delete;

    /// Number of shown rows; the largest int where there are more.
    int NRows() const { return _layout->Positions(); }
    /// Number of heading columns.
    int NColumns() const;
    /// The heading columns that heading dimension i takes; 0 past the last.
    int VisibleWidth(int i) const;

    /// Number of row dimensions.
    int NDimensions() const;
    /// Table dimension number of heading dimension i; -1 past the last.
    int getDimensionIndex(int i) const;

    /// Linear numbers of the shown rows along the axis, ascending. Without skipping, all of them, listed when first
    /// asked for (std::length_error or std::bad_alloc when they are too many). Valid as long as the heading.
    std::vector<unsigned long long> const& getNonEmptyRows() const;

    /// The NColumns() heading cells of row r, left to right; null where there is no label. O(dimensions and labels).
    std::deque<ConstNode*> Row(int r);
    /// Entry c of `Row(r)` for every row in order; empty when there is no such heading column. O(rows), and
    /// the nodes above their leaves, each once for each run along the dimension.
    std::deque<ConstNode*> Column(int c);

    /// The category of row r in each heading dimension, in heading order.
    std::deque<ConstNode*> RowCategories(int r);

    /// For each heading dimension whose label path has more than one entry, appends the dimension's node and the
    /// category's node. r is a place in the shown sequence when it lies inside the list of non-empty rows, and
    /// otherwise a linear number itself.
    void DimCatNodes(int r, std::vector<ConstNode*>& dimensions, std::vector<ConstNode*>& categories) const;
    /// The same, appending every node from the dimension down to the category, hidden ones included.
    void DimAllNodes(int r, std::vector<ConstNode*>& nodes) const;

    /// Writes the categories of row r into a cell index, which is resized to the number of dimensions; other entries
    /// are left as they are.
    void Fill(std::vector<int>& index, int r) const { _layout->Fill(index, r); }

    /// The corner, one entry for each heading column: with dimension names, each name in the first column of its
    /// dimension; otherwise the table's own corner text in front. Null entries are empty. The texts belong to the
    /// table and are valid until it replaces its corner text or the dimension's name.
    std::vector<OmCellText const*> CornerText() const;
    bool DimNamesInCorner() const;

    OmPivotTable& Table() const;
    bool SkipEmpty() const;

private:
    om_detail::HeadingLayout& Layout() const;

    std::unique_ptr<om_detail::PositionFill> _layout; ///< a HeadingLayout
};

#endif
