#ifndef OMTREE_BACKEND_TABLES_MULTIBASE_H
#define OMTREE_BACKEND_TABLES_MULTIBASE_H

#include "backend/tables/Export.h"

#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <vector>

/// Mixed-radix index: turns a position along an axis into one digit for each of its dimensions, and back.
///
///     bases    (3, 4)            position 0 is the most significant digit, the last one varies fastest
///     number   0     1     2     3     4     5     6     7    ...   11
///     digits  0 0   0 1   0 2   0 3   1 0   1 1   1 2   1 3   ...  2 3
///
/// The first base never reduces a number: a number of at least `Count()` leaves an oversized first digit instead of
/// wrapping or failing, and a first base of 0 is harmless. For every n below `Count()`, `Number(Digits(n)) == n`.
///
/// A value type; it owns its bases. All arithmetic is in unsigned 64 bits and wraps where it overflows.
class OMTREE_API MultiBase {
public:
    /// No bases: one position.
    MultiBase() = default;

    /// These bases, outermost first.
    MultiBase(std::initializer_list<std::uint32_t> bases) : _bases(bases) {}

    /// Copies a range of unsigned 32-bit bases, outermost first.
    template <typename Input, typename = typename std::iterator_traits<Input>::iterator_category>
    MultiBase(Input first, Input last) : _bases(first, last) {}

    /// Product of all bases; 1 without bases. O(bases).
    std::uint64_t Count() const;

    /// The digits of a number, one for each base. Stops early once nothing is left of the number. O(bases).
    /// Assertion "b>0" (`backend/tables/MultiBase`, line 126) on a base of 0 at any visited position but the first.
    /// There is no quotient to carry on with: a handler that returns ends in std::abort.
    std::vector<std::uint32_t> Digits(std::uint64_t number) const;

    /// The same into the caller's storage, one entry for each base. Returns what is left for the first digit, which may
    /// be wider than the entry that holds its low 32 bits; 0 without bases.
    std::uint64_t Digits(std::uint64_t number, std::uint32_t* digits) const;

    /// The number with these digits. Without bases, the empty list is number 0. O(bases).
    /// Assertion "digit == end && i == size" (`backend/tables/MultiBase`, line 148) when there are more or fewer
    /// digits than bases; with a handler that returns, the number computed so far is given.
    /// REQUIRES: the list is not empty, unless there are no bases.
    std::uint64_t Number(std::vector<std::uint32_t> const& digits) const;

    /// The bases, outermost first. Valid until the MultiBase is assigned to or destroyed.
    std::vector<std::uint32_t> const& Bases() const { return _bases; }

    friend bool operator==(MultiBase const& a, MultiBase const& b) { return a._bases == b._bases; }
    friend bool operator!=(MultiBase const& a, MultiBase const& b) { return a._bases != b._bases; }

private:
    std::vector<std::uint32_t> _bases;
};

#endif
