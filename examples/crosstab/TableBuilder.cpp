#include "examples/crosstab/TableBuilder.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Tally.h"
#include "omtree.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace crosstab {

namespace {

/// The combinations of all categories are numbered in 64 bits along the axes, and some are counted in fewer.
void checkCombinations(Tally const& tally) {
    std::uint64_t most = std::numeric_limits<std::uint64_t>::max() / 1024;
    for (TalliedColumn const& column : tally.columns()) {
        most /= column.values.size();
    }
    if (most == 0) {
        throw Failure("the columns have too many combinations of values; name fewer of them");
    }
}

void addCategories(OmDimension& dimension, TalliedColumn const& column) {
    for (std::size_t place = 0; place < column.values.size(); ++place) {
        std::string const& value = column.values[place];
        auto const grouped = column.groupOf.find(value);
        OmDimension::Node parent = dimension.Root();
        if (grouped != column.groupOf.end()) {
            OmStringCell const name(column.groups[grouped->second]);
            parent = dimension.Child(parent, name, OmDimensionNode::NoSubscript, true);
        }
        dimension.Child(parent, OmStringCell(value), place, false);
    }
}

/// Headings read an axis back to front, so the outermost column goes last.
void placeOnAxis(PuppetVector<short>& axis, std::size_t first, std::size_t count) {
    for (std::size_t i = count; i > 0; --i) {
        axis.push_back(static_cast<short>(first + i - 1));
    }
}

std::string statisticOf(Options const& options) { return options.sums ? "Sum of " + options.sumOf : "Count"; }

/// "Count by Class, Sex and Age".
std::string titleOf(Tally const& tally, Options const& options) {
    if (!options.title.empty()) {
        return options.title;
    }
    std::string title = statisticOf(options);
    for (std::size_t i = 0; i < tally.columns().size(); ++i) {
        bool const last = i + 1 == tally.columns().size();
        title += (i == 0 ? " by " : last ? " and " : ", ") + tally.columns()[i].name;
    }
    return title;
}

void addStatistic(OmPivotTable& table, Options const& options) {
    OmDimension& dimension = table.AddDimension(OmStringCell("Statistic"));
    dimension.Root().Value().Hide(true);
    dimension.Child(dimension.Root(), OmStringCell(statisticOf(options)), 0, false);
    table.Columns().push_back(static_cast<short>(dimension.Index()));
}

void addCells(OmPivotTable& table, Tally const& tally) {
    tally.forEachCell([&table](Tally::Place place, double value) {
        place.resize(table.NDimensions(), 0);
        if (!table.Cell(place, OmNumber(value))) {
            throw Failure("the table has too many cells");
        }
    });
}

/// The title with references to the footnotes, which are registered with the table.
void addTitle(OmPivotTable& table, OmStringCell& title, Options const& options) {
    OmCellMetaData notes;
    for (std::string const& footnote : options.footnotes) {
        notes.footnotes.push_back(static_cast<short>(table.Footnote(OmFootnote(OmStringCell(footnote)), true)));
    }
    if (!notes.footnotes.empty()) {
        title.setMeta(&notes);
    }
    table.SetTableTitle(title);
}

} // namespace

std::unique_ptr<OmPivotTable> buildTable(Tally const& tally, Options const& options) {
    checkCombinations(tally);

    OmStringCell title(titleOf(tally, options));
    auto table = std::make_unique<OmPivotTable>(title, OmStringCell("Cross tabulation"), false);
    for (TalliedColumn const& column : tally.columns()) {
        addCategories(table->AddDimension(OmStringCell(column.name)), column);
    }
    placeOnAxis(table->Rows(), 0, options.rows.size());
    placeOnAxis(table->Columns(), options.rows.size(), options.columns.size());
    placeOnAxis(table->Layers(), options.rows.size() + options.columns.size(), options.layers.size());

    if (options.columns.empty()) {
        addStatistic(*table, options);
    }
    addCells(*table, tally);
    addTitle(*table, title, options);
    if (!options.caption.empty()) {
        OmStringCell const caption(options.caption);
        table->Caption(&caption);
    }
    if (!options.corner.empty()) {
        OmStringCell const corner(options.corner);
        table->CornerText(&corner);
    }
    table->EndTable();
    return table;
}

} // namespace crosstab
