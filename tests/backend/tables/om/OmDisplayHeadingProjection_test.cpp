// Non-empty layers, columns and rows of larger sparse tables, against a walk over the cells with its iterator: a
// handful of positions along long axes and thousands along short ones, so that they are collected both ways.
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/SeededScripts.h"
#include "tests/support/TableSketch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::Dice;
using omtest::TableSketch;
using Index = std::vector<int>;
using Numbers = std::vector<unsigned long long>;
using Axis = std::vector<short>;

class Script {
public:
    explicit Script(Dice& dice) : _dice(dice) {}

    void Run() {
        std::size_t const dimensions = 2 + _dice.Below(3);
        int const most = dimensions == 2 ? 800 : dimensions == 3 ? 120 : 40;
        for (std::size_t d = 0; d < dimensions; ++d) {
            AddDimension(_dice.Int(most / 4, most));
            _axes[_dice.Below(3)].push_back(static_cast<short>(d));
        }
        _sketch.Rows(_axes[0]).Columns(_axes[1]).Layers(_axes[2]);
        StoreCells();
        OmDisplayLayerHeading layers(_sketch.table, true);
        Numbers const expected = Expected(_axes[2], {});
        ASSERT_EQ(CountLayers(layers), expected.size());
        for (int tries = 0; tries < 4 && !expected.empty(); ++tries) {
            ASSERT_TRUE(layers.SwitchLayer(_dice.Int(0, static_cast<int>(expected.size()) - 1)));
            Index const current = layers.getCurrentCellIndex();
            ASSERT_EQ(expected[static_cast<std::size_t>(layers.getLayer())], *Number(_axes[2], current));
            OmDisplayColumnHeading const columns(layers, true);
            OmDisplayRowHeading const rows(layers, true, false);
            EXPECT_EQ(columns.getNonEmptyColumns(), Expected(_axes[1], current));
            EXPECT_EQ(rows.getNonEmptyRows(), Expected(_axes[0], current));
            CompareFills(columns, rows, current);
        }
    }

private:
    /// Leaves that number themselves 0, 1, 2 ..., leave gaps, or repeat themselves.
    void AddDimension(int leaves) {
        OmDimension& dimension = _sketch.Dimension("d" + std::to_string(_sizes.size()));
        std::map<int, unsigned long long> positions;
        std::size_t const scheme = _dice.Below(3);
        for (int k = 0; k < leaves; ++k) {
            int const subscript = scheme == 0 ? k : scheme == 1 ? k * 7 / 5 : k * 2 / 3;
            dimension.AddNewChild(dimension.Root(), OmStringCell("c"), static_cast<unsigned long long>(subscript),
                                  false);
            positions[subscript] = static_cast<unsigned long long>(k);
        }
        _positions.push_back(std::move(positions));
        _sizes.push_back(static_cast<unsigned long long>(dimension.NumCategories()));
    }

    void StoreCells() {
        double possible = 1;
        for (unsigned long long const size : _sizes) {
            possible *= static_cast<double>(size);
        }
        std::size_t const most = std::min<std::size_t>(4000, static_cast<std::size_t>(possible / 110));
        std::size_t const fixed = _dice.Below(_sizes.size()); // many cells differ in the other dimensions alone
        std::set<Index> stored;
        for (std::size_t k = 1 + _dice.Below(most); k > 0; --k) {
            Index index;
            for (std::size_t d = 0; d < _sizes.size(); ++d) {
                int const most_subscript = static_cast<int>(_sizes[d] + _sizes[d] / 10);
                index.push_back(d == fixed && _dice.Percent(50) ? 1 : _dice.Int(0, most_subscript));
            }
            if (_dice.Percent(5)) {
                _sketch.table.Cell(index, nullptr);
            } else {
                _sketch.Put(index);
            }
            stored.insert(index);
        }
        for (Index const& index : stored) {
            if (_dice.Percent(10)) {
                _sketch.table.deleteCell(index);
            }
        }
    }

    /// The position of a cell's categories along an axis, or null when one of them has none.
    std::unique_ptr<unsigned long long> Number(Axis const& axis, Index const& cell) const {
        auto number = std::make_unique<unsigned long long>(0);
        for (auto entry = axis.rbegin(); entry != axis.rend(); ++entry) {
            std::size_t const d = static_cast<std::size_t>(*entry);
            auto const position = _positions[d].find(cell[d]);
            if (position == _positions[d].end() || position->second >= _sizes[d]) {
                return nullptr;
            }
            *number = *number * _sizes[d] + position->second;
        }
        return number;
    }

    /// With a current layer, of the cells that stand in it.
    Numbers Expected(Axis const& axis, Index const& current) const {
        std::set<unsigned long long> numbers;
        OmPivotTable const& table = _sketch.table;
        for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
            Index const index = cell.Index();
            bool const counts = current.empty() || std::all_of(_axes[2].begin(), _axes[2].end(), [&](short d) {
                                    return index[static_cast<std::size_t>(d)] == current[static_cast<std::size_t>(d)];
                                });
            auto const number = counts ? Number(axis, index) : nullptr;
            if (number != nullptr) {
                numbers.insert(*number);
            }
        }
        return {numbers.begin(), numbers.end()};
    }

    static std::size_t CountLayers(OmDisplayLayerHeading& layers) {
        layers.LastLayer();
        return static_cast<std::size_t>(layers.getLayer() + 1);
    }

    /// The cell index of a shown position leads back to the position, by way of the axis's categories.
    void CompareFills(OmDisplayColumnHeading const& columns, OmDisplayRowHeading const& rows,
                      Index const& current) const {
        Index index = current;
        for (int c = 0; c < columns.NColumns(); ++c) {
            columns.Fill(index, c);
            ASSERT_EQ(*Number(_axes[1], index), columns.getNonEmptyColumns()[static_cast<std::size_t>(c)]);
        }
        for (int r = 0; r < rows.NRows(); ++r) {
            rows.Fill(index, r);
            ASSERT_EQ(*Number(_axes[0], index), rows.getNonEmptyRows()[static_cast<std::size_t>(r)]);
        }
        for (int const outside : {-1, columns.NColumns()}) {
            Index const before = index;
            columns.Fill(index, outside);
            EXPECT_EQ(index, before);
        }
    }

    Dice& _dice;
    TableSketch _sketch{};
    Axis _axes[3]{}; ///< rows, columns, layers
    std::vector<unsigned long long> _sizes{};
    std::vector<std::map<int, unsigned long long>> _positions{}; ///< of each category; the last leaf counts
};

} // namespace

TEST(OmDisplayHeadingProjection, RandomSparseTablesAgreeWithAWalkOverTheCells) {
    omtest::RunScripts(120, [](Dice& dice) { Script(dice).Run(); });
}
