// Every short script over a small table, and many long ones over larger tables: the library's cell store, whatever form
// its nodes take on the way, looks from outside like the store that its steps describe.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/LiteralStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using omtest::LiteralStore;
using Index = LiteralStore::Index;

/// A table and the literal store, which get the same operations.
class Pair {
public:
    explicit Pair(std::size_t dimensions) : _literal(dimensions) {
        for (std::size_t k = 0; k < dimensions; ++k) {
            _table->AddDimension(OmStringCell("d"));
        }
    }

    OmPivotTable& Table() { return *_table; }
    LiteralStore const& Literal() const { return _literal; }

    void Store(Index const& index, std::string const& text) {
        OmStringCell const cell(text);
        _table->Cell(index, text.empty() ? nullptr : &cell);
        _literal.Store(index, text);
    }

    void Delete(Index const& index) {
        if (_literal.MayDelete(index)) {
            _table->deleteCell(index);
            _literal.Delete(index);
        }
    }

    void AddDimension() {
        _table->AddDimension(OmStringCell("d"));
        _literal.AddDimension();
    }

    std::string Walked() {
        std::string cells;
        for (OmPivotTable::Iterator cell = _table->FirstCell(); cell.Cell() != nullptr; ++cell) {
            Index const index = cell.Index();
            cells += Show(Index(index.rbegin(), index.rend()), cell.Cell()->AsString());
        }
        return cells;
    }

    std::string Expected() const {
        std::string cells;
        for (auto const& [index, text] : _literal.Cells()) {
            cells += Show(index, text);
        }
        return cells;
    }

    /// The table's dump in the form of the literal one.
    std::string Dumped() const {
        std::ostringstream stream;
        std::streambuf* const console = std::cout.rdbuf(stream.rdbuf());
        _table->PrintCells();
        std::cout.rdbuf(console);
        std::string const printed = stream.str();
        std::string dump;
        for (std::size_t i = 0; i < printed.size(); ++i) {
            if (printed.compare(i, 2, "0x") != 0) {
                dump += printed[i];
                continue;
            }
            dump += '@';
            for (++i; i + 1 < printed.size() && std::isxdigit(static_cast<unsigned char>(printed[i + 1])) != 0; ++i) {
            }
        }
        return dump;
    }

    void ExpectAlike() {
        EXPECT_EQ(Walked(), Expected());
        EXPECT_EQ(Dumped(), _literal.Dump());
    }

private:
    static std::string Show(Index const& reversed, std::string const& text) {
        std::string shown;
        for (int const subscript : reversed) {
            shown.append(std::to_string(subscript)).append(",");
        }
        return shown.append(text).append(" ");
    }

    std::unique_ptr<OmPivotTable> _table =
        std::make_unique<OmPivotTable>(OmStringCell("title"), OmStringCell("template"), false);
    LiteralStore _literal;
};

void ApplyNumbered(Pair& pair, std::vector<Index> const& positions, unsigned number) {
    Index const& index = positions[number / 3 % positions.size()];
    switch (number % 3) {
    case 0:
        pair.Store(index, "x" + std::to_string(number));
        break;
    case 1:
        pair.Store(index, "");
        break;
    default:
        pair.Delete(index);
    }
}

/// All scripts of `length` operations: a text, nothing, or a deletion, at any of the positions.
void RunEveryScript(std::vector<Index> const& positions, unsigned length) {
    unsigned const operations = static_cast<unsigned>(3 * positions.size());
    std::vector<unsigned> script(length, 0);
    for (;;) {
        Pair pair(positions.front().size());
        for (unsigned const number : script) {
            ApplyNumbered(pair, positions, number);
        }
        pair.ExpectAlike();
        if (::testing::Test::HasFailure()) {
            std::string shown;
            for (unsigned const number : script) {
                shown.append(std::to_string(number)).append(" ");
            }
            FAIL() << "script " << shown;
        }
        unsigned k = 0;
        while (k < length && ++script[k] == operations) {
            script[k++] = 0;
        }
        if (k == length) {
            return;
        }
    }
}

} // namespace

TEST(CellStore, EveryScriptOfThreeOperationsOverTwoDimensions) {
    RunEveryScript({{0, 0}, {1, 0}, {6, 0}, {0, 1}, {1, 1}, {0, 5}, {6, 5}}, 3);
}

TEST(CellStore, EveryScriptOfFourOperationsOverOneDimension) { RunEveryScript({{0}, {1}, {2}, {9}, {40}}, 4); }

TEST(CellStore, EveryScriptOfThreeOperationsOverThreeDimensions) {
    RunEveryScript({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {7, 3, 1}, {7, 0, 1}}, 3);
}

// Boxes that fill, rows that come and go, nodes that turn sparse and dense, levels put on top.
TEST(CellStore, LongRandomScriptsLookLikeTheLiteralStore) {
    std::mt19937_64 random(20261120);
    auto const below = [&random](int bound) { return static_cast<int>(random() % static_cast<std::uint64_t>(bound)); };
    for (int script = 0; script < 300; ++script) {
        std::size_t const dimensions = 1 + random() % 3;
        int const extents[] = {2, 4, 9, 30, 200};
        std::vector<int> extent(dimensions + 1, 1);
        for (int& size : extent) {
            size = extents[random() % std::size(extents)];
        }
        bool const inOrder = below(3) == 0;
        int const deletions = below(3) == 0 ? 40 : 5;
        Pair pair(dimensions);
        int const steps = 20 + below(400);
        for (int step = 0; step < steps; ++step) {
            Index index(pair.Literal().Dimensions(), 0);
            int rest = step;
            for (std::size_t k = 0; k < index.size(); ++k) {
                index[k] = inOrder ? rest % extent[k] : below(extent[k]);
                rest /= extent[k];
            }
            int const what = below(100);
            if (what < deletions) {
                pair.Delete(index);
            } else if (what < deletions + 4) {
                pair.Store(index, "");
            } else if (what == 99 && pair.Literal().Dimensions() == dimensions) {
                pair.AddDimension();
            } else {
                pair.Store(index, std::to_string(step));
            }
        }
        pair.ExpectAlike();
        ASSERT_FALSE(::testing::Test::HasFailure()) << "script " << script;
    }
}

// An iteration goes on behind its last cell whatever happens to the table meanwhile, and every cell that it gives is
// there.
TEST(CellStore, IterationGoesOnBehindItsLastCellAfterChanges) {
    std::mt19937_64 random(7);
    auto const below = [&random](int bound) { return static_cast<int>(random() % static_cast<std::uint64_t>(bound)); };
    for (int script = 0; script < 60; ++script) {
        std::size_t const dimensions = 1 + random() % 3;
        int const extent = below(2) == 0 ? 6 : 60;
        Pair pair(dimensions);
        auto const anywhere = [&] {
            Index index(dimensions);
            std::generate(index.begin(), index.end(), [&] { return below(extent); });
            return index;
        };
        for (int i = below(80); i >= 0; --i) {
            pair.Store(anywhere(), "start");
        }
        OmPivotTable::Iterator cell = pair.Table().FirstCell();
        for (int step = 0; cell.Cell() != nullptr; ++step) {
            Index const index = cell.Index();
            Index const reversed(index.rbegin(), index.rend());
            for (int i = below(6); i > 0; --i) {
                below(3) == 0 ? pair.Delete(anywhere()) : pair.Store(anywhere(), std::to_string(step));
            }
            if (below(4) == 0) {
                pair.Delete(index);
            }
            std::map<Index, std::string> const cells = pair.Literal().Cells();
            OmPivotTable::Iterator const copy = cell;
            ++cell;
            if (cell.Cell() == nullptr) {
                // Cells that were added behind may be seen or not; those that were there must not be missed silently.
                auto const behind = cells.upper_bound(reversed);
                bool const onlyNew =
                    std::all_of(behind, cells.end(), [](auto const& left) { return left.second != "start"; });
                ASSERT_TRUE(onlyNew) << "script " << script << ", step " << step;
                break;
            }
            Index const now = cell.Index();
            auto const found = cells.find(Index(now.rbegin(), now.rend()));
            ASSERT_NE(found, cells.end()) << "script " << script << ", step " << step;
            ASSERT_EQ(cell.Cell()->AsString(), found->second);
            ASSERT_LT(reversed, found->first);
            for (auto between = cells.upper_bound(reversed); between != found; ++between) {
                ASSERT_NE(between->second, "start") << "script " << script << ", step " << step;
            }
            EXPECT_EQ(copy.Index(), index);
        }
    }
}

// Two thousand million positions, one cell: kilobytes.
TEST(CellStore, CellAtAFarSubscriptIsFoundWalkedAndDeleted) {
    for (std::size_t const dimensions : {1U, 2U, 3U}) {
        for (std::size_t far = 0; far < dimensions; ++far) {
            OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
            for (std::size_t k = 0; k < dimensions; ++k) {
                table.AddDimension(OmStringCell("d"));
            }
            Index index(dimensions, 1);
            index[far] = 2'000'000'000;
            table.Cell(index, OmStringCell("far"));
            table.Cell(Index(dimensions, 0), OmStringCell("near"));
            ASSERT_NE(table.Cell(index), nullptr);
            EXPECT_EQ(table.Cell(index)->AsString(), "far");
            OmPivotTable::Iterator cell = table.FirstCell();
            EXPECT_EQ(cell.Index(), Index(dimensions, 0));
            ++cell;
            EXPECT_EQ(cell.Index(), index);
            table.deleteCell(index);
            EXPECT_EQ(table.Cell(index), nullptr);
            EXPECT_NE(table.Cell(Index(dimensions, 0)), nullptr);
        }
    }
}

// The largest subscript there is.
TEST(CellStore, LargestSubscriptsAreKept) {
    OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
    table.AddDimension(OmStringCell("d"));
    table.AddDimension(OmStringCell("d"));
    Index const corner(2, std::numeric_limits<int>::max());
    for (int i = 0; i < 100; ++i) {
        table.Cell({std::numeric_limits<int>::max() - i, i * 1000}, OmStringCell("a"));
    }
    table.Cell(corner, OmStringCell("corner"));
    ASSERT_NE(table.Cell(corner), nullptr);
    int cells = 0;
    Index last;
    for (OmPivotTable::Iterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell, ++cells) {
        Index const index = cell.Index();
        Index const reversed(index.rbegin(), index.rend());
        EXPECT_LT(last, reversed);
        last = reversed;
    }
    EXPECT_EQ(cells, 101);
    EXPECT_EQ(last, corner);
}
