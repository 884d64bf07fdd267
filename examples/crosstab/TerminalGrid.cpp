#include "examples/crosstab/TerminalGrid.h"

#include "examples/crosstab/DisplayWidth.h"
#include "examples/crosstab/TerminalText.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace crosstab {

namespace {

constexpr std::size_t WidestHeading = 24;
constexpr std::size_t BetweenTexts = 3; // a blank, the border, a blank

Side sideOf(LaidOutCell const& cell) {
    switch (cell.kind) {
    case CellKind::ColumnHeading:
        return cell.columnSpan > 1 ? Side::Centre : Side::Right;
    case CellKind::Body:
        return cell.isNumber ? Side::Right : Side::Left;
    case CellKind::Corner:
    case CellKind::RowHeading:
        break;
    }
    return Side::Left;
}

std::size_t widestOf(std::vector<std::string> const& lines) {
    std::size_t width = 0;
    for (std::string const& line : lines) {
        width = std::max(width, displayWidth(line));
    }
    return width;
}

// What a junction joins.
constexpr unsigned int North = 1;
constexpr unsigned int South = 2;
constexpr unsigned int West = 4;
constexpr unsigned int East = 8;

constexpr char const* Single[16] = {" ", "│", "│", "│", "─", "┘", "┐", "┤", "─", "└", "┌", "├", "─", "┴", "┬", "┼"};
constexpr char const* Double[16] = {" ", "│", "│", "│", "═", "╛", "╕", "╡", "═", "╘", "╒", "╞", "═", "╧", "╤", "╪"};

} // namespace

TerminalGrid::TerminalGrid(LaidOutLayer const& layer)
    : _layer(layer), _owner(layer.rows * layer.columns, 0), _texts(layer.cells.size()), _widths(layer.columns, 0),
      _heights(layer.rows, 1), _ruledFrom(layer.rows, 0), _firstLines(layer.rows, 0) {
    assignOwners();
    measureColumns();
    measureRows();
    placeRules();
    placeTexts();
}

// --- measures --------------------------------------------------------------------------------------------------------

void TerminalGrid::assignOwners() {
    for (std::size_t i = 0; i < _layer.cells.size(); ++i) {
        LaidOutCell const& cell = _layer.cells[i];
        for (std::size_t row = cell.row; row < cell.row + cell.rowSpan; ++row) {
            auto const first = _owner.begin() + static_cast<std::ptrdiff_t>(row * _layer.columns + cell.column);
            std::fill_n(first, cell.columnSpan, static_cast<std::uint32_t>(i));
        }
    }
}

/// Columns are as wide as their own cells need; then cells over several columns, narrow ones first, break their text
/// to what there is and widen their columns evenly if that does not do.
void TerminalGrid::measureColumns() {
    std::vector<LaidOutCell const*> order;
    for (LaidOutCell const& cell : _layer.cells) {
        order.push_back(&cell);
    }
    std::stable_sort(order.begin(), order.end(),
                     [](LaidOutCell const* a, LaidOutCell const* b) { return a->columnSpan < b->columnSpan; });
    for (LaidOutCell const* const cell : order) {
        std::size_t const unbroken = std::numeric_limits<std::size_t>::max();
        std::size_t const limit = cell->kind == CellKind::Body ? unbroken : std::max(WidestHeading, widthOf(*cell));
        std::vector<std::string>& lines = textOf(*cell).lines;
        lines = linesOf(withMarkers(cell->label), limit);

        std::size_t const needed = widestOf(lines);
        std::size_t const present = widthOf(*cell);
        std::size_t missing = needed - std::min(needed, present);
        for (std::size_t left = cell->columnSpan; left > 0; --left) {
            std::size_t const share = missing / left;
            _widths[cell->column + left - 1] += share;
            missing -= share;
        }
    }
}

void TerminalGrid::measureRows() {
    for (LaidOutCell const& cell : _layer.cells) {
        if (cell.rowSpan == 1) {
            _heights[cell.row] = std::max(_heights[cell.row], textOf(cell).lines.size());
        }
    }
    placeRules();
    for (LaidOutCell const& cell : _layer.cells) {
        std::size_t const needed = textOf(cell).lines.size();
        std::size_t const present = heightOf(cell);
        _heights[cell.row + cell.rowSpan - 1] += needed - std::min(needed, present);
    }
}

/// Below the head, a rule runs from the outermost label that changes to the right; where only innermost labels change,
/// it is left out as long as both rows take one line.
void TerminalGrid::placeRules() {
    std::size_t const inner = _layer.headingColumns;
    for (std::size_t row = _layer.headingRows + 1; row < _layer.rows; ++row) {
        std::size_t changing = 0;
        while (changing < inner && sameCell(row - 1, changing, row, changing)) {
            ++changing;
        }
        bool const tall = _heights[row - 1] > 1 || _heights[row] > 1;
        std::size_t const innermost =
            inner == 0 ? 0 : std::max(cellAt(row - 1, inner - 1).column, cellAt(row, inner - 1).column);
        _ruledFrom[row] = tall || changing < innermost ? changing : _layer.columns;
    }
}

void TerminalGrid::placeTexts() {
    std::size_t line = 0;
    for (std::size_t row = 0; row < _layer.rows; ++row) {
        line += ruleBefore(row);
        _firstLines[row] = line;
        line += _heights[row];
    }
    for (LaidOutCell const& cell : _layer.cells) {
        bool const below = cell.kind == CellKind::Corner || cell.kind == CellKind::ColumnHeading;
        textOf(cell).above = below ? heightOf(cell) - textOf(cell).lines.size() : 0;
    }
}

std::size_t TerminalGrid::widthOf(LaidOutCell const& cell) const {
    auto const first = _widths.begin() + static_cast<std::ptrdiff_t>(cell.column);
    auto const last = first + static_cast<std::ptrdiff_t>(cell.columnSpan);
    return std::accumulate(first, last, BetweenTexts * (cell.columnSpan - 1));
}

/// Lines of a cell, those of the rules that end at its sides included.
std::size_t TerminalGrid::heightOf(LaidOutCell const& cell) const {
    std::size_t height = _heights[cell.row];
    for (std::size_t row = cell.row + 1; row < cell.row + cell.rowSpan; ++row) {
        height += ruleBefore(row) + _heights[row];
    }
    return height;
}

std::size_t TerminalGrid::ruleBefore(std::size_t row) const { return hasRule(row) ? 1 : 0; }

// --- borders and rules -----------------------------------------------------------------------------------------------

/// Whether a rule runs along the upper side of a place; row `rows` stands for the end of the grid.
bool TerminalGrid::isRuled(std::size_t row, std::size_t column) const {
    if (row == 0 || row == _layer.rows || row == _layer.headingRows) {
        return true;
    }
    return row < _layer.headingRows ? !sameCell(row - 1, column, row, column) : column >= _ruledFrom[row];
}

bool TerminalGrid::hasRule(std::size_t row) const {
    for (std::size_t column = 0; column < _layer.columns; ++column) {
        if (isRuled(row, column)) {
            return true;
        }
    }
    return false;
}

/// Whether a border runs along the left side of a place; column `columns` stands for the end of the grid.
bool TerminalGrid::hasBorder(std::size_t row, std::size_t column) const {
    return column == 0 || column == _layer.columns || !sameCell(row, column - 1, row, column);
}

char const* TerminalGrid::junction(std::size_t row, std::size_t column) const {
    unsigned int arms = 0;
    arms |= row > 0 && hasBorder(row - 1, column) ? North : 0;
    arms |= row < _layer.rows && hasBorder(row, column) ? South : 0;
    arms |= column > 0 && isRuled(row, column - 1) ? West : 0;
    arms |= column < _layer.columns && isRuled(row, column) ? East : 0;
    return row == _layer.headingRows && row > 0 ? Double[arms] : Single[arms];
}

// --- drawing ---------------------------------------------------------------------------------------------------------

void TerminalGrid::draw(std::string& out) const {
    for (std::size_t row = 0; row < _layer.rows; ++row) {
        if (hasRule(row)) {
            drawRule(out, row);
        }
        for (std::size_t line = 0; line < _heights[row]; ++line) {
            drawLine(out, row, _firstLines[row] + line);
        }
    }
    drawRule(out, _layer.rows);
}

void TerminalGrid::drawRule(std::string& out, std::size_t row) const {
    char const* const dash = row == _layer.headingRows && row > 0 ? "═" : "─";
    for (std::size_t column = 0; column < _layer.columns;) {
        out += junction(row, column);
        if (isRuled(row, column)) {
            for (std::size_t i = 0; i < _widths[column] + 2; ++i) {
                out += dash;
            }
            ++column;
        } else {
            LaidOutCell const& cell = cellAt(row, column);
            drawText(out, cell, _firstLines[row] - 1);
            column += cell.columnSpan;
        }
    }
    out += junction(row, _layer.columns);
    out += '\n';
}

void TerminalGrid::drawLine(std::string& out, std::size_t row, std::size_t line) const {
    for (std::size_t column = 0; column < _layer.columns;) {
        LaidOutCell const& cell = cellAt(row, column);
        out += "│";
        drawText(out, cell, line);
        column += cell.columnSpan;
    }
    out += "│\n";
}

/// The part of a cell that stands on a line of the drawing.
void TerminalGrid::drawText(std::string& out, LaidOutCell const& cell, std::size_t line) const {
    Text const& text = textOf(cell);
    std::size_t const own = line - _firstLines[cell.row];
    bool const shows = own >= text.above && own - text.above < text.lines.size();
    out += ' ';
    appendAligned(out, shows ? text.lines[own - text.above] : std::string(), widthOf(cell), sideOf(cell));
    out += ' ';
}

} // namespace crosstab
