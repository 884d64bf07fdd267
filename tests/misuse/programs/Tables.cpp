// What programs do wrong with tables, their cells, their texts and their headings; and with the mixed-radix index.

#include "tests/misuse/programs/Misuse.h"
#include "tests/support/ForeignText.h"

#include <deque>
#include <memory>
#include <optional>
#include <vector>

using misuse::LongText;
using misuse::SmallTable;
using misuse::Text;
using misuse::Use;
using omtest::ForeignLog;
using omtest::ForeignText;

namespace {

using ConstNode = OmDimension::ConstNode;

/// A table whose layer heading stands on the first of its layers.
struct LaidOut : SmallTable {
    LaidOut() { layers->NextLayer(); }

    std::optional<OmDisplayLayerHeading> layers{std::in_place, table, false};
};

ConstNode const& FirstLabel(std::deque<ConstNode*> const& labels) { return *labels.front(); }

} // namespace

// --- cells -----------------------------------------------------------------------------------------------------------

MISUSE(cell_kept_after_its_replacement) {
    SmallTable small;
    OmPivotTable const& table = small.table;
    OmCellText const* const cell = table.Cell({1, 1});
    small.table.Cell({1, 1}, Text("another"));
    Use(*cell);
}

MISUSE(cell_kept_after_null_was_stored) {
    SmallTable small;
    OmPivotTable const& table = small.table;
    OmCellText const* const cell = table.Cell({1, 1});
    small.table.Cell({1, 1}, nullptr);
    Use(*cell);
}

MISUSE(cell_kept_after_deleteCell) {
    SmallTable small;
    OmPivotTable const& table = small.table;
    OmCellText const* const cell = table.Cell({1, 1});
    small.table.deleteCell({1, 1});
    Use(*cell);
}

MISUSE(cell_kept_after_the_table) {
    auto small = std::make_unique<SmallTable>();
    OmPivotTable const& table = small->table;
    OmCellText const* const cell = table.Cell({1, 1});
    small.reset();
    Use(*cell);
}

MISUSE(iterator_cell_read_after_its_deletion) {
    SmallTable small;
    OmPivotTable::Iterator const first = small.table.FirstCell();
    small.table.deleteCell(first.Index());
    Use(*first.Cell());
}

MISUSE(iterator_stepped_after_the_table) {
    auto small = std::make_unique<SmallTable>();
    OmPivotTable::Iterator cell = small->table.FirstCell();
    small.reset();
    ++cell;
    Use(*cell.Cell());
}

MISUSE(iterator_cell_read_after_the_table) {
    auto small = std::make_unique<SmallTable>();
    OmPivotTable::ConstIterator const cell = small->table.FirstCell();
    small.reset();
    Use(*cell.Cell());
}

MISUSE(deleteCell_outside_of_what_was_stored) {
    SmallTable small;
    small.table.deleteCell({7, 1});
}

MISUSE(deleteCell_with_too_short_an_index) {
    SmallTable small;
    small.table.deleteCell({1});
}

MISUSE(part_of_a_held_cell_stored_in_its_place) {
    ForeignLog log;
    SmallTable small;
    OmComposite composite;
    composite.Append(ForeignText(log, "part"));
    small.table.Cell({0, 0}, composite);
    OmComposite const& held = dynamic_cast<OmComposite const&>(*small.table.Cell({0, 0}));
    small.table.Cell({0, 0}, *held.Components().Root().Child(0).Value());
}

// --- texts and formats of the table ----------------------------------------------------------------------------------

MISUSE(print_without_a_title) {
    SmallTable small;
    small.table.Print();
}

MISUSE(title_read_before_it_was_set) {
    SmallTable small;
    Use(small.table.TableTitle());
}

MISUSE(title_kept_after_its_replacement) {
    SmallTable small;
    small.table.SetTableTitle(LongText("Passengers by class"));
    OmCellText const* const title = small.table.GetTableTitle();
    small.table.SetTableTitle(Text("another"));
    Use(*title);
}

MISUSE(held_caption_of_a_foreign_kind_set_again) {
    ForeignLog log;
    SmallTable small;
    ForeignText const caption(log, "caption");
    small.table.Caption(&caption);
    small.table.Caption(small.table.Caption());
}

MISUSE(part_of_the_held_corner_text_set) {
    ForeignLog log;
    SmallTable small;
    OmComposite composite;
    composite.Append(ForeignText(log, "part"));
    small.table.CornerText(&composite);
    OmComposite& held = dynamic_cast<OmComposite&>(*small.table.CornerText());
    small.table.CornerText(held.Components().Root().Child(0).Value());
}

MISUSE(held_title_of_a_foreign_kind_set_again) {
    ForeignLog log;
    SmallTable small;
    small.table.SetTableTitle(ForeignText(log, "title"));
    small.table.SetTableTitle(*small.table.GetTableTitle());
}

MISUSE(footnote_kept_over_growth) {
    SmallTable small;
    small.table.Footnote(OmFootnote(LongText("first")), true);
    OmFootnote const& first = small.table.Footnotes()[0];
    for (int i = 0; i < 4; ++i) {
        small.table.Footnote(OmFootnote(LongText("another")), true);
    }
    Use(*first.Text());
}

MISUSE(held_format_set_again) {
    SmallTable small;
    small.table.setAreaFormat(new FormatArea(FormatArea::Data));
    small.table.setAreaFormat(small.table.getAreaFormat(FormatArea::Data));
}

MISUSE(format_kept_after_its_replacement) {
    SmallTable small;
    small.table.setAreaFormat(new FormatArea(FormatArea::Data));
    FormatArea const* const format = small.table.getAreaFormat(FormatArea::Data);
    small.table.setAreaFormat(new FormatArea(FormatArea::Data));
    Use(static_cast<std::size_t>(format->getMarginLeft()));
}

MISUSE(format_deleted_by_the_program_too) {
    SmallTable small;
    auto* const format = new FormatArea(FormatArea::Data);
    small.table.setAreaFormat(format);
    delete format;
}

MISUSE(format_given_to_two_tables) {
    SmallTable one;
    SmallTable two;
    auto* const format = new FormatArea(FormatArea::Data);
    one.table.setAreaFormat(format);
    two.table.setAreaFormat(format);
}

MISUSE(tracker_used_after_the_table) {
    auto small = std::make_unique<SmallTable>();
    small->table.setBackendSettings(BackendSettings());
    icuTracker const* const tracker = small->table.getICUTracker();
    small.reset();
    Use(tracker->Locale().size());
}

MISUSE(copied_table_destroyed_too) {
    auto* const table = new OmPivotTable(Text("Passengers"), Text("Cross tabulation"), false);
    OmPivotTable const copy(*table);
    delete table;
}

// --- headings --------------------------------------------------------------------------------------------------------

MISUSE(column_heading_over_a_dead_layer_heading) {
    auto laidOut = std::make_unique<LaidOut>();
    OmDisplayColumnHeading columns(*laidOut->layers, false);
    laidOut->layers.reset();
    Use(columns.Column(0).size());
}

MISUSE(column_heading_over_a_dead_heap_layer_heading) {
    SmallTable small;
    auto layers = std::make_unique<OmDisplayLayerHeading>(small.table, false);
    OmDisplayColumnHeading columns(*layers, false);
    layers.reset();
    Use(columns.Column(0).size());
}

MISUSE(row_heading_over_a_dead_heap_layer_heading) {
    SmallTable small;
    auto layers = std::make_unique<OmDisplayLayerHeading>(small.table, false);
    OmDisplayRowHeading rows(*layers, false, true);
    layers.reset();
    Use(rows.CornerText().size());
    Use(rows.Row(0).size());
}

MISUSE(layer_heading_over_a_dead_table) {
    auto small = std::make_unique<SmallTable>();
    OmDisplayLayerHeading layers(small->table, true);
    small.reset();
    Use(static_cast<std::size_t>(layers.restoreLayer()));
}

MISUSE(column_heading_made_over_a_dead_table) {
    auto small = std::make_unique<SmallTable>();
    OmDisplayLayerHeading layers(small->table, false);
    small.reset();
    OmDisplayColumnHeading columns(layers, true);
    Use(static_cast<std::size_t>(columns.NColumns()));
}

MISUSE(heading_node_used_after_the_layer_heading) {
    SmallTable small;
    auto layers = std::make_unique<OmDisplayLayerHeading>(small.table, false);
    std::deque<ConstNode*> const labels = OmDisplayColumnHeading(*layers, false).Column(0);
    layers.reset();
    Use(static_cast<std::size_t>(FirstLabel(labels).Depth()));
}

MISUSE(heading_node_used_after_the_table) {
    auto small = std::make_unique<SmallTable>();
    OmDisplayLayerHeading layers(small->table, false);
    std::deque<ConstNode*> const labels = OmDisplayColumnHeading(layers, false).Column(0);
    small.reset();
    Use(*labels.back()->Value().Text());
}

MISUSE(heading_node_used_after_the_tree_changed) {
    SmallTable small;
    OmDisplayLayerHeading layers(small.table, false);
    OmDisplayRowHeading rows(layers, false, false);
    std::deque<ConstNode*> const labels = rows.Row(0);
    for (char const* name : {"d", "e"}) {
        small.rows.Child(small.rows.Root(), Text(name), 9, false);
    }
    Use(*labels.back()->Value().Text());
}

// --- mixed-radix index -----------------------------------------------------------------------------------------------

MISUSE(zero_base) {
    std::vector<unsigned> const bases{3, 0, 4};
    Use(MultiBase(bases.begin(), bases.end()).Digits(7).size());
}

MISUSE(too_few_digits) {
    std::vector<unsigned> const bases{3, 4};
    Use(static_cast<std::size_t>(MultiBase(bases.begin(), bases.end()).Number({1})));
}

MISUSE(too_many_digits) {
    std::vector<unsigned> const bases{3, 4};
    Use(static_cast<std::size_t>(MultiBase(bases.begin(), bases.end()).Number({1, 1, 1})));
}

// --- what must not be reported ---------------------------------------------------------------------------------------

MISUSE(well_own_caption_of_our_kind_set_again) {
    SmallTable small;
    OmStringCell const caption = Text("caption");
    small.table.Caption(&caption);
    small.table.Caption(small.table.Caption());
    Use(*small.table.Caption());
}

MISUSE(well_iterator_stepped_at_the_end) {
    SmallTable small;
    OmPivotTable::Iterator cell = small.table.FirstCell();
    while (cell.Cell() != nullptr) {
        ++cell;
    }
    ++cell;
    Use(cell.Cell() == nullptr ? 1U : 0U);
}

MISUSE(well_headings_ended_in_order) {
    SmallTable small;
    OmDisplayLayerHeading layers(small.table, true);
    layers.NextLayer();
    OmDisplayColumnHeading columns(layers, true);
    OmDisplayRowHeading rows(layers, true, true);
    std::vector<int> index;
    layers.Fill(index);
    columns.Fill(index, 1);
    rows.Fill(index, 2);
    Use(*small.table.Cell(index));
}

MISUSE(well_table_destroyed_before_its_headings) {
    auto small = std::make_unique<SmallTable>();
    OmDisplayLayerHeading layers(small->table, false);
    OmDisplayColumnHeading const columns(layers, false);
    small.reset();
}
