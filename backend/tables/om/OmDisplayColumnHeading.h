#ifndef OMTREE_BACKEND_TABLES_OM_OMDISPLAYCOLUMNHEADING_H
#define OMTREE_BACKEND_TABLES_OM_OMDISPLAYCOLUMNHEADING_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"

#include <deque>
#include <memory>
#include <vector>

class OmCellText;

/// The column heading of a pivot table for the layer that is current in a layer heading: how many columns the body has,
/// how many heading lines it needs, and which category stands in each heading cell.
///
///     line 0    Sex     Sex     Sex      Sex         `Column(1)` is (Sex, Male, Age, Child)
///     line 1    Male    Male    Female   Female      `Row(1)` is the line of sexes
///     line 2    Age     Age     Age      Age
///     line 3    Adult   Child   Adult    Child
///
/// Heading dimension 0, the LAST dimension of the table's column axis, is outermost. Each dimension takes as many lines
/// as its deepest shown label.
///
/// Labels run from the dimension's name down to the category. Hidden nodes are left out, a group that hides its labels
/// is left out with everything below it (even when it is hidden itself), and short lists are filled up with null
/// pointers below the leaf.
///
/// Column numbers are places in the shown sequence. With skipping, columns without a cell in the current layer are left
/// out; build a new heading after the layer heading has switched. With skipping, a number past the sequence gives null
/// pointers; without, the outermost dimension takes what is left of the number and has null pointers, while the inner
/// ones go on counting; a negative number counts back from 2^64. An axis of 2^64 positions or more is counted in 64
/// bits, which wrap.
///
/// The layer heading is not owned and outlives this heading; once it is gone, asking for nodes or for categories to be
/// filled in is a failed hardened check "_layers != 0", after which nothing is given or written. Node pointers are
/// valid as long as the layer heading.
class OMTREE_API OmDisplayColumnHeading {
public:
    using ConstNode = OmDimension::ConstNode;

    /// Lays out the table's column axis for the current layer. Without skipping O(dimensions of the axis).
    ///
    /// With skipping, in a dense table, one look-up for each shown column at best, and O(cells of the table, shown
    /// columns, leaves of the axis) at worst. In a sparse one the cell store is walked down to the lowest dimension of
    /// the axis and of the layers: dimensions with higher numbers than the layers' are walked for all layers together.
    /// So it is O(cells of the layer) or less where the layers' dimensions were added last, and O(cells of the table)
    /// where they were added first. Throws std::length_error or std::bad_alloc when there are more columns with a cell
    /// than a list can hold.
    OmDisplayColumnHeading(OmDisplayLayerHeading& layers, bool skipEmpty);
    ~OmDisplayColumnHeading();

    OmDisplayColumnHeading(OmDisplayColumnHeading const&) = delete;
    OmDisplayColumnHeading& operator=(OmDisplayColumnHeading const&) = delete;

    /// Number of shown columns; the largest int where there are more.
    int NColumns() const { return _layout->Positions(); }
    /// Number of heading lines.
    int NRows() const;
    /// The heading lines that heading dimension i takes; 0 past the last.
    int VisibleHeight(int i) const;

    /// Number of column dimensions.
    int NDimensions() const;
    /// Table dimension number of heading dimension i; -1 past the last.
    int getDimensionIndex(int i) const;

    /// Linear numbers of the shown columns along the axis, ascending. Without skipping, all of them, listed when first
    /// asked for (std::length_error or std::bad_alloc when they are too many). Valid as long as the heading.
    std::vector<unsigned long long> const& getNonEmptyColumns() const;

    /// The NRows() heading cells of column c, top to bottom; null where there is no label. O(dimensions and labels).
    std::deque<ConstNode*> Column(int c);
    /// Entry r of `Column(c)` for every column in order; empty when there is no such line. O(columns),
    /// and the nodes above their leaves, each once for each run along the dimension.
    std::deque<ConstNode*> Row(int r);

    /// The category of column c in each heading dimension, in heading order.
    std::deque<ConstNode*> ColumnCategories(int c);

    /// For each heading dimension whose label path has more than one entry, appends the dimension's node and the
    /// category's node. c is a place in the shown sequence when it lies inside the list of non-empty columns, and
    /// otherwise a linear number itself.
    void DimCatNodes(int c, std::vector<ConstNode*>& dimensions, std::vector<ConstNode*>& categories) const;
    /// The same, appending every node from the dimension down to the category, hidden ones included.
    void DimAllNodes(int c, std::vector<ConstNode*>& nodes) const;

    /// Writes the categories of column c into a cell index, which is resized to the number of dimensions; other entries
    /// are left as they are.
    void Fill(std::vector<int>& index, int c) const { _layout->Fill(index, c); }

    OmPivotTable& Table() const;
    bool SkipEmpty() const;

private:
    om_detail::HeadingLayout& Layout() const;

    std::unique_ptr<om_detail::PositionFill> _layout; ///< a HeadingLayout
};

#endif
