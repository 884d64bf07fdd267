#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_HEADINGLAYOUT_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_HEADINGLAYOUT_H

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/detail/AxisIndexer.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

class OmCellText;

namespace om_detail {

/// Layout of one heading axis, shared by the column heading and the row heading, which is the same turned by a quarter.
/// "Lines" are heading lines of the one and heading columns of the other; they run from the outermost label inwards.
///
///     heading dimension 0   +-----------+-----------+
///     (2 lines)             | Sex       | Sex       |   one list of `depth` cells for each shown position
///                           | Male      | Female    |
///     heading dimension 1   | Age       | Age       |
///     (2 lines)             | Adult     | Adult     |
///                           +-----------+-----------+
///
/// A position is a place in the shown sequence; its linear number counts along the whole axis. A position without a
/// linear number, or one past a dimension's shown categories, gives null cells.
///
/// The layouts over a layer heading stand on a list of its, so that none reads display records that are gone: once the
/// layer heading is destroyed, what asks for them is a failed hardened check "_layers != 0" and gives null cells, empty
/// lists, and leaves what it is handed as it is.
class HeadingLayout final : public PositionFill {
public:
    using ConstNode = OmDimension::ConstNode;
    using Nodes = std::deque<ConstNode*>;

    HeadingLayout(OmDisplayLayerHeading& layerHeading, PuppetVector<short> const& axis,
                  PuppetVector<short> const& other, bool skipsEmpty, bool namesInCorner);
    ~HeadingLayout() override;

    /// The layer heading is going. Gives the next on its list.
    HeadingLayout* Abandon();

    /// The `Depth()` heading cells of a position, outermost first.
    Nodes Cells(int position) const;
    /// Entry `line` of the cells of every position; empty when there is no such line.
    Nodes Line(int line) const;
    /// The category node of a position in each heading dimension.
    Nodes Categories(int position) const;
    void DimCatNodes(int position, std::vector<ConstNode*>& dimensions, std::vector<ConstNode*>& categories) const;
    void DimAllNodes(int position, std::vector<ConstNode*>& nodes) const;

    int Depth() const { return _depth; }
    int HeightAt(int i) const;
    int NDimensions() const { return static_cast<int>(_indexer.NDimensions()); }
    int DimensionAt(int i) const { return _indexer.DimensionAt(i); }
    std::vector<unsigned long long> const& NonEmpty() const;
    std::vector<OmCellText const*> const& Corner() const { return _corner; }
    OmPivotTable& Table() const { return *_table; }
    bool SkipEmpty() const { return _skipEmpty; }
    bool DimNamesInCorner() const { return _namesInCorner; }

    /// Fills the corner: dimension names, or else the table's own corner text in front.
    void MakeCorner();

private:
    using Path = DisplayRecord::Path;

    /// A heading dimension that is being measured.
    struct Measured {
        DisplayRecord const* record;
        std::size_t entry;  ///< on the axis
        std::size_t height; ///< its place among the heights
        unsigned int width; ///< at which it is done
    };

    void MeasureHeights();
    void Measure(Digits const& digits, std::vector<Measured>& measured);
    void GiveNamesToCorner();
    void ListCategories();
    void FillByDigits(std::vector<int>& index, int position) const override;
    bool Shows(ConstNode const& node) const;
    static bool Ends(ConstNode const& node);
    /// Calls `put(line, node)` for the labels of a path, innermost first; line 0 is the outermost.
    template <typename Put>
    void EachLabel(Path leaf, Put&& put) const;
    std::optional<std::uint64_t> LinearOf(int position) const;
    std::uint64_t LinearOrItself(int position) const;
    /// Calls `visit(i, path)` for each heading dimension with its label path at a linear position; null where there is
    /// none.
    template <typename Visit>
    void EachPath(std::optional<std::uint64_t> linear, Visit&& visit) const;

    /// Whether the layer heading is there.
    bool HasLayers() const;

    OmDisplayLayerHeading::Layout* _layers; ///< null when it is gone
    OmPivotTable* _table;
    HeadingLayout* _previous = nullptr; ///< on the layer heading's list
    HeadingLayout* _next = nullptr;
    bool _skipEmpty;
    bool _namesInCorner;
    AxisIndexer _indexer;
    std::vector<OmCellText const*> _corner;
    mutable std::vector<unsigned long long> _nonEmpty; ///< without skipping, filled when first asked for
    std::vector<unsigned int> _heights;                ///< one for each heading dimension that has a display record
    std::vector<int> _shownCategories;                 ///< with skipping, what `_categories` points at
    std::uint64_t _count = 0;
    int _depth = 0;
};

} // namespace om_detail

#endif
