#ifndef OMTREE_EXAMPLES_CROSSTAB_TERMINALGRID_H
#define OMTREE_EXAMPLES_CROSSTAB_TERMINALGRID_H

#include "examples/crosstab/Layout.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace crosstab {

/// The grid of one layer, drawn with box characters:
///
///     ┌───────┬────────┬─────────────┐
///     │       │        │  Survived   │
///     │       │        ├──────┬──────┤
///     │ Class │ Sex    │   No │  Yes │
///     ╞═══════╪════════╪══════╪══════╡
///     │ 1st   │ Male   │  118 │   57 │
///     │       │ Female │    4 │  140 │
///     ├───────┼────────┼──────┼──────┤
///     │ 2nd   │ Male   │  154 │   14 │
///     │       │ Female │   13 │   80 │
///     └───────┴────────┴──────┴──────┘
///
/// Numbers are aligned right and so are the headings of single columns; headings over several columns are centred.
/// Rules between rows stand where a label other than the innermost changes, and around rows of more than one line.
/// Headings of more than 24 columns are broken at blanks.
class TerminalGrid {
public:
    /// The layer outlives the grid.
    explicit TerminalGrid(LaidOutLayer const& layer);

    /// Appends the lines of the drawing.
    void draw(std::string& out) const;

private:
    /// A cell's text, and the line of its own block on which it begins.
    struct Text {
        std::vector<std::string> lines;
        std::size_t above = 0;
    };

    LaidOutCell const& cellAt(std::size_t row, std::size_t column) const {
        return _layer.cells[_owner[row * _layer.columns + column]];
    }
    bool sameCell(std::size_t rowA, std::size_t columnA, std::size_t rowB, std::size_t columnB) const {
        return &cellAt(rowA, columnA) == &cellAt(rowB, columnB);
    }
    Text& textOf(LaidOutCell const& cell) { return _texts[static_cast<std::size_t>(&cell - _layer.cells.data())]; }
    Text const& textOf(LaidOutCell const& cell) const {
        return _texts[static_cast<std::size_t>(&cell - _layer.cells.data())];
    }

    void assignOwners();
    void measureColumns();
    void measureRows();
    void placeRules();
    void placeTexts();
    std::size_t widthOf(LaidOutCell const& cell) const;
    std::size_t heightOf(LaidOutCell const& cell) const;
    std::size_t ruleBefore(std::size_t row) const;

    bool isRuled(std::size_t row, std::size_t column) const;
    bool hasRule(std::size_t row) const;
    bool hasBorder(std::size_t row, std::size_t column) const;

    void drawRule(std::string& out, std::size_t row) const;
    void drawLine(std::string& out, std::size_t row, std::size_t line) const;
    void drawText(std::string& out, LaidOutCell const& cell, std::size_t line) const;
    char const* junction(std::size_t row, std::size_t column) const;

    LaidOutLayer const& _layer;
    std::vector<std::uint32_t> _owner;    ///< for each place of the grid, its cell
    std::vector<Text> _texts;             ///< by cell
    std::vector<std::size_t> _widths;     ///< of the columns' texts
    std::vector<std::size_t> _heights;    ///< of the rows, in lines
    std::vector<std::size_t> _ruledFrom;  ///< for each row, the first column with a rule above; all columns for none
    std::vector<std::size_t> _firstLines; ///< line of the drawing on which each row begins, below its rule
};

} // namespace crosstab

#endif
