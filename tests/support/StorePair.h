#ifndef OMTREE_TESTS_SUPPORT_STOREPAIR_H
#define OMTREE_TESTS_SUPPORT_STOREPAIR_H

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/LiteralStore.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <memory>
#include <string>

namespace omtest {

/// A table and the literal store, which get the same operations.
class StorePair {
public:
    using Index = LiteralStore::Index;

    explicit StorePair(std::size_t dimensions) : _literal(dimensions) {
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
        std::string const printed = PrintedCells();
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
    std::string PrintedCells() const {
        CapturedOutput const output;
        _table->PrintCells();
        return output.Text();
    }

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

} // namespace omtest

#endif
