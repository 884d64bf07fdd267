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

// How much a hash may be looked through, in 4096ths of its places. A look at less is not worth counting.
constexpr std::uint32_t LooksAtAll = 4096;
constexpr std::uint32_t MostLooked = OMTREE_NODE_LOOKS * LooksAtAll;

static_assert(MostLooked <= UINT16_MAX);
static_assert(ListMost != 0 && (ListMost & (ListMost - 1)) == 0, "a list doubles up to its bound");
static_assert(sizeof(Node) % alignof(void*) == 0 && sizeof(Node::Row) == sizeof(void*));

/// Smallest power of two that is at least `count` and `least`, which is one.
std::uint32_t PowerAtLeast(std::uint64_t count, std::uint32_t least) {
    constexpr std::uint64_t Most = std::uint64_t{1} << 31;
    if (count > Most) {
        throw std::bad_alloc();
    }
    return std::max(least, static_cast<std::uint32_t>(std::bit_ceil(count)));
}

/// Sorts by the bits from `low` to `high` of each number, digit by digit, lowest first.
void RadixSort(std::vector<std::uint64_t>& numbers, std::vector<std::uint64_t>& scratch, unsigned low, unsigned high) {
    constexpr unsigned DigitBits = 8;
    constexpr std::uint64_t Digit = (1U << DigitBits) - 1;
    scratch.resize(numbers.size());
    for (unsigned shift = low; shift < high; shift += DigitBits) {
        std::array<std::uint32_t, Digit + 1> starts{};
        for (std::uint64_t const number : numbers) {
            ++starts[number >> shift & Digit];
        }
        std::uint32_t next = 0;
        for (std::uint32_t& start : starts) {
            next += start;
            start = next - start;
        }
        std::uint64_t* const sorted = scratch.data();
        for (std::uint64_t const number : numbers) {
            sorted[starts[number >> shift & Digit]++] = number;
        }
        numbers.swap(scratch);
    }
}

} // namespace

// --- making ----------------------------------------------------------------------------------------------------------

Node* Node::Allocate(OmMemoryRegion& region, Form form, bool spans, std::uint32_t capacity, std::uint32_t stride) {
    std::size_t const slots = form == Form::Box ? std::size_t{capacity} * stride : capacity;
    std::size_t const bytes = form == Form::Dense ? slots * sizeof(void*)
                              : form == Form::Box ? slots * sizeof(void*) + capacity * sizeof(Row)
                              : form == Form::List
                                  ? slots * sizeof(KeyedEntry)
                                  : slots * (sizeof(KeyedEntry) + 1) + TagGroup + sizeof(std::uint64_t);
    Node* const node = ::new (region.Allocate(sizeof(Node) + bytes)) Node(form, spans, capacity, stride);
    if (form == Form::Hash) {
        std::memset(node->Tags(), 0, slots + TagGroup);
    } else if (form != Form::List) {
        std::memset(static_cast<void*>(node + 1), 0, bytes);
    }
    return node;
}

void Node::Make(OmMemoryRegion& region, void*& link, bool isAboveLeaves, std::uint32_t first) {
    bool const spans = isAboveLeaves && OMTREE_NODE_PAIRS != 0;
    std::uint64_t const length = std::uint64_t{first} + 1;
    link = !spans && IsDense(length, 1) ? Allocate(region, Form::Dense, false, PowerAtLeast(length, FewestSlots))
                                        : Allocate(region, Form::List, spans, 1);
}

void Node::Destroy(Node* node) { OmMemoryRegion::Release(node); }

// --- keyed entries ---------------------------------------------------------------------------------------------------

void* Node::KeyedEntryOf(Key key) const {
    KeyedEntry const* const found = Find(key);
    return found != nullptr ? found->entry : nullptr;
}

void* Node::PairedEntryOf(std::uint32_t position, std::uint32_t below) const {
    KeyedEntry const* const found = Find(PairOf(position, below));
    return found != nullptr ? found->entry : nullptr;
}

void* const* Node::KeyedPlaceOf(Key key) const {
    KeyedEntry const* const found = Find(key);
    return found != nullptr ? &found->entry : nullptr;
}

Node* Node::OnlyChild() const {
    std::uint32_t position = 0;
    if (_form == Form::Dense) {
        while (Slots()[position] == nullptr) {
            ++position;
        }
        return static_cast<Node*>(Slots()[position]);
    }
    while (!IsTaken(position) || Keyed()[position].entry == nullptr) {
        ++position;
    }
    return static_cast<Node*>(Keyed()[position].entry);
}

/// Takes the place for a key that is not there. REQUIRES of both: there is room.
Node::KeyedEntry* Node::PlaceInHash(std::uint64_t hash) {
    std::uint32_t place = HomeOf(hash);
    std::uint64_t group = TagsAt(Tags() + place);
    while ((group & TagTops) == TagTops) {
        place = (place + TagGroup) & (_capacity - 1);
        group = TagsAt(Tags() + place);
    }
    place = (place + LowestByte(~group & TagTops)) & (_capacity - 1);
    SetTag(place, TagOf(hash));
    ++_keys;
    return Keyed() + place;
}

Node::KeyedEntry* Node::PlaceInList(Key key) {
    KeyedEntry* const entries = Keyed();
    std::uint32_t place = _keys++;
    for (; place > 0 && entries[place - 1].key > key; --place) {
        entries[place] = entries[place - 1];
    }
    return entries + place;
}

/// Puts an entry into a node that has room for it and does not have it; lengths are set otherwise.
void Node::Append(Key key, void* entry) {
    if (_form == Form::Dense) {
        Slots()[key] = entry;
    } else {
        *PlaceFor(key) = KeyedEntry{key, entry};
    }
}

/// Puts what a node without box holds into a new block, which takes the old one's place.
/// Null entries, which mean something in a node that spans its leaves alone, are left behind elsewhere.
void Node::Reform(OmMemoryRegion& region, void*& link, Form form, std::uint32_t capacity, std::uint64_t& changes) {
    Node* const old = static_cast<Node*>(link);
    Node* const node = Allocate(region, form, old->_spans, capacity);
    node->SetSerial(++changes);
    node->_length = old->_length;
    node->_width = old->_width;
    node->_present = old->_present;
    if (old->_form == Form::Dense && form == Form::Dense) {
        std::memcpy(static_cast<void*>(node + 1), static_cast<void const*>(old + 1), old->_length * sizeof(void*));
    } else if (old->_form == Form::Dense) {
        for (std::uint32_t position = 0; position < old->_length; ++position) {
            if (old->Slots()[position] != nullptr) {
                node->Append(position, old->Slots()[position]);
            }
        }
    } else {
        for (std::uint32_t place = 0; place < old->Places(); ++place) {
            if (old->IsTaken(place) && (old->_spans || old->Keyed()[place].entry != nullptr)) {
                node->Append(old->Keyed()[place].key, old->Keyed()[place].entry);
            }
        }
    }
    link = node;
    OmMemoryRegion::Release(old);
}

/// A new key in a list or a hash, which grows, or changes from the one to the other, when it is full.
Node::Place Node::AddKey(OmMemoryRegion& region, void*& link, Key key, std::uint64_t& changes) {
    Node* node = static_cast<Node*>(link);
    // In a list the later entries make room.
    changes += node->_form == Form::List ? 1 : 0;
    if (node->IsFull()) {
        bool const toList = node->_form == Form::List && node->_capacity < ListMost;
        std::uint64_t const kept = node->_spans ? node->LiveKeys() : node->_present;
        Reform(region, link, toList ? Form::List : Form::Hash,
               toList ? 2 * node->_capacity : PowerAtLeast(2 * (kept + 1), FewestPlaces), changes);
        node = static_cast<Node*>(link);
    }
    KeyedEntry* const place = node->PlaceFor(key);
    *place = KeyedEntry{key, nullptr};
    node->_length = std::max(node->_length, (node->_spans ? PositionOf(key) : BelowOf(key)) + 1);
    if (node->_spans) {
        node->_width = std::max(node->_width, BelowOf(key) + 1);
    }
    return {node, &place->entry, nullptr};
}

// --- growing ---------------------------------------------------------------------------------------------------------

Node::Place Node::GrowSlowly(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint64_t& changes) {
    Node* node = static_cast<Node*>(link);
    bool const wasDense = node->_form == Form::Dense;
    KeyedEntry const* const found = wasDense ? nullptr : node->Find(position);
    if (found != nullptr) {
        return {node, &node->Keyed()[found - node->Keyed()].entry, nullptr};
    }
    std::uint64_t const length = std::max<std::uint64_t>(node->_length, std::uint64_t{position} + 1);
    std::uint64_t const taken = wasDense ? node->_present : node->_keys;
    if (node->IsFull() && IsDense(length, taken + 1)) {
        Reform(region, link, Form::Dense, PowerAtLeast(length, FewestSlots), changes);
        node = static_cast<Node*>(link);
        node->_length = static_cast<std::uint32_t>(length);
        return {node, node->Slots() + position, nullptr};
    }
    if (wasDense) {
        bool const toList = taken < ListMost;
        Reform(region, link, toList ? Form::List : Form::Hash,
               toList ? PowerAtLeast(taken + 1, 1) : PowerAtLeast(2 * (taken + 1), FewestPlaces), changes);
    }
    return AddKey(region, link, position, changes);
}

Node::Place Node::PlaceInHashWithRoom(std::uint32_t position, std::uint32_t below) {
    Key const key = PairOf(position, below);
    std::uint64_t const hash = HashOf(key);
    KeyedEntry* entry = const_cast<KeyedEntry*>(FindInHash(key, hash));
    if (entry == nullptr) {
        entry = PlaceInHash(hash);
        *entry = KeyedEntry{key, nullptr};
        _length = std::max(_length, position + 1);
        _width = std::max(_width, below + 1);
    }
    return {this, &entry->entry, nullptr};
}

Node::Place Node::GrowCellSlowly(OmMemoryRegion& region, void*& link, std::uint32_t position, std::uint32_t below,
                                 std::uint64_t& changes) {
    Node* node = static_cast<Node*>(link);
    bool const isBox = node->_form == Form::Box;
    Key const key = PairOf(position, below);
    KeyedEntry const* const found = isBox ? nullptr : node->Find(key);
    if (found != nullptr) {
        return {node, &node->Keyed()[found - node->Keyed()].entry, nullptr};
    }
    std::uint64_t const length = std::max<std::uint64_t>(node->_length, std::uint64_t{position} + 1);
    std::uint64_t const width = std::max<std::uint64_t>(node->_width, std::uint64_t{below} + 1);
    // Subscripts are below 2^31, so the product fits.
    bool const fitsBox = IsDenseBox(length, width, std::uint64_t{isBox ? node->_present : node->LiveKeys()} + 1);
    if (isBox && !fitsBox) {
        ++changes;
        Split(region, link, changes);
        return {};
    }
    if (!isBox && !(fitsBox && node->_keys >= ListMost && node->IsFull())) {
        return AddKey(region, link, key, changes);
    }
    ++changes;
    isBox ? GrowBox(region, link, length, width) : KeysToBox(region, link, length, width);
    return static_cast<Node*>(link)->TakeIntoBox(position, below);
}

// --- boxes -----------------------------------------------------------------------------------------------------------

/// Makes room for more leaves, or longer ones. The first leaf doubles, as nobody knows its end yet; when the second one
/// comes, and is not longer, the stride is cut to what the first took.
void Node::GrowBox(OmMemoryRegion& region, void*& link, std::uint64_t length, std::uint64_t width) {
    Node* const old = static_cast<Node*>(link);
    std::uint32_t stride = old->_stride;
    if (width > stride) {
        stride = old->_length <= 1 ? PowerAtLeast(width, FewestSlots)
                                   : StrideFor(std::max<std::uint64_t>(width, stride + std::uint64_t{stride} / 4));
    } else if (old->_length <= 1) {
        stride = StrideFor(width);
    }
    std::uint32_t capacity = old->_capacity;
    if (length > capacity) {
        capacity =
            static_cast<std::uint32_t>(std::max<std::uint64_t>(length, capacity + std::uint64_t{capacity} / 2 + 2));
    }
    Node* const node = Allocate(region, Form::Box, true, capacity, stride);
    node->_length = old->_length;
    node->_width = old->_width;
    node->_keys = old->_keys;
    node->_present = old->_present;
    for (std::uint32_t position = 0; position < old->_length; ++position) {
        node->Rows()[position] = old->Rows()[position];
        std::memcpy(node->Slots() + std::size_t{position} * stride, old->RowEntries(position),
                    old->Rows()[position].length * sizeof(void*));
    }
    link = node;
    OmMemoryRegion::Release(old);
}

void Node::KeysToBox(OmMemoryRegion& region, void*& link, std::uint64_t length, std::uint64_t width) {
    Node* const old = static_cast<Node*>(link);
    Node* const node = Allocate(region, Form::Box, true, static_cast<std::uint32_t>(length), StrideFor(width));
    for (std::uint32_t place = 0; place < old->Places(); ++place) {
        if (old->IsTaken(place)) {
            KeyedEntry const& cell = old->Keyed()[place];
            Place const taken = node->TakeIntoBox(PositionOf(cell.key), BelowOf(cell.key));
            *taken.entry = cell.entry;
            if (cell.entry != nullptr) {
                CountIn(taken);
            }
        }
    }
    link = node;
    OmMemoryRegion::Release(old);
}

// --- deleting --------------------------------------------------------------------------------------------------------

void Node::SettleIfWorn(OmMemoryRegion& region, void*& link, std::uint64_t& changes) {
    Node const& node = *static_cast<Node*>(link);
    if (node._form == Form::Box || node._looked < MostLooked) {
        return;
    }
    ++changes;
    if (IsDenseBox(node._length, node._width, node.LiveKeys())) {
        KeysToBox(region, link, node._length, node._width);
    } else {
        Split(region, link, changes);
    }
}

Node::Place Node::PlaceOfCell(std::uint32_t position, std::uint32_t below) {
    if (_form == Form::Box) {
        return position < _length && below < _stride ? PlaceInBox(position, below) : Place{};
    }
    return {this, const_cast<void**>(KeyedPlaceOf(PairOf(position, below))), nullptr};
}

template <typename Visit>
void Node::LookThrough(std::uint32_t position, Visit&& visit) {
    constexpr std::uint64_t PlacesLikeOneKey = 8; // what asking for a key costs, in looks at a place
    std::uint64_t const asking = PlacesLikeOneKey * _width;
    if (_form == Form::Hash) {
        std::uint64_t const share = std::min<std::uint64_t>(asking, _capacity) * LooksAtAll / _capacity;
        _looked = static_cast<std::uint16_t>(std::min<std::uint64_t>(_looked + share, MostLooked));
    }
    if (_form == Form::Hash && asking < _capacity) {
        for (std::uint32_t below = 0; below < _width; ++below) {
            if (KeyedEntry const* const found = Find(PairOf(position, below))) {
                visit(Keyed()[found - Keyed()]);
            }
        }
        return;
    }
    for (std::uint32_t place = 0; place < Places(); ++place) {
        if (IsTaken(place) && PositionOf(Keyed()[place].key) == position) {
            visit(Keyed()[place]);
        }
    }
}

Node::Row Node::LeafAt(std::uint32_t position) {
    if (_form == Form::Box) {
        return Rows()[position];
    }
    Row leaf{};
    LookThrough(position, [&leaf](KeyedEntry const& cell) {
        leaf.length = std::max(leaf.length, BelowOf(cell.key) + 1);
        leaf.present += cell.entry != nullptr ? 1 : 0;
    });
    return leaf;
}

bool Node::RemoveLeafIfEmpty(std::uint32_t position) {
    if (_form != Form::Box) {
        return RemoveKeysIfEmpty(position);
    }
    if (position >= _length || Rows()[position].length == 0 || Rows()[position].present != 0) {
        return false;
    }
    Rows()[position].length = 0;
    --_keys;
    return true;
}

bool Node::RemoveKeysIfEmpty(std::uint32_t position) {
    std::uint32_t keys = 0;
    KeyedEntry* last = nullptr;
    bool isEmpty = true;
    LookThrough(position, [&](KeyedEntry& cell) {
        ++keys;
        last = &cell;
        isEmpty = isEmpty && cell.entry == nullptr;
    });
    if (keys == 0 || !isEmpty) {
        return false;
    }
    if (_form == Form::List) {
        auto const isOfLeaf = [position](KeyedEntry const& cell) { return PositionOf(cell.key) == position; };
        _keys = static_cast<std::uint32_t>(std::remove_if(Keyed(), Keyed() + _keys, isOfLeaf) - Keyed());
        return true;
    }
    _gone += keys;
    if (keys == 1) {
        last->key |= Gone; // most leaves of a scattered table
        return true;
    }
    LookThrough(position, [](KeyedEntry& cell) { cell.key |= Gone; });
    return true;
}

// --- splitting -------------------------------------------------------------------------------------------------------

void Node::Split(OmMemoryRegion& region, void*& link, std::uint64_t& changes) {
    Node* const old = static_cast<Node*>(link);
    std::vector<void*> leaves;
    std::vector<KeyedEntry> cells;
    void* top = nullptr;
    auto const putLeaf = [&](std::uint32_t position, std::uint32_t length) {
        leaves.push_back(nullptr);
        leaves.back() = NewLeaf(region, cells, length, changes);
        Place const place = Grow(region, top, position, changes);
        *place.entry = leaves.back();
        CountIn(place);
        cells.clear();
    };
    try {
        Make(region, top, false, old->_length != 0 ? old->_length - 1 : 0);
        if (old->_form == Form::Box) {
            for (std::uint32_t position = 0; position < old->_length; ++position) {
                std::uint32_t const length = old->Rows()[position].length;
                for (std::uint32_t below = 0; below < length; ++below) {
                    if (old->RowEntries(position)[below] != nullptr) {
                        cells.push_back({below, old->RowEntries(position)[below]});
                    }
                }
                if (length != 0) {
                    putLeaf(position, length);
                }
            }
        } else {
            std::vector<std::uint64_t> order;
            std::vector<std::uint64_t> scratch;
            old->Sort(order, scratch);
            for (std::size_t i = 0; i < order.size(); ++i) {
                KeyedEntry const& cell = old->KeyedIn(order[i]);
                cells.push_back({BelowOf(cell.key), cell.entry});
                bool const isLast =
                    i + 1 == order.size() || PositionOf(old->KeyedIn(order[i + 1]).key) != PositionOf(cell.key);
                if (isLast) {
                    putLeaf(PositionOf(cell.key), BelowOf(cell.key) + 1);
                }
            }
        }
        if (static_cast<Node*>(top)->_length < old->_length) {
            // The last positions have lost their leaves.
            Grow(region, top, old->_length - 1, changes);
        }
    } catch (...) {
        std::for_each(leaves.begin(), leaves.end(), OmMemoryRegion::Release);
        OmMemoryRegion::Release(top);
        throw;
    }
    link = top;
    OmMemoryRegion::Release(old);
}

/// A leaf with these cells, ascending, and this length, in the form that suits them.
void* Node::NewLeaf(OmMemoryRegion& region, std::vector<KeyedEntry> const& cells, std::uint32_t length,
                    std::uint64_t& changes) {
    Form const form = IsDense(length, cells.size()) ? Form::Dense : cells.size() <= ListMost ? Form::List : Form::Hash;
    Node* const leaf = Allocate(region, form, false,
                                form == Form::Dense  ? PowerAtLeast(length, FewestSlots)
                                : form == Form::List ? PowerAtLeast(cells.size(), 1)
                                                     : PowerAtLeast(2 * cells.size(), FewestPlaces));
    leaf->SetSerial(++changes);
    for (KeyedEntry const& cell : cells) {
        leaf->Append(cell.key, cell.entry);
        leaf->_present += cell.entry != nullptr ? 1 : 0;
    }
    leaf->_length = length;
    return leaf;
}

// --- order -----------------------------------------------------------------------------------------------------------

void Node::Sort(std::vector<std::uint64_t>& order, std::vector<std::uint64_t>& scratch) const {
    constexpr std::size_t FewestForRadix = 48; // below, the digits' counters cost more than comparisons
    // Whoever wants an order walks along it. What fits the second-level cache comes from memory while this sorts: a
    // walk over a million scattered cells takes a seventh less time.
    constexpr std::uint32_t MostFetched = 4096;
    bool const fetch = _keys <= MostFetched;
    KeyedEntry const* const entries = Keyed();
    std::uint64_t const width = std::max<std::uint32_t>(_width, 1);
    unsigned const placeBits = static_cast<unsigned>(std::bit_width(_capacity - 1));
    // A key as a number below length * width, in front of its place: one word for each entry.
    unsigned const keyBits = static_cast<unsigned>(std::bit_width(_length * width));
    bool const fits = keyBits + placeBits <= 64;
    order.resize(LiveKeys());
    std::uint64_t* next = order.data();
    auto const add = [&](std::uint32_t place) {
        Key const key = entries[place].key;
        if (IsGone(key)) {
            return;
        }
        std::uint64_t const rank = _spans ? PositionOf(key) * width + BelowOf(key) : key;
        *next++ = (fits ? rank << placeBits : 0) | place;
        if (fetch) {
            Prefetch(entries[place].entry);
        }
    };
    if (_form == Form::List) {
        for (std::uint32_t place = 0; place < _keys; ++place) {
            add(place);
        }
        return;
    }
    for (std::uint32_t first = 0; first < _capacity; first += TagGroup) {
        for (std::uint64_t taken = TagsAt(Tags() + first) & TagTops; taken != 0; taken &= taken - 1) {
            add(first + LowestByte(taken));
        }
    }
    if (fits && order.size() < FewestForRadix) {
        std::sort(order.begin(), order.end());
    } else if (fits) {
        RadixSort(order, scratch, placeBits, placeBits + keyBits);
    } else {
        std::sort(order.begin(), order.end(),
                  [this](std::uint64_t a, std::uint64_t b) { return KeyedIn(a).key < KeyedIn(b).key; });
    }
}
