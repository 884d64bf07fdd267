#ifndef OMTREE_TESTS_SUPPORT_HEADINGSCRIPT_H
#define OMTREE_TESTS_SUPPORT_HEADINGSCRIPT_H

#include "tests/support/HeadingPair.h"
#include "tests/support/LayoutModel.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace omtest {

namespace headings {

using Path = TablePair::Path;

// --- a random table --------------------------------------------------------------------------------------------------

class RandomTable {
public:
    RandomTable(Dice& dice, TablePair& pair) : _dice(dice), _pair(pair) {}

    void Build() {
        std::size_t const dimensions = _dice.Percent(4) ? 0 : static_cast<std::size_t>(_dice.Int(1, 5));
        _large = _dice.Percent(60);
        _wide = dimensions <= 3 && _large ? _dice.Below(3) : NoDimension;
        for (std::size_t d = 0; d < dimensions; ++d) {
            BuildDimension(d, dimensions);
        }
        PlaceDimensions(dimensions);
        _pair.Seal();
        if (dimensions > 0) {
            StoreCells();
        }
        if (_dice.Percent(60)) {
            _pair.Corner("corner");
        }
    }

private:
    static constexpr std::size_t NoDimension = 99;

    void BuildDimension(std::size_t d, std::size_t dimensions) {
        _pair.AddDimension("dimension " + std::to_string(d));
        int const most = dimensions <= 2 ? 12 : dimensions == 3 ? 7 : 5;
        int const leaves = _dice.Percent(3) ? 0 : _large ? _dice.Int(most / 2, most) : _dice.Int(1, 3);
        _leaves.emplace_back();
        _subscripts.emplace_back();
        _scheme = _dice.Below(5);
        Grow(d, {}, leaves, 0);
        for (Path const& leaf : _leaves[d]) {
            if (_pair.Model(d, leaf).children.empty() && _dice.Percent(2)) {
                _pair.Dissolve(d, leaf);
            }
        }
        if (d == _wide || _dice.Percent(10)) {
            _pair.Recount(d);
        }
        SetRootFlags(d);
    }

    void SetRootFlags(std::size_t d) {
        bool const isGroup = !_dice.Percent(2);
        _pair.SetFlags(d, {}, isGroup, _dice.Percent(15), _dice.Percent(12));
        if (!isGroup && _dice.Percent(50)) {
            _pair.Model(d, {}).subscript = 0;
            _pair.Handle(d, {}).Value().Subscript(0);
        }
    }

    /// Puts `leaves` leaves below the node, some of them in groups of their own.
    void Grow(std::size_t d, Path const& parent, int leaves, int depth) {
        while (leaves > 0) {
            if (depth < 3 && _dice.Percent(depth == 0 ? 35 : 25)) {
                int const inside = _dice.Percent(15) ? 0 : _dice.Int(1, leaves);
                Path const group = _pair.Append(d, parent, Category("group", _dice.Below(50), true));
                Grow(d, group, inside, depth + 1);
                leaves -= inside;
                leaves -= inside == 0 && _dice.Percent(50) ? 1 : 0;
            } else {
                AddLeaf(d, parent);
                --leaves;
            }
        }
        if (_dice.Percent(5)) {
            _pair.Append(d, parent, Category("childless", 0, true));
        }
    }

    void AddLeaf(std::size_t d, Path const& parent) {
        unsigned long long const subscript = Subscript(d);
        Path const leaf = _pair.Append(d, parent, Category("leaf", subscript, false));
        _leaves[d].push_back(leaf);
        _subscripts[d].push_back(static_cast<int>(subscript));
        if (_dice.Percent(3)) {
            _pair.Append(d, leaf, Category("below a leaf", subscript, false));
        }
        // A group turned into a leaf is a category that the dimension did not count.
        if (_dice.Percent(2)) {
            Path const extra = _pair.Append(d, parent, Category("turned", subscript + 1, true));
            ModelCategory const& turned = _pair.Model(d, extra);
            _pair.SetFlags(d, extra, false, turned.hide, turned.hideLabels);
        }
    }

    /// Most dimensions number their categories 0, 1, 2 ...; some leave gaps, some repeat themselves.
    unsigned long long Subscript(std::size_t d) {
        std::size_t const next = _subscripts[d].size();
        if (d == _wide) {
            return _dice.Below(_pair.model.dimensions.size() == 1 || _dice.Percent(50) ? 50 : 20);
        }
        return _scheme == 0 ? _dice.Below(next + 3) : _scheme == 1 ? next / 2 : next;
    }

    ModelCategory Category(std::string const& label, unsigned long long subscript, bool isGroup) {
        ModelCategory category;
        category.label = label;
        category.subscript = subscript;
        category.isGroup = isGroup;
        category.hide = _dice.Percent(18);
        category.hideLabels = _dice.Percent(18);
        return category;
    }

    void PlaceDimensions(std::size_t dimensions) {
        std::vector<short> axes[4]; // rows, columns, layers, none
        auto const put = [&](std::vector<short>& axis, int entry) {
            axis.insert(axis.begin() + _dice.Int(0, static_cast<int>(axis.size())), static_cast<short>(entry));
        };
        for (std::size_t d = 0; d < dimensions; ++d) {
            put(axes[_dice.Percent(12) ? 3 : _dice.Below(3)], static_cast<int>(d));
        }
        while (_dice.Percent(12)) {
            put(axes[_dice.Below(3)], _dice.Percent(70) ? -1 : _dice.Percent(50) ? 77 : -7);
        }
        if (dimensions > 0 && _dice.Percent(4)) {
            put(axes[_dice.Below(3)], static_cast<int>(_dice.Below(dimensions)));
        }
        _unplaced = axes[3];
        _pair.Axes(axes[0], axes[1], axes[2]);
    }

    std::vector<int> AnyIndex() {
        std::vector<int> index;
        for (std::size_t d = 0; d < _subscripts.size(); ++d) {
            bool const unplaced = std::count(_unplaced.begin(), _unplaced.end(), static_cast<short>(d)) != 0;
            int const wild = _dice.Int(0, std::min(49, std::max(0, _pair.model.sizes[d]) + 1));
            bool const tame = !_subscripts[d].empty() && !_dice.Percent(6);
            index.push_back(unplaced && _dice.Percent(70) ? 0 : tame ? _dice.Pick(_subscripts[d]) : wild);
        }
        return index;
    }

    /// None, a few, many, or as many as decide between the two ways to look for cells.
    void StoreCells() {
        std::uint64_t product = 1;
        for (int const size : _pair.model.sizes) {
            product *= static_cast<std::uint64_t>(std::max(0, size));
        }
        std::size_t const threshold = static_cast<std::size_t>((product + 50) / 100);
        std::size_t const near = threshold + _dice.Below(3) - (threshold > 0 ? 1 : 0);
        std::size_t const many = static_cast<std::size_t>(product) / 3 + 1;
        std::size_t const few = 1 + _dice.Below(8);
        std::vector<std::size_t> const choices{few, few, few, near, near, near, near, _dice.Below(many), many};
        std::size_t const wanted = _dice.Percent(5) ? 0 : std::min<std::size_t>(_dice.Pick(choices), 150);
        for (std::size_t tries = 0; _pair.model.cells.size() < wanted && tries < wanted * 3; ++tries) {
            _pair.Store(AnyIndex(), "cell");
        }
        // Vectors of the store that hold nothing any more.
        while (_dice.Percent(30)) {
            std::vector<int> const index = AnyIndex();
            if (_pair.model.cells.count(index) == 0) {
                _pair.StoreNull(index);
            } else if (_dice.Percent(30)) {
                _pair.Delete(index);
            }
        }
    }

    Dice& _dice;
    TablePair& _pair;
    bool _large = false;
    std::size_t _wide = NoDimension; ///< the dimension whose subscripts lie far apart
    std::size_t _scheme = 0;
    std::vector<std::vector<Path>> _leaves{};
    std::vector<std::vector<int>> _subscripts{};
    std::vector<short> _unplaced{};
};

// --- one script ------------------------------------------------------------------------------------------------------

/// One random table laid out by the library's display headings and by a brute-force model: every public member, for
/// every layer, column and row of small tables and a random choice of them in larger ones, positions out of range
/// included.
///
///     Dice dice(seed);
///     HeadingScript(dice).Run();     // what disagrees is a failure of the test that runs
class HeadingScript {
public:
    explicit HeadingScript(Dice& dice) : _dice(dice) {}

    void Run() {
        RandomTable(_dice, _pair).Build();
        for (bool const skip : {false, true}) {
            OmDisplayLayerHeading heading(_pair.table, skip);
            LayerModel model(_pair.model, skip);
            Say(std::string("layers, ") + (skip ? "skipping" : "all"));
            WalkAll(heading, model);
            for (int k = 0; k < 30 && !_dice.Spent() && !::testing::Test::HasFailure(); ++k) {
                Jump(heading, model);
            }
        }
        if (::testing::Test::HasFailure()) {
            FAIL() << "after: " << _operation << "\n" << Describe();
        }
    }

private:
    void Say(std::string operation) {
        _operation = std::move(operation);
        Trace(_operation);
    }

    void WalkAll(OmDisplayLayerHeading& heading, LayerModel& model) {
        CompareLayers(_pair, heading, model);
        std::size_t const all = static_cast<std::size_t>(model.Count());
        for (std::size_t n = 0; n <= all && !::testing::Test::HasFailure(); ++n) {
            Say("walk to layer " + std::to_string(n));
            bool const more = model.NextLayer();
            ASSERT_EQ(heading.NextLayer(), more);
            if (all > 60 && !_dice.Percent(5)) {
                EXPECT_EQ(heading.getCurrentCellIndex(), model.index);
                continue;
            }
            CompareLayers(_pair, heading, model);
            if (all < 4 || _dice.Percent(10)) {
                CompareHeadings(heading, model);
            }
        }
    }

    void Jump(OmDisplayLayerHeading& heading, LayerModel& model) {
        int const count = static_cast<int>(model.Count());
        switch (_dice.Below(6)) {
        case 0:
            Say("NextLayer");
            EXPECT_EQ(heading.NextLayer(), model.NextLayer());
            break;
        case 1:
            Say("LastLayer");
            heading.LastLayer();
            model.LastLayer();
            break;
        case 2: {
            int const location = _dice.Int(-3, count + 2);
            Say("restoreLayer " + std::to_string(location));
            _pair.LayerLocation(location);
            EXPECT_EQ(heading.restoreLayer(), model.RestoreLayer());
            break;
        }
        default: {
            int const n = _dice.Int(-2, count + 1);
            Say("SwitchLayer " + std::to_string(n));
            EXPECT_EQ(heading.SwitchLayer(n), model.SwitchLayer(n));
        }
        }
        CompareLayers(_pair, heading, model);
        if (_dice.Percent(15)) {
            CompareHeadings(heading, model);
        }
    }

    void CompareHeadings(OmDisplayLayerHeading& layers, LayerModel const& model) {
        bool const skipColumns = _dice.Percent(60);
        bool const skipRows = _dice.Percent(60);
        bool const names = _dice.Percent(50);
        Say("headings over layer " + std::to_string(model.current) + (skipColumns ? ", skipping columns" : "") +
            (skipRows ? ", skipping rows" : "") + (names ? ", names in the corner" : ""));
        OmDisplayColumnHeading columns(layers, skipColumns);
        OmDisplayRowHeading rows(layers, skipRows, names);
        HeadingModel const columnModel(model, HeadingModel::Columns, skipColumns);
        HeadingModel const rowModel(model, HeadingModel::Rows, skipRows, names);
        Compare(ColumnFace{columns}, columnModel);
        Compare(RowFace{rows}, rowModel);
        CompareCorner(rows, rowModel);
    }

    template <typename Face>
    void Compare(Face const& face, HeadingModel const& model) {
        CompareShape(_pair, face, model);
        if (_dice.Percent(50)) {
            ComparePositions(face, model); // before or after the rest: it may be made on first use
        }
        int const count = static_cast<int>(model.count);
        for (int c = 0; c < count + 3; ++c) {
            bool const asked = count < 30 || c + 2 > count || _dice.Below(static_cast<std::size_t>(count)) < 20;
            if (asked) {
                ComparePosition(_pair, face, model, c);
            }
        }
        for (int r = -1; r <= model.depth + 1; ++r) {
            if (count < 30 || _dice.Percent(10)) {
                CompareLine(_pair, face, model, r);
            }
        }
        ComparePositions(face, model);
    }

    std::string Describe() const {
        std::string text;
        auto const axis = [&](char const* name, std::vector<short> const& entries) {
            text.append(name).append(::testing::PrintToString(entries)).append("\n");
        };
        axis("rows ", _pair.model.rows);
        axis("columns ", _pair.model.columns);
        axis("layers ", _pair.model.layers);
        for (std::size_t d = 0; d < _pair.model.dimensions.size(); ++d) {
            text.append("size ").append(std::to_string(_pair.model.sizes[d])).append("\n");
            Describe(_pair.model.dimensions[d], 1, text);
        }
        for (auto const& [index, cell] : _pair.model.cells) {
            text.append(::testing::PrintToString(index)).append(" ");
        }
        return text;
    }
    static void Describe(ModelCategory const& node, std::size_t depth, std::string& text) {
        text.append(2 * depth, ' ').append(node.label).append(" ").append(std::to_string(node.subscript));
        text.append(node.isGroup ? " group" : "").append(node.hide ? " hide" : "");
        text.append(node.hideLabels ? " hideLabels\n" : "\n");
        for (ModelCategory const& child : node.children) {
            Describe(child, depth + 1, text);
        }
    }

    Dice& _dice;
    TablePair _pair{};
    std::string _operation{};
};

} // namespace headings

using headings::HeadingScript;

} // namespace omtest

#endif
