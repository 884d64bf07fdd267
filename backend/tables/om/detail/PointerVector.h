#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_POINTERVECTOR_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_POINTERVECTOR_H

#include "backend/tables/om/OmPivotTable.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// Where nodes change their form. The tests build the store with other values too, so that small tables meet every form
// and every way from one form to another.
#ifndef OMTREE_NODE_LIST_MOST
#define OMTREE_NODE_LIST_MOST 8
#endif
#ifndef OMTREE_NODE_DENSE_FACTOR
#define OMTREE_NODE_DENSE_FACTOR 4
#endif
#ifndef OMTREE_NODE_DENSE_SLACK
#define OMTREE_NODE_DENSE_SLACK 4
#endif
#ifndef OMTREE_NODE_SCATTERS
#define OMTREE_NODE_SCATTERS 1
#endif

/// One node of a table's cell store: what a growable vector of entries means, each null or a child, in the least memory
/// and with the fewest cache misses.
///
/// A node means a logical length and entries below it, null unless put there. How it keeps them depends on what is in
/// it; head and entries are one block:
///
///     Dense    +------+----------------------------------+   one slot for each position; while a quarter of the
///              | head | slot 0 | slot 1 | slot 2 | ...   |   positions below the length are taken, or the node is
///              +------+----------------------------------+   short
///
///     List     +------+--------------+--------------+        up to 8 entries of their own, sorted by key
///              | head | key, entry   | key, entry   | ...
///              +------+--------------+--------------+
///
///     Hash     +------+--------------+--------------+        open addressing with linear probing, a power of two of
///              | head | key, entry   | (no key)     | ...    places, at most three quarters of them taken
///              +------+--------------+--------------+
///
/// A node above the leaves may stand for its leaves as well; it is called *scattered*. Its keys are pairs of
/// subscripts, (its own, that in the leaf), its entries are cells, and its form is List or Hash. A million cells at
/// random places of a large table take 28 bytes of store each that way and a look-up one cache miss, where a leaf for
/// every one or two cells takes 48 bytes and two misses. A leaf is there when some key has its subscript, and its
/// length is the largest second subscript of those keys plus one, which is right as long as cells only come: a key
/// whose cell is null counts. Before a cell is deleted the node is split into leaves, and also when a quarter of the
/// box that its keys span is taken. A node that was split stays so.
///
/// A node is known by the one place that holds its address (`link`: the slot of the node above, or the store's root),
/// because it moves when it grows. The node owns no entry.
class OMTREE_LOCAL OmPivotTable::PointerVector {
public:
    using Key = std::uint64_t;

    /// The key of an entry that is no pair.
    static Key KeyOf(std::uint32_t position) { return position; }
    /// The key of a scattered node: the subscript in this node, and that in the leaf.
    static Key KeyOf(std::uint32_t position, std::uint32_t below) { return Key{position} << 32 | below; }
    static std::uint32_t PositionOf(Key pair) { return static_cast<std::uint32_t>(pair >> 32); }
    static std::uint32_t BelowOf(Key pair) { return static_cast<std::uint32_t>(pair); }

    struct KeyedEntry {
        Key key;
        void* entry;
    };

    PointerVector(PointerVector const&) = delete;
    PointerVector& operator=(PointerVector const&) = delete;

    /// A new node without entries in `link`. `isLowestButOne` says that its children would be leaves, so that it starts
    /// scattered; `first` is the position that is grown first.
    static PointerVector* Make(OmMemoryRegion& region, void*& link, bool isLowestButOne, std::uint32_t first);

    /// Gives the node's block back; what its entries point at is left alone.
    static void Destroy(PointerVector* node);

    bool IsScattered() const { return _scattered; }

    /// Logical length: one more than the largest position ever grown to.
    std::uint32_t Length() const { return _length; }

    /// Entries that are not null; of a scattered node, cells.
    std::uint32_t Present() const { return _present; }
    bool AllNull() const { return _present == 0; }

    /// The entry, or null where there is none and past the length. O(1). REQUIRES: not scattered.
    void* Entry(std::uint32_t position) const {
        if (_form == Form::Dense) {
            return position < _length ? Slots()[position] : nullptr;
        }
        return EntryOf(KeyOf(position));
    }

    /// The cell of a scattered node, or null. O(1).
    void* Cell(std::uint32_t position, std::uint32_t below) const { return EntryOf(KeyOf(position, below)); }

    /// Place of the entry, which is grown to and made, null, when it was not there. The node may have moved: `*link` is
    /// the node. The place stays valid until the next growth or split of this node. Amortised O(1).
    /// REQUIRES: not scattered. Throws std::bad_alloc; the node is as before then. `moved` is raised when a place that
    /// was given before is no longer valid.
    static void** Grow(OmMemoryRegion& region, void*& link, std::uint32_t position, bool& moved) {
        PointerVector& node = *static_cast<PointerVector*>(link);
        if (node._form == Form::Dense && position < node._capacity) {
            node._length = position < node._length ? node._length : position + 1;
            return node.Slots() + position;
        }
        return GrowSlowly(region, link, position, moved);
    }

    /// The same for a cell of a scattered node. Null when the node was split instead: its leaves are now to be grown.
    static void** GrowCell(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint32_t below,
                           bool& moved);

    /// For who writes a place: what was null there and no longer is, or the other way round.
    void CountIn() { ++_present; }
    void CountOut() { --_present; }

    /// Makes a scattered node's leaves, and them its entries. O(cells). Throws std::bad_alloc; the node is as before
    /// then.
    static void Split(OmMemoryRegion& region, void*& link);

    // --- walking -----------------------------------------------------------------------------------------------------

    /// The entries of a dense node, `Length()` of them; null of any other.
    void* const* DenseEntries() const { return _form == Form::Dense ? Slots() : nullptr; }

    /// The keyed entries of a node that is not dense: `Places()` places, of which those whose key is `NoKey` are free.
    /// Of a list, all are taken, in the order of their keys.
    KeyedEntry const* KeyedEntries() const { return Keyed(); }
    std::uint32_t Places() const { return _form == Form::Hash ? _capacity : _keys; }
    bool IsSorted() const { return _form != Form::Hash; }

    static constexpr Key NoKey = ~Key{0};

    /// A node's keyed entries in the order of their keys. Replaces `order`, whose numbers are for `EntryIn` and hold
    /// until a place of this node moves; `scratch` is room for the work. O(entries).
    void Sort(std::vector<std::uint64_t>& order, std::vector<std::uint64_t>& scratch) const;
    KeyedEntry const& EntryIn(std::uint64_t ordered) const { return Keyed()[ordered & (_capacity - 1)]; }

private:
    enum class Form : std::uint8_t { Dense, List, Hash };

    PointerVector(Form form, bool scattered, std::uint32_t capacity)
        : _capacity(capacity), _form(form), _scattered(scattered) {}

    static std::size_t BytesFor(Form form, std::uint32_t capacity) {
        return sizeof(PointerVector) + capacity * (form == Form::Dense ? sizeof(void*) : sizeof(KeyedEntry));
    }
    static PointerVector* Allocate(OmMemoryRegion& region, Form form, bool scattered, std::uint32_t capacity);

    void** Slots() { return reinterpret_cast<void**>(this + 1); }
    void* const* Slots() const { return reinterpret_cast<void* const*>(this + 1); }
    KeyedEntry* Keyed() { return reinterpret_cast<KeyedEntry*>(this + 1); }
    KeyedEntry const* Keyed() const { return reinterpret_cast<KeyedEntry const*>(this + 1); }

    /// Whether slots for every position are worth their room.
    static bool IsDense(std::uint64_t positions, std::uint64_t taken) {
        return positions <= OMTREE_NODE_DENSE_FACTOR * taken + OMTREE_NODE_DENSE_SLACK;
    }

    std::uint32_t HomeOf(Key key) const {
        // Both halves of the product go into the upper bits, so that pairs on a line or a lattice spread as well.
        std::uint64_t const mixed = (key ^ key >> 29) * 0x9e3779b97f4a7c15U;
        return static_cast<std::uint32_t>((mixed ^ mixed >> 32) * 0xd6e8feb86659fd93U >> 32) & (_capacity - 1);
    }
    void* EntryOf(Key key) const {
        KeyedEntry const* const found = _form == Form::Hash ? FindInHash(key) : FindInList(key);
        return found != nullptr ? found->entry : nullptr;
    }
    KeyedEntry const* FindInHash(Key key) const {
        KeyedEntry const* const entries = Keyed();
        for (std::uint32_t place = HomeOf(key);; place = (place + 1) & (_capacity - 1)) {
            if (entries[place].key == key) {
                return entries + place;
            }
            if (entries[place].key == NoKey) {
                return nullptr;
            }
        }
    }
    KeyedEntry const* FindInList(Key key) const;

    /// Whether the next key needs more room. A dense node has none for keys.
    bool IsFull() const {
        switch (_form) {
        case Form::List:
            return _keys == _capacity;
        case Form::Hash:
            return 4 * (std::uint64_t{_keys} + 1) > 3 * std::uint64_t{_capacity};
        default:
            return true;
        }
    }
    KeyedEntry* Find(Key key) {
        return const_cast<KeyedEntry*>(_form == Form::Hash ? FindInHash(key) : FindInList(key));
    }

    static void** GrowSlowly(OmMemoryRegion& region, void*& link, std::uint32_t position, bool& moved);
    void MakeLeaf(OmMemoryRegion& region, void*& link, std::uint64_t const* first, std::uint64_t const* last) const;
    static void** AddKey(OmMemoryRegion& region, void*& link, Key key, bool& moved);
    static void Reform(OmMemoryRegion& region, void*& link, Form form, std::uint32_t capacity, std::uint32_t length);
    void Include(Key key);
    KeyedEntry* PlaceFor(Key key);

    std::uint32_t _length = 0;
    std::uint32_t _width = 0;   ///< scattered: length of the longest leaf
    std::uint32_t _keys = 0;    ///< list and hash: places taken
    std::uint32_t _present = 0; ///< entries that are not null
    std::uint32_t _capacity;    ///< slots or places; a power of two
    Form _form;
    bool _scattered;
};

#endif
