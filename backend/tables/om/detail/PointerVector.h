#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_POINTERVECTOR_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_POINTERVECTOR_H

#include "backend/tables/om/OmPivotTable.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

// Where nodes change their form. The tests build the store with other values too, so that small tables meet every form
// and every way from one form to another.
#ifndef OMTREE_NODE_LIST_MOST
#define OMTREE_NODE_LIST_MOST 8 // a power of two
#endif
#ifndef OMTREE_NODE_DENSE_FACTOR
#define OMTREE_NODE_DENSE_FACTOR 4
#endif
#ifndef OMTREE_NODE_DENSE_SLACK
#define OMTREE_NODE_DENSE_SLACK 4
#endif
#ifndef OMTREE_NODE_LOOKS
#define OMTREE_NODE_LOOKS 15 // at most 15
#endif
#ifndef OMTREE_NODE_PAIRS
#define OMTREE_NODE_PAIRS 1
#endif

/// One node of a table's cell store: what a growable vector of entries means, each null or a child, in the least memory
/// and with the fewest cache misses.
///
/// A node means a logical length and entries below it, null unless put there. How it keeps them depends on what is in
/// it. Head and entries are one block:
///
///     Dense    +------+----------------------------------+   one slot for each position, as long as a quarter of the
///              | head | slot 0 | slot 1 | slot 2 | ...   |   positions below the length are taken when it grows
///              +------+----------------------------------+
///
///     List     +------+--------------+--------------+        up to 8 entries of their own, sorted by key
///              | head | key, entry   | key, entry   | ...
///              +------+--------------+--------------+
///
///     Hash     +------+--------------+-----+-------------+   open addressing with linear probing, a power of two of
///              | head | key, entry   | ... | tags, bytes |   places, at most three quarters of them taken; a tag is 0
///              +------+--------------+-----+-------------+   or has 7 bits of the hash, and is asked first; the serial
///                                                            stands behind them
///
/// (The tags of a million cells are two megabytes, which the caches keep: an absent cell of a sparse table is turned
/// away by them in a third of the time that keys alone take. A present one has its entry fetched meanwhile.)
///
/// A node right above the leaves stands for its leaves as well, as long as that serves; it *spans* them. Its keys are
/// pairs of subscripts (its own, that in the leaf), its entries are cells, and it is a List, a Hash or a
///
///     Box      +------+-----------------+-----------------+-----+-------------------------------+
///              | head | slots of leaf 0 | slots of leaf 1 | ... | length and cells of each leaf |
///              +------+-----------------+-----------------+-----+-------------------------------+
///                     |<--- stride ---->|
///
/// A dense table is found by one load below the box's head, a sparse one by one cache miss: a leaf of its own for the
/// one or two cells that a leaf of a sparse table holds costs 56 to 80 bytes and a second miss. In a list or a hash a
/// leaf is there when some key has its subscript, and its length is the largest second subscript of those keys plus
/// one; a key whose cell is null counts.
///
/// When a cell is deleted and its leaf has no other one, the leaf goes, that is to say the keys with its subscript: a
/// list closes up, a hash keeps them in their places, marked as gone, until it is made anew, so that no place moves.
/// To find them a hash asks for every second subscript that there has been, or looks at all its places: 9 ms for a
/// million cells, which is little for some deletions and much for each of many. When these looks come to fifteen times
/// the places, the node is turned into a box or split into leaves, which it then stays: half a second for a million
/// cells, and 64 bytes a cell. A box that growth would make sparse is split too.
///
/// A node is known by the one place that holds its address (`link`: the slot of the node above, or the store's root),
/// because it moves when it grows. What grows a node is handed the store's count of changes, and raises it whenever a
/// place that was given before is no longer valid. The node owns no entry. Whatever throws std::bad_alloc leaves the
/// node as it was.
class OMTREE_LOCAL OmPivotTable::PointerVector {
public:
    using Key = std::uint64_t;

    /// The key of a node that spans its leaves: the subscript in this node, and that in the leaf.
    static Key PairOf(std::uint32_t position, std::uint32_t below) { return Key{position} << 32 | below; }
    static std::uint32_t PositionOf(Key pair) { return static_cast<std::uint32_t>(pair >> 32); }
    static std::uint32_t BelowOf(Key pair) { return static_cast<std::uint32_t>(pair); }

    struct KeyedEntry {
        Key key; ///< a position, or a pair
        void* entry;
    };

    /// A leaf that is spanned.
    struct Row {
        std::uint32_t length; ///< 0: the leaf is not there
        std::uint32_t present;
    };

    /// Where an entry stands: valid until a growth counts a change, and until the node, or a row of it, goes.
    struct Place {
        PointerVector* node;
        void** entry;
        Row* row; ///< of a box, else null
    };

    PointerVector(PointerVector const&) = delete;
    PointerVector& operator=(PointerVector const&) = delete;

    /// A new node without entries in `link`. `isAboveLeaves` says that its children would be leaves, so that it starts
    /// by spanning them; `first` is the position that is grown first.
    static void Make(OmMemoryRegion& region, void*& link, bool isAboveLeaves, std::uint32_t first);

    /// Gives the node's block back; what its entries point at is left alone.
    static void Destroy(PointerVector* node);

    bool SpansLeaves() const { return _spans; }
    bool IsBox() const { return _form == Form::Box; }

    /// Logical length: one more than the largest position ever grown to.
    std::uint32_t Length() const { return _length; }

    /// Whether every entry is null; of a node that spans its leaves, whether none of them is there.
    bool AllNull() const { return (_spans ? LiveKeys() : _present) == 0; }

    /// The entry, or null where there is none and past the length. O(1). REQUIRES: does not span its leaves.
    void* Entry(std::uint32_t position) const {
        if (_form == Form::Dense) {
            return position < _length ? Slots()[position] : nullptr;
        }
        return KeyedEntryOf(position);
    }

    /// The cell of a node that spans its leaves, or null. O(1).
    void* Cell(std::uint32_t position, std::uint32_t below) const {
        if (_form == Form::Box) {
            return position < _length && below < _stride ? Slots()[std::size_t{position} * _stride + below] : nullptr;
        }
        return PairedEntryOf(position, below);
    }

    /// The place of an entry, which is made, null, and the length grown to it, when it was not there. Amortised O(1).
    /// REQUIRES: does not span its leaves.
    static Place Grow(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint64_t& changes) {
        PointerVector& node = *static_cast<PointerVector*>(link);
        if (node._form == Form::Dense && position < node._capacity) {
            node._length = position < node._length ? node._length : position + 1;
            return {&node, node.Slots() + position, nullptr};
        }
        return GrowSlowly(region, link, position, changes);
    }

    /// The same for a cell of a node that spans its leaves. Its entry is null when the node was split instead: the
    /// leaves are now to be grown.
    static Place GrowCell(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint32_t below,
                          std::uint64_t& changes) {
        Place const place = static_cast<PointerVector*>(link)->PlaceIfRoom(position, below);
        return place.entry != nullptr ? place : GrowCellSlowly(region, link, position, below, changes);
    }

    /// Where an entry that was grown to stands, or null. REQUIRES: does not span its leaves.
    void** EntryPlace(std::uint32_t position) {
        if (_form == Form::Dense) {
            return position < _length ? Slots() + position : nullptr;
        }
        return const_cast<void**>(KeyedPlaceOf(position));
    }
    bool HasOneEntry() const { return _present == 1; }
    /// REQUIRES: one entry, which is a node.
    PointerVector* OnlyChild() const;

    /// The child of a dense node, or null; null of any other.
    PointerVector* ChildInSlot(std::uint32_t position) const {
        return _form == Form::Dense && position < _length ? static_cast<PointerVector*>(Slots()[position]) : nullptr;
    }

    /// `GrowCell` of a box or a hash with room, where nothing moves. Its entry is null when it cannot be given so.
    Place PlaceIfRoom(std::uint32_t position, std::uint32_t below) {
        if (_form == Form::Box && position < _capacity && below < _stride) {
            return TakeIntoBox(position, below);
        }
        return _form == Form::Hash && _spans && !IsFull() ? PlaceInHashWithRoom(position, below) : Place{};
    }

    /// For who writes a place: what was null there and no longer is, or the other way round.
    static void CountIn(Place const& place) {
        ++place.node->_present;
        if (place.row != nullptr) {
            ++place.row->present;
        }
    }
    static void CountOut(Place const& place) {
        --place.node->_present;
        if (place.row != nullptr) {
            --place.row->present;
        }
    }

    // --- deleting from a node that spans its leaves
    // --------------------------------------------------------------------

    /// Turns keys that were looked through too often into a box or, where that does not pay, into leaves. O(cells).
    static void SettleIfWorn(OmMemoryRegion& region, void*& link, std::uint64_t& changes);

    /// The place of a cell, or one without entry. O(1).
    Place PlaceOfCell(std::uint32_t position, std::uint32_t below);

    /// The spanned leaf at a position below the length, its length 0 when it is not there. O(1) in a box; else a look.
    Row LeafAt(std::uint32_t position);

    /// Removes the spanned leaf at a position if it is there and has no cell, and says so. What that takes, see
    /// `LeafAt`.
    bool RemoveLeafIfEmpty(std::uint32_t position);

    /// A leaf of a box. REQUIRES: position < Length().
    Row const& RowAt(std::uint32_t position) const { return Rows()[position]; }

    // --- walking -----------------------------------------------------------------------------------------------------

    /// The entries of a dense node, `Length()` of them; null of any other.
    void* const* DenseEntries() const { return _form == Form::Dense ? Slots() : nullptr; }

    /// The slots of a leaf in a box, `RowAt(position).length` of them; those of the next leaves follow somewhere
    /// before `BoxEnd()`.
    void* const* RowEntries(std::uint32_t position) const { return Slots() + std::size_t{position} * _stride; }
    void* const* BoxEnd() const { return Slots() + std::size_t{_length} * _stride; }

    /// Keyed entries of a list or a hash: those of `Places()` places that are taken. Of a list all are, in the order of
    /// their keys.
    KeyedEntry const& KeyedAt(std::uint32_t place) const { return Keyed()[place]; }
    std::uint32_t Places() const { return _form == Form::Hash ? _capacity : _keys; }
    bool IsTaken(std::uint32_t place) const {
        return _form == Form::List || (Tags()[place] != 0 && !IsGone(Keyed()[place].key));
    }
    bool HasOrder() const { return _form != Form::Hash; }
    /// Of a hash: another one whenever its places moved, and never that of another hash of the table; not 0.
    std::uint64_t Serial() const { return *SerialPlace(); }
    /// The largest length that a spanned leaf has had.
    std::uint32_t Width() const { return _width; }

    /// A hash's entries in the order of their keys. Replaces `order`, whose numbers are for `KeyedIn` and hold until a
    /// place moves; `scratch` is room for the work. O(entries). REQUIRES: a list or a hash.
    void Sort(std::vector<std::uint64_t>& order, std::vector<std::uint64_t>& scratch) const;
    KeyedEntry const& KeyedIn(std::uint64_t ordered) const { return Keyed()[ordered & LastPlace()]; }
    std::uint32_t LastPlace() const { return _capacity - 1; }

private:
    enum class Form : std::uint8_t { Dense, List, Hash, Box };

    /// In the key of a hash that is gone, whose entry is null. No subscript has that bit. The order of the keys of
    /// different leaves stays, which is what walks go by.
    static constexpr Key Gone = Key{1} << 31;
    static bool IsGone(Key key) { return (key & Gone) != 0; }
    std::uint32_t LiveKeys() const { return _keys - _gone; }

    static constexpr std::size_t TagGroup = 8; ///< tags that are looked at together
    static constexpr std::uint64_t TagTops = 0x8080808080808080U;

    PointerVector(Form form, bool spans, std::uint32_t capacity, std::uint32_t stride)
        : _capacity(capacity), _stride(stride), _form(form), _spans(spans) {}

    static PointerVector* Allocate(OmMemoryRegion& region, Form form, bool spans, std::uint32_t capacity,
                                   std::uint32_t stride = 0);

    /// Behind the tags of a hash.
    std::uint64_t const* SerialPlace() const {
        return reinterpret_cast<std::uint64_t const*>(Tags() + _capacity + TagGroup);
    }
    void SetSerial(std::uint64_t serial) {
        if (_form == Form::Hash) {
            *const_cast<std::uint64_t*>(SerialPlace()) = serial;
        }
    }
    void** Slots() { return reinterpret_cast<void**>(this + 1); }
    void* const* Slots() const { return reinterpret_cast<void* const*>(this + 1); }
    KeyedEntry* Keyed() { return reinterpret_cast<KeyedEntry*>(this + 1); }
    KeyedEntry const* Keyed() const { return reinterpret_cast<KeyedEntry const*>(this + 1); }
    unsigned char* Tags() { return reinterpret_cast<unsigned char*>(Keyed() + _capacity); }
    unsigned char const* Tags() const { return reinterpret_cast<unsigned char const*>(Keyed() + _capacity); }
    Row* Rows() { return reinterpret_cast<Row*>(Slots() + std::size_t{_capacity} * _stride); }
    Row const* Rows() const { return reinterpret_cast<Row const*>(Slots() + std::size_t{_capacity} * _stride); }

    /// Whether a slot for every position is worth its room.
    static bool IsDense(std::uint64_t positions, std::uint64_t taken) {
        return positions <= OMTREE_NODE_DENSE_FACTOR * taken + OMTREE_NODE_DENSE_SLACK;
    }

    /// The same for a box, whose rows are rounded up and take one word each.
    static bool IsDenseBox(std::uint64_t length, std::uint64_t width, std::uint64_t cells) {
        return IsDense(length * (StrideFor(width) + std::uint64_t{1}), cells);
    }
    static std::uint32_t StrideFor(std::uint64_t width) {
        return static_cast<std::uint32_t>(width < 4 ? width : (width + 3) / 4 * 4);
    }

    static std::uint64_t HashOf(Key key) {
        // Both halves of the key reach every bit that counts, so that pairs on a line or a lattice spread as well.
        std::uint64_t const mixed = (key ^ key >> 29) * 0x9e3779b97f4a7c15U;
        return (mixed ^ mixed >> 32) * 0xd6e8feb86659fd93U;
    }
    std::uint32_t HomeOf(std::uint64_t hash) const { return static_cast<std::uint32_t>(hash >> 32) & (_capacity - 1); }
    static unsigned char TagOf(std::uint64_t hash) { return static_cast<unsigned char>(hash >> 57 | 0x80U); }
    void SetTag(std::uint32_t place, unsigned char tag) {
        Tags()[place] = tag;
        // A group that begins at one of the last places reads on here.
        if (place < TagGroup) {
            Tags()[_capacity + place] = tag;
        }
    }

    /// Out of line, so that the way through slots needs no registers for this one.
    void* KeyedEntryOf(Key key) const;
    /// The same of a pair. Its halves come one by one: out of an index in memory the compiler would load both at once,
    /// and a load that spans two stores just made waits until they, and all that was begun before them, are done, which
    /// is to say for the cache miss of the look-up before: 160 ns instead of 65 among a million scattered cells.
    void* PairedEntryOf(std::uint32_t position, std::uint32_t below) const;
    void* const* KeyedPlaceOf(Key key) const;
    KeyedEntry const* Find(Key key) const {
        return _form == Form::Hash ? FindInHash(key, HashOf(key)) : FindInList(key);
    }
    KeyedEntry const* FindInHash(Key key, std::uint64_t hash) const {
        constexpr std::uint64_t Ones = 0x0101010101010101U;
        std::uint64_t const wanted = Ones * TagOf(hash);
        std::uint32_t const last = _capacity - 1;
        unsigned char const* const tags = Tags();
        Prefetch(Keyed() + HomeOf(hash));
        for (std::uint32_t place = HomeOf(hash);; place = (place + TagGroup) & last) {
            std::uint64_t const group = TagsAt(tags + place);
            // A byte that equals the tag gives 0 here, and 0 alone borrows into its top bit; a byte above such a one
            // may be taken for equal, which the key then denies.
            std::uint64_t const differs = group ^ wanted;
            for (std::uint64_t equal = (differs - Ones) & ~differs & TagTops; equal != 0; equal &= equal - 1) {
                KeyedEntry const& candidate = Keyed()[(place + LowestByte(equal)) & last];
                if (candidate.key == key) {
                    return &candidate;
                }
            }
            // Tags have their top bit set.
            if ((group & TagTops) != TagTops) {
                return nullptr;
            }
        }
    }
    KeyedEntry const* FindInList(Key key) const {
        for (std::uint32_t place = 0; place < _keys; ++place) {
            if (Keyed()[place].key == key) {
                return Keyed() + place;
            }
        }
        return nullptr;
    }
    static void Prefetch([[maybe_unused]] void const* place) {
#if defined(__GNUC__)
        __builtin_prefetch(place);
#endif
    }
    /// Eight tags in one word, the first in its lowest byte.
    static std::uint64_t TagsAt(unsigned char const* tags) {
        std::uint64_t group = 0;
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(&group, tags, TagGroup);
        } else {
            for (unsigned i = 0; i < TagGroup; ++i) {
                group |= std::uint64_t{tags[i]} << 8 * i;
            }
        }
        return group;
    }
    static std::uint32_t LowestByte(std::uint64_t bits) {
        return static_cast<std::uint32_t>(std::countr_zero(bits)) / 8;
    }

    /// Whether the next key needs more room. Slots have none for keys.
    bool IsFull() const {
        return _form == Form::List   ? _keys == _capacity
               : _form == Form::Hash ? 4 * (std::uint64_t{_keys} + 1) > 3 * std::uint64_t{_capacity}
                                     : true;
    }

    Place TakeIntoBox(std::uint32_t position, std::uint32_t below) {
        Row& row = Rows()[position];
        _keys += row.length == 0 ? 1 : 0;
        row.length = below < row.length ? row.length : below + 1;
        _width = below < _width ? _width : below + 1;
        _length = position < _length ? _length : position + 1;
        return PlaceInBox(position, below);
    }

    /// The place of a cell in a box. REQUIRES: the box has room for it.
    Place PlaceInBox(std::uint32_t position, std::uint32_t below) {
        return {this, Slots() + std::size_t{position} * _stride + below, Rows() + position};
    }

    /// Calls `visit` with each entry of the spanned leaf at a position, of a list or a hash.
    template <typename Visit>
    void LookThrough(std::uint32_t position, Visit&& visit);
    bool RemoveKeysIfEmpty(std::uint32_t position);

    static Place GrowSlowly(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint64_t& changes);
    Place PlaceInHashWithRoom(std::uint32_t position, std::uint32_t below);
    static Place GrowCellSlowly(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint32_t below,
                                std::uint64_t& changes);
    static void GrowBox(OmMemoryRegion& region, void*& link, std::uint64_t length, std::uint64_t width);
    static Place AddKey(OmMemoryRegion& region, void*& link, Key key, std::uint64_t& changes);
    static void Reform(OmMemoryRegion& region, void*& link, Form form, std::uint32_t capacity, std::uint64_t& changes);
    static void KeysToBox(OmMemoryRegion& region, void*& link, std::uint64_t length, std::uint64_t width);
    static void Split(OmMemoryRegion& region, void*& link, std::uint64_t& changes);
    static void* NewLeaf(OmMemoryRegion& region, std::vector<KeyedEntry> const& cells, std::uint32_t length,
                         std::uint64_t& changes);
    KeyedEntry* PlaceFor(Key key) { return _form == Form::Hash ? PlaceInHash(HashOf(key)) : PlaceInList(key); }
    KeyedEntry* PlaceInList(Key key);
    KeyedEntry* PlaceInHash(std::uint64_t hash);
    void Append(Key key, void* entry);

    std::uint32_t _length = 0;
    std::uint32_t _width = 0;   ///< spanning its leaves: the largest length that one of them has had
    std::uint32_t _keys = 0;    ///< list, hash: places taken; box: leaves that are there
    std::uint32_t _gone = 0;    ///< hash: places whose keys are gone
    std::uint32_t _present = 0; ///< entries, of a node that spans its leaves cells, that are not null
    std::uint32_t _capacity; ///< dense: slots; list, hash: places, a power of two; box: leaves that there is room for
    std::uint32_t _stride;   ///< box: slots of a leaf
    Form _form;
    bool _spans;
    std::uint16_t _looked = 0; ///< hash: how much it was looked through, in 4096ths of its places
};

#endif
