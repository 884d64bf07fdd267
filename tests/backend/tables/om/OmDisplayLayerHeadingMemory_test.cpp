// What a layer heading takes from the heap beside its region. This program's own operator new keeps the books.
#include "backend/tables/om/OmDisplayLayerHeading.h"

#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

using omtest::Labels;
using omtest::TableSketch;

namespace {

struct Books {
    std::ptrdiff_t live = 0;   ///< blocks handed out and not given back
    std::size_t requested = 0; ///< bytes since the last reset
};

Books books;

constexpr std::size_t Unreasonable = std::size_t{1} << 30; // refused, so that a mistake does not eat the machine

/// Bytes that building a layer heading requests.
std::size_t BytesOf(OmPivotTable& table) {
    books.requested = 0;
    OmDisplayLayerHeading const layers(table, false);
    return books.requested;
}

/// The same over one layer dimension with `count` leaves whose subscripts are `step` apart.
std::size_t BytesOfSpreadLeaves(int count, unsigned long long step) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("L");
    for (int k = 0; k < count; ++k) {
        dimension.AddNewChild(dimension.Root(), OmStringCell("c"), static_cast<unsigned long long>(k) * step, false);
    }
    sketch.Layers({0});
    return BytesOf(sketch.table);
}

} // namespace

void* operator new(std::size_t bytes) {
    void* const block = bytes < Unreasonable ? std::malloc(bytes != 0 ? bytes : 1) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++books.live;
    books.requested += bytes;
    return block;
}
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void operator delete(void* block) noexcept {
    books.live -= block != nullptr ? 1 : 0;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

// A list as long as the largest subscript would take sixteen gigabytes.
TEST(OmDisplayLayerMemory, DissolvedLeafTakesNoMoreThanAnother) {
    TableSketch sketch;
    OmDimension& dimension = sketch.Dimension("L", "a b c");
    sketch.Layers({0});
    std::size_t const before = BytesOf(sketch.table);
    TableSketch::Node second = TableSketch::At(dimension, {1});
    dimension.removeChild(second);
    ASSERT_EQ(second.Value().Subscript(), OmDimensionNode::DissolvedSubscript);
    EXPECT_LT(BytesOf(sketch.table), before + 4096);
    OmDisplayLayerHeading layers(sketch.table, false);
    layers.SwitchLayer(1);
    EXPECT_EQ(Labels(layers.Nodes(0)), "L b");
}

TEST(OmDisplayLayerMemory, GrowsWithTheLeavesAndNotWithTheirSubscripts) {
    std::size_t const together = BytesOfSpreadLeaves(2000, 1);
    EXPECT_LT(BytesOfSpreadLeaves(2000, 1000), 2 * together);
    EXPECT_LT(BytesOfSpreadLeaves(2000, 1000000), 2 * together);
    EXPECT_LT(BytesOfSpreadLeaves(4000, 1), 3 * together);
}

// A whole path for each leaf would take two million nodes.
TEST(OmDisplayLayerMemory, CombOfGroupsTakesNoMoreThanItsNodes) {
    constexpr int Teeth = 2000;
    TableSketch flat;
    flat.FlatDimension("L", 2 * Teeth);
    TableSketch sketch;
    OmDimension& comb = sketch.Dimension("L");
    TableSketch::Node node = comb.Root();
    for (int k = 0; k < Teeth; ++k) {
        comb.AddNewChild(node, OmStringCell("c"), static_cast<unsigned long long>(k), false);
        node = comb.AddNewChild(node, OmStringCell("g"), OmDimensionNode::NoSubscript, true);
    }
    EXPECT_LT(BytesOf(sketch.table), 2 * BytesOf(flat.table));
}

// Filling is what a renderer does for every cell of the body.
TEST(OmDisplayLayerMemory, FillingTakesNoMemory) {
    TableSketch sketch;
    for (int d = 0; d < 6; ++d) {
        sketch.FlatDimension("D", 3);
    }
    sketch.Columns({0}).Rows({1, 2, 3}).Layers({4, 5}).Put({2, 0, 1, 2, 0, 0});
    for (bool const skip : {false, true}) {
        OmDisplayLayerHeading layers(sketch.table, skip);
        layers.NextLayer();
        OmDisplayColumnHeading const columns(layers, skip);
        OmDisplayRowHeading const rows(layers, skip, false);
        std::vector<int> index(6, 0);
        books.requested = 0;
        layers.Fill(index);
        for (int position = -1; position < 40; ++position) {
            columns.Fill(index, position);
            rows.Fill(index, position);
        }
        EXPECT_EQ(books.requested, 0U);
    }
}

TEST(OmDisplayLayerMemory, NothingIsLeftOfTheHeadings) {
    TableSketch sketch;
    sketch.FlatDimension("R", 5);
    sketch.Dimension("C", "a G(b c=4000000000)");
    sketch.Dimension("L", "d e");
    sketch.Rows({0}).Columns({1}).Layers({2});
    sketch.Put({1, 1, 0}).Put({2, 0, 1});
    std::ptrdiff_t const before = books.live;
    {
        OmDisplayLayerHeading layers(sketch.table, true);
        layers.NextLayer();
        OmDisplayColumnHeading columns(layers, true);
        OmDisplayRowHeading rows(layers, true, true);
        EXPECT_GT(books.live, before);
        EXPECT_EQ(Labels(columns.Column(0)) + Labels(rows.Row(0)), "C G bc1");
    }
    EXPECT_EQ(books.live, before);
}
