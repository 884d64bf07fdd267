#ifndef OMTREE_BACKEND_TABLES_OM_OMDISPLAYLAYERHEADING_H
#define OMTREE_BACKEND_TABLES_OM_OMDISPLAYLAYERHEADING_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmDimension.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

class OmPivotTable;

namespace om_detail {

class HeadingLayout;

/// The part of a column or row heading that is read for every cell of a table's body, in the header so that a
/// renderer's inner loop needs no call. With a bare look-up of 2.5 ns, the loop with a call to fill takes 5 ns and with
/// this one 2.8 ns.
///
/// On an axis with one dimension, as most are, a position's category comes from a list; all else is left to the layout
/// behind it.
class PositionFill {
public:
    PositionFill() = default;
    PositionFill(PositionFill const&) = delete;
    PositionFill& operator=(PositionFill const&) = delete;
    virtual ~PositionFill() = default;

    /// Writes the categories of a position into a cell index.
    void Fill(std::vector<int>& index, int position) const {
        std::size_t const place = static_cast<unsigned int>(position);
        if (place < _listed && index.size() == _dimensions) {
            index[_dimension] = _categories[place];
        } else {
            FillByDigits(index, position);
        }
    }

    /// Number of shown positions.
    int Positions() const { return _positions; }

protected:
    virtual void FillByDigits(std::vector<int>& index, int position) const = 0;

    int const* _categories = nullptr; ///< of each position
    std::size_t _listed = 0;          ///< their number; 0 on an axis with any other number of dimensions
    std::size_t _dimension{};         ///< the axis's; read only where there is a list
    std::size_t _dimensions = 0;      ///< of the table
    int _positions = 0;
};

} // namespace om_detail

/// The layers of a pivot table: which there are, which is current, and what stands in their labels.
///
/// A layer is a combination of shown categories of the dimensions on the table's layer axis. Layer dimension 0 is the
/// LAST dimension of that axis and the most significant one; the first dimension of the axis varies fastest from one
/// layer to the next. A table without layer dimensions has one layer.
///
/// Drawing a table: build the layer heading, then for each layer (`NextLayer`) an OmDisplayColumnHeading and an
/// OmDisplayRowHeading over it; form a body cell's index by the `Fill` of all three, in that order, and look it up with
/// `OmPivotTable::Cell`. The column and row headings read the layer that is current when they are built; with skipping,
/// build them anew after each switch.
///
/// Skipping enumerates only layers that hold a cell. How they are found is decided once: in a table in which less than
/// one possible cell in a hundred is present, by a walk over the cells; else by probing.
///
/// The table is not owned and outlives the heading; the heading outlives the headings over it. It reads the table when
/// it is built; a later change of axes or categories needs a new one. Node pointers that it hands out are valid as long
/// as the heading, and what they point at as long as the category trees do not change.
class OMTREE_API OmDisplayLayerHeading {
public:
    using ConstNode = OmDimension::ConstNode;

    /// Reads the table's dimensions; no layer is current afterwards. O(nodes of the category trees), with skipping also
    /// the entries of the cell store down to the lowest layer dimension or, in a dense table, one look-up for each
    /// shown layer at best and O(cells of the table) at worst. Throws std::length_error or std::bad_alloc when there
    /// are more layers with a cell than a list can hold.
    OmDisplayLayerHeading(OmPivotTable& table, bool skipEmpty);
    ~OmDisplayLayerHeading();

    OmDisplayLayerHeading(OmDisplayLayerHeading const&) = delete;
    OmDisplayLayerHeading& operator=(OmDisplayLayerHeading const&) = delete;

    /// Number of layer dimensions.
    int NDimensions() const;
    /// Table dimension number of layer dimension i; -1 past the last.
    int getDimensionIndex(int i) const;
    /// Largest number of labels of a category of layer dimension i; 0 when there is no such dimension.
    int VisibleWidth(int i) const;

    /// Labels of layer dimension i in the current layer, from the dimension's name down to the category: a null pointer
    /// stands for a hidden node, and the walk ends before the first visible group that hides its labels. (A group that
    /// is hidden and hides its labels does not end it, unlike in the cells of the other headings.) Empty when no layer
    /// is current.
    std::deque<ConstNode*> Nodes(int i);

    /// Dimension node and category node of layer dimension i in the current layer. Both are left as they are when no
    /// layer is current, i is out of range, or there is only one node.
    void DimCatNodes(int i, ConstNode*& dimension, ConstNode*& category) const;

    /// Appends all nodes from the dimension down to the category, hidden ones included, under the same conditions.
    void DimAllNodes(int i, std::vector<ConstNode*>& nodes) const;

    /// Writes the current layer's categories into a cell index, which is resized to the number of dimensions; other
    /// entries are left as they are. Does nothing when no layer is current.
    void Fill(std::vector<int>& index) const;

    /// `SwitchLayer(getLayer() + 1)`.
    bool NextLayer();
    /// Makes layer n current. -1 goes back before the first layer, leaves the current cell index and gives false; any
    /// other n outside 0 to the number of layers less one changes nothing and gives false.
    bool SwitchLayer(int n);
    /// Makes the last layer current; the last that an int can name where there are more.
    void LastLayer();

    /// The current layer's place in the enumeration, -1 before the first.
    int getLayer() const;

    /// One category for each table dimension: for the layer dimensions that of the layer switched to last (0 before; a
    /// digit past the shown categories keeps the one before it), else 0.
    std::vector<int> getCurrentCellIndex() const;

    /// Takes the table's stored layer (`OmPivotTable::getLayerLoc`) as the current one, unchecked, and returns it. The
    /// current cell index stays as it is.
    int restoreLayer() const;

    OmPivotTable& Table() const;
    bool SkipEmpty() const;

private:
    friend class om_detail::HeadingLayout;
    class Layout;

    std::unique_ptr<Layout> _layout;
};

#endif
