#ifndef OMTREE_TESTS_SUPPORT_HEADINGPAIR_H
#define OMTREE_TESTS_SUPPORT_HEADINGPAIR_H

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/LayoutModel.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/// A pivot table of the library beside the plain data that says what is in it, and comparisons of the library's display
/// headings with the models over that data.
namespace omtest {

/// Both forms of one table. Add to both sides through the members here; call `Seal` before any heading is compared.
class TablePair {
public:
    using Path = std::vector<std::size_t>;

    TablePair() = default;
    TablePair(TablePair const&) = delete;
    TablePair& operator=(TablePair const&) = delete;

    static OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

    void AddDimension(std::string const& name) {
        ModelCategory root;
        root.label = name;
        root.subscript = ~0ULL;
        root.isGroup = true;
        model.dimensions.push_back(root);
        table.AddDimension(Text(name));
    }

    /// Appends a child; gives its path.
    Path Append(std::size_t dimension, Path path, ModelCategory const& category) {
        OmDimension::Node const parent = Handle(dimension, path);
        OmDimension::Node const child =
            table.Dimension(static_cast<int>(dimension))
                .AddNewChild(parent, Text(category.label), category.subscript, category.isGroup);
        child.Value().Hide(category.hide);
        child.Value().HideLabels(category.hideLabels);
        ModelCategory& above = Model(dimension, path);
        above.children.push_back(category);
        path.push_back(above.children.size() - 1);
        return path;
    }

    /// Sets the number of categories to the largest subscript plus one, as deleting some leaf does.
    void Recount(std::size_t dimension) {
        OmDimension& whole = table.Dimension(static_cast<int>(dimension));
        OmDimension::Node doomed = whole.AddNewChild(whole.Root(), Text("doomed"), 0, false);
        whole.Delete(doomed);
    }

    /// Leaves the leaf with a number that no cell can have. REQUIRES: it has no children, which would take its place.
    void Dissolve(std::size_t dimension, Path const& path) {
        OmDimension::Node leaf = Handle(dimension, path);
        table.Dimension(static_cast<int>(dimension)).removeChild(leaf);
        Model(dimension, path).subscript = ~0ULL - 1;
    }

    void SetFlags(std::size_t dimension, Path const& path, bool isGroup, bool hide, bool hideLabels) {
        OmDimensionNode& value = Handle(dimension, path).Value();
        ModelCategory& category = Model(dimension, path);
        value.IsGroup(category.isGroup = isGroup);
        value.Hide(category.hide = hide);
        value.HideLabels(category.hideLabels = hideLabels);
    }

    void Store(std::vector<int> const& index, std::string const& text) {
        table.Cell(index, Text(text));
        model.cells[index] = text;
    }
    void StoreNull(std::vector<int> const& index) {
        table.Cell(index, static_cast<OmCellText const*>(nullptr));
        model.cells.erase(index);
    }
    /// REQUIRES: the cell exists.
    void Delete(std::vector<int> const& index) {
        table.deleteCell(index);
        model.cells.erase(index);
    }

    void Axes(std::vector<short> rows, std::vector<short> columns, std::vector<short> layers) {
        table.Rows().assign(rows.begin(), rows.end());
        table.Columns().assign(columns.begin(), columns.end());
        table.Layers().assign(layers.begin(), layers.end());
        model.rows = std::move(rows);
        model.columns = std::move(columns);
        model.layers = std::move(layers);
    }

    void Corner(std::string const& text) {
        OmStringCell const corner = Text(text);
        table.CornerText(&corner);
        model.cornerText = text;
    }

    void LayerLocation(int location) {
        table.setLayerLoc(location);
        model.layerLocation = location;
    }

    /// Takes the sizes over from the library (what they must be is no heading's affair) and learns which node is which.
    void Seal() {
        model.sizes = table.SizeVector();
        _names.clear();
        for (std::size_t d = 0; d < model.dimensions.size(); ++d) {
            Learn(table.Dimension(static_cast<int>(d)).Root(), model.dimensions[d]);
        }
    }

    /// The model's node for one of the library's; a pointer that is none of them is reported.
    ModelNode Name(OmDimension::ConstNode const* node) const {
        if (node == nullptr) {
            return nullptr;
        }
        auto const found = _names.find(node->Ptr());
        if (found == _names.end() || found->second.second != node->Depth()) {
            ADD_FAILURE() << "a handle that names no node of the table";
            return nullptr;
        }
        return found->second.first;
    }
    template <typename Handles>
    ModelNodes Names(Handles const& handles) const {
        ModelNodes names;
        for (OmDimension::ConstNode const* const node : handles) {
            names.push_back(Name(node));
        }
        return names;
    }

    OmDimension::Node Handle(std::size_t dimension, Path const& path) {
        OmDimension::Node node = table.Dimension(static_cast<int>(dimension)).Root();
        for (std::size_t const step : path) {
            node = node.Child(step);
        }
        return node;
    }
    ModelCategory& Model(std::size_t dimension, Path const& path) {
        ModelCategory* category = &model.dimensions[dimension];
        for (std::size_t const step : path) {
            category = &category->children[step];
        }
        return *category;
    }

    OmPivotTable table{Text("title"), Text("template"), false};
    ModelTable model{};

private:
    void Learn(OmDimension::ConstNode const& node, ModelCategory const& category) {
        _names[node.Ptr()] = {&category, node.Depth()};
        for (std::size_t k = 0; k < category.children.size(); ++k) {
            Learn(node.Child(k), category.children[k]);
        }
    }

    std::unordered_map<void const*, std::pair<ModelNode, unsigned int>> _names{};
};

/// `what` of number `number` (a layer dimension, a position, a line) gave `actual`.
inline void ExpectNodes(TablePair const& pair, char const* what, int number, ModelNodes const& actual,
                        ModelNodes const& expected) {
    if (actual != expected) {
        ADD_FAILURE() << what << "(" << number << ")\n  is      " << NamesOf(pair.model, actual) << "\n  must be "
                      << NamesOf(pair.model, expected);
    }
}

// --- the layer heading -----------------------------------------------------------------------------------------------

inline void CompareLayerDimension(TablePair const& pair, OmDisplayLayerHeading& heading, LayerModel const& model,
                                  int i) {
    EXPECT_EQ(heading.getDimensionIndex(i), model.DimensionIndex(i)) << i;
    EXPECT_EQ(heading.VisibleWidth(i), model.VisibleWidth(i)) << i;
    ExpectNodes(pair, "Nodes", i, pair.Names(heading.Nodes(i)), model.Nodes(i));

    OmDimension::ConstNode untouched;
    OmDimension::ConstNode* dimension = &untouched;
    OmDimension::ConstNode* category = &untouched;
    heading.DimCatNodes(i, dimension, category);
    std::optional<std::pair<ModelNode, ModelNode>> const expected = model.DimCatNodes(i);
    ASSERT_EQ(dimension != &untouched, expected.has_value()) << "DimCatNodes " << i;
    ASSERT_EQ(category != &untouched, expected.has_value()) << "DimCatNodes " << i;
    if (expected) {
        ExpectNodes(pair, "DimCatNodes", i, {pair.Name(dimension), pair.Name(category)},
                    {expected->first, expected->second});
    }

    // What is in the vector before stays in front.
    std::vector<OmDimension::ConstNode*> all(2, nullptr);
    heading.DimAllNodes(i, all);
    ModelNodes expectedAll(2, nullptr);
    ModelNodes const path = model.DimAllNodes(i);
    expectedAll.insert(expectedAll.end(), path.begin(), path.end());
    ExpectNodes(pair, "DimAllNodes", i, pair.Names(all), expectedAll);
}

/// An index to be filled: longer or shorter than it will be, with numbers that no fill writes.
inline std::vector<int> OddIndex(std::size_t length) {
    std::vector<int> index(length);
    for (std::size_t k = 0; k < length; ++k) {
        index[k] = -100 - static_cast<int>(k);
    }
    return index;
}

inline void CompareLayers(TablePair const& pair, OmDisplayLayerHeading& heading, LayerModel const& model) {
    EXPECT_EQ(heading.getLayer(), model.current);
    EXPECT_EQ(heading.NDimensions(), model.NDimensions());
    EXPECT_EQ(heading.SkipEmpty(), model.skip);
    EXPECT_EQ(&heading.Table(), &pair.table);
    EXPECT_EQ(heading.getCurrentCellIndex(), model.index);
    for (int i = -1; i <= model.NDimensions() + 1; ++i) {
        CompareLayerDimension(pair, heading, model, i);
    }
    for (std::size_t const length : {std::size_t(0), model.index.size(), model.index.size() + 2}) {
        std::vector<int> filled = OddIndex(length);
        std::vector<int> expected = filled;
        heading.Fill(filled);
        model.Fill(expected);
        EXPECT_EQ(filled, expected) << "Fill";
    }
}

// --- column and row headings, under the column heading's names -------------------------------------------------------

struct ColumnFace {
    OmDisplayColumnHeading& heading;
    static constexpr char const* Name = "column heading, ";
    static constexpr char const* CellsName = "Column";
    static constexpr char const* LineName = "column heading, Row";
    static constexpr char const* CategoriesName = "ColumnCategories";
    int Count() const { return heading.NColumns(); }
    int Depth() const { return heading.NRows(); }
    int Height(int i) const { return heading.VisibleHeight(i); }
    std::vector<unsigned long long> const& Positions() const { return heading.getNonEmptyColumns(); }
    auto Cells(int c) const { return heading.Column(c); }
    auto Line(int r) const { return heading.Row(r); }
    auto Categories(int c) const { return heading.ColumnCategories(c); }
};

struct RowFace {
    OmDisplayRowHeading& heading;
    static constexpr char const* Name = "row heading, ";
    static constexpr char const* CellsName = "Row";
    static constexpr char const* LineName = "row heading, Column";
    static constexpr char const* CategoriesName = "RowCategories";
    int Count() const { return heading.NRows(); }
    int Depth() const { return heading.NColumns(); }
    int Height(int i) const { return heading.VisibleWidth(i); }
    std::vector<unsigned long long> const& Positions() const { return heading.getNonEmptyRows(); }
    auto Cells(int c) const { return heading.Row(c); }
    auto Line(int r) const { return heading.Column(r); }
    auto Categories(int c) const { return heading.RowCategories(c); }
};

/// Everything that is asked about one position of the shown sequence, or past it.
template <typename Face>
void ComparePosition(TablePair const& pair, Face const& face, HeadingModel const& model, int c) {
    ExpectNodes(pair, Face::CellsName, c, pair.Names(face.Cells(c)), model.Cells(c));
    ExpectNodes(pair, Face::CategoriesName, c, pair.Names(face.Categories(c)), model.Categories(c));

    std::vector<OmDimension::ConstNode*> dimensions(1, nullptr);
    std::vector<OmDimension::ConstNode*> categories;
    std::vector<OmDimension::ConstNode*> all(1, nullptr);
    face.heading.DimCatNodes(c, dimensions, categories);
    face.heading.DimAllNodes(c, all);
    ModelNodes expectedDimensions(1, nullptr);
    ModelNodes expectedCategories;
    ModelNodes expectedAll(1, nullptr);
    model.DimCatNodes(c, expectedDimensions, expectedCategories);
    model.DimAllNodes(c, expectedAll);
    ExpectNodes(pair, "DimCatNodes dimensions", c, pair.Names(dimensions), expectedDimensions);
    ExpectNodes(pair, "DimCatNodes categories", c, pair.Names(categories), expectedCategories);
    ExpectNodes(pair, "DimAllNodes", c, pair.Names(all), expectedAll);

    // Too short at one position, too long at the next.
    std::vector<int> filled = OddIndex(c % 2 == 0 ? 0 : pair.model.dimensions.size() + 1);
    std::vector<int> expectedFilled = filled;
    face.heading.Fill(filled, c);
    model.Fill(expectedFilled, c);
    EXPECT_EQ(filled, expectedFilled) << Face::Name << c << ", Fill";
}

/// Everything that is asked about the heading as a whole.
template <typename Face>
void CompareShape(TablePair const& pair, Face const& face, HeadingModel const& model) {
    EXPECT_EQ(face.Count(), static_cast<int>(model.count)) << Face::Name;
    EXPECT_EQ(face.Depth(), model.depth) << Face::Name;
    EXPECT_EQ(face.heading.NDimensions(), model.NDimensions()) << Face::Name;
    EXPECT_EQ(face.heading.SkipEmpty(), model.skip) << Face::Name;
    EXPECT_EQ(&face.heading.Table(), &pair.table) << Face::Name;
    for (int i = -1; i <= model.NDimensions() + 1; ++i) {
        EXPECT_EQ(face.Height(i), model.VisibleHeight(i)) << Face::Name << i;
        EXPECT_EQ(face.heading.getDimensionIndex(i), model.DimensionIndex(i)) << Face::Name << i;
    }
}

template <typename Face>
void ComparePositions(Face const& face, HeadingModel const& model) {
    std::vector<std::uint64_t> const expected = model.Positions();
    std::vector<unsigned long long> const& positions = face.Positions();
    EXPECT_TRUE(std::equal(positions.begin(), positions.end(), expected.begin(), expected.end()))
        << Face::Name << "positions " << ::testing::PrintToString(positions) << " must be "
        << ::testing::PrintToString(expected);
    EXPECT_EQ(&face.Positions(), &positions) << "the list is made once";
}

template <typename Face>
void CompareLine(TablePair const& pair, Face const& face, HeadingModel const& model, int r) {
    ExpectNodes(pair, Face::LineName, r, pair.Names(face.Line(r)), model.Line(r));
}

inline void CompareCorner(OmDisplayRowHeading const& heading, HeadingModel const& model) {
    std::vector<OmCellText const*> const corner = heading.CornerText();
    EXPECT_EQ(heading.DimNamesInCorner(), model.names);
    ASSERT_EQ(corner.size(), model.corner.size()) << "corner";
    for (std::size_t k = 0; k < corner.size(); ++k) {
        std::optional<std::string> const text =
            corner[k] != nullptr ? std::optional<std::string>(corner[k]->AsString()) : std::nullopt;
        EXPECT_EQ(text, model.corner[k]) << "corner entry " << k;
    }
}

} // namespace omtest

#endif
