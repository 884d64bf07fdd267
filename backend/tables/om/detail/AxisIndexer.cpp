#include "backend/tables/om/detail/AxisIndexer.h"

#include <algorithm>
#include <limits>

namespace om_detail {

AxisIndexer::AxisIndexer(PuppetVector<short> const& axis, std::vector<int> const& sizes)
    : _axis(axis), _dimensions(axis.begin(), axis.end()) {
    std::vector<std::uint32_t> bases;
    for (std::size_t i = 0; i < _dimensions.size(); ++i) {
        bases.push_back(Names(i, sizes.size()) ? static_cast<std::uint32_t>(std::max(0, sizes[Number(i)])) : 1);
    }
    _indexer = MultiBase(bases.begin(), bases.end());
}

DisplayRecord* AxisIndexer::RecordAt(std::size_t i, DisplayRecords const& records) const {
    return i < _dimensions.size() && Names(i, records.size()) ? records[Number(i)] : nullptr;
}

bool AxisIndexer::DigitsOf(std::uint64_t position, Digits& digits) const {
    std::vector<std::uint32_t> const& bases = _indexer.Bases();
    std::uint64_t first = position;
    for (std::size_t i = bases.size(); i > 1; --i) {
        if (bases[i - 1] == 0 && first != 0) {
            return false;
        }
        first = first != 0 ? first / bases[i - 1] : 0;
    }
    digits = _indexer.Digits(position);
    if (!digits.empty() && first > std::numeric_limits<std::uint32_t>::max()) {
        digits[0] = std::numeric_limits<std::uint32_t>::max();
    }
    return true;
}

bool AxisIndexer::Next(Digits& digits) const {
    std::vector<std::uint32_t> const& bases = _indexer.Bases();
    for (std::size_t i = digits.size(); i > 0; --i) {
        if (++digits[i - 1] < bases[i - 1]) {
            return true;
        }
        digits[i - 1] = 0;
    }
    return false;
}

void AxisIndexer::Apply(Digits const& digits, DisplayRecords const& records, std::vector<int>& index) const {
    for (std::size_t i = 0; i < digits.size(); ++i) {
        DisplayRecord const* const record = RecordAt(i, records);
        if (record != nullptr && digits[i] < record->Shown()) {
            index[Number(i)] = static_cast<int>(record->CategoryAt(digits[i]));
        }
    }
}

bool AxisIndexer::ApplyAll(Digits const& digits, DisplayRecords const& records, std::vector<int>& index) const {
    for (std::size_t i = 0; i < digits.size(); ++i) {
        DisplayRecord const* const record = RecordAt(i, records);
        if (record == nullptr) {
            continue;
        }
        if (digits[i] >= record->Shown()) {
            return false;
        }
        int const category = static_cast<int>(record->CategoryAt(digits[i]));
        if (category < 0) {
            return false;
        }
        index[Number(i)] = category;
    }
    return true;
}

void AxisIndexer::Scatter(Digits const& digits, std::vector<int>& index) const {
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (Names(i, index.size())) {
            index[Number(i)] = static_cast<int>(digits[i]);
        }
    }
}

bool AxisIndexer::PositionOf(std::vector<int> const& cell, DisplayRecords const& records,
                             std::uint64_t& position) const {
    Digits digits(_dimensions.size(), 0);
    for (std::size_t i = 0; i < _dimensions.size(); ++i) {
        DisplayRecord const* const record = RecordAt(i, records);
        if (record == nullptr) {
            continue;
        }
        std::int64_t const shown = record->PositionOf(static_cast<std::uint32_t>(cell[Number(i)]));
        if (shown < 0 || shown >= static_cast<std::int64_t>(_indexer.Bases()[i])) {
            return false;
        }
        digits[i] = static_cast<std::uint32_t>(shown);
    }
    position = _indexer.Number(digits);
    return true;
}

bool AxisIndexer::SameSubscripts(std::vector<int> const& a, std::vector<int> const& b) const {
    for (std::size_t i = 0; i < _dimensions.size(); ++i) {
        if (Names(i, a.size()) && a[Number(i)] != b[Number(i)]) {
            return false;
        }
    }
    return true;
}

} // namespace om_detail
