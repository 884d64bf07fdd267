#include "backend/tables/om/detail/CellProjection.h"

#include "backend/tables/om/detail/PivotTableData.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

using Node = OmPivotTable::PointerVector;

/// The entries of one node that are not null, in the order in which they lie there.
struct Level {
    Node const* node;
    std::uint32_t next; ///< where the search for the next entry begins

    /// The next entry, or null; with `wanted` not negative, only the one at that subscript.
    void const* Advance(int wanted, int& position);
};

void const* Level::Advance(int wanted, int& position) {
    if (wanted >= 0) {
        position = wanted;
        return next++ == 0 ? node->Entry(static_cast<std::uint32_t>(wanted)) : nullptr;
    }
    if (void* const* const entries = node->DenseEntries()) {
        while (next < node->Length()) {
            position = static_cast<int>(next);
            if (void const* const entry = entries[next++]) {
                return entry;
            }
        }
        return nullptr;
    }
    while (next < node->Places()) {
        std::uint32_t const place = next++;
        if (node->IsTaken(place) && node->KeyedAt(place).entry != nullptr) {
            position = static_cast<int>(node->KeyedAt(place).key);
            return node->KeyedAt(place).entry;
        }
    }
    return nullptr;
}

/// The cells of a node that spans its leaves.
class SpannedCells {
public:
    SpannedCells(Node const& node, int const* wanted, int* index) : _node(node), _wanted(wanted), _index(index) {}

    bool Any() {
        return !VisitAll([](int const*) { return false; }, 0);
    }

    /// False when a visit said so. With `lowest` 1 the pairs that differ in the lower subscript alone count once.
    template <typename Visit>
    bool VisitAll(Visit&& visit, std::size_t lowest) {
        if (_wanted[1] >= 0 && _wanted[0] >= 0) {
            _index[1] = _wanted[1];
            _index[0] = _wanted[0];
            bool const isThere =
                _node.Cell(static_cast<std::uint32_t>(_wanted[1]), static_cast<std::uint32_t>(_wanted[0])) != nullptr;
            return !isThere || visit(_index);
        }
        if (_node.IsBox()) {
            return VisitBox(visit, lowest);
        }
        if (_wanted[1] >= 0 && _node.Width() < _node.Places()) {
            // The leaves of this hash are short: asking for each subscript costs less than a look at every place.
            std::uint32_t const position = static_cast<std::uint32_t>(_wanted[1]);
            auto const isThere = [&](std::uint32_t below) { return _node.Cell(position, below) != nullptr; };
            return VisitLeaf(visit, lowest, position, _node.Width(), isThere);
        }
        return lowest == 0 || _wanted[0] >= 0 ? VisitPairs(visit) : VisitOrdered(visit);
    }

private:
    bool Takes(Node::KeyedEntry const& found) {
        if (found.entry == nullptr) {
            return false;
        }
        _index[1] = static_cast<int>(Node::PositionOf(found.key));
        _index[0] = static_cast<int>(Node::BelowOf(found.key));
        return (_wanted[1] < 0 || _wanted[1] == _index[1]) && (_wanted[0] < 0 || _wanted[0] == _index[0]);
    }

    template <typename Visit>
    bool VisitPairs(Visit&& visit) {
        for (std::uint32_t place = 0; place < _node.Places(); ++place) {
            if (_node.IsTaken(place) && Takes(_node.KeyedAt(place)) && !visit(_index)) {
                return false;
            }
        }
        return true;
    }

    template <typename Visit>
    bool VisitOrdered(Visit&& visit) {
        std::vector<std::uint64_t> order;
        std::vector<std::uint64_t> scratch;
        _node.Sort(order, scratch);
        int last = -1;
        for (std::uint64_t const ordered : order) {
            if (Takes(_node.KeyedIn(ordered)) && _index[1] != last) {
                last = _index[1];
                if (!visit(_index)) {
                    return false;
                }
            }
        }
        return true;
    }

    template <typename Visit>
    bool VisitBox(Visit&& visit, std::size_t lowest) {
        auto const [first, end] = Range(_wanted[1], _node.Length());
        for (std::uint32_t row = first; row < end; ++row) {
            void* const* const entries = _node.RowEntries(row);
            auto const isThere = [entries](std::uint32_t below) { return entries[below] != nullptr; };
            if (!VisitLeaf(visit, lowest, row, _node.RowAt(row).length, isThere)) {
                return false;
            }
        }
        return true;
    }

    /// One leaf, each of whose subscripts below `length` is asked for.
    template <typename Visit, typename IsThere>
    bool VisitLeaf(Visit&& visit, std::size_t lowest, std::uint32_t position, std::uint32_t length, IsThere&& isThere) {
        _index[1] = static_cast<int>(position);
        auto const [first, end] = Range(_wanted[0], length);
        for (std::uint32_t below = first; below < end; ++below) {
            if (isThere(below)) {
                _index[0] = static_cast<int>(below);
                if (!visit(_index)) {
                    return false;
                }
                if (lowest == 1) {
                    return true;
                }
            }
        }
        return true;
    }

    /// The subscripts below a length that are wanted.
    static std::pair<std::uint32_t, std::uint32_t> Range(int wanted, std::uint32_t length) {
        std::uint32_t const one = static_cast<std::uint32_t>(wanted);
        return wanted < 0     ? std::pair(std::uint32_t{0}, length)
               : one < length ? std::pair(one, one + 1)
                              : std::pair(length, length);
    }

    Node const& _node;
    int const* _wanted;
    int* _index;
};

} // namespace

std::size_t OmPivotTable::PresentCells() const { return _my->cells.Present(); }

// One loop with a place for each level: tables may have more dimensions than a native stack has frames to spare.
void OmPivotTable::VisitPrefixes(std::size_t lowest, std::vector<int> const& wanted,
                                 om_detail::PrefixVisitor visit) const {
    if (_my->cells.Root() == nullptr) {
        return;
    }
    std::size_t const n = NDimensions();
    std::vector<Level> levels(n);
    std::vector<int> index(n, 0);
    std::size_t k = n - 1;
    levels[k] = {_my->cells.Root(), 0};
    while (k < n) {
        if (levels[k].node->SpansLeaves()) {
            SpannedCells cells(*levels[k].node, wanted.data(), index.data());
            bool const found = lowest > k && cells.Any();
            if ((found && !visit(index.data())) || (lowest <= k && !cells.VisitAll(visit, lowest))) {
                return;
            }
            k = found ? lowest : k + 1;
            continue;
        }
        void const* const entry = levels[k].Advance(wanted[k], index[k]);
        if (entry == nullptr) {
            ++k;
        } else if (k > 0) {
            --k;
            levels[k] = {static_cast<Node const*>(entry), 0};
        } else {
            if (!visit(index.data())) {
                return;
            }
            k = lowest;
        }
    }
}
