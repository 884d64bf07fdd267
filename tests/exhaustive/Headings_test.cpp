// Small worlds, all of them: every placement of up to three dimensions on the axes with every set of cells and all
// skip flags; both ways to look for cells around their threshold; every combination of label flags.
#include "tests/support/HeadingPair.h"
#include "tests/support/LayoutModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::HeadingModel;
using omtest::LayerModel;
using omtest::ModelCategory;
using omtest::TablePair;

struct Placement {
    std::vector<short> axes[3]{}; ///< rows, columns, layers
};

/// Every way to put dimensions 0 .. count - 1 on the three axes in some order, or on none.
std::vector<Placement> Placements(std::size_t count) {
    std::vector<Placement> placements{Placement()};
    for (std::size_t d = 0; d < count; ++d) {
        std::vector<Placement> more = placements;
        for (Placement const& placement : placements) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                for (std::size_t place = 0; place <= placement.axes[axis].size(); ++place) {
                    std::vector<short>& entries = more.emplace_back(placement).axes[axis];
                    entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(place), static_cast<short>(d));
                }
            }
        }
        placements = std::move(more);
    }
    return placements;
}

ModelCategory Category(std::string const& label, unsigned long long subscript, bool isGroup = false) {
    ModelCategory category;
    category.label = label;
    category.subscript = subscript;
    category.isGroup = isGroup;
    return category;
}

template <typename Face>
void CompareWhole(TablePair const& pair, Face const& face, HeadingModel const& model) {
    omtest::CompareShape(pair, face, model);
    omtest::ComparePositions(face, model);
    for (int c = 0; c <= static_cast<int>(model.count); ++c) {
        omtest::ComparePosition(pair, face, model, c);
    }
    for (int r = -1; r <= model.depth; ++r) {
        omtest::CompareLine(pair, face, model, r);
    }
}

void CompareRows(TablePair const& pair, OmDisplayLayerHeading& layers, LayerModel const& model, bool skip, bool names) {
    OmDisplayRowHeading rows(layers, skip, names);
    HeadingModel const rowModel(model, HeadingModel::Rows, skip, names);
    CompareWhole(pair, omtest::RowFace{rows}, rowModel);
    omtest::CompareCorner(rows, rowModel);
}

void CompareColumns(TablePair const& pair, OmDisplayLayerHeading& layers, LayerModel const& model, bool skip) {
    OmDisplayColumnHeading columns(layers, skip);
    CompareWhole(pair, omtest::ColumnFace{columns}, HeadingModel(model, HeadingModel::Columns, skip));
}

/// Walks the first `most` layers under both layer flags. Headings that do not skip are the same whatever cells there
/// are, so they are compared only when `all` is set; without it, skipping rows have one of the two corners.
void CompareTable(TablePair& pair, bool all, bool names, int most) {
    for (bool const skipLayers : {false, true}) {
        SCOPED_TRACE(skipLayers ? "skipping layers" : "all layers");
        OmDisplayLayerHeading layers(pair.table, skipLayers);
        LayerModel model(pair.model, skipLayers);
        for (int n = -1; n < most; ++n) {
            bool const more = n < 0 || model.NextLayer();
            ASSERT_EQ(n < 0 || layers.NextLayer(), more);
            omtest::CompareLayers(pair, layers, model);
            if (!more) {
                break;
            }
            CompareColumns(pair, layers, model, true);
            CompareRows(pair, layers, model, true, names);
            if (all) {
                CompareRows(pair, layers, model, true, !names);
                CompareColumns(pair, layers, model, false);
                CompareRows(pair, layers, model, false, names);
                CompareRows(pair, layers, model, false, !names);
            }
        }
    }
}

/// Runs `look(step)` with every subset of the given cells in the table, one change at a time; step 0 has none. Ends
/// with the first that fails.
void WithAllCellSets(TablePair& pair, std::vector<std::vector<int>> const& cells,
                     std::function<void(std::size_t)> const& look) {
    for (auto const& [index, text] : std::map<std::vector<int>, std::string>(pair.model.cells)) {
        pair.Delete(index);
    }
    look(0);
    for (std::size_t step = 1; step < (std::size_t(1) << cells.size()) && !::testing::Test::HasFailure(); ++step) {
        std::size_t changed = 0;
        while ((step >> changed & 1) == 0) {
            ++changed;
        }
        std::vector<int> const& index = cells[changed];
        if (pair.model.cells.count(index) != 0) {
            pair.Delete(index);
        } else {
            pair.Store(index, "cell");
        }
        look(step);
    }
}

/// Every index with entry k out of `subscripts[k]`.
std::vector<std::vector<int>> Product(std::vector<std::vector<int>> const& subscripts) {
    std::vector<std::vector<int>> indexes{{}};
    for (std::vector<int> const& choices : subscripts) {
        std::vector<std::vector<int>> longer;
        for (std::vector<int> const& index : indexes) {
            for (int const choice : choices) {
                longer.push_back(index);
                longer.back().push_back(choice);
            }
        }
        indexes = std::move(longer);
    }
    return indexes;
}

void ComparePlacements(TablePair& pair, std::vector<Placement> const& placements,
                       std::vector<std::vector<int>> const& cells, int most) {
    for (Placement const& placement : placements) {
        pair.Axes(placement.axes[0], placement.axes[1], placement.axes[2]);
        WithAllCellSets(pair, cells, [&](std::size_t step) {
            CompareTable(pair, step == 0, pair.model.cells.size() % 2 == 0, most);
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "rows " << ::testing::PrintToString(placement.axes[0]) << " columns "
                              << ::testing::PrintToString(placement.axes[1]) << " layers "
                              << ::testing::PrintToString(placement.axes[2]) << " cells "
                              << ::testing::PrintToString(pair.model.cells);
            }
        });
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

/// Dimensions with so many leaves each, numbered 0, 1.
void CompareShape(std::vector<int> const& leaves, std::vector<Placement> const& placements) {
    TablePair pair;
    std::vector<std::vector<int>> subscripts;
    for (std::size_t d = 0; d < leaves.size(); ++d) {
        pair.AddDimension("dimension");
        subscripts.emplace_back();
        for (int leaf = 0; leaf < leaves[d]; ++leaf) {
            pair.Append(d, {}, Category("leaf", static_cast<unsigned long long>(leaf)));
            subscripts.back().push_back(leaf);
        }
    }
    pair.Corner("corner");
    pair.Seal();
    ComparePlacements(pair, placements, leaves.empty() ? std::vector<std::vector<int>>() : Product(subscripts), 9);
}

TEST(Headings, AllPlacementsOfUpToThreeDimensionsWithAllCellSets) {
    std::vector<std::vector<int>> const shapes{{},        {1},       {2},       {1, 1},    {1, 2},
                                               {2, 1},    {2, 2},    {1, 1, 1}, {1, 1, 2}, {1, 2, 1},
                                               {2, 1, 1}, {1, 2, 2}, {2, 1, 2}, {2, 2, 1}};
    for (std::vector<int> const& shape : shapes) {
        CompareShape(shape, Placements(shape.size()));
        ASSERT_FALSE(HasFailure()) << "leaves " << ::testing::PrintToString(shape);
    }
}

/// Three dimensions of two leaves are alike, so placements that differ by their names alone meet the same cell sets:
/// those suffice in which the names ascend, or descend, over rows, columns, layers and no axis.
TEST(Headings, PlacementsOfThreeLikeDimensionsWithAllCellSets) {
    std::vector<Placement> placements;
    for (Placement const& placement : Placements(3)) {
        std::vector<short> names;
        for (std::vector<short> const& axis : placement.axes) {
            names.insert(names.end(), axis.begin(), axis.end());
        }
        std::size_t const placed = names.size();
        for (short d = 0; d < 3; ++d) {
            if (std::find(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(placed), d) ==
                names.begin() + static_cast<std::ptrdiff_t>(placed)) {
                names.push_back(d);
            }
        }
        if (std::is_sorted(names.begin(), names.end()) || std::is_sorted(names.rbegin(), names.rend())) {
            placements.push_back(placement);
        }
    }
    ASSERT_EQ(placements.size(), 36U);
    CompareShape({2, 2, 2}, placements);
}

/// Two dimensions of 13 categories of which two are shown: 169 positions, so one cell is sparse and two are dense.
/// Cells on a category that is not shown are among the candidates.
TEST(Headings, BothWaysToLookForCellsWithAllCellSets) {
    TablePair pair;
    for (std::size_t d = 0; d < 2; ++d) {
        pair.AddDimension("dimension");
        pair.Append(d, {}, Category("last", 12));
        pair.Append(d, {}, Category("first", 0));
        pair.Recount(d);
    }
    pair.Seal();
    ASSERT_EQ(pair.model.sizes, (std::vector<int>{13, 13}));
    ComparePlacements(pair, Placements(2), {{0, 0}, {12, 0}, {0, 12}, {12, 12}, {0, 1}, {1, 0}}, 3);
}

/// A dimension, a group, a leaf in it and a leaf beside it, each hidden or not, each hiding labels or not.
TEST(Headings, AllLabelFlags) {
    TablePair pair;
    pair.AddDimension("dimension");
    TablePair::Path const group = pair.Append(0, {}, Category("group", 0, true));
    std::vector<TablePair::Path> const nodes{
        {}, group, pair.Append(0, group, Category("inner", 0)), pair.Append(0, {}, Category("outer", 1))};
    pair.Corner("corner");
    pair.Store({1}, "cell");
    pair.Seal();
    for (unsigned int flags = 0; flags < 256; ++flags) {
        for (std::size_t k = 0; k < nodes.size(); ++k) {
            unsigned int const own = flags >> (2 * k) & 3;
            pair.SetFlags(0, nodes[k], k < 2, (own & 1) != 0, (own & 2) != 0);
        }
        for (Placement const& placement : Placements(1)) {
            pair.Axes(placement.axes[0], placement.axes[1], placement.axes[2]);
            CompareTable(pair, true, true, 3);
        }
        ASSERT_FALSE(HasFailure()) << "flags " << flags;
    }
}

} // namespace
