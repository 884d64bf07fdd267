#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_AXISINDEXER_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_AXISINDEXER_H

#include "backend/tables/MultiBase.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/detail/DisplayRecord.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace om_detail {

/// Display records by dimension number; not owned.
using DisplayRecords = std::vector<DisplayRecord*>;

/// The digits of one position, all 0 at first. An axis of few dimensions, as nearly every axis is, costs no allocation.
class Digits {
public:
    explicit Digits(std::size_t count) : _count(count), _far(count > Near ? count : 0, 0) {}

    std::size_t size() const { return _count; }
    std::uint32_t* data() { return _count > Near ? _far.data() : _near.data(); }
    std::uint32_t const* data() const { return _count > Near ? _far.data() : _near.data(); }
    std::uint32_t& operator[](std::size_t i) { return data()[i]; }
    std::uint32_t operator[](std::size_t i) const { return data()[i]; }

private:
    static constexpr std::size_t Near = 8;

    std::size_t _count;
    std::array<std::uint32_t, Near> _near{};
    std::vector<std::uint32_t> _far;
};

/// All ones when it does not fit.
constexpr std::uint64_t Product(std::uint64_t a, std::uint64_t b) {
    constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();
    return b != 0 && a > Most / b ? Most : a * b;
}

/// The positions along one axis: its dimensions as the digits of a mixed-radix number, first one most significant, with
/// their sizes as bases. A size below 0 counts as 0; an axis entry that names no dimension counts as a digit with the
/// one value 0, and takes part in nothing else.
class AxisIndexer {
public:
    struct Entry {
        std::size_t dimension; ///< None for an entry that names none
        std::uint32_t base;
        DisplayRecord* record; ///< null for an entry that names none
    };
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    AxisIndexer(PuppetVector<short> const& axis, std::vector<int> const& sizes);

    /// Takes the display records of the axis's dimensions, which outlive this object. Everything that speaks of shown
    /// categories needs them. REQUIRES: one for each of the sizes.
    void Bind(DisplayRecords const& records);

    std::vector<Entry> const& Entries() const { return _entries; }

    std::size_t NDimensions() const { return _entries.size(); }

    /// Dimension number of entry i as it stands on the axis; the axis's fill value past its end.
    int DimensionAt(int i) const { return i >= 0 ? _axis[static_cast<std::size_t>(i)] : _axis.Fill(); }

    /// The display record of entry i, or null when it names no dimension.
    DisplayRecord* RecordAt(std::size_t i) const { return i < _entries.size() ? _entries[i].record : nullptr; }

    std::uint64_t Count() const { return _indexer.Count(); }

    /// The same, but all ones when the product does not fit.
    std::uint64_t CountOrMost() const { return CountBehind(0); }

    /// Positions that pass before digit i changes: the number of positions along the dimensions behind it, all ones
    /// when that does not fit.
    std::uint64_t Stride(std::size_t i) const { return CountBehind(i + 1); }

    /// The digits of a position. False, and no digits, for a position that has none (some dimension behind the first
    /// has size 0). A position of at least `Count()` has an oversized first digit.
    /// REQUIRES: as many digits as dimensions.
    bool DigitsOf(std::uint64_t position, Digits& digits) const;

    /// Steps to the next position; false at the end, with all digits 0 again.
    bool Next(Digits& digits) const;

    /// Writes the categories of a position into a cell index, at the axis's dimensions. A digit past the shown
    /// categories leaves its entry as it is.
    void Apply(std::uint64_t position, std::vector<int>& index) const;

    /// The same of digits, for a probe: false when some digit is past the shown categories or its category cannot be a
    /// subscript.
    bool ApplyAll(Digits const& digits, std::vector<int>& index) const;

    /// Writes the digits themselves into a cell index.
    void Scatter(Digits const& digits, std::vector<int>& index) const;

    /// Writes one value into a cell index, at the axis's dimensions.
    void Set(int value, std::vector<int>& index) const;

    /// Position of the shown categories of a cell. False when one of them is not shown or lies past its dimension's
    /// size.
    bool PositionOf(int const* cell, std::uint64_t& position) const;

    /// Whether all subscripts of a cell on this axis lie within the sizes.
    bool Holds(int const* cell) const;

    /// Copies the subscripts on this axis from one cell index into another. False when one of them is negative, so that
    /// no cell can have it.
    bool Restrict(std::vector<int> const& from, std::vector<int>& to) const;

    /// One more than the highest dimension number on the axis; 0 when it names none.
    std::size_t DimensionsEnd() const;

    /// The lowest dimension number on the axis; `dimensions` when it names none.
    std::size_t Lowest(std::size_t dimensions) const;

private:
    std::uint64_t CountBehind(std::size_t i) const;
    void ApplyInOrder(std::uint64_t position, std::vector<int>& index) const;

    PuppetVector<short> _axis;
    std::vector<Entry> _entries;
    MultiBase _indexer;
    std::uint64_t _last;   ///< the last position that has digits
    bool _repeats = false; ///< some dimension stands on the axis twice
};

} // namespace om_detail

#endif
