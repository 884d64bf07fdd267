#include "backend/tables/om/detail/PointerVector.h"

#include "omcell/OmMemoryRegion.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

using Node = OmPivotTable::PointerVector;

namespace {

constexpr std::uint32_t FewestSlots = 4;
constexpr std::uint32_t FewestPlaces = 16;
constexpr std::uint32_t ListMost = OMTREE_NODE_LIST_MOST;
static_assert(ListMost != 0 && (ListMost & (ListMost - 1)) == 0, "capacities are powers of two");
static_assert(sizeof(Node) % alignof(void*) == 0 && alignof(Node::KeyedEntry) == alignof(void*));

/// Smallest power of two that is at least `count`.
std::uint32_t PowerAtLeast(std::uint64_t count, std::uint32_t least) {
    std::uint32_t power = least;
    while (power < count) {
        power *= 2;
    }
    return power;
}

unsigned BitsOf(std::uint64_t value) {
    unsigned bits = 0;
    for (; value != 0; value >>= 1) {
        ++bits;
    }
    return bits;
}

/// Sorts by the bits from `low` to `high` of each number, digit by digit, lowest first.
void RadixSort(std::vector<std::uint64_t>& numbers, std::vector<std::uint64_t>& scratch, unsigned low, unsigned high) {
    constexpr unsigned DigitBits = 8;
    scratch.resize(numbers.size());
    for (unsigned shift = low; shift < high; shift += DigitBits) {
        std::array<std::uint32_t, 1U << DigitBits> starts{};
        for (std::uint64_t const number : numbers) {
            ++starts[number >> shift & (starts.size() - 1)];
        }
        std::uint32_t next = 0;
        for (std::uint32_t& start : starts) {
            next += start;
            start = next - start;
        }
        for (std::uint64_t const number : numbers) {
            scratch[starts[number >> shift & (starts.size() - 1)]++] = number;
        }
        numbers.swap(scratch);
    }
}

} // namespace

// --- making ----------------------------------------------------------------------------------------------------------

Node* Node::Allocate(OmMemoryRegion& region, Form form, bool scattered, std::uint32_t capacity) {
    Node* const node = ::new (region.Allocate(BytesFor(form, capacity))) Node(form, scattered, capacity);
    if (form == Form::Dense) {
        std::fill_n(node->Slots(), capacity, nullptr);
    } else {
        std::fill_n(node->Keyed(), capacity, KeyedEntry{NoKey, nullptr});
    }
    return node;
}

Node* Node::Make(OmMemoryRegion& region, void*& link, bool isLowestButOne, std::uint32_t first) {
    bool const scattered = isLowestButOne && OMTREE_NODE_SCATTERS != 0;
    bool const dense = !scattered && IsDense(std::uint64_t{first} + 1, 1);
    Node* const node = dense ? Allocate(region, Form::Dense, false, PowerAtLeast(std::uint64_t{first} + 1, FewestSlots))
                             : Allocate(region, Form::List, scattered, 1);
    link = node;
    return node;
}

void Node::Destroy(Node* node) { OmMemoryRegion::Release(node); }

// --- keyed entries ---------------------------------------------------------------------------------------------------

Node::KeyedEntry const* Node::FindInList(Key key) const {
    KeyedEntry const* const entries = Keyed();
    for (std::uint32_t place = 0; place < _keys; ++place) {
        if (entries[place].key == key) {
            return entries + place;
        }
    }
    return nullptr;
}

/// Grows the lengths to take in a key.
void Node::Include(Key key) {
    std::uint32_t const position = _scattered ? PositionOf(key) : BelowOf(key);
    _length = std::max(_length, position + 1);
    if (_scattered) {
        _width = std::max(_width, BelowOf(key) + 1);
    }
}

/// The place for a key that is not there. REQUIRES: there is room.
Node::KeyedEntry* Node::PlaceFor(Key key) {
    KeyedEntry* const entries = Keyed();
    if (_form == Form::Hash) {
        std::uint32_t place = HomeOf(key);
        while (entries[place].key != NoKey) {
            place = (place + 1) & (_capacity - 1);
        }
        return entries + place;
    }
    std::uint32_t place = _keys;
    for (; place > 0 && entries[place - 1].key > key; --place) {
        entries[place] = entries[place - 1];
    }
    return entries + place;
}

/// Puts what the node holds into a new block, which takes the old one's place.
void Node::Reform(OmMemoryRegion& region, void*& link, Form form, std::uint32_t capacity, std::uint32_t length) {
    Node* const old = static_cast<Node*>(link);
    Node* const node = Allocate(region, form, old->_scattered, capacity);
    node->_length = std::max(old->_length, length);
    node->_width = old->_width;
    node->_present = old->_present;
    auto const take = [node](Key key, void* entry) {
        if (node->_form == Form::Dense) {
            node->Slots()[key] = entry;
        } else {
            *node->PlaceFor(key) = KeyedEntry{key, entry};
            ++node->_keys;
        }
    };
    if (old->_form == Form::Dense && form == Form::Dense) {
        std::memcpy(node->Slots(), old->Slots(), old->_length * sizeof(void*));
    } else if (old->_form == Form::Dense) {
        for (std::uint32_t position = 0; position < old->_length; ++position) {
            if (old->Slots()[position] != nullptr) {
                take(KeyOf(position), old->Slots()[position]);
            }
        }
    } else {
        for (std::uint32_t place = 0; place < old->Places(); ++place) {
            if (old->Keyed()[place].key != NoKey) {
                take(old->Keyed()[place].key, old->Keyed()[place].entry);
            }
        }
    }
    link = node;
    OmMemoryRegion::Release(old);
}

/// A new key in a list or a hash, which grows, or changes from the one to the other, when it is full.
void** Node::AddKey(OmMemoryRegion& region, void*& link, Key key, bool& moved) {
    Node* node = static_cast<Node*>(link);
    // In a list the later entries make room.
    moved = moved || node->IsFull() || node->_form == Form::List;
    if (node->IsFull()) {
        bool const toList = node->_form == Form::List && node->_capacity < ListMost;
        Reform(region, link, toList ? Form::List : Form::Hash,
               toList ? 2 * node->_capacity : PowerAtLeast(2 * std::uint64_t{node->_keys}, FewestPlaces), 0);
        node = static_cast<Node*>(link);
    }
    KeyedEntry* const place = node->PlaceFor(key);
    *place = KeyedEntry{key, nullptr};
    ++node->_keys;
    node->Include(key);
    return &place->entry;
}

// --- growing ---------------------------------------------------------------------------------------------------------

void** Node::GrowSlowly(OmMemoryRegion& region, void*& link, std::uint32_t position, bool& moved) {
    Node& node = *static_cast<Node*>(link);
    bool const wasDense = node._form == Form::Dense;
    KeyedEntry* const found = wasDense ? nullptr : node.Find(KeyOf(position));
    if (found != nullptr) {
        return &found->entry;
    }
    std::uint64_t const length = std::max<std::uint64_t>(node._length, std::uint64_t{position} + 1);
    std::uint32_t const taken = wasDense ? node._present : node._keys;
    if (node.IsFull() && IsDense(length, std::uint64_t{taken} + 1)) {
        moved = true;
        Reform(region, link, Form::Dense, PowerAtLeast(length, FewestSlots), static_cast<std::uint32_t>(length));
        return static_cast<Node*>(link)->Slots() + position;
    }
    if (wasDense) {
        moved = true;
        bool const toList = taken < ListMost;
        Reform(region, link, toList ? Form::List : Form::Hash,
               toList ? PowerAtLeast(std::uint64_t{taken} + 1, 1)
                      : PowerAtLeast(2 * (std::uint64_t{taken} + 1), FewestPlaces),
               0);
    }
    return AddKey(region, link, KeyOf(position), moved);
}

void** Node::GrowCell(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint32_t below, bool& moved) {
    Node& node = *static_cast<Node*>(link);
    Key const key = KeyOf(position, below);
    KeyedEntry* const found = node.Find(key);
    if (found != nullptr) {
        return &found->entry;
    }
    if (node._keys >= ListMost && node.IsFull()) {
        std::uint64_t const length = std::max<std::uint64_t>(node._length, std::uint64_t{position} + 1);
        std::uint64_t const width = std::max<std::uint64_t>(node._width, std::uint64_t{below} + 1);
        // Subscripts are below 2^31, so the product fits.
        if (IsDense(length * width, std::uint64_t{node._keys} + 1)) {
            moved = true;
            Split(region, link);
            return nullptr;
        }
    }
    return AddKey(region, link, key, moved);
}

void Node::Split(OmMemoryRegion& region, void*& link) {
    Node* const old = static_cast<Node*>(link);
    std::vector<std::uint64_t> order;
    std::vector<std::uint64_t> scratch;
    old->Sort(order, scratch);
    std::vector<void*> leaves;
    bool moved = false;
    void* top = nullptr;
    try {
        Make(region, top, false, old->_length != 0 ? old->_length - 1 : 0);
        std::size_t first = 0;
        while (first < order.size()) {
            std::uint32_t const position = PositionOf(old->EntryIn(order[first]).key);
            std::size_t last = first + 1;
            while (last < order.size() && PositionOf(old->EntryIn(order[last]).key) == position) {
                ++last;
            }
            leaves.push_back(nullptr);
            old->MakeLeaf(region, leaves.back(), order.data() + first, order.data() + last);
            *Grow(region, top, position, moved) = leaves.back();
            static_cast<Node*>(top)->CountIn();
            first = last;
        }
    } catch (...) {
        std::for_each(leaves.begin(), leaves.end(), OmMemoryRegion::Release);
        OmMemoryRegion::Release(top);
        throw;
    }
    link = top;
    OmMemoryRegion::Release(old);
}

/// The leaf for a scattered node's keys of one position. Its last key tells the form that it will have.
void Node::MakeLeaf(OmMemoryRegion& region, void*& link, std::uint64_t const* first, std::uint64_t const* last) const {
    std::uint64_t const length = std::uint64_t{BelowOf(EntryIn(last[-1]).key)} + 1;
    std::uint64_t const cells = static_cast<std::uint64_t>(last - first);
    bool const dense = IsDense(length, cells);
    bool const list = cells <= ListMost;
    Node* const leaf = Allocate(region,
                                dense  ? Form::Dense
                                : list ? Form::List
                                       : Form::Hash,
                                false,
                                dense  ? PowerAtLeast(length, FewestSlots)
                                : list ? PowerAtLeast(cells, 1)
                                       : PowerAtLeast(2 * cells, FewestPlaces));
    link = leaf;
    bool moved = false;
    for (; first != last; ++first) {
        KeyedEntry const& cell = EntryIn(*first);
        *Grow(region, link, BelowOf(cell.key), moved) = cell.entry;
        leaf->_present += cell.entry != nullptr ? 1 : 0;
    }
}

// --- order -----------------------------------------------------------------------------------------------------------

void Node::Sort(std::vector<std::uint64_t>& order, std::vector<std::uint64_t>& scratch) const {
    constexpr std::size_t FewestForRadix = 48; // below, the digits' counters cost more than comparisons
    order.clear();
    KeyedEntry const* const entries = Keyed();
    std::uint64_t const width = std::max<std::uint32_t>(_width, 1);
    unsigned const placeBits = BitsOf(_capacity - 1);
    // A key as a number below length * width, in front of its place: one word for each entry.
    unsigned const keyBits = BitsOf(_length * width);
    bool const fits = keyBits + placeBits <= 64;
    for (std::uint32_t place = 0; place < Places(); ++place) {
        Key const key = entries[place].key;
        if (key != NoKey) {
            std::uint64_t const rank = _scattered ? PositionOf(key) * width + BelowOf(key) : key;
            order.push_back((fits ? rank << placeBits : 0) | place);
        }
    }
    if (IsSorted()) {
        return;
    }
    if (fits && order.size() < FewestForRadix) {
        std::sort(order.begin(), order.end());
    } else if (fits) {
        RadixSort(order, scratch, placeBits, placeBits + keyBits);
    } else {
        std::sort(order.begin(), order.end(),
                  [this](std::uint64_t a, std::uint64_t b) { return EntryIn(a).key < EntryIn(b).key; });
    }
}
