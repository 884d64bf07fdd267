// Non-empty layers, columns and rows of larger tables, against a walk over the cells with its iterator. In sparse
// tables a handful of positions along long axes and thousands along short ones, so that they are collected both ways;
// in dense ones full and empty stretches, so that probing ends with its first look-up, goes on, and gives way to a
// walk.
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
    Script(Dice& dice, bool dense) : _dice(dice), _dense(dense) {}

    void Run() {
        std::size_t const dimensions = 2 + _dice.Below(3);
        int const most = (dimensions == 2 ? 800 : dimensions == 3 ? 120 : 40) / (_dense ? 4 : 1);
        for (std::size_t d = 0; d < dimensions; ++d) {
            AddDimension(_dice.Int(most / 4, most));
            _axes[_dice.Below(3)].push_back(static_cast<short>(d));
        }
        _threshold = Possible() / 100 + 1;
        _sketch.Rows(_axes[0]).Columns(_axes[1]).Layers(_axes[2]);
        if (_dense) {
            FillWithCells();
        } else {
            StoreCells();
        }
        OmDisplayLayerHeading layers(_sketch.table, true);
        Numbers const expected = Expected(_axes[2], {});
        ASSERT_EQ(CountLayers(layers), expected.size());
        for (int tries = 0; tries < 4 && !expected.empty(); ++tries) {
            ASSERT_TRUE(layers.SwitchLayer(_dice.Int(0, static_cast<int>(expected.size()) - 1)));
            Index const current = layers.getCurrentCellIndex();
            ASSERT_TRUE(LeadsTo(_axes[2], current, expected[static_cast<std::size_t>(layers.getLayer())]));
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
        Index categories;
        std::size_t const scheme = _dice.Below(3);
        for (int k = 0; k < leaves; ++k) {
            int const subscript = scheme == 0 ? k : scheme == 1 ? k * 7 / 5 : k * 2 / 3;
            dimension.AddNewChild(dimension.Root(), OmStringCell("c"), static_cast<unsigned long long>(subscript),
                                  false);
            positions[subscript] = static_cast<unsigned long long>(k);
            categories.push_back(subscript);
        }
        _categories.push_back(std::move(categories));
        _positions.push_back(std::move(positions));
        _sizes.push_back(static_cast<unsigned long long>(dimension.NumCategories()));
    }

    std::size_t Possible() const {
        std::size_t possible = 1;
        for (unsigned long long const size : _sizes) {
            possible *= static_cast<std::size_t>(size);
        }
        return possible;
    }

    int AnySubscript(std::size_t d) const { return _dice.Int(0, static_cast<int>(_sizes[d] + _sizes[d] / 10)); }

    /// More cells than the threshold, in every position that keeps out of some stretch of one dimension.
    void FillWithCells() {
        std::size_t const split = _dice.Below(_sizes.size());
        int const from = AnySubscript(split);
        std::size_t const cells = _threshold + _dice.Below(_dice.Percent(50) ? 50 : 3000);
        std::set<Index> stored;
        for (std::size_t tries = 0; stored.size() < cells && tries < 20 * cells; ++tries) {
            Index index;
            for (std::size_t d = 0; d < _sizes.size(); ++d) {
                index.push_back(AnySubscript(d));
            }
            index[split] = from > 0 ? index[split] % from : 0;
            if (stored.insert(index).second) {
                _sketch.Put(index);
            }
        }
        _dense = stored.size() >= _threshold;
    }

    void StoreCells() {
        std::size_t const most = std::min<std::size_t>(4000, Possible() / 110);
        std::size_t const fixed = _dice.Below(_sizes.size()); // many cells differ in the other dimensions alone
        std::set<Index> stored;
        for (std::size_t k = 1 + _dice.Below(most); k > 0; --k) {
            Index index;
            for (std::size_t d = 0; d < _sizes.size(); ++d) {
                index.push_back(d == fixed && _dice.Percent(50) ? 1 : AnySubscript(d));
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

    /// Whether the subscripts of a cell are the categories of a position. Of several leaves with one subscript, probing
    /// gives each its own position.
    bool LeadsTo(Axis const& axis, Index const& cell, unsigned long long number) const {
        for (short const entry : axis) {
            std::size_t const d = static_cast<std::size_t>(entry);
            if (_categories[d][static_cast<std::size_t>(number % _sizes[d])] != cell[d]) {
                return false;
            }
            number /= _sizes[d];
        }
        return number == 0;
    }

    /// With a current layer, of the cells that stand in it.
    Numbers Expected(Axis const& axis, Index const& current) const {
        return _dense ? Probed(axis, current) : Walked(axis, current);
    }

    /// All positions with the subscripts of some cell that lies within the sizes of the dimensions beside the axis.
    Numbers Probed(Axis const& axis, Index const& current) const {
        auto const stands = [](Axis const& on, std::size_t d) {
            return std::count(on.begin(), on.end(), static_cast<short>(d)) != 0;
        };
        std::set<Index> found;
        OmPivotTable const& table = _sketch.table;
        for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
            Index const index = cell.Index();
            bool counts = true;
            for (std::size_t d = 0; d < index.size(); ++d) {
                bool const given = !current.empty() && stands(_axes[2], d);
                bool const inside = static_cast<unsigned long long>(index[d]) < _sizes[d];
                counts = counts && (stands(axis, d) || (given ? index[d] == current[d] : inside));
            }
            if (counts) {
                found.insert(On(axis, index));
            }
        }
        Numbers numbers;
        Index place(axis.size(), 0);
        for (unsigned long long number = 0; number < Length(axis); ++number) {
            unsigned long long rest = number;
            for (std::size_t i = 0; i < axis.size(); ++i) { // a heading's last dimension is the axis's first
                std::size_t const d = static_cast<std::size_t>(axis[i]);
                std::size_t const digit = static_cast<std::size_t>(rest % _sizes[d]);
                place[i] = digit < _categories[d].size() ? _categories[d][digit] : -1;
                rest /= _sizes[d];
            }
            if (found.count(place) != 0) {
                numbers.push_back(number);
            }
        }
        return numbers;
    }

    static Index On(Axis const& axis, Index const& cell) {
        Index subscripts;
        for (short const d : axis) {
            subscripts.push_back(cell[static_cast<std::size_t>(d)]);
        }
        return subscripts;
    }

    unsigned long long Length(Axis const& axis) const {
        unsigned long long length = 1;
        for (short const d : axis) {
            length *= _sizes[static_cast<std::size_t>(d)];
        }
        return length;
    }

    Numbers Walked(Axis const& axis, Index const& current) const {
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
            ASSERT_TRUE(LeadsTo(_axes[1], index, columns.getNonEmptyColumns()[static_cast<std::size_t>(c)]));
        }
        for (int r = 0; r < rows.NRows(); ++r) {
            rows.Fill(index, r);
            ASSERT_TRUE(LeadsTo(_axes[0], index, rows.getNonEmptyRows()[static_cast<std::size_t>(r)]));
        }
        for (int const outside : {-1, columns.NColumns()}) {
            Index const before = index;
            columns.Fill(index, outside);
            EXPECT_EQ(index, before);
        }
    }

    Dice& _dice;
    bool _dense;
    std::size_t _threshold = 0; ///< of cells that make the table a dense one
    TableSketch _sketch{};
    Axis _axes[3]{}; ///< rows, columns, layers
    std::vector<unsigned long long> _sizes{};
    std::vector<Index> _categories{};                            ///< of each position
    std::vector<std::map<int, unsigned long long>> _positions{}; ///< of each category; the last leaf counts
};

} // namespace

TEST(OmDisplayHeadingProjection, RandomSparseTablesAgreeWithAWalkOverTheCells) {
    omtest::RunScripts(120, [](Dice& dice) { Script(dice, false).Run(); });
}

TEST(OmDisplayHeadingProjection, RandomDenseTablesAgreeWithAWalkOverTheCells) {
    omtest::RunScripts(200, [](Dice& dice) { Script(dice, true).Run(); });
}

// Subscripts far past the number of leaves are looked up in a list of their own.
TEST(OmDisplayHeadingProjection, LastOfSeveralFarLeavesWithOneSubscriptHasThePosition) {
    TableSketch sketch;
    sketch.Dimension("C", "a=4000 b=100 c=100 d=100 e=90 f=4000 g=50");
    sketch.FlatDimension("R", 300);
    sketch.Columns({0}).Rows({1}).Put({100, 5}).Put({4000, 7}).Put({101, 0});
    OmDisplayLayerHeading layers(sketch.table, true);
    layers.NextLayer();
    EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), (Numbers{3, 5}));
}
