#ifndef OMTREE_TESTS_SUPPORT_TABLEPROBE_H
#define OMTREE_TESTS_SUPPORT_TABLEPROBE_H

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmCellText.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CapturedOutput.h"

#include <cctype>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// What tests of the pivot table ask again and again, answered as text.
namespace omtest {

inline OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

/// `what()` of the OMSException that the call throws; "nothing thrown" when it returns.
template <typename Call>
std::string WhatOf(Call&& call) {
    try {
        call();
    } catch (OMSException const& exception) {
        return exception.what();
    }
    return "nothing thrown";
}

/// "(1,0)"
inline std::string Show(std::vector<int> const& index) {
    std::string text = "(";
    for (int const subscript : index) {
        text.append(text.size() == 1 ? "" : ",").append(std::to_string(subscript));
    }
    return text + ")";
}

/// "(1,0)=a (0,1)=b", from where the iterator stands to its end.
template <typename Iterator>
std::string Walk(Iterator iterator) {
    std::string walked;
    for (; iterator.Cell() != nullptr; ++iterator) {
        walked.append(walked.empty() ? "" : " ")
            .append(Show(iterator.Index()))
            .append("=")
            .append(iterator.Cell()->AsString());
    }
    return walked;
}

/// Every stored cell, in iteration order.
inline std::string CellsOf(OmPivotTable const& table) { return Walk(table.FirstCell()); }

/// The tracker that the text holds; null for no text.
inline icuTracker* TrackerOf(OmCellText const* text) { return text != nullptr ? text->Tracker() : nullptr; }

/// The raw dump of the cell store, byte for byte.
inline std::string RawDump(OmPivotTable const& table) {
    CapturedOutput const output;
    table.PrintCells();
    return output.Text();
}

/// The raw dump with "@" for each address (a null entry stays "0"), so that it reads the same in every run:
///
///     @
///         [0] 0
///         [1] @ - text
inline std::string RawShape(OmPivotTable const& table) {
    std::string const dump = RawDump(table);
    std::string shape;
    for (std::size_t i = 0; i < dump.size(); ++i) {
        if (dump.compare(i, 2, "0x") != 0) {
            shape += dump[i];
            continue;
        }
        shape += '@';
        for (++i; i + 1 < dump.size() && std::isxdigit(static_cast<unsigned char>(dump[i + 1])) != 0;) {
            ++i;
        }
    }
    return shape;
}

} // namespace omtest

#endif
