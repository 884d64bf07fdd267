#include "examples/crosstab/Layout.h"

#include "examples/crosstab/Failure.h"
#include "omtree.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace crosstab;

/// A table whose dimensions are named and filled by the tests; every possible cell holds the number of its place.
class LayoutTest : public testing::Test {
protected:
    /// Adds a dimension with a name and leaf categories below its root and gives its number.
    short add(std::string const& name, std::vector<std::string> const& categories) {
        OmDimension& dimension = table.AddDimension(OmStringCell(name));
        for (std::string const& category : categories) {
            addLeaf(dimension, dimension.Root(), category);
        }
        return static_cast<short>(dimension.Index());
    }

    void addLeaf(OmDimension& dimension, OmDimension::Node const& parent, std::string const& label) {
        dimension.AddNewChild(parent, OmStringCell(label), static_cast<unsigned long long>(dimension.NumCategories()),
                              false);
    }

    void fill() {
        std::vector<int> index(table.NDimensions(), 0);
        std::vector<int> const sizes = table.SizeVector();
        for (int number = 0;; ++number) {
            table.Cell(index, OmNumber(number));
            std::size_t k = 0;
            while (k < index.size() && ++index[k] == sizes[k]) {
                index[k++] = 0;
            }
            if (k == index.size()) {
                return;
            }
        }
    }

    LaidOutTable laidOut(bool namesInCorner = false, bool keepEmpty = false) {
        return layOut(table, {keepEmpty, namesInCorner});
    }

    /// Every cell of a layer: kind, place, span where it is not 1x1, text.
    static std::string dump(LaidOutLayer const& layer) {
        std::ostringstream out;
        for (LaidOutCell const& cell : layer.cells) {
            out << "KCRB"[static_cast<int>(cell.kind)] << cell.row << ',' << cell.column;
            if (cell.rowSpan != 1 || cell.columnSpan != 1) {
                out << ' ' << cell.rowSpan << 'x' << cell.columnSpan;
            }
            out << (cell.label.text.empty() ? "" : " ") << cell.label.text << '\n';
        }
        return out.str();
    }

    /// Whether each place of the grid is covered by one cell, and the cells stand in reading order.
    static bool tiles(LaidOutLayer const& layer) {
        std::vector<int> covered(layer.rows * layer.columns, 0);
        std::size_t last = 0;
        for (LaidOutCell const& cell : layer.cells) {
            std::size_t const place = cell.row * layer.columns + cell.column;
            if (place < last) {
                return false;
            }
            last = place;
            for (std::size_t r = cell.row; r < cell.row + cell.rowSpan; ++r) {
                for (std::size_t c = cell.column; c < cell.column + cell.columnSpan; ++c) {
                    ++covered.at(r * layer.columns + c);
                }
            }
        }
        return covered == std::vector<int>(covered.size(), 1);
    }

    OmPivotTable table{OmStringCell("Title"), OmStringCell("Template"), false};

    void SetUp() override { table.SetTableTitle(OmStringCell("Title")); }
};

TEST_F(LayoutTest, HeadingsOfNeighboursAreMergedUnderTheSameOuterNode) {
    table.Rows().push_back(add("R", {"r"}));
    short const inner = add("I", {"x", "y"});
    short const outer = add("O", {"p", "q"});
    table.Columns() = {inner, outer};
    fill();
    LaidOutLayer const layer = laidOut(true).layers.at(0);
    EXPECT_EQ(dump(layer), "K0,0 4x1 R\nC0,1 1x4 O\nC1,1 1x2 p\nC1,3 1x2 q\nC2,1 1x2 I\nC2,3 1x2 I\n"
                           "C3,1 x\nC3,2 y\nC3,3 x\nC3,4 y\nR4,0 r\nB4,1 0\nB4,2 1\nB4,3 2\nB4,4 3\n");
    EXPECT_TRUE(tiles(layer));
}

// The dimension's name is one node, yet it stands once for each category outside of it.
TEST_F(LayoutTest, TheSameNodeUnderDifferentOuterNodesIsNotMerged) {
    short const inner = add("I", {"x"});
    short const outer = add("O", {"p", "q"});
    table.Columns() = {inner, outer};
    fill();
    EXPECT_EQ(dump(laidOut().layers.at(0)),
              "C0,0 1x2 O\nC1,0 p\nC1,1 q\nC2,0 I\nC2,1 I\nC3,0 x\nC3,1 x\nB4,0 0\nB4,1 1\n");
}

TEST_F(LayoutTest, ALabelExtendsOverTheEmptyLinesOfItsDimension) {
    OmDimension& dimension = table.AddDimension(OmStringCell("D"));
    OmDimension::Node group = dimension.Child(dimension.Root(), OmStringCell("G"), OmDimensionNode::NoSubscript, true);
    addLeaf(dimension, group, "a");
    group = dimension.Root().Child(0);
    addLeaf(dimension, group, "b");
    addLeaf(dimension, dimension.Root(), "c");
    table.Rows().push_back(0);
    table.Columns().push_back(add("N", {"n"}));
    fill();
    LaidOutLayer const layer = laidOut(true).layers.at(0);
    EXPECT_EQ(dump(layer),
              "K0,0 2x2 D\nC0,2 N\nC1,2 n\nR2,0 2x1 G\nR2,1 a\nB2,2 0\nR3,1 b\nB3,2 1\nR4,0 1x2 c\nB4,2 2\n");
    EXPECT_TRUE(tiles(layer));
}

TEST_F(LayoutTest, HiddenCategoriesAreNotMergedAlthoughNoLabelTellsThemApart) {
    short const inner = add("I", {"x"});
    short const outer = add("O", {"p", "q"});
    table.Columns() = {inner, outer};
    OmDimension& dimension = table.Dimension(outer);
    dimension.Root().Value().Hide(true);
    dimension.Root().Child(0).Value().Hide(true);
    dimension.Root().Child(1).Value().Hide(true);
    fill();
    EXPECT_EQ(dump(laidOut().layers.at(0)), "C0,0 I\nC0,1 I\nC1,0 x\nC1,1 x\nB2,0 0\nB2,1 1\n");
}

TEST_F(LayoutTest, AHiddenLabelIsAnEmptyCell) {
    table.Columns().push_back(add("O", {"p", "q"}));
    table.Dimension(0).Root().Child(1).Value().Hide(true);
    fill();
    LaidOutLayer const layer = laidOut().layers.at(0);
    EXPECT_EQ(dump(layer), "C0,0 O\nC0,1 2x1 O\nC1,0 p\nB2,0 0\nB2,1 1\n");
    EXPECT_TRUE(tiles(layer));
}

TEST_F(LayoutTest, TheTablesCornerTextFillsTheCorner) {
    table.Rows() = {add("I", {"x"}), add("O", {"p"})};
    OmStringCell const corner("Corner");
    table.CornerText(&corner);
    table.Columns().push_back(add("C", {"c"}));
    fill();
    EXPECT_EQ(dump(laidOut().layers.at(0)),
              "K0,0 2x4 Corner\nC0,4 C\nC1,4 c\nR2,0 O\nR2,1 p\nR2,2 I\nR2,3 x\nB2,4 0\n");
}

TEST_F(LayoutTest, NamesInTheCornerStandAboveTheirColumns) {
    table.Rows() = {add("I", {"x"}), add("O", {"p"})};
    table.Columns().push_back(add("C", {"c"}));
    fill();
    EXPECT_EQ(dump(laidOut(true).layers.at(0)), "K0,0 2x1 O\nK0,1 2x1 I\nC0,2 C\nC1,2 c\nR2,0 p\nR2,1 x\nB2,2 0\n");
}

TEST_F(LayoutTest, ACornerWithoutColumnHeadingsGetsARowOfItsOwn) {
    table.Rows().push_back(add("R", {"r", "s"}));
    fill();
    LaidOutLayer const layer = laidOut(true).layers.at(0);
    EXPECT_EQ(dump(layer), "K0,0 R\nC0,1\nR1,0 r\nB1,1 0\nR2,0 s\nB2,1 1\n");
    EXPECT_TRUE(tiles(layer));
    EXPECT_EQ(layer.headingRows, 1U);
}

TEST_F(LayoutTest, WithoutHeadingsThereIsOneBodyCell) {
    table.Layers().push_back(add("L", {"l", "m"}));
    fill();
    LaidOutTable const result = laidOut();
    ASSERT_EQ(result.layers.size(), 2U);
    EXPECT_EQ(dump(result.layers[1]), "B0,0 1\n");
    EXPECT_EQ(result.layers[1].labels.at(0).text, "L: m");
}

TEST_F(LayoutTest, LayerLabelsNameGroupsAndLeaveOutHiddenNodes) {
    OmDimension& dimension = table.AddDimension(OmStringCell("L"));
    dimension.Child(dimension.Root(), OmStringCell("G"), OmDimensionNode::NoSubscript, true);
    addLeaf(dimension, dimension.Root().Child(0), "l");
    table.Layers() = {0, add("M", {"m"})};
    fill();
    EXPECT_EQ(laidOut().layers.at(0).labels.at(0).text, "M: m");
    EXPECT_EQ(laidOut().layers.at(0).labels.at(1).text, "L: G / l");
    dimension.Root().Value().Hide(true);
    EXPECT_EQ(laidOut().layers.at(0).labels.at(1).text, "G / l");
    dimension.Root().Child(0).Child(0).Value().Hide(true);
    EXPECT_EQ(laidOut().layers.at(0).labels.at(1).text, "G");
}

TEST_F(LayoutTest, EmptyRowsColumnsAndLayersAreLeftOutOrKept) {
    table.Rows().push_back(add("R", {"r", "s"}));
    table.Columns().push_back(add("C", {"c", "d"}));
    table.Layers().push_back(add("L", {"l", "m", "n"}));
    table.Cell({0, 1, 0}, OmNumber(5));
    table.Cell({1, 0, 2}, OmNumber(7));
    LaidOutTable const skipped = laidOut(true);
    ASSERT_EQ(skipped.layers.size(), 2U);
    EXPECT_EQ(dump(skipped.layers[0]), "K0,0 2x1 R\nC0,1 C\nC1,1 d\nR2,0 r\nB2,1 5\n");
    EXPECT_EQ(dump(skipped.layers[1]), "K0,0 2x1 R\nC0,1 C\nC1,1 c\nR2,0 s\nB2,1 7\n");
    LaidOutTable const kept = laidOut(true, true);
    ASSERT_EQ(kept.layers.size(), 3U);
    EXPECT_EQ(dump(kept.layers[1]), "K0,0 2x1 R\nC0,1 1x2 C\nC1,1 c\nC1,2 d\nR2,0 r\nB2,1\nB2,2\nR3,0 s\nB3,1\nB3,2\n");
}

TEST_F(LayoutTest, TextsWithoutALetterReadEmpty) {
    table.Rows().push_back(add("", {""}));
    table.Layers().push_back(add("", {""}));
    fill();
    LaidOutLayer const layer = laidOut(true).layers.at(0);
    EXPECT_EQ(dump(layer), "K0,0 (empty)\nC0,1\nR1,0 (empty)\nB1,1 0\n");
    EXPECT_EQ(layer.labels.at(0).text, "(empty): (empty)");
}

TEST_F(LayoutTest, FootnotesAreMarkedByTheirMarkersOrByLetters) {
    OmStringCell const star("*");
    OmCellMetaData notes;
    notes.footnotes.push_back(static_cast<short>(table.Footnote(OmFootnote(OmStringCell("first")), false)));
    notes.footnotes.push_back(static_cast<short>(table.Footnote(OmFootnote(OmStringCell("second"), &star, 0), false)));
    notes.markers = {"!"};
    OmStringCell title("Marked");
    title.setMeta(&notes);
    table.SetTableTitle(title);
    OmStringCell caption("Caption");
    notes = {{1}, {}, -1};
    caption.setMeta(&notes);
    table.Caption(&caption);
    table.Rows().push_back(add("R", {"r"}));
    fill();

    LaidOutTable const result = laidOut();
    EXPECT_EQ(result.title.text, "Marked");
    EXPECT_EQ(result.title.markers, (std::vector<std::string>{"a", "*", "!"}));
    EXPECT_EQ(result.caption.markers, std::vector<std::string>{"*"});
    ASSERT_EQ(result.footnotes.size(), 2U);
    EXPECT_EQ(result.footnotes[0].marker + result.footnotes[0].text, "afirst");
    EXPECT_EQ(result.footnotes[1].marker + result.footnotes[1].text, "*second");
}

TEST_F(LayoutTest, LettersGoOnAfterZ) {
    for (int i = 0; i < 28; ++i) {
        table.Footnote(OmFootnote(OmStringCell("note")), true);
    }
    table.Rows().push_back(add("R", {"r"}));
    fill();
    LaidOutTable const result = laidOut();
    EXPECT_EQ(result.footnotes[25].marker, "z");
    EXPECT_EQ(result.footnotes[26].marker, "aa");
    EXPECT_EQ(result.footnotes[27].marker, "ab");
}

TEST_F(LayoutTest, ACaptionThatIsNotShownIsLeftOut) {
    OmStringCell const caption("Caption");
    table.Caption(&caption);
    table.Rows().push_back(add("R", {"r"}));
    fill();
    EXPECT_EQ(laidOut().caption.text, "Caption");
    table.showCaption(false);
    EXPECT_TRUE(laidOut().caption.empty());
}

TEST_F(LayoutTest, OnlyNumbersCountAsNumbers) {
    table.Rows().push_back(add("R", {"r", "s", "t"}));
    table.Cell({0}, OmNumber(1.5));
    table.Cell({1}, OmStringCell("text"));
    std::vector<LaidOutCell> const cells = laidOut(false, true).layers.at(0).cells;
    std::vector<bool> numbers;
    for (LaidOutCell const& cell : cells) {
        if (cell.kind == CellKind::Body) {
            numbers.push_back(cell.isNumber);
        }
    }
    EXPECT_EQ(numbers, (std::vector<bool>{true, false, false}));
}

TEST_F(LayoutTest, MoreCellsThanAskedForAreRefused) {
    table.Rows().push_back(add("R", {"r", "s", "t"}));
    table.Columns().push_back(add("C", {"c", "d"}));
    fill();
    LayoutOptions options;
    for (bool const keepEmpty : {false, true}) {
        options.keepEmpty = keepEmpty;
        options.mostCells = 6;
        EXPECT_NO_THROW(layOut(table, options));
        options.mostCells = 5;
        EXPECT_THROW(layOut(table, options), Failure);
    }
}

} // namespace
