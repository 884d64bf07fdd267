// Drawing a dense table: lay it out, read every heading label once and look up every body cell by way of the headings,
// beside a bare double loop of look-ups over the same positions. Columns: dimension 0, so that both run along the
// store, where the bare loop is quickest; rows: dimension 1.

#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "benchmarks/CellStores.h"
#include "benchmarks/Harness.h"

#include <cmath>

namespace om_bench {

namespace {

constexpr std::size_t UsualCells = 1'000'000;
/// Three levels of categories below the dimension's name: each group has this many groups, each of those its leaves.
constexpr int Groups = 10;

int SideOf(std::size_t cells) { return static_cast<int>(std::lround(std::sqrt(static_cast<double>(cells)))); }

OmStringCell Label(char const* kind, int number) {
    return OmStringCell(std::string(kind) + " " + std::to_string(number));
}

/// `side` leaves, numbered in display order.
void AddCategories(OmDimension& dimension, int side) {
    int const inGroup = (side + Groups * Groups - 1) / (Groups * Groups);
    for (int leaf = 0; leaf < side; ++leaf) {
        int const subgroup = leaf / inGroup;
        int const group = subgroup / Groups;
        OmDimension::Node const outer =
            dimension.Child(dimension.Root(), Label("group", group), OmDimensionNode::NoSubscript, true);
        OmDimension::Node const inner =
            dimension.Child(outer, Label("subgroup", subgroup), OmDimensionNode::NoSubscript, true);
        dimension.AddNewChild(inner, Label("leaf", leaf), static_cast<unsigned long long>(leaf), false);
    }
}

std::unique_ptr<OurStore> DenseTable(int side) {
    auto store = std::make_unique<OurStore>(2);
    OmPivotTable& table = store->Table();
    AddCategories(table.Dimension(0), side);
    AddCategories(table.Dimension(1), side);
    table.Columns().push_back(0);
    table.Rows().push_back(1);
    OmStringCell const text("a text cell");
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            store->Put({column, row}, text);
        }
    }
    return store;
}

std::size_t CountLabels(std::deque<OmDimension::ConstNode*> const& nodes) {
    std::size_t labels = 0;
    for (OmDimension::ConstNode const* const node : nodes) {
        labels += node != nullptr && node->Value().Text()->TextLength() > 0 ? 1U : 0U;
    }
    return labels;
}

void Drawn(benchmark::State& state) {
    int const side = SideOf(Count(UsualCells));
    std::unique_ptr<OurStore> const store = DenseTable(side);
    OmPivotTable& table = store->Table();
    std::size_t const cells = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);

    Phases phases(state);
    std::size_t present = 0;
    std::size_t labels = 0;
    phases.Time("time", cells, [&] {
        OmDisplayLayerHeading layers(table, true);
        layers.SwitchLayer(0);
        OmDisplayColumnHeading columns(layers, true);
        OmDisplayRowHeading rows(layers, true, false);
        for (int column = 0; column < columns.NColumns(); ++column) {
            labels += CountLabels(columns.Column(column));
        }
        std::vector<int> index;
        layers.Fill(index);
        OmPivotTable const& body = table;
        for (int row = 0; row < rows.NRows(); ++row) {
            labels += CountLabels(rows.Row(row));
            rows.Fill(index, row);
            for (int column = 0; column < columns.NColumns(); ++column) {
                columns.Fill(index, column);
                present += body.Cell(index) != nullptr ? 1U : 0U;
            }
        }
    });
    ExpectEqual(state, "cells drawn", present, cells);
    // Each row and column stands under its leaf, two groups and the dimension's name.
    ExpectEqual(state, "labels drawn", labels, 2 * static_cast<std::size_t>(side) * 4);
    phases.Finish();
}

void Bare(benchmark::State& state) {
    int const side = SideOf(Count(UsualCells));
    std::unique_ptr<OurStore> const store = DenseTable(side);
    std::size_t const cells = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);

    Phases phases(state);
    std::size_t present = 0;
    phases.Time("time", cells, [&] {
        std::vector<int> index(2);
        OmPivotTable const& body = store->Table();
        for (int row = 0; row < side; ++row) {
            index[1] = row;
            for (int column = 0; column < side; ++column) {
                index[0] = column;
                present += body.Cell(index) != nullptr ? 1U : 0U;
            }
        }
    });
    ExpectEqual(state, "cells looked up", present, cells);
    phases.Finish();
}

[[maybe_unused]] bool const registered = [] {
    Register("bodywalk", "ours", Drawn);
    Register("bodywalk", "bare", Bare);
    return true;
}();

} // namespace

} // namespace om_bench
