#ifndef OMTREE_BENCHMARKS_CELLSTORES_H
#define OMTREE_BENCHMARKS_CELLSTORES_H

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "benchmarks/Inputs.h"

#include <absl/container/btree_map.h>
#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The cell stores that are compared, behind the same few operations.
namespace om_bench {

/// What a walk over all cells saw.
struct Walked {
    std::size_t cells = 0;
    std::size_t bytes = 0; ///< sum of the texts' lengths

    friend bool operator==(Walked const&, Walked const&) = default;
};

/// Runs over a sequence of positions as a hash of it.
class SequenceHash {
public:
    void Add(std::uint64_t key) { _hash = (_hash ^ key) * 0x100000001B3U; }
    std::uint64_t Value() const { return _hash; }

private:
    std::uint64_t _hash = 0xCBF29CE484222325U;
};

class OurStore {
public:
    using Text = OmStringCell;
    static std::deque<Text> Texts(std::vector<std::string> const& words) { return OurTexts(words); }

    explicit OurStore(std::size_t dimensions) : _table(OmStringCell("title"), OmStringCell("template"), false) {
        for (std::size_t k = 0; k < dimensions; ++k) {
            _table.AddDimension(OmStringCell("dimension"));
        }
    }

    OmPivotTable& Table() { return _table; }

    void Put(std::vector<int> const& index, Text const& text) { _table.Cell(index, text); }

    bool Has(std::vector<int> const& index) const { return _table.Cell(index) != nullptr; }

    std::string At(std::vector<int> const& index) const { return _table.Cell(index)->AsString(); }

    Walked Walk() const {
        Walked walked;
        OmPivotTable::ConstIterator cell = _table.FirstCell();
        while (OmCellText const* const text = cell.Cell()) {
            ++walked.cells;
            walked.bytes += text->TextLength();
            ++cell;
        }
        return walked;
    }

    std::uint64_t OrderHash() const {
        SequenceHash hash;
        for (OmPivotTable::ConstIterator cell = _table.FirstCell(); cell.Cell() != nullptr; ++cell) {
            hash.Add(Pack(cell.Index()));
        }
        return hash.Value();
    }

private:
    OmPivotTable _table;
};

/// A map from packed positions to owned texts, as a user would write it.
template <typename Map>
class RivalStore {
public:
    using Text = RivalString;
    static std::deque<Text> Texts(std::vector<std::string> const& words) { return RivalTexts(words); }

    explicit RivalStore(std::size_t) {}

    Map const& Cells() const { return _map; }

    void Put(std::vector<int> const& index, RivalText const& text) { _map[Pack(index)] = text.Clone(); }

    bool Has(std::vector<int> const& index) const { return _map.find(Pack(index)) != _map.end(); }

    std::string At(std::vector<int> const& index) const { return _map.find(Pack(index))->second->Given(); }

    Walked Walk() const {
        Walked walked;
        ForEachInOrder([&](std::uint64_t, RivalText const& text) {
            ++walked.cells;
            walked.bytes += text.Length();
        });
        return walked;
    }

    std::uint64_t OrderHash() const {
        SequenceHash hash;
        ForEachInOrder([&](std::uint64_t key, RivalText const&) { hash.Add(key); });
        return hash.Value();
    }

private:
    static constexpr bool IsOrdered = requires { typename Map::key_compare; };

    /// A hash map has no order of its own: it gathers, sorts and then walks.
    template <typename Visit>
    void ForEachInOrder(Visit const& visit) const {
        if constexpr (IsOrdered) {
            for (auto const& [key, text] : _map) {
                visit(key, *text);
            }
        } else {
            std::vector<std::pair<std::uint64_t, RivalText const*>> cells;
            cells.reserve(_map.size());
            for (auto const& [key, text] : _map) {
                cells.emplace_back(key, text.get());
            }
            std::sort(cells.begin(), cells.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
            for (auto const& [key, text] : cells) {
                visit(key, *text);
            }
        }
    }

    Map _map;
};

using FlatStore = RivalStore<boost::unordered_flat_map<std::uint64_t, std::unique_ptr<RivalText>>>;
using BtreeStore = RivalStore<absl::btree_map<std::uint64_t, std::unique_ptr<RivalText>>>;

} // namespace om_bench

#endif
