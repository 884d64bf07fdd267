#include "tests/support/Laws.h"
#include "tests/support/StorePair.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using omtest::StorePair;
using Index = StorePair::Index;

rc::Gen<Index> AnyIndex(std::size_t dimensions) {
    return rc::gen::container<Index>(
        dimensions, rc::gen::weightedOneOf<int>({{6, rc::gen::inRange(0, 5)}, {1, rc::gen::inRange(0, 300)}}));
}

/// A table in which nothing but stores happened.
struct Filled {
    std::size_t dimensions = *rc::gen::inRange<std::size_t>(1, 5);
    std::vector<Index> indexes = *rc::gen::container<std::vector<Index>>(AnyIndex(dimensions));
    StorePair pair{dimensions};

    Filled() {
        for (Index const& index : indexes) {
            pair.Store(index, "x");
        }
    }

    /// Positions without a cell that a deletion may name, as far as they have small subscripts.
    std::vector<Index> EmptyInside() {
        std::vector<Index> found;
        Index index(dimensions, 0);
        std::size_t k = indexes.empty() ? dimensions : 0;
        while (k < dimensions) {
            if (pair.Table().Cell(index) == nullptr && pair.Literal().MayDelete(index)) {
                found.push_back(index);
            }
            for (k = 0; k < dimensions && ++index[k] == 5; ++k) {
                index[k] = 0;
            }
        }
        return found;
    }
};

std::string Shown(OmCellText const* text) { return text != nullptr ? text->AsString() : "none"; }

} // namespace

// The position lies inside of what was stored; where it does not, vectors stay longer than they were.
RC_GTEST_PROP(CellStoreLaws, AStoreAndItsDeletionLeaveTheDumpAsItWas, ()) {
    Filled filled;
    std::vector<Index> const inside = filled.EmptyInside();
    RC_PRE(!inside.empty());
    Index const index = *rc::gen::elementOf(inside);
    std::string const before = filled.pair.Dumped();
    std::string const walked = filled.pair.Walked();
    filled.pair.Store(index, "y");
    RC_ASSERT(Shown(filled.pair.Table().Cell(index)) == "y");
    RC_ASSERT(filled.pair.Walked() != walked);
    filled.pair.Delete(index);
    RC_ASSERT(filled.pair.Dumped() == before);
    RC_ASSERT(filled.pair.Walked() == walked);
}

RC_GTEST_PROP(CellStoreLaws, ATableFilledByWalkingAnotherDumpsLikeIt, ()) {
    Filled filled;
    StorePair copy(filled.dimensions);
    for (OmPivotTable::Iterator cell = filled.pair.Table().FirstCell(); cell.Cell() != nullptr; ++cell) {
        copy.Store(cell.Index(), cell.Cell()->AsString());
    }
    RC_ASSERT(copy.Dumped() == filled.pair.Dumped());
    RC_ASSERT(copy.Table().getNumCells() ==
              static_cast<long>(std::set<Index>(filled.indexes.begin(), filled.indexes.end()).size()));
}

RC_GTEST_PROP(CellStoreLaws, TheOrderOfStoresMakesNoDifference, ()) {
    Filled filled;
    std::vector<Index> indexes = filled.indexes;
    std::sort(indexes.begin(), indexes.end());
    StorePair sorted(filled.dimensions);
    for (Index const& index : indexes) {
        sorted.Store(index, "x");
    }
    RC_ASSERT(sorted.Dumped() == filled.pair.Dumped());
}

RC_GTEST_PROP(CellStoreLaws, ANewDimensionPutsAZeroBehindEveryIndex, ()) {
    Filled filled;
    filled.pair.AddDimension();
    std::set<Index> expected;
    for (Index index : filled.indexes) {
        index.push_back(0);
        expected.insert(index);
    }
    std::set<Index> found;
    for (OmPivotTable::Iterator cell = filled.pair.Table().FirstCell(); cell.Cell() != nullptr; ++cell) {
        RC_ASSERT(found.insert(cell.Index()).second);
    }
    RC_ASSERT(found == expected);
}
