#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_LABELHASH_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_LABELHASH_H

#include "omcell/OmMemoryRegion.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string_view>

namespace om_detail {

/// A label that is looked for: group flag and bytes.
///
///     low      bytes 0 to 7, the first one lowest             of a longer label: (see LabelHash)
///     high     bytes 8 to 14, and on top the tag: length, 0x80 for a group, 0x40 for a label past 15 bytes
///
/// Bytes behind a short label's end are zero, so two short labels are the same just when both words are.
class LabelKey {
public:
    static constexpr std::size_t LongestShort = 15;

    LabelKey(std::string_view bytes, bool isGroup)
        : LabelKey(bytes.size() <= LongestShort ? Short(bytes, isGroup) : Long(bytes, isGroup)) {}

    /// The same for a label of at most LongestShort bytes.
    static LabelKey Short(std::string_view bytes, bool isGroup) {
        LabelKey key(bytes);
        key.Pack(bytes.data(), bytes.size());
        key._high |= ((isGroup ? GroupTag : 0) | bytes.size()) << TagShift;
        key._hash = Hash(key._low, key._high);
        return key;
    }

    std::uint64_t Low() const { return _low; }
    std::uint64_t High() const { return _high; }
    std::uint32_t Hash() const { return _hash; }
    std::string_view Bytes() const { return _bytes; }
    bool IsLong() const { return (_high >> TagShift & LongTag) != 0; }

    static constexpr unsigned TagShift = 56;
    static constexpr std::uint64_t GroupTag = 0x80;
    static constexpr std::uint64_t LongTag = 0x40;
    /// Of the short label with these words; of a long one with these bytes and this second word.
    static std::uint32_t Hash(std::uint64_t low, std::uint64_t high) { return Mix(low, high); }
    static std::uint32_t Hash(std::string_view bytes, std::uint64_t high) { return Mix(HashOfLong(bytes), high); }

    static constexpr std::uint64_t LengthBits = 0x0F;

private:
    explicit LabelKey(std::string_view bytes) : _bytes(bytes) {}

    static LabelKey Long(std::string_view bytes, bool isGroup) {
        LabelKey key(bytes);
        key._high = ((isGroup ? GroupTag : 0) | LongTag) << TagShift | bytes.size();
        key._hash = Hash(bytes, key._high);
        return key;
    }

    static std::uint64_t Read(char const* from, std::size_t count) {
        std::uint64_t word = 0;
        for (std::size_t k = 0; k < count; ++k) {
            word |= std::uint64_t{static_cast<unsigned char>(from[k])} << 8 * k;
        }
        return word;
    }
    template <typename Word>
    static std::uint64_t Load(char const* from) {
        if constexpr (std::endian::native == std::endian::little) {
            Word word;
            std::memcpy(&word, from, sizeof(word));
            return word;
        } else {
            return Read(from, sizeof(Word));
        }
    }

    // Two loads that may overlap, instead of a loop or a copy of `length` bytes.
    void Pack(char const* from, std::size_t length) {
        if (length >= 8) {
            _low = Load<std::uint64_t>(from);
            _high = Load<std::uint64_t>(from + length - 8) >> 8 * (LongestShort - length) >> 8;
        } else if (length >= 4) {
            _low = Load<std::uint32_t>(from) | Load<std::uint32_t>(from + length - 4) << 8 * (length - 4);
        } else {
            _low = Read(from, length);
        }
    }

    // Multiplications carry upwards only, so the upper half is what is kept.
    static std::uint32_t Mix(std::uint64_t low, std::uint64_t high) {
        std::uint64_t const mixed = low * 0x9E3779B97F4A7C15U ^ std::rotl(high * 0xD6E8FEB86659FD93U, 32);
        return static_cast<std::uint32_t>((mixed ^ mixed >> 29) * 0xC2B2AE3D27D4EB4FU >> 32);
    }
    static std::uint64_t HashOfLong(std::string_view bytes) {
        std::uint64_t hash = 0;
        std::size_t k = 0;
        for (; k + 8 <= bytes.size(); k += 8) {
            hash = (std::rotl(hash, 23) ^ Load<std::uint64_t>(bytes.data() + k)) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        return (std::rotl(hash, 23) ^ Read(bytes.data() + k, bytes.size() - k)) * 0x9E3779B97F4A7C15U;
    }

    std::uint64_t _low = 0;
    std::uint64_t _high = 0;
    std::uint32_t _hash = 0;
    std::string_view _bytes;
};

/// Distinct labels, each with a position: 0, 1, 2 and so on, in the order in which they were added. An open-addressing
/// table that is searched slot by slot from where the label's hash points, a bounded way. Labels that were chosen so
/// that their hashes meet (the hash is no secret) would stand in a row that each search walks along; the table refuses
/// a label that finds no slot on its way, and its owner does without a table.
///
///     one block of the region
///     +---------+---------+---------+-----+    +------+------+------+------+-----+
///     | label 0 | label 1 | label 2 | ... |    | slot | slot | slot | slot | ... |    two slots for each label's place
///     +---------+---------+---------+-----+    +------+------+------+------+-----+
///      16 bytes                                 4 bytes: bits of the hash, and a position; or all ones
///
///     label      low, high as in LabelKey; of a longer one, low is the address of its bytes, high its length and tag
///     slot       2^k slots: the k lowest bits are the position, the others the bits of the hash that did not choose
///     the
///                slot, so that hardly ever a label is looked at in vain
///
/// The table owns what it compares: labels of up to 15 bytes lie in it, longer ones are copied into blocks of the
/// region. So nothing here ever reads the tree.
///
/// Why labels and slots lie apart. The slots are small enough for the near caches, and with the slot the position is
/// known. So the processor fetches the child, which the caller is about to read, while it waits for the label that
/// confirms it. With the labels in the slots, 24 bytes each, the child was waited for after the label: a look-up among
/// 100,000 labels that reads the child then took a tenth longer (0.47 of a flat hash map's speed instead of 0.54).
///
/// Memory: 24 bytes a place, 24 to 48 a label, as the table is doubled when it is full; the bytes of a label past 15 on
/// top.
class LabelHash {
public:
    /// The most labels that a table can hold.
    static constexpr std::size_t Most = std::size_t{1} << 30;
    /// The most slots that a search looks at. In a table that is half full, no label of a million that were numbered in
    /// sixty ordinary ways took more than 64.
    static constexpr std::uint32_t LongestWay = 128;

    /// REQUIRES: the region outlives the table.
    explicit LabelHash(OmMemoryRegion& region) : _region(region) {}
    LabelHash(LabelHash const&) = delete;
    LabelHash& operator=(LabelHash const&) = delete;
    ~LabelHash() {
        if (_longLabels != 0) {
            std::for_each(_labels, _labels + _size, Release);
        }
        OmMemoryRegion::Release(_labels);
    }

    std::size_t Size() const { return _size; }

    /// The label's position, or -1. REQUIRES: room was made, by `Reserve` or `Add`.
    int Find(LabelKey const& key) const {
        return key.IsLong() ? Find(key, [&](Label const& label) { return label.Bytes() == key.Bytes(); })
                            : FindShort(key);
    }

    /// The same for a label that is known to be short.
    int FindShort(LabelKey const& key) const {
        return Find(key, [&](Label const& label) { return label.low == key.Low(); });
    }

    /// How many slots a search for the label looks at.
    std::size_t WayOf(LabelKey const& key) const {
        std::size_t slots = 0;
        Find(
            key, [](Label const&) { return false; }, [&] { ++slots; });
        return slots;
    }

    /// Adds a label with position Size(). False when there is no slot for it on its way: it is not added then, and the
    /// table is good for `SortInto` alone. Throws std::bad_alloc; nothing has changed then.
    /// REQUIRES: it is not there yet; Size() < Most.
    [[nodiscard]] bool Add(LabelKey const& key) {
        if (!Reserve(_size + 1)) {
            return false;
        }
        Label added{key.Low(), key.High()};
        if (key.IsLong()) {
            added.low = Copied(key.Bytes());
        }
        if (!TakeSlot(key.Hash(), _size)) {
            Release(added);
            return false;
        }
        _longLabels += key.IsLong() ? 1 : 0;
        _labels[_size] = added;
        ++_size;
        return true;
    }

    /// Takes the label that was added last away. REQUIRES: nothing was added since.
    void TakeBack(LabelKey const& key) {
        --_size;
        std::uint32_t place = FirstSlot(key.Hash());
        while ((_slots[place] & _mask) != _size) {
            place = (place + 1) & _mask;
        }
        // Whoever was added before does not need this slot on its way.
        _slots[place] = Empty;
        if (_labels[_size].IsLong()) {
            --_longLabels;
        }
        Release(_labels[_size]);
    }

    /// Room for `count` labels, at most Most. False when a label finds no slot on its way, as with `Add`. Throws
    /// std::bad_alloc; nothing has changed then.
    [[nodiscard]] bool Reserve(std::size_t count) {
        return count <= _room || Grow(std::bit_ceil(std::max(count, FewestPlaces)));
    }

    /// Writes the positions to `out`, sorted by their labels: groups first, among either by unsigned bytes, a prefix
    /// before the longer label. `sorted` has the first `known` positions in this order already, and lies elsewhere.
    /// Takes no memory. With t positions that are not known, t log n comparisons.
    void SortInto(int* out, int const* sorted = nullptr, std::size_t known = 0) const {
        auto const less = [this](int a, int b) { return Less(_labels[a], _labels[b]); };
        int* const added = out + known;
        int* const end = out + _size;
        std::iota(added, end, static_cast<int>(known));
        std::sort(added, end, less);
        // What is written never gets ahead of what is still to be read.
        int const* const last = sorted + known;
        for (int const* next = added; next != end && sorted != last; ++next) {
            int const* const before = std::lower_bound(sorted, last, *next, less);
            int const entry = *next;
            out = std::copy(sorted, before, out);
            sorted = before;
            *out++ = entry;
        }
        if (sorted != last) {
            std::copy(sorted, last, out);
        }
    }

private:
    struct Label {
        std::uint64_t low;
        std::uint64_t high;

        bool IsGroup() const { return (high >> LabelKey::TagShift & LabelKey::GroupTag) != 0; }
        bool IsLong() const { return (high >> LabelKey::TagShift & LabelKey::LongTag) != 0; }
        /// Of a long label.
        std::string_view Bytes() const {
            return {reinterpret_cast<char const*>(static_cast<std::uintptr_t>(low)),
                    static_cast<std::size_t>(high & ((std::uint64_t{1} << LabelKey::TagShift) - 1))};
        }
    };

    /// No slot in use has all ones: positions stay below half the slots.
    static constexpr std::uint32_t Empty = ~std::uint32_t{0};
    static constexpr std::size_t FewestPlaces = 16;

    std::uint32_t FirstSlot(std::uint32_t hash) const { return hash >> (32 - _bits); }
    std::uint32_t EndOfWay(std::uint32_t first) const { return (first + LongestWay) & _mask; }

    struct NotCounted {
        void operator()() const {}
    };

    // A way round the whole table ends, as every way of a table that is too small for the longest one does, where it
    // began.
    template <typename IsSame, typename CountSlot = NotCounted>
    int Find(LabelKey const& key, IsSame&& isSame, CountSlot&& countSlot = {}) const {
        std::uint32_t const rest = key.Hash() << _bits;
        std::uint32_t place = FirstSlot(key.Hash());
        std::uint32_t const end = EndOfWay(place);
        do {
            countSlot();
            std::uint32_t const slot = _slots[place];
            if (slot == Empty) {
                return -1;
            }
            if ((slot & ~_mask) == rest) {
                Label const& label = _labels[slot & _mask];
                if (label.high == key.High() && isSame(label)) {
                    return static_cast<int>(slot & _mask);
                }
            }
            place = (place + 1) & _mask;
        } while (place != end);
        return -1;
    }

    std::uint64_t Copied(std::string_view bytes) {
        void* const block = _region.Allocate(bytes.size());
        std::memcpy(block, bytes.data(), bytes.size());
        return reinterpret_cast<std::uintptr_t>(block);
    }
    static void Release(Label const& label) {
        if (label.IsLong()) {
            OmMemoryRegion::Release(const_cast<char*>(label.Bytes().data()));
        }
    }

    bool TakeSlot(std::uint32_t hash, std::size_t position) {
        std::uint32_t place = FirstSlot(hash);
        std::uint32_t const end = EndOfWay(place);
        while (_slots[place] != Empty) {
            place = (place + 1) & _mask;
            if (place == end) {
                return false;
            }
        }
        _slots[place] = hash << _bits | static_cast<std::uint32_t>(position);
        return true;
    }

    bool Grow(std::size_t places) {
        std::size_t const slots = 2 * places;
        Label* const before = _labels;
        _labels = static_cast<Label*>(_region.Allocate(places * sizeof(Label) + slots * sizeof(std::uint32_t)));
        std::copy_n(before, _size, _labels);
        OmMemoryRegion::Release(before);
        _slots = reinterpret_cast<std::uint32_t*>(_labels + places);
        std::fill_n(_slots, slots, Empty);
        _room = places;
        _mask = static_cast<std::uint32_t>(slots - 1);
        _bits = static_cast<unsigned>(std::countr_zero(slots));
        for (std::size_t position = 0; position < _size; ++position) {
            Label const& label = _labels[position];
            std::uint32_t const hash =
                label.IsLong() ? LabelKey::Hash(label.Bytes(), label.high) : LabelKey::Hash(label.low, label.high);
            if (!TakeSlot(hash, position)) {
                return false;
            }
        }
        return true;
    }

    /// The first byte on top, so that words compare as their bytes do.
    static std::uint64_t Reversed(std::uint64_t word) {
        word = (word >> 8 & 0x00FF00FF00FF00FFU) | (word & 0x00FF00FF00FF00FFU) << 8;
        word = (word >> 16 & 0x0000FFFF0000FFFFU) | (word & 0x0000FFFF0000FFFFU) << 16;
        return std::rotl(word, 32);
    }
    /// Of any label; `bytes` has room for those of a short one.
    static std::string_view View(Label const& label, char (&bytes)[16]) {
        if (label.IsLong()) {
            return label.Bytes();
        }
        for (unsigned k = 0; k < 8; ++k) {
            bytes[k] = static_cast<char>(label.low >> 8 * k);
            bytes[k + 8] = static_cast<char>(label.high >> 8 * k);
        }
        return {bytes, static_cast<std::size_t>(label.high >> LabelKey::TagShift & LabelKey::LengthBits)};
    }
    static bool Less(Label const& a, Label const& b) {
        if (a.IsGroup() != b.IsGroup()) {
            return a.IsGroup();
        }
        if (a.IsLong() || b.IsLong()) {
            char bytesOfA[16];
            char bytesOfB[16];
            return View(a, bytesOfA) < View(b, bytesOfB);
        }
        if (a.low != b.low) {
            return Reversed(a.low) < Reversed(b.low);
        }
        // The length comes last: where the bytes are the same, the longer label goes on with zeros.
        return Reversed(a.high) < Reversed(b.high);
    }

    OmMemoryRegion& _region;
    Label* _labels = nullptr; ///< the block
    std::uint32_t* _slots = nullptr;
    std::size_t _size = 0;
    std::uint32_t _mask = 0; ///< slots less one
    unsigned _bits = 0;      ///< the slots' number is two to this power
    std::size_t _room = 0;
    std::size_t _longLabels = 0;
};

} // namespace om_detail

#endif
