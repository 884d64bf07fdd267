#include "backend/tables/om/detail/CellPositions.h"

#include <algorithm>
#include <limits>

namespace om_detail {

CellPositions::CellPositions(AxisIndexer const& axis, AxisIndexer const& other)
    : _axis(axis), _found(axis.CountOrMost()) {
    std::vector<AxisIndexer::Entry> const& entries = axis.Entries();
    std::vector<bool> taken(axis.DimensionsEnd(), false);
    for (AxisIndexer::Entry const& entry : other.Entries()) {
        if (entry.record != nullptr && entry.dimension < taken.size()) {
            taken[entry.dimension] = true;
        }
    }
    _choices.resize(entries.size());
    for (std::size_t i = entries.size(); i > 0; --i) {
        AxisIndexer::Entry const& entry = entries[i - 1];
        bool const counts = entry.record != nullptr && !taken[entry.dimension];
        if (counts) {
            taken[entry.dimension] = true;
        }
        _choices[i - 1] = ChoiceOf(entry, counts);
    }
}

CellPositions::Choice CellPositions::ChoiceOf(AxisIndexer::Entry const& entry, bool counts) {
    if (entry.record == nullptr) {
        return {false, {0}, {End}};
    }
    DisplayRecord const& record = *entry.record;
    std::size_t const digits = std::min<std::size_t>(entry.base, record.Shown());
    Choice choice{counts, std::vector<std::uint32_t>(counts ? record.Shown() : 1, End),
                  std::vector<std::uint32_t>(digits, End)};
    for (std::size_t digit = digits; digit > 0; --digit) {
        int const category = record.CategoryAt(digit - 1);
        if (category < 0) {
            continue;
        }
        std::uint32_t& first = choice.first[counts ? static_cast<std::size_t>(record.PositionOf(category)) : 0];
        _branches = _branches || first != End;
        choice.next[digit - 1] = first;
        first = static_cast<std::uint32_t>(digit - 1);
    }
    return choice;
}

void CellPositions::Add(int const* cell) {
    std::vector<AxisIndexer::Entry> const& entries = _axis.Entries();
    std::uint64_t position = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        std::int64_t const chain = _choices[i].counts ? entries[i].record->PositionOf(cell[entries[i].dimension]) : 0;
        std::uint32_t const digit = chain >= 0 ? _choices[i].first[static_cast<std::size_t>(chain)] : End;
        if (digit == End) {
            return;
        }
        position = position * entries[i].base + digit;
    }
    _found.Add(position);
}

CellPositions::Positions CellPositions::Take() {
    Positions lowest = _found.Take();
    if (!_branches) {
        return lowest;
    }
    constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();
    Digits start(_choices.size());
    std::uint64_t count = 0;
    for (unsigned long long const position : lowest) {
        std::uint64_t const more = _axis.DigitsOf(position, start) ? Combinations(start) : 0;
        count = more > Most - count ? Most : count + more;
    }
    Positions positions;
    positions.reserve(static_cast<std::size_t>(count));
    for (unsigned long long const position : lowest) {
        if (_axis.DigitsOf(position, start) && Combinations(start) != 0) {
            AppendAll(start, positions);
        }
    }
    std::sort(positions.begin(), positions.end());
    // Different ones may have become equal where 64 bits do not hold them.
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    return positions;
}

std::uint64_t CellPositions::Combinations(Digits const& start) const {
    std::uint64_t count = 1;
    for (std::size_t i = 0; i < _choices.size(); ++i) {
        std::uint64_t length = 0;
        for (std::uint32_t digit = start[i]; digit < _choices[i].next.size(); digit = _choices[i].next[digit]) {
            ++length;
        }
        count = Product(count, length);
    }
    return count;
}

void CellPositions::AppendAll(Digits const& start, Positions& positions) const {
    Digits digits = start;
    while (true) {
        std::uint64_t position = 0;
        for (std::size_t k = 0; k < _choices.size(); ++k) {
            position = position * _axis.Entries()[k].base + digits[k];
        }
        positions.push_back(position);
        std::size_t i = _choices.size();
        for (; i > 0 && _choices[i - 1].next[digits[i - 1]] == End; --i) {
            digits[i - 1] = start[i - 1];
        }
        if (i == 0) {
            return;
        }
        digits[i - 1] = _choices[i - 1].next[digits[i - 1]];
    }
}

} // namespace om_detail
