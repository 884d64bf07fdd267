#ifndef OMTREE_EXAMPLES_CROSSTAB_LAYOUT_H
#define OMTREE_EXAMPLES_CROSSTAB_LAYOUT_H

#include <cstddef>
#include <string>
#include <vector>

class OmPivotTable;

namespace crosstab {

/// A text of the table and the markers of the footnotes that it refers to.
struct LaidOutText {
    std::string text;
    std::vector<std::string> markers;

    bool empty() const { return text.empty() && markers.empty(); }
};

enum class CellKind { Corner, ColumnHeading, RowHeading, Body };

/// One cell of a layer's grid, possibly over several rows and columns.
struct LaidOutCell {
    CellKind kind = CellKind::Body;
    std::size_t row = 0;
    std::size_t column = 0;
    std::size_t rowSpan = 1;
    std::size_t columnSpan = 1;
    LaidOutText label;
    bool isNumber = false;
};

/// One layer as a grid, writer-neutral:
///
///                       headingColumns
///                       <------------->
///     headingRows  ^    | corner      | column headings          |
///                  v    |             |                          |
///                       | row         | body                     |
///                       | headings    |                          |
///
/// The cells cover every place of the grid once. They stand in reading order, by the row and then by the column of
/// their upper left place, which is also the order of the cells in an HTML table.
struct LaidOutLayer {
    std::vector<LaidOutText> labels; ///< one for each layer column: "Age: Adult"; with a group, "Age: Old / 70s"
    std::size_t rows = 0;            ///< of the whole grid, headings included
    std::size_t columns = 0;
    std::size_t headingRows = 0;
    std::size_t headingColumns = 0;
    std::vector<LaidOutCell> cells;
};

struct LaidOutFootnote {
    std::string marker;
    std::string text;
};

struct LaidOutTable {
    LaidOutText title;
    std::vector<LaidOutLayer> layers;
    LaidOutText caption;
    std::vector<LaidOutFootnote> footnotes;
};

struct LayoutOptions {
    bool keepEmpty = false; ///< lay out layers, rows and columns without a cell as well
    bool namesInCorner = false;
    std::size_t mostCells = 2'000'000; ///< body cells of all layers together
};

/// Lays a finished table out, with the display headings and for every writer alike.
///
///  - Neighbouring heading cells are one where they show the same node and everything outside of it is the same too. A
///    label whose dimension has further, empty lines below it extends over them.
///  - A label or name without any text reads "(empty)".
///  - Footnotes without a marker of their own are called a, b, ..., z, aa, ...
///  - A corner without column headings beside it gets a heading row of its own.
///
/// Throws Failure when there are more body cells than `mostCells`.
LaidOutTable layOut(OmPivotTable& table, LayoutOptions const& options);

} // namespace crosstab

#endif
