#include "examples/crosstab/Layout.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/HeadingCells.h"
#include "omtree.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace crosstab {

namespace {

std::size_t sizeOf(int number) { return static_cast<std::size_t>(std::max(number, 0)); }

/// a, b, ..., z, aa, ab, ...
std::string letters(std::size_t number) {
    std::string name;
    for (std::size_t rest = number + 1; rest > 0; rest = (rest - 1) / 26) {
        name.insert(name.begin(), static_cast<char>('a' + (rest - 1) % 26));
    }
    return name;
}

std::string markerOf(OmPivotTable const& table, std::size_t footnote) {
    OmCellText const* const marker = table.Footnotes()[footnote].Marker();
    return marker != nullptr ? marker->AsFormattedString() : letters(footnote);
}

class TableLayout {
public:
    TableLayout(OmPivotTable& table, LayoutOptions const& options) : _table(table), _options(options) {}

    LaidOutTable layOut();

private:
    LaidOutLayer layOutLayer(OmDisplayLayerHeading& layers);
    void addLayerLabels(OmDisplayLayerHeading& layers, LaidOutLayer& layer) const;
    void addCorner(OmDisplayRowHeading& rows, LaidOutLayer& layer) const;
    void addColumnHeading(OmDisplayColumnHeading& columns, LaidOutLayer& layer) const;
    void addRowHeading(OmDisplayRowHeading& rows, LaidOutLayer& layer) const;
    void addBody(OmDisplayLayerHeading& layers, OmDisplayColumnHeading& columns, OmDisplayRowHeading& rows,
                 LaidOutLayer& layer) const;

    void checkAllPositions() const;
    void countCells(std::size_t rows, std::size_t columns);
    [[noreturn]] void failOnCells() const;

    LaidOutText textOf(OmCellText const* text) const;
    LaidOutText labelOf(OmCellText const* text) const;
    LaidOutText labelOf(OmDimension::ConstNode const* node) const {
        return labelOf(node != nullptr ? node->Value().Text() : nullptr);
    }

    OmPivotTable& _table;
    LayoutOptions _options;
    std::size_t _cells = 0;
};

LaidOutTable TableLayout::layOut() {
    if (_options.keepEmpty) {
        checkAllPositions();
    }
    LaidOutTable result;
    result.title = textOf(_table.GetTableTitle());
    if (_table.showCaption()) {
        result.caption = textOf(_table.Caption());
    }
    OmDisplayLayerHeading layers(_table, !_options.keepEmpty);
    while (layers.NextLayer()) {
        result.layers.push_back(layOutLayer(layers));
    }
    for (std::size_t i = 0; i < _table.Footnotes().size(); ++i) {
        result.footnotes.push_back({markerOf(_table, i), textOf(_table.Footnotes()[i].Text()).text});
    }
    return result;
}

LaidOutLayer TableLayout::layOutLayer(OmDisplayLayerHeading& layers) {
    OmDisplayColumnHeading columns(layers, !_options.keepEmpty);
    OmDisplayRowHeading rows(layers, !_options.keepEmpty, _options.namesInCorner);
    countCells(sizeOf(rows.NRows()), sizeOf(columns.NColumns()));

    LaidOutLayer layer;
    layer.headingColumns = sizeOf(rows.NColumns());
    layer.headingRows = sizeOf(columns.NRows());
    std::vector<OmCellText const*> const corner = rows.CornerText();
    bool const cornerShows =
        std::any_of(corner.begin(), corner.end(), [](auto const* text) { return text != nullptr; });
    if (layer.headingRows == 0 && cornerShows) {
        layer.headingRows = 1;
    }
    layer.rows = layer.headingRows + sizeOf(rows.NRows());
    layer.columns = layer.headingColumns + sizeOf(columns.NColumns());

    addLayerLabels(layers, layer);
    addCorner(rows, layer);
    addColumnHeading(columns, layer);
    addRowHeading(rows, layer);
    addBody(layers, columns, rows, layer);
    std::sort(layer.cells.begin(), layer.cells.end(), [](LaidOutCell const& a, LaidOutCell const& b) {
        return std::pair(a.row, a.column) < std::pair(b.row, b.column);
    });
    return layer;
}

// --- the parts of a layer --------------------------------------------------------------------------------------------

void TableLayout::addLayerLabels(OmDisplayLayerHeading& layers, LaidOutLayer& layer) const {
    for (int i = 0; i < layers.NDimensions(); ++i) {
        LaidOutText label;
        std::string separator;
        for (OmDimension::ConstNode const* const node : layers.Nodes(i)) {
            if (node == nullptr) {
                continue;
            }
            LaidOutText const part = labelOf(node);
            label.text += separator + part.text;
            label.markers.insert(label.markers.end(), part.markers.begin(), part.markers.end());
            separator = node->Depth() == 0 ? ": " : " / ";
        }
        layer.labels.push_back(std::move(label));
    }
}

void TableLayout::addCorner(OmDisplayRowHeading& rows, LaidOutLayer& layer) const {
    if (layer.headingRows == 0 || layer.headingColumns == 0) {
        return;
    }
    std::vector<OmCellText const*> corner = rows.CornerText();
    corner.resize(layer.headingColumns, nullptr);
    std::vector<bool> begins(layer.headingColumns, false);
    for (std::size_t c = 0; c < corner.size(); ++c) {
        begins[c] = c == 0 || corner[c] != nullptr;
    }
    // A dimension whose name is hidden must not be taken for a part of the one before it.
    if (rows.DimNamesInCorner()) {
        std::size_t column = 0;
        for (int i = 0; i < rows.NDimensions() && column < begins.size(); ++i) {
            begins[column] = true;
            column += sizeOf(rows.VisibleWidth(i));
        }
    }
    for (std::size_t c = 0; c < corner.size(); ++c) {
        if (begins[c]) {
            layer.cells.push_back({CellKind::Corner, 0, c, layer.headingRows, 1, labelOf(corner[c]), false});
        } else {
            ++layer.cells.back().columnSpan;
        }
    }
}

void TableLayout::addColumnHeading(OmDisplayColumnHeading& columns, LaidOutLayer& layer) const {
    if (columns.NRows() <= 0) {
        std::size_t const width = layer.columns - layer.headingColumns;
        if (layer.headingRows > 0 && width > 0) {
            layer.cells.push_back(
                {CellKind::ColumnHeading, 0, layer.headingColumns, layer.headingRows, width, LaidOutText(), false});
        }
        return;
    }
    std::vector<std::size_t> extents(sizeOf(columns.NDimensions()));
    for (int i = 0; i < columns.NDimensions(); ++i) {
        extents[sizeOf(i)] = sizeOf(columns.VisibleHeight(i));
    }
    HeadingMerger merger(extents);
    for (int c = 0; c < columns.NColumns(); ++c) {
        merger.add(columns.Column(c), columns.ColumnCategories(c));
    }
    for (HeadingCell const& cell : merger.cells()) {
        layer.cells.push_back({CellKind::ColumnHeading, cell.level, layer.headingColumns + cell.position, cell.levels,
                               cell.positions, labelOf(cell.node), false});
    }
}

void TableLayout::addRowHeading(OmDisplayRowHeading& rows, LaidOutLayer& layer) const {
    std::vector<std::size_t> extents(sizeOf(rows.NDimensions()));
    for (int i = 0; i < rows.NDimensions(); ++i) {
        extents[sizeOf(i)] = sizeOf(rows.VisibleWidth(i));
    }
    HeadingMerger merger(extents);
    for (int r = 0; r < rows.NRows(); ++r) {
        merger.add(rows.Row(r), rows.RowCategories(r));
    }
    for (HeadingCell const& cell : merger.cells()) {
        layer.cells.push_back({CellKind::RowHeading, layer.headingRows + cell.position, cell.level, cell.positions,
                               cell.levels, labelOf(cell.node), false});
    }
}

void TableLayout::addBody(OmDisplayLayerHeading& layers, OmDisplayColumnHeading& columns, OmDisplayRowHeading& rows,
                          LaidOutLayer& layer) const {
    std::vector<int> index(_table.NDimensions(), 0);
    layers.Fill(index);
    for (int r = 0; r < rows.NRows(); ++r) {
        for (int c = 0; c < columns.NColumns(); ++c) {
            columns.Fill(index, c);
            rows.Fill(index, r);
            OmCellText const* const text = _table.Cell(std::as_const(index));
            bool const isNumber = dynamic_cast<OmNumber const*>(text) != nullptr;
            layer.cells.push_back({CellKind::Body, layer.headingRows + sizeOf(r), layer.headingColumns + sizeOf(c), 1,
                                   1, textOf(text), isNumber});
        }
    }
}

// --- limits ----------------------------------------------------------------------------------------------------------

/// Without skipping every combination of categories has its place; headings so large are not even begun.
void TableLayout::checkAllPositions() const {
    std::size_t left = _options.mostCells;
    for (int const size : _table.SizeVector()) {
        left /= std::max<std::size_t>(sizeOf(size), 1);
    }
    if (left == 0) {
        failOnCells();
    }
}

void TableLayout::countCells(std::size_t rows, std::size_t columns) {
    if (rows != 0 && columns > (_options.mostCells - _cells) / rows) {
        failOnCells();
    }
    _cells += rows * columns;
}

void TableLayout::failOnCells() const {
    throw Failure("the layers have more than " + std::to_string(_options.mostCells) +
                  " cells to show, empty ones included; name fewer columns" +
                  (_options.keepEmpty ? " or leave out --keep-empty" : ""));
}

// --- texts -----------------------------------------------------------------------------------------------------------

LaidOutText TableLayout::textOf(OmCellText const* text) const {
    LaidOutText result;
    if (text == nullptr) {
        return result;
    }
    result.text = text->AsFormattedString();
    for (short const footnote : text->Footnotes()) {
        if (footnote >= 0 && sizeOf(footnote) < _table.Footnotes().size()) {
            result.markers.push_back(markerOf(_table, sizeOf(footnote)));
        }
    }
    std::vector<std::string> const own = text->getMarkers();
    result.markers.insert(result.markers.end(), own.begin(), own.end());
    return result;
}

LaidOutText TableLayout::labelOf(OmCellText const* text) const {
    LaidOutText label = textOf(text);
    if (text != nullptr && label.text.empty()) {
        label.text = "(empty)";
    }
    return label;
}

} // namespace

LaidOutTable layOut(OmPivotTable& table, LayoutOptions const& options) { return TableLayout(table, options).layOut(); }

} // namespace crosstab
