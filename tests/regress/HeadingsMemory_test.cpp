// Memory refused while headings are built and read: nothing is left behind, and the table is as it was.
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/FailingMalloc.h"
#include "tests/support/TableProbe.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

using omtest::TableSketch;

namespace {

using ConstNode = OmDisplayColumnHeading::ConstNode;

void BuildAndRead(OmPivotTable& table, bool skip) {
    OmDisplayLayerHeading layers(table, skip);
    while (layers.NextLayer()) {
        OmDisplayColumnHeading columns(layers, skip);
        OmDisplayRowHeading rows(layers, skip, true);
        std::vector<int> index;
        std::vector<ConstNode*> nodes;
        layers.Fill(index);
        layers.Nodes(0);
        layers.DimAllNodes(0, nodes);
        columns.getNonEmptyColumns();
        columns.Column(0);
        columns.Row(0);
        columns.DimCatNodes(0, nodes, nodes);
        rows.RowCategories(0);
        rows.Column(0);
        rows.CornerText();
        rows.Fill(index, 0);
    }
}

void RefuseEachRequest(TableSketch& sketch, int atLeast) {
    std::string const cells = omtest::CellsOf(sketch.table);
    for (bool const skip : {false, true}) {
        std::ptrdiff_t const before = omtest::Heap().live;
        int const refused = omtest::FailEachMalloc([&] { BuildAndRead(sketch.table, skip); },
                                                   [&] { ASSERT_EQ(omtest::Heap().live, before); });
        EXPECT_GT(refused, atLeast) << skip;
        EXPECT_EQ(omtest::Heap().live, before);
        EXPECT_EQ(omtest::CellsOf(sketch.table), cells);
    }
}

} // namespace

TEST(HeadingsWithoutMemory, LeaveNothingOfADenseTable) {
    TableSketch sketch;
    sketch.Dimension("L", "d e");
    sketch.Dimension("C", "a G(b c) x=0");
    sketch.Dimension("R", "r s t");
    sketch.Dimension("S", "u v=4000000000");
    sketch.Layers({0}).Columns({1}).Rows({2, 3});
    sketch.Put({0, 1, 0, 0}).Put({1, 0, 2, 0}).Put({1, 2, 2, 0});
    RefuseEachRequest(sketch, 40);
}

TEST(HeadingsWithoutMemory, LeaveNothingOfASparseTable) {
    TableSketch sketch;
    sketch.Dimension("L", "d e");
    for (int d = 0; d < 9; ++d) {
        sketch.Dimension("C", "a G(b c)");
    }
    sketch.Dimension("R", "r s t");
    sketch.Layers({0}).Columns({1, 2, 3, 4, 5, 6, 7, 8, 9}).Rows({10});
    sketch.Put({0, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1}).Put({1, 0, 2, 0, 0, 0, 0, 0, 0, 0, 2});
    RefuseEachRequest(sketch, 40);
}
