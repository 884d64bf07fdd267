#ifndef OMTREE_TESTS_SUPPORT_CELLSCRIPT_H
#define OMTREE_TESTS_SUPPORT_CELLSCRIPT_H

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "platform/BackendSettings.h"
#include "tests/support/CellModel.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace omtest {

namespace cells {

using Index = CellModel::Index;

inline OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

inline std::string Show(Index const& index) {
    std::string text = "(";
    for (int const subscript : index) {
        text.append(text.size() == 1 ? "" : ",").append(std::to_string(subscript));
    }
    return text + ")";
}

inline std::optional<OmCellMetaData> MetaOf(OmCellText const& cell) {
    return cell.hasMeta() ? std::optional<OmCellMetaData>(*cell.getMeta()) : std::nullopt;
}

/// "(1,0)=a (0,1)=b ..." in iteration order, metadata in square brackets.
inline std::string Show(Index const& index, std::string const& text, std::optional<OmCellMetaData> const& meta) {
    std::string shown = Show(index) + "=" + text;
    if (meta) {
        shown += "[" + std::to_string(meta->style) + "/" + std::to_string(meta->footnotes.size()) + "/" +
                 (meta->markers.empty() ? std::string() : meta->markers.front()) + "]";
    }
    return shown + " ";
}

template <typename Iterator>
inline std::string ShowFrom(Iterator iterator) {
    std::string shown;
    for (; iterator.Cell() != nullptr; ++iterator) {
        shown += Show(iterator.Index(), iterator.Cell()->AsString(), MetaOf(*iterator.Cell()));
    }
    ++iterator;
    EXPECT_EQ(iterator.Cell(), nullptr);
    return shown;
}

/// One script of random operations on a cell store: the library's table and a map from index vector to text get the
/// same stores, deletions and new dimensions, and must agree on every answer, on the count, and on what the iterators
/// visit.
///
///     Dice dice(seed);
///     CellScript(dice).Run();     // what disagrees is a failure of the test that runs
class CellScript {
public:
    explicit CellScript(Dice& dice) : _dice(dice), _extent(dice.Percent(10) ? 50 : dice.Int(1, 5)) {}

    void Run() {
        int const operations = _dice.Int(60, 100);
        for (int k = 0; k < operations && !_dice.Spent() && !::testing::Test::HasFailure(); ++k) {
            Step();
            Compare();
            if (::testing::Test::HasFailure()) {
                FAIL() << "operation " << k << ": " << _operation;
            }
        }
    }

private:
    using Operation = void (CellScript::*)();

    void Step() {
        static std::vector<Operation> const operations{
            &CellScript::Store,     &CellScript::Store,  &CellScript::Store,       &CellScript::Store,
            &CellScript::Store,     &CellScript::Store,  &CellScript::Replace,     &CellScript::Replace,
            &CellScript::StoreNull, &CellScript::Delete, &CellScript::Delete,      &CellScript::StoreWrongly,
            &CellScript::Read,      &CellScript::Read,   &CellScript::ReadWrongly, &CellScript::ChangeMeta,
            &CellScript::ChangeMeta};
        static std::vector<Operation> const rare{&CellScript::AddDimension, &CellScript::AddDimension,
                                                 &CellScript::SetLimit, &CellScript::SetScratch,
                                                 &CellScript::GrowWideVector};
        bool const first = _model.Dimensions() == 0 && _dice.Percent(60);
        if (first) {
            AddDimension();
        } else {
            (this->*_dice.Pick(_dice.Percent(12) ? rare : operations))();
        }
    }

    // --- random material ---------------------------------------------------------------------------------------------

    Index AnyIndex() {
        Index index(_model.Dimensions());
        for (int& subscript : index) {
            subscript = _dice.Int(0, _extent - 1);
        }
        return index;
    }
    Index AnyCell() {
        if (_model.All().empty()) {
            return AnyIndex();
        }
        auto cell = _model.All().begin();
        std::advance(cell, static_cast<std::ptrdiff_t>(_dice.Below(_model.All().size())));
        return cell->first;
    }
    Index WrongIndex() {
        Index index = AnyIndex();
        if (index.empty() || _dice.Percent(40)) {
            index.push_back(0);
        } else if (_dice.Percent(50)) {
            index.pop_back();
        } else {
            index[_dice.Below(index.size())] = _dice.Percent(50) ? -1 : -7;
        }
        return index;
    }
    std::optional<OmCellMetaData> AnyMeta() {
        if (_dice.Percent(60)) {
            return std::nullopt;
        }
        OmCellMetaData meta;
        meta.style = _dice.Int(-1, 3);
        meta.footnotes.assign(_dice.Below(3), static_cast<short>(_dice.Int(0, 9)));
        meta.markers.assign(_dice.Below(2), "m" + std::to_string(_dice.Below(3)));
        return meta;
    }

    void Say(std::string operation) {
        _operation = std::move(operation);
        Trace(_operation);
    }

    // --- operations --------------------------------------------------------------------------------------------------

    void Store() { StoreAt(AnyIndex()); }
    void Replace() { StoreAt(AnyCell()); }
    void StoreWrongly() { StoreAt(WrongIndex()); }
    /// One position far out, so that vectors grow by their big step.
    void GrowWideVector() {
        Index index = AnyIndex();
        if (!index.empty()) {
            index[_dice.Below(index.size())] = _dice.Int(20, 49);
        }
        StoreAt(index);
    }

    void StoreAt(Index const& index) {
        CellModel::Cell const cell{"v" + std::to_string(_dice.Below(1000)), AnyMeta()};
        Say("store " + Show(index));
        OmStringCell text = Text(cell.text);
        text.setMeta(cell.meta ? &*cell.meta : nullptr);
        bool const byPointer = _dice.Percent(50);
        ExpectStored(index, _model.Store(index, cell), [&] {
            OmCellText const& reference = text;
            return byPointer ? _table.Cell(index, &reference) : _table.Cell(index, reference);
        });
    }

    void StoreNull() {
        Index const index = _dice.Percent(70) ? AnyCell() : _dice.Percent(80) ? AnyIndex() : WrongIndex();
        Say("store null " + Show(index));
        ExpectStored(index, _model.Store(index, std::nullopt),
                     [&] { return _table.Cell(index, static_cast<OmCellText const*>(nullptr)); });
    }

    template <typename Call>
    void ExpectStored(Index const& index, CellModel::Stored expected, Call&& call) {
        if (expected == CellModel::Stored::Yes || expected == CellModel::Stored::OverLimit) {
            EXPECT_EQ(call(), expected == CellModel::Stored::Yes);
        } else {
            ExpectThrown(index, call);
        }
    }

    /// A wrong length is found before a negative subscript.
    template <typename Call>
    void ExpectThrown(Index const& index, Call&& call) {
        bool const wrongLength = index.size() != _model.Dimensions() || index.empty();
        try {
            call();
            ADD_FAILURE() << "must throw";
        } catch (OMSException const& exception) {
            if (wrongLength) {
                EXPECT_EQ(exception.Message(), "OmPivotTable::Cell() -- nind != _my->_dimensions.size()");
                EXPECT_EQ(exception.Value1(), static_cast<double>(index.size()));
                EXPECT_EQ(exception.Value2(), static_cast<double>(_model.Dimensions()));
            } else {
                EXPECT_EQ(exception.Message(), "OmPivotTable::Cell() -- subscript < 0");
                EXPECT_EQ(exception.Value1(), *std::min_element(index.begin(), index.end()));
                EXPECT_EQ(exception.Value2(), 0.0);
            }
        }
    }

    void Delete() {
        Index const index = _dice.Percent(60) ? AnyCell() : AnyIndex();
        Say("deleteCell " + Show(index));
        if (index.empty() || !_model.MayDelete(index)) {
            return;
        }
        _model.Delete(index);
        _table.deleteCell(index);
    }

    void Read() {
        Index index = _dice.Percent(50) ? AnyCell() : AnyIndex();
        if (!index.empty() && _dice.Percent(10)) {
            index[_dice.Below(index.size())] = 1000000;
        }
        Say("read " + Show(index));
        CellModel::Cell const* const expected = _model.Find(index);
        OmPivotTable const& table = _table;
        OmCellText const* const cell = table.Cell(index);
        EXPECT_EQ(_table.Cell(index), cell);
        ASSERT_EQ(cell != nullptr, expected != nullptr);
        if (cell != nullptr) {
            EXPECT_EQ(cell->AsString(), expected->text);
            EXPECT_EQ(MetaOf(*cell), expected->meta);
        }
    }

    void ReadWrongly() {
        Index const index = WrongIndex();
        Say("read " + Show(index));
        OmPivotTable const& table = _table;
        if (_dice.Percent(50)) {
            ExpectThrown(index, [&] { return table.Cell(index); });
        } else {
            ExpectThrown(index, [&] { return _table.Cell(index); });
        }
    }

    void ChangeMeta() {
        if (_model.All().empty()) {
            return;
        }
        Index const index = AnyCell();
        Say("setMeta " + Show(index));
        std::optional<OmCellMetaData> const meta = AnyMeta();
        _model.SetMeta(index, meta);
        _table.Cell(index)->setMeta(meta ? &*meta : nullptr);
    }

    void AddDimension() {
        Say("AddDimension");
        if (_model.Dimensions() == 5) {
            return;
        }
        _model.AddDimension();
        OmDimension& dimension = _table.AddDimension(Text("dimension"));
        EXPECT_EQ(dimension.Index() + 1, static_cast<int>(_model.Dimensions()));
    }

    void SetLimit() {
        long const limit = _dice.Percent(40) ? _model.Count() + _dice.Int(-2, 4) : 100000;
        Say("limit " + std::to_string(limit));
        _model.Limit(limit);
        if (_dice.Percent(50)) {
            _table.getBackendSettings().setMaxCells(limit);
            return;
        }
        BackendSettings settings;
        settings.setMaxCells(limit);
        settings.setFastTables(_dice.Percent(50));
        _table.setBackendSettings(settings);
    }

    void SetScratch() {
        bool const scratched = _dice.Percent(30);
        Say("Scratch");
        _model.Scratch(scratched);
        _table.Scratch(scratched);
    }

    // --- comparison --------------------------------------------------------------------------------------------------

    void Compare() {
        std::string expected;
        for (auto const& [index, cell] : _model.All()) {
            expected += Show(index, cell.text, cell.meta);
        }
        OmPivotTable const& table = _table;
        EXPECT_EQ(ShowFrom(table.FirstCell()), expected);
        EXPECT_EQ(table.getNumCells(), _model.Count());
        EXPECT_EQ(table.IsScratched(), _model.Scratched());
        if (_dice.Percent(20)) {
            CompareForkedIterators(expected);
        }
    }

    /// A copy made on the way goes on by itself, and so does one that was assigned to.
    void CompareForkedIterators(std::string const& expected) {
        OmPivotTable::Iterator iterator = _table.FirstCell();
        std::string before;
        std::size_t const steps = _dice.Below(_model.All().size() + 1);
        for (std::size_t k = 0; k < steps; ++k, ++iterator) {
            before += Show(iterator.Index(), iterator.Cell()->AsString(), MetaOf(*iterator.Cell()));
        }
        OmPivotTable::Iterator assigned = _table.FirstCell();
        assigned = iterator;
        EXPECT_EQ(before + ShowFrom(iterator), expected);
        EXPECT_EQ(before + ShowFrom(assigned), expected);
        EXPECT_EQ(ShowFrom(OmPivotTable::ConstIterator(_table.FirstCell())), expected);
    }

    Dice& _dice;
    int _extent;
    OmPivotTable _table{Text("title"), Text("template"), false};
    CellModel _model{};
    std::string _operation{};
};

} // namespace cells

using cells::CellScript;

} // namespace omtest

#endif
