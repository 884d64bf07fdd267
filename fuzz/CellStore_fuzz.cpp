// The cell store from outside: what a table's cells look like, walked and in the raw dump, after any operations; and
// walks during which the table changes.

#include "FuzzTarget.h"
#include "Script.h"
#include "tests/support/StorePair.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using omtest::StorePair;
using Index = StorePair::Index;
using Iterator = OmPivotTable::Iterator;

constexpr std::size_t MostDimensions = 4;
constexpr std::size_t MostWalks = 3;

class StoreScript {
public:
    explicit StoreScript(omtest::Dice& dice) : _dice(dice), _pair(static_cast<std::size_t>(dice.Int(1, 3))) {
        int const extents[] = {2, 4, 9, 30, 200};
        for (std::size_t k = 0; k < MostDimensions; ++k) {
            _extents.push_back(extents[_dice.Below(5)]);
        }
    }

    void Run() {
        while (!_dice.Spent() && !::testing::Test::HasFailure()) {
            Step();
        }
        _pair.ExpectAlike();
    }

private:
    void Step() {
        std::size_t const operation = _dice.Below(32);
        if (operation < 14) {
            _pair.Store(AnyIndex(), std::to_string(++_last));
        } else if (operation < 17) {
            StoreRun();
        } else if (operation < 19) {
            Clear(AnyIndex());
        } else if (operation < 24) {
            Delete(AnyIndex());
        } else if (operation < 25) {
            DeleteRun();
        } else if (operation < 27) {
            LookUp();
        } else if (operation < 28) {
            AddDimension();
        } else if (operation < 29) {
            _pair.ExpectAlike();
        } else if (operation < 30) {
            StartWalk();
        } else {
            Walk();
        }
    }

    Index AnyIndex() {
        Index index;
        for (std::size_t k = 0; k < _pair.Literal().Dimensions(); ++k) {
            index.push_back(_dice.Int(0, _extents[k] - 1));
        }
        return index;
    }

    /// Neighbours along dimension 0, so that vectors fill up.
    void StoreRun() {
        Index index = AnyIndex();
        for (std::size_t k = _dice.Below(20); k > 0; --k, ++index[0]) {
            _pair.Store(index, std::to_string(++_last));
        }
    }
    void DeleteRun() {
        Index index = AnyIndex();
        for (std::size_t k = _dice.Below(20); k > 0; --k, ++index[0]) {
            Delete(index);
        }
    }

    void LookUp() {
        Index const index = AnyIndex();
        std::map<Index, std::string> const cells = _pair.Literal().Cells();
        auto const expected = cells.find(Reversed(index));
        OmPivotTable const& table = _pair.Table();
        OmCellText const* const cell = table.Cell(index);
        ASSERT_EQ(cell != nullptr, expected != cells.end());
        EXPECT_EQ(_pair.Table().Cell(index), cell);
        if (cell != nullptr) {
            EXPECT_EQ(cell->AsString(), expected->second);
        }
    }

    /// Walks that were begun know the table with fewer dimensions.
    void AddDimension() {
        if (_pair.Literal().Dimensions() < MostDimensions) {
            _walks.clear();
            _pair.AddDimension();
        }
    }

    // --- walks -------------------------------------------------------------------------------------------------------

    struct Walked {
        Iterator iterator;
        Index reversed;         ///< where it stands, last dimension first
        std::set<Index> always; ///< positions, last dimension first, that held a cell all the time since it began
    };

    static Index Reversed(Index const& index) { return Index(index.rbegin(), index.rend()); }

    /// At the front, as a copy of another one, or assigned from it.
    void StartWalk() {
        if (_walks.size() == MostWalks) {
            _walks.erase(_walks.begin());
        }
        std::size_t const choice = _dice.Below(_walks.empty() ? 1 : 3);
        if (choice == 0) {
            Iterator const first = _pair.Table().FirstCell();
            if (first.Cell() != nullptr) {
                _walks.push_back({first, Reversed(first.Index()), Positions()});
            }
            return;
        }
        Walked const source = _walks[_dice.Below(_walks.size())];
        _walks.push_back(source);
        if (choice == 2) {
            Iterator assigned = _pair.Table().FirstCell();
            assigned = source.iterator;
            _walks.back().iterator = assigned;
        }
    }

    std::set<Index> Positions() const {
        std::set<Index> positions;
        for (auto const& [index, text] : _pair.Literal().Cells()) {
            positions.insert(index);
        }
        return positions;
    }

    void Delete(Index const& index) {
        if (_pair.Literal().MayDelete(index)) {
            _pair.Delete(index);
            Forget(index);
        }
    }
    void Clear(Index const& index) {
        _pair.Store(index, "");
        Forget(index);
    }
    void Forget(Index const& index) {
        for (Walked& walk : _walks) {
            walk.always.erase(Reversed(index));
        }
    }

    /// One step of one walk: to a cell that is there, behind the one where it stood, and past none that was there all
    /// the time.
    void Walk() {
        if (_walks.empty()) {
            return;
        }
        std::size_t const number = _dice.Below(_walks.size());
        Walked& walk = _walks[number];
        auto const next = walk.always.upper_bound(walk.reversed);
        EXPECT_EQ(Reversed(walk.iterator.Index()), walk.reversed);
        ++walk.iterator;
        OmCellText const* const cell = walk.iterator.Cell();
        if (cell == nullptr) {
            EXPECT_TRUE(next == walk.always.end()) << "cells were there all the time and not reached";
            _walks.erase(_walks.begin() + static_cast<std::ptrdiff_t>(number));
            return;
        }
        Index const reached = Reversed(walk.iterator.Index());
        std::map<Index, std::string> const cells = _pair.Literal().Cells();
        auto const found = cells.find(reached);
        ASSERT_TRUE(found != cells.end()) << "a cell that is not there";
        EXPECT_EQ(cell->AsString(), found->second);
        EXPECT_LT(walk.reversed, reached);
        EXPECT_TRUE(next == walk.always.end() || reached <= *next) << "past a cell that was there all the time";
        walk.reversed = reached;
    }

    omtest::Dice& _dice;
    StorePair _pair;
    std::vector<int> _extents{};
    std::vector<Walked> _walks{};
    int _last = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return omfuzz::RunScript<StoreScript>(data, size);
}
