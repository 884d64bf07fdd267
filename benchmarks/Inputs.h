#ifndef OMTREE_BENCHMARKS_INPUTS_H
#define OMTREE_BENCHMARKS_INPUTS_H

#include "omcell/OmStringCell.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What the workloads read. Everything comes from fixed seeds, so both sides of a workload, and every repetition, get
/// the same.
namespace om_bench {

/// The text that a rival stores: what a user would write, with the three copies of its bytes that a string cell keeps.
/// The bytes of our workloads fit into the string objects, so a clone is one block.
class RivalText {
public:
    RivalText() = default;
    RivalText(RivalText const&) = default;
    RivalText& operator=(RivalText const&) = delete;
    virtual ~RivalText() = default;
    virtual std::unique_ptr<RivalText> Clone() const = 0;
    virtual std::size_t Length() const = 0;
    virtual std::string Given() const = 0;
};

class RivalString : public RivalText {
public:
    explicit RivalString(std::string const& text) : _given(text), _u8(text), _english(text) {}

    std::unique_ptr<RivalText> Clone() const override { return std::make_unique<RivalString>(*this); }
    std::size_t Length() const override { return _u8.size(); }
    std::string Given() const override { return _given; }

private:
    std::string _given;
    std::string _u8;
    std::string _english;
};

/// A small and quick generator (xorshift64*), so that drawing numbers inside a clock costs next to nothing.
class Random {
public:
    using result_type = std::uint64_t;

    explicit Random(std::uint64_t seed) : _state(seed * 0x9E3779B97F4A7C15U + 1) {}

    std::uint64_t operator()() {
        _state ^= _state >> 12;
        _state ^= _state << 25;
        _state ^= _state >> 27;
        return _state * 0x2545F4914F6CDD1DU;
    }
    static constexpr std::uint64_t min() { return 0; }
    static constexpr std::uint64_t max() { return UINT64_MAX; }

    /// Below `bound`, which fits 32 bits.
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(((*this)() >> 32) * bound >> 32); }

private:
    std::uint64_t _state;
};

template <typename Values>
void Shuffle(Values& values, Random& random) {
    for (std::size_t left = values.size(); left > 1; --left) {
        std::swap(values[left - 1], values[random.Below(left)]);
    }
}

/// `count` distinct texts of 8 to 12 bytes.
std::vector<std::string> Words(std::size_t count, std::uint64_t seed);

std::deque<OmStringCell> OurTexts(std::vector<std::string> const& words);
std::deque<RivalString> RivalTexts(std::vector<std::string> const& words);

/// Cell positions, one behind the other; entry k of each is the subscript on dimension k.
class Positions {
public:
    explicit Positions(std::size_t dimensions) : _dimensions(dimensions) {}

    std::size_t Dimensions() const { return _dimensions; }
    std::size_t Size() const { return _subscripts.size() / _dimensions; }
    void Reserve(std::size_t count) { _subscripts.reserve(count * _dimensions); }
    void Add(std::vector<int> const& index) { _subscripts.insert(_subscripts.end(), index.begin(), index.end()); }

    /// Writes position i into an index of the right length.
    void Read(std::size_t i, std::vector<int>& index) const {
        int const* const from = _subscripts.data() + i * _dimensions;
        for (std::size_t k = 0; k < _dimensions; ++k) {
            index[k] = from[k];
        }
    }

    Positions Shuffled(Random& random) const;

private:
    std::size_t _dimensions;
    std::vector<int> _subscripts;
};

/// The key of a rival's map: 16 bits for each dimension, the last one on top, so that ascending keys are the order in
/// which a table walks its cells.
inline std::uint64_t Pack(std::vector<int> const& index) {
    std::uint64_t key = 0;
    for (std::size_t k = index.size(); k-- > 0;) {
        key = key << 16 | static_cast<std::uint64_t>(index[k]);
    }
    return key;
}
constexpr std::uint64_t Unpack(std::uint64_t key, unsigned int dimension) { return key >> (16 * dimension) & 0xFFFF; }

enum class Order { Dense, Ordered, Shuffled, Sparse };

/// Extents of the sparse table.
inline std::vector<int> const SparseExtents = {2000, 2000, 50, 20};

/// Where cells are stored, in order, and what is looked up.
///  - Dense: a full box of 100 x 100 x count / 10,000, stored with dimension 0 fastest and looked up in random order.
///  - Ordered: the same, looked up as it was stored.
///  - Shuffled: the same, stored and looked up in two different random orders.
///  - Sparse: random distinct positions of 2000 x 2000 x 50 x 20, looked up in another random order.
/// Absent positions of the box have one subscript, on a dimension drawn at random, past it.
struct CellInputs {
    Positions stored;
    Positions present;
    Positions absent;
};
CellInputs MakeCells(Order order, std::size_t count);

} // namespace om_bench

#endif
