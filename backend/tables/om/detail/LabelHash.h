#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_LABELHASH_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_LABELHASH_H

#include "omcell/OmMemoryRegion.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

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
        key._hash = Mix(key._low, key._high);
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
    static constexpr std::uint64_t LengthBits = 0x0F;

private:
    explicit LabelKey(std::string_view bytes) : _bytes(bytes) {}

    static LabelKey Long(std::string_view bytes, bool isGroup) {
        LabelKey key(bytes);
        key._high = ((isGroup ? GroupTag : 0) | LongTag) << TagShift | bytes.size();
        key._hash = Mix(HashOfLong(bytes), key._high);
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
/// table that is searched slot by slot from where the label's hash points.
///
///     slot, 24 bytes
///     +-----------------------------+-----------------------+-----+------+----------+
///     | bytes 0 to 7                | bytes 8 to 14, or     | tag | hash | position |
///     | or address of a long label  | a long label's length |     |      | or -1    |
///     +-----------------------------+-----------------------+-----+------+----------+
///      8                             7                       1     4      4
///
/// The table owns what it compares: labels of up to 15 bytes lie in their slots, so that mostly one cache line answers
/// where a look at the child's own label would take three; longer ones are copied into blocks of the region. So nothing
/// here ever reads the tree.
///
/// Memory: 24 bytes a slot. A table of up to 1,024 slots, which stays in the caches anyway, is doubled when it is half
/// full (48 to 96 bytes a label), a larger one when four fifths are taken (30 to 60); the bytes of a label past 15 come
/// on top.
class LabelHash {
public:
    /// The most labels that a table can hold.
    static constexpr std::size_t Most = std::size_t{1} << 30;

    /// REQUIRES: the region outlives the table.
    explicit LabelHash(OmMemoryRegion& region) : _region(region) {}
    LabelHash(LabelHash const&) = delete;
    LabelHash& operator=(LabelHash const&) = delete;
    ~LabelHash() {
        if (_longLabels != 0) {
            std::for_each(_slots, EndOfSlots(), Release);
        }
        OmMemoryRegion::Release(_slots);
    }

    std::size_t Size() const { return _size; }

    /// The label's position, or -1. REQUIRES: room was made, by `Reserve` or `Add`.
    int Find(LabelKey const& key) const {
        return key.IsLong() ? Find(key, [&](Slot const& slot) { return SameLong(slot, key); }) : FindShort(key);
    }

    /// The same for a label that is known to be short.
    int FindShort(LabelKey const& key) const {
        return Find(key, [&](Slot const& slot) { return slot.low == key.Low(); });
    }

    /// Adds a label with position Size(). Throws std::bad_alloc; nothing has changed then.
    /// REQUIRES: it is not there yet; Size() < Most.
    void Add(LabelKey const& key) {
        Reserve(_size + 1);
        Slot added{key.Low(), key.High(), key.Hash(), static_cast<int>(_size)};
        if (key.IsLong()) {
            added.low = Copied(key.Bytes());
            ++_longLabels;
        }
        FreeSlot(key.Hash()) = added;
        ++_size;
    }

    /// Takes the label that was added last away. REQUIRES: nothing was added since.
    void TakeBack(LabelKey const& key) {
        --_size;
        std::size_t place = key.Hash() >> _shift;
        while (_slots[place].position != static_cast<int>(_size)) {
            place = (place + 1) & _mask;
        }
        _longLabels -= _slots[place].IsLong() ? 1 : 0;
        Release(_slots[place]);
        // Whoever was added before does not need this slot on its way.
        _slots[place] = Empty;
    }

    /// Room for `count` labels, at most Most. Throws std::bad_alloc; nothing has changed then.
    void Reserve(std::size_t count) {
        if (count <= _room) {
            return;
        }
        std::size_t slots = std::max(FewestSlots, _mask + 1);
        while (RoomIn(slots) < count) {
            slots *= 2;
        }
        Grow(slots);
    }

    /// Writes the positions to `out`, sorted by their labels: groups first, among either by unsigned bytes, a prefix
    /// before the longer label. Sorts in place of the slots, so takes no memory, and leaves nothing but the destructor
    /// to be called.
    void SortInto(int* out) { SortSlots(_slots, std::partition(_slots, EndOfSlots(), IsTaken), out); }

    /// The same, from a table that stays as it is. Throws std::bad_alloc.
    void CopySortedTo(int* out) const {
        std::vector<Slot> taken;
        taken.reserve(_size);
        std::copy_if(_slots, EndOfSlots(), std::back_inserter(taken), IsTaken);
        SortSlots(taken.data(), taken.data() + taken.size(), out);
    }

private:
    struct Slot {
        std::uint64_t low;
        std::uint64_t high;
        std::uint32_t hash;
        int position;

        bool IsGroup() const { return (high >> LabelKey::TagShift & LabelKey::GroupTag) != 0; }
        bool IsLong() const { return position >= 0 && (high >> LabelKey::TagShift & LabelKey::LongTag) != 0; }
        /// Of a long label.
        std::string_view Bytes() const {
            return {reinterpret_cast<char const*>(static_cast<std::uintptr_t>(low)),
                    static_cast<std::size_t>(high & ((std::uint64_t{1} << LabelKey::TagShift) - 1))};
        }
    };

    /// No label has all tag bits.
    static constexpr Slot Empty{0, ~std::uint64_t{0}, 0, -1};
    static constexpr std::size_t FewestSlots = 32;

    static std::size_t RoomIn(std::size_t slots) { return slots <= 1024 ? slots / 2 : slots / 5 * 4; }
    static bool IsTaken(Slot const& slot) { return slot.position >= 0; }
    Slot* EndOfSlots() const { return _slots != nullptr ? _slots + _mask + 1 : nullptr; }

    template <typename IsSame>
    int Find(LabelKey const& key, IsSame&& isSame) const {
        for (std::size_t place = key.Hash() >> _shift;; place = (place + 1) & _mask) {
            Slot const& slot = _slots[place];
            // An empty slot has a tag that no label has.
            if (slot.high == key.High() && isSame(slot)) {
                return slot.position;
            }
            if (slot.position < 0) {
                return -1;
            }
        }
    }
    static bool SameLong(Slot const& slot, LabelKey const& key) {
        return slot.hash == key.Hash() && slot.Bytes() == key.Bytes();
    }
    std::uint64_t Copied(std::string_view bytes) {
        void* const block = _region.Allocate(bytes.size());
        std::memcpy(block, bytes.data(), bytes.size());
        return reinterpret_cast<std::uintptr_t>(block);
    }
    static void Release(Slot const& slot) {
        if (slot.IsLong()) {
            OmMemoryRegion::Release(const_cast<char*>(slot.Bytes().data()));
        }
    }

    Slot& FreeSlot(std::uint32_t hash) {
        std::size_t place = hash >> _shift;
        while (IsTaken(_slots[place])) {
            place = (place + 1) & _mask;
        }
        return _slots[place];
    }

    void Grow(std::size_t slots) {
        void* const block = _region.Allocate(slots * sizeof(Slot));
        Slot* const before = _slots;
        Slot* const end = EndOfSlots();
        _slots = static_cast<Slot*>(block);
        std::uninitialized_fill_n(_slots, slots, Empty);
        _mask = slots - 1;
        _shift = 32 - static_cast<unsigned>(std::countr_zero(slots));
        _room = RoomIn(slots);
        std::for_each(before, end, [this](Slot const& slot) {
            if (IsTaken(slot)) {
                FreeSlot(slot.hash) = slot;
            }
        });
        OmMemoryRegion::Release(before);
    }

    static void SortSlots(Slot* first, Slot* last, int* out) {
        std::sort(first, last, Less);
        std::transform(first, last, out, [](Slot const& slot) { return slot.position; });
    }

    /// The first byte on top, so that words compare as their bytes do.
    static std::uint64_t Reversed(std::uint64_t word) {
        word = (word >> 8 & 0x00FF00FF00FF00FFU) | (word & 0x00FF00FF00FF00FFU) << 8;
        word = (word >> 16 & 0x0000FFFF0000FFFFU) | (word & 0x0000FFFF0000FFFFU) << 16;
        return std::rotl(word, 32);
    }
    /// Of any label; `bytes` has room for those of a short one.
    static std::string_view View(Slot const& slot, char (&bytes)[16]) {
        if (slot.IsLong()) {
            return slot.Bytes();
        }
        for (unsigned k = 0; k < 8; ++k) {
            bytes[k] = static_cast<char>(slot.low >> 8 * k);
            bytes[k + 8] = static_cast<char>(slot.high >> 8 * k);
        }
        return {bytes, static_cast<std::size_t>(slot.high >> LabelKey::TagShift & LabelKey::LengthBits)};
    }
    static bool Less(Slot const& a, Slot const& b) {
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
    Slot* _slots = nullptr;
    std::size_t _size = 0;
    std::size_t _room = 0;
    std::size_t _longLabels = 0;
    std::size_t _mask = 0; ///< slots less one
    unsigned _shift = 0;   ///< leaves as many bits of the hash as it takes to name a slot
};

} // namespace om_detail

#endif
