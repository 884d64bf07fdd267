#ifndef OMTREE_TESTS_SUPPORT_CELLMODEL_H
#define OMTREE_TESTS_SUPPORT_CELLMODEL_H

#include "omcell/OmCellMetaData.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A naive cell store: a map from index vector to text, with the count, the limit and the metadata rules beside it.
///
/// It also knows how far each vector of the store reaches, because `deleteCell` may only be called for positions inside
/// what was stored: `extents` has one entry for each vector, keyed by the subscripts that lead to it (last dimension
/// first; the top vector's key is empty).
namespace omtest {

class CellModel {
public:
    using Index = std::vector<int>;

    struct Cell {
        std::string text;
        std::optional<OmCellMetaData> meta{};
        friend bool operator==(Cell const& a, Cell const& b) { return a.text == b.text && a.meta == b.meta; }
    };

    enum class Stored { Yes, OverLimit, WrongLength, NegativeSubscript };

    /// Dimension 0 varies fastest, the last one slowest.
    struct LastDimensionFirst {
        bool operator()(Index const& a, Index const& b) const {
            return std::lexicographical_compare(a.rbegin(), a.rend(), b.rbegin(), b.rend());
        }
    };
    using Cells = std::map<Index, Cell, LastDimensionFirst>;

    std::size_t Dimensions() const { return _dimensions; }
    Cells const& All() const { return _cells; }
    long Count() const { return _count; }
    bool Scratched() const { return _scratched; }
    void Scratch(bool scratched) { _scratched = scratched; }
    void Limit(long limit) { _limit = limit; }

    Cell const* Find(Index const& index) const {
        auto const found = _cells.find(index);
        return found == _cells.end() ? nullptr : &found->second;
    }

    void AddDimension() {
        ++_dimensions;
        Cells widened;
        for (auto& [index, cell] : _cells) {
            Index wider = index;
            wider.push_back(0);
            widened.emplace(std::move(wider), std::move(cell));
        }
        _cells = std::move(widened);

        std::map<Index, std::size_t> extents;
        for (auto const& [key, length] : _extents) {
            Index longer = key;
            longer.insert(longer.begin(), 0);
            extents.emplace(std::move(longer), length);
        }
        if (!extents.empty()) {
            extents.emplace(Index(), 1);
        }
        _extents = std::move(extents);
    }

    Stored Store(Index const& index, std::optional<Cell> cell) {
        long const before = _count++;
        if (before > _limit) {
            _scratched = true;
            return Stored::OverLimit;
        }
        if (index.size() != _dimensions || _dimensions == 0) {
            return Stored::WrongLength;
        }
        if (std::any_of(index.begin(), index.end(), [](int subscript) { return subscript < 0; })) {
            return Stored::NegativeSubscript;
        }
        StretchTo(index);
        auto const old = _cells.find(index);
        if (cell && old != _cells.end() && old->second.meta) {
            cell->meta = old->second.meta;
        }
        if (old != _cells.end()) {
            _cells.erase(old);
        }
        if (cell) {
            _cells.emplace(index, std::move(*cell));
        }
        return Stored::Yes;
    }

    /// Whether every vector on the way reaches far enough. A way that ends in an empty entry is fine.
    bool MayDelete(Index const& index) const {
        Index key;
        for (std::size_t k = index.size(); k-- > 0;) {
            auto const vector = _extents.find(key);
            if (vector == _extents.end()) {
                return true;
            }
            if (static_cast<std::size_t>(index[k]) >= vector->second) {
                return false;
            }
            key.push_back(index[k]);
        }
        return true;
    }

    /// REQUIRES: MayDelete(index).
    void Delete(Index const& index) {
        Index key(index.rbegin(), index.rend() - 1);
        if (_extents.find(key) == _extents.end()) {
            return;
        }
        _cells.erase(index);
        for (; !key.empty() && IsEmpty(key); key.pop_back()) {
            _extents.erase(key);
        }
    }

    /// Metadata given to a stored cell in place. REQUIRES: the cell exists.
    void SetMeta(Index const& index, std::optional<OmCellMetaData> meta) { _cells.at(index).meta = std::move(meta); }

private:
    void StretchTo(Index const& index) {
        Index key;
        for (std::size_t k = index.size(); k-- > 0;) {
            std::size_t& length = _extents[key];
            length = std::max(length, static_cast<std::size_t>(index[k]) + 1);
            key.push_back(index[k]);
        }
    }

    /// Whether the vector at `key` holds neither a vector nor a cell.
    bool IsEmpty(Index const& key) const {
        auto const startsWithKey = [&](Index const& way) {
            return way.size() > key.size() && std::equal(key.begin(), key.end(), way.begin());
        };
        return std::none_of(_extents.begin(), _extents.end(),
                            [&](auto const& entry) { return startsWithKey(entry.first); }) &&
               std::none_of(_cells.begin(), _cells.end(), [&](auto const& entry) {
                   return startsWithKey(Index(entry.first.rbegin(), entry.first.rend()));
               });
    }

    std::size_t _dimensions = 0;
    Cells _cells;
    std::map<Index, std::size_t> _extents;
    long _count = 0;
    long _limit = 2000000000L;
    bool _scratched = false;
};

} // namespace omtest

#endif
