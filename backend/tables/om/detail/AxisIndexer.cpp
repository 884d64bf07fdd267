#include "backend/tables/om/detail/AxisIndexer.h"

#include <algorithm>
#include <limits>

namespace om_detail {

namespace {

constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();

} // namespace

AxisIndexer::AxisIndexer(PuppetVector<short> const& axis, std::vector<int> const& sizes) : _axis(axis), _last(Most) {
    std::vector<std::uint32_t> bases;
    std::vector<bool> named(sizes.size(), false);
    for (short const dimension : axis) {
        bool const names = dimension >= 0 && static_cast<std::size_t>(dimension) < sizes.size();
        std::size_t const number = names ? static_cast<std::size_t>(dimension) : None;
        if (names) {
            _repeats = _repeats || named[number];
            named[number] = true;
        }
        bases.push_back(names ? static_cast<std::uint32_t>(std::max(0, sizes[number])) : 1);
        _entries.push_back({number, bases.back(), nullptr});
    }
    _indexer = MultiBase(bases.begin(), bases.end());
    // A digit behind the first that has no values leaves digits only to the positions that never reach it.
    std::uint64_t behind = 1;
    for (std::size_t i = bases.size(); i > 1 && behind != 0; --i) {
        if (bases[i - 1] == 0 && behind != Most) {
            _last = behind - 1;
        }
        behind = Product(behind, bases[i - 1]);
    }
}

void AxisIndexer::Bind(DisplayRecords const& records) {
    for (Entry& entry : _entries) {
        entry.record = entry.dimension != None ? records[entry.dimension] : nullptr;
    }
}

std::uint64_t AxisIndexer::CountBehind(std::size_t i) const {
    std::uint64_t count = 1;
    for (; i < _entries.size(); ++i) {
        count = Product(count, _entries[i].base);
    }
    return count;
}

bool AxisIndexer::DigitsOf(std::uint64_t position, Digits& digits) const {
    if (position > _last) {
        return false;
    }
    constexpr std::uint32_t Oversized = std::numeric_limits<std::uint32_t>::max();
    if (_indexer.Digits(position, digits.data()) > Oversized) {
        digits[0] = Oversized;
    }
    return true;
}

bool AxisIndexer::Next(Digits& digits) const {
    for (std::size_t i = digits.size(); i > 0; --i) {
        if (++digits[i - 1] < _entries[i - 1].base) {
            return true;
        }
        digits[i - 1] = 0;
    }
    return false;
}

// The digits are used as they come, last one first: 5.6 ns on an axis with two dimensions, against 12.5 by way of a
// list.
void AxisIndexer::Apply(std::uint64_t position, std::vector<int>& index) const {
    if (_repeats) {
        ApplyInOrder(position, index);
        return;
    }
    if (position > _last) {
        return;
    }
    for (std::size_t i = _entries.size(); i > 0; --i) {
        Entry const& entry = _entries[i - 1];
        std::uint64_t digit = position;
        if (i > 1 && position != 0) {
            position /= entry.base;
            digit -= position * entry.base;
        }
        if (entry.record != nullptr && digit < entry.record->Shown()) {
            index[entry.dimension] = entry.record->CategoryAt(static_cast<std::size_t>(digit));
        }
    }
}

// Of two entries that name one dimension the later has the last word, if its digit shows a category.
void AxisIndexer::ApplyInOrder(std::uint64_t position, std::vector<int>& index) const {
    Digits digits(_entries.size());
    if (!DigitsOf(position, digits)) {
        return;
    }
    std::uint32_t const* digit = digits.data();
    for (Entry const& entry : _entries) {
        if (entry.record != nullptr && *digit < entry.record->Shown()) {
            index[entry.dimension] = entry.record->CategoryAt(*digit);
        }
        ++digit;
    }
}

bool AxisIndexer::ApplyAll(Digits const& digits, std::vector<int>& index) const {
    std::uint32_t const* digit = digits.data();
    for (Entry const& entry : _entries) {
        if (entry.record != nullptr) {
            if (*digit >= entry.record->Shown()) {
                return false;
            }
            int const category = entry.record->CategoryAt(*digit);
            if (category < 0) {
                return false;
            }
            index[entry.dimension] = category;
        }
        ++digit;
    }
    return true;
}

void AxisIndexer::Scatter(Digits const& digits, std::vector<int>& index) const {
    std::uint32_t const* digit = digits.data();
    for (Entry const& entry : _entries) {
        if (entry.dimension < index.size()) {
            index[entry.dimension] = static_cast<int>(*digit);
        }
        ++digit;
    }
}

void AxisIndexer::Set(int value, std::vector<int>& index) const {
    for (Entry const& entry : _entries) {
        if (entry.dimension < index.size()) {
            index[entry.dimension] = value;
        }
    }
}

bool AxisIndexer::PositionOf(int const* cell, std::uint64_t& position) const {
    position = 0;
    for (Entry const& entry : _entries) {
        if (entry.record == nullptr) {
            continue;
        }
        std::int64_t const shown = entry.record->PositionOf(cell[entry.dimension]);
        if (shown < 0 || shown >= static_cast<std::int64_t>(entry.base)) {
            return false;
        }
        position = position * entry.base + static_cast<std::uint64_t>(shown);
    }
    return true;
}

bool AxisIndexer::Holds(int const* cell) const {
    return std::all_of(_entries.begin(), _entries.end(), [cell](Entry const& entry) {
        return entry.dimension == None || static_cast<std::uint32_t>(cell[entry.dimension]) < entry.base;
    });
}

bool AxisIndexer::Restrict(std::vector<int> const& from, std::vector<int>& to) const {
    for (Entry const& entry : _entries) {
        if (entry.dimension < from.size()) {
            to[entry.dimension] = from[entry.dimension];
            if (to[entry.dimension] < 0) {
                return false;
            }
        }
    }
    return true;
}

std::size_t AxisIndexer::DimensionsEnd() const {
    std::size_t end = 0;
    for (Entry const& entry : _entries) {
        end = entry.dimension != None ? std::max(end, entry.dimension + 1) : end;
    }
    return end;
}

std::size_t AxisIndexer::Lowest(std::size_t dimensions) const {
    for (Entry const& entry : _entries) {
        dimensions = std::min(dimensions, entry.dimension);
    }
    return dimensions;
}

} // namespace om_detail
