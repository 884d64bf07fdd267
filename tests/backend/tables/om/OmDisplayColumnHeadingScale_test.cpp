// Category trees a hundred thousand levels deep, laid out on a thread whose stack is far too small to step down level
// by level.
#include "backend/tables/om/OmDisplayColumnHeading.h"

#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

using omtest::TableSketch;

namespace {

using ConstNode = OmDisplayColumnHeading::ConstNode;

constexpr int Groups = 100000;
constexpr int Labels = Groups + 2; // with the dimension's name and the leaf

void* Call(void* work) {
    (*static_cast<std::function<void()>*>(work))();
    return nullptr;
}

void OnASmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_t thread;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{512} * 1024), 0);
    ASSERT_EQ(pthread_create(&thread, &attributes, Call, &work), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    ASSERT_EQ(pthread_attr_destroy(&attributes), 0);
}

/// Groups below each other, and at the end of the chain one leaf.
void AddDeepDimension(TableSketch& sketch) {
    OmDimension& dimension = sketch.Dimension("deep");
    TableSketch::Node node = dimension.Root();
    for (int level = 0; level < Groups; ++level) {
        node = dimension.AddNewChild(node, OmStringCell("g"), OmDimensionNode::NoSubscript, true);
    }
    dimension.AddNewChild(node, OmStringCell("leaf"), 0, false);
}

void ExpectWholePath(std::deque<ConstNode*> const& nodes) {
    ASSERT_EQ(nodes.size(), static_cast<std::size_t>(Labels));
    EXPECT_EQ(nodes.front()->Value().Text()->AsString(), "deep");
    EXPECT_EQ(nodes.back()->Value().Text()->AsString(), "leaf");
    EXPECT_EQ(nodes.back()->Depth(), static_cast<unsigned int>(Labels - 1));
}

} // namespace

TEST(OmDisplayHeadingScale, DeepTreeIsLaidOutOnEveryAxis) {
    OnASmallStack([] {
        TableSketch sketch;
        AddDeepDimension(sketch);
        sketch.Put({0});

        sketch.Layers({0});
        OmDisplayLayerHeading layers(sketch.table, true);
        EXPECT_EQ(layers.VisibleWidth(0), Labels);
        ASSERT_TRUE(layers.NextLayer());
        ExpectWholePath(layers.Nodes(0));
        std::vector<ConstNode*> nodes;
        layers.DimAllNodes(0, nodes);
        EXPECT_EQ(nodes.size(), static_cast<std::size_t>(Labels));

        sketch.Layers({}).Columns({0});
        OmDisplayLayerHeading over(sketch.table, true);
        OmDisplayColumnHeading columns(over, true);
        EXPECT_EQ(columns.NRows(), Labels);
        ExpectWholePath(columns.Column(0));
        EXPECT_EQ(columns.Row(Labels - 1).front(), columns.Column(0).back());

        sketch.Columns({}).Rows({0});
        OmDisplayLayerHeading across(sketch.table, true);
        OmDisplayRowHeading rows(across, false, true);
        EXPECT_EQ(rows.NColumns(), Labels - 1);
        EXPECT_EQ(rows.Row(0).size(), static_cast<std::size_t>(Labels - 1));
        EXPECT_EQ(rows.CornerText().size(), static_cast<std::size_t>(Labels - 1));
    });
}

// The depth that is dropped at the top is as large as the tree.
TEST(OmDisplayHeadingScale, DeepTreeWithHiddenLabelsTakesOneLine) {
    OnASmallStack([] {
        TableSketch sketch;
        AddDeepDimension(sketch);
        TableSketch::At(sketch.table.Dimension(0), {0}).Value().HideLabels(true);
        sketch.Columns({0});
        OmDisplayLayerHeading layers(sketch.table, false);
        OmDisplayColumnHeading columns(layers, false);
        EXPECT_EQ(columns.NRows(), 1);
        EXPECT_EQ(omtest::Labels(columns.Column(0)), "deep");
    });
}

TEST(OmDisplayHeadingScale, LongAxisIsListedAndSkipped) {
    constexpr int Count = 100000;
    TableSketch sketch;
    sketch.FlatDimension("C", Count);
    sketch.Columns({0});
    sketch.Put({Count - 1}).Put({7});
    OmDisplayLayerHeading layers(sketch.table, false);
    OmDisplayColumnHeading all(layers, false);
    EXPECT_EQ(all.NColumns(), Count);
    EXPECT_EQ(all.Row(1).size(), static_cast<std::size_t>(Count));
    EXPECT_EQ(all.getNonEmptyColumns().back(), static_cast<unsigned long long>(Count - 1));
    OmDisplayColumnHeading skipping(layers, true);
    EXPECT_EQ(skipping.getNonEmptyColumns(), (std::vector<unsigned long long>{7, Count - 1}));
}
