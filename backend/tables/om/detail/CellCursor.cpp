#include "backend/tables/om/detail/CellCursor.h"

#include <algorithm>
#include <functional>
#include <utility>

using Cursor = OmPivotTable::Iterator::Data;

void Cursor::Start() {
    changes = store->Changes();
    PointerVector const* const top = Top();
    if (top != nullptr) {
        Enter(levels.back(), top);
        Seek(levels.size() - 1, 0);
    }
}

/// The node of the uppermost level. Levels that the store got later have everything at subscript 0.
OmPivotTable::PointerVector const* Cursor::Top() const {
    PointerVector const* node = store->Root();
    for (std::size_t k = store->Levels(); k > levels.size() && node != nullptr; --k) {
        node = node->SpansLeaves() ? nullptr : static_cast<PointerVector const*>(node->Entry(0));
    }
    return node;
}

void Cursor::Enter(Level& level, void const* node) {
    level.node = static_cast<PointerVector const*>(node);
    level.passed = 0;
    // Serials are given once, so a hash with the same one is the same hash, in the same place or not, and every key
    // that the order has stands where it stood. Keys that came meanwhile were not there all the time.
    if (level.node->HasOrder() || level.serial == level.node->Serial()) {
        return;
    }
    level.node->Sort(level.order, _scratch);
    level.serial = level.node->Serial();
}

/// The rest of `Next`: in a run, past empty slots; in a list; elsewhere.
void Cursor::NextInList() {
    if (cell == nullptr) {
        return;
    }
    if (changes == store->Changes()) {
        while (next != end) {
            FetchAhead();
            if (void* const entry = *next++) {
                cell = static_cast<OmCellText*>(entry);
                return;
            }
        }
        std::uint64_t const* const order = levels[inSpanning ? 1 : 0].order.data();
        while (length != 0 && ++at < length) {
            PointerVector::KeyedEntry const& found = keyed[order[at] & lastPlace];
            if (found.entry != nullptr) {
                if (length - at > std::size_t{Ahead}) {
                    Prefetch(keyed[order[at + std::size_t{Ahead}] & lastPlace].entry);
                }
                key = found.key;
                cell = static_cast<OmCellText*>(found.entry);
                return;
            }
        }
    }
    NextElsewhere();
}

/// Leaves the run or list; the levels hold the subscripts then. Looks at no node: it may be gone.
void Cursor::Leave() {
    std::uint64_t const position = PositionOn(0);
    if (length != 0) {
        Level& level = levels[inSpanning ? 1 : 0];
        level.passed = at;
        level.position = PositionOn(inSpanning ? 1 : 0);
    }
    levels[0].position = position;
    fetched = readable - next > Ahead ? next + Ahead : readable;
    begin = end = next = readable = nullptr;
    length = 0;
}

std::uint64_t Cursor::PositionOn(std::size_t level) const {
    if (begin != nullptr && level == 0) {
        return static_cast<std::uint64_t>(next - begin) - 1;
    }
    if (length == 0 || level > 1 || (level == 1 && !inSpanning)) {
        return levels[level].position;
    }
    return level == 1 ? PointerVector::PositionOf(key) : PointerVector::BelowOf(key);
}

/// The first cell of a run at or after a position, or null.
void* Cursor::StartRun(void* const* entries, std::size_t count, std::size_t canBeRead, std::size_t from) {
    for (std::size_t first = from; first < count; ++first) {
        if (entries[first] != nullptr) {
            begin = entries;
            next = entries + first + 1;
            end = entries + count;
            readable = entries + canBeRead;
            void* const* const stop = entries + std::min(first + std::size_t{Ahead}, canBeRead);
            auto const isBefore = std::less<>();
            void* const* slot = isBefore(fetched, next) || isBefore(stop, fetched) ? next : fetched;
            for (; slot != stop; ++slot) {
                Prefetch(*slot);
            }
            return entries[first];
        }
    }
    return nullptr;
}

/// Goes on in a hash, at the entry that the level stands on.
void* Cursor::StartList(Level const& level) {
    keyed = &level.node->KeyedAt(0);
    lastPlace = level.node->LastPlace();
    at = level.passed;
    length = level.order.size();
    for (std::size_t i = at; i < std::min(at + std::size_t{Ahead}, length); ++i) {
        Prefetch(KeyedInList(i).entry);
    }
    key = KeyedInList(at).key;
    return KeyedInList(at).entry;
}

void* Cursor::BoxCellAtOrAfter(std::uint64_t from) {
    Level& level = levels[1];
    PointerVector const& box = *level.node;
    std::uint32_t below = PointerVector::BelowOf(from);
    for (std::uint32_t position = PointerVector::PositionOf(from); position < box.Length(); ++position) {
        void* const* const entries = box.RowEntries(position);
        std::size_t const canBeRead = static_cast<std::size_t>(box.BoxEnd() - entries);
        if (void* const entry = StartRun(entries, box.RowAt(position).length, canBeRead, below)) {
            level.position = position;
            return entry;
        }
        below = 0;
    }
    return nullptr;
}

void* Cursor::KeyedAtOrAfter(std::size_t number, std::uint64_t from) {
    Level& level = levels[number];
    PointerVector const& node = *level.node;
    bool const isHash = !node.HasOrder();
    std::size_t const count = isHash ? level.order.size() : node.Places();
    if (isHash && level.passed == 0) {
        auto const isBefore = [&node](std::uint64_t ordered, std::uint64_t wanted) {
            return node.KeyedIn(ordered).key < wanted;
        };
        level.passed = static_cast<std::size_t>(
            std::lower_bound(level.order.begin(), level.order.end(), from, isBefore) - level.order.begin());
    }
    // A list has few entries; it is searched from its beginning.
    for (std::size_t i = isHash ? level.passed : 0; i < count; ++i) {
        PointerVector::KeyedEntry const& found =
            isHash ? node.KeyedIn(level.order[i]) : node.KeyedAt(static_cast<std::uint32_t>(i));
        if (found.key >= from && found.entry != nullptr) {
            level.passed = i;
            if (isHash && (number == 0 || inSpanning)) {
                return StartList(level);
            }
            level.position = inSpanning ? PointerVector::PositionOf(found.key) : found.key;
            if (inSpanning) {
                levels[0].position = PointerVector::BelowOf(found.key);
            }
            return found.entry;
        }
    }
    return nullptr;
}

/// The first entry of a level at or after a key, null when there is none. The level stands on it afterwards.
void* Cursor::EntryAtOrAfter(std::size_t number, std::uint64_t from) {
    Level& level = levels[number];
    inSpanning = level.node->SpansLeaves();
    if (level.node->IsBox()) {
        return BoxCellAtOrAfter(from);
    }
    void* const* const entries = level.node->DenseEntries();
    if (entries == nullptr) {
        return KeyedAtOrAfter(number, from);
    }
    std::size_t const count = level.node->Length();
    if (number == 0) {
        return StartRun(entries, count, count, static_cast<std::size_t>(from));
    }
    for (std::size_t position = static_cast<std::size_t>(from); position < count; ++position) {
        if (entries[position] != nullptr) {
            level.position = position;
            return entries[position];
        }
    }
    return nullptr;
}

/// Goes to the first entry of `level` at or after the key `from`, and down to the first cell below it. Entries without
/// a cell below are passed over, and so are whole levels; the levels above advance then.
void Cursor::Seek(std::size_t level, std::uint64_t from) {
    cell = nullptr;
    while (level < levels.size()) {
        void* const entry = EntryAtOrAfter(level, from);
        if (entry == nullptr) {
            ++level;
            from = level < levels.size() ? levels[level].position + 1 : 0;
        } else if (level == 0 || inSpanning) {
            cell = static_cast<OmCellText*>(entry);
            return;
        } else {
            --level;
            Enter(levels[level], entry);
            from = 0;
        }
    }
}

/// When the run or list is over, or there is none, or the store has changed.
void Cursor::NextElsewhere() {
    Leave();
    if (changes != store->Changes()) {
        FindAgain();
    } else if (inSpanning) {
        Seek(1, PointerVector::PairOf(static_cast<std::uint32_t>(levels[1].position),
                                      static_cast<std::uint32_t>(levels[0].position)) +
                    1);
    } else {
        Seek(0, levels[0].position + 1);
    }
}

/// To the first cell behind the current subscripts, by way of the nodes as they are now.
void Cursor::FindAgain() {
    changes = store->Changes();
    cell = nullptr;
    void const* node = Top();
    if (node == nullptr) {
        return;
    }
    for (std::size_t level = levels.size() - 1;; --level) {
        Level& here = levels[level];
        Enter(here, node);
        inSpanning = here.node->SpansLeaves();
        if (level == 0 || inSpanning) {
            NextElsewhere();
            return;
        }
        node = here.node->Entry(static_cast<std::uint32_t>(here.position));
        if (node == nullptr) {
            Seek(level, here.position);
            return;
        }
    }
}

OmPivotTable::Iterator::Iterator() : _data(nullptr) {}

OmPivotTable::Iterator::Iterator(Data* data) : _data(data) {}

OmPivotTable::Iterator::Data& OmPivotTable::Iterator::Record() const { return static_cast<Data&>(*_data); }

OmPivotTable::Iterator::Iterator(Iterator const& other)
    : _data(other._data != nullptr ? new Data(other.Record()) : nullptr) {}

OmPivotTable::Iterator::Iterator(Iterator&& other) noexcept : _data(std::exchange(other._data, nullptr)) {}

OmPivotTable::Iterator& OmPivotTable::Iterator::operator=(Iterator&& other) noexcept {
    Iterator taken(std::move(other)); // which may be this one
    std::swap(_data, taken._data);
    return *this;
}

OmPivotTable::Iterator& OmPivotTable::Iterator::operator=(Iterator const& other) {
    if (this != &other) {
        Data* const copy = other._data != nullptr ? new Data(other.Record()) : nullptr;
        delete static_cast<Data*>(_data);
        _data = copy;
    }
    return *this;
}

OmPivotTable::Iterator::~Iterator() { delete static_cast<Data*>(_data); }

OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
    if (_data != nullptr) {
        Record().Next();
    }
    return *this;
}

std::vector<int> OmPivotTable::Iterator::Index() const {
    std::vector<int> index;
    if (_data != nullptr) {
        Data const& record = Record();
        index.reserve(record.levels.size());
        for (std::size_t k = 0; k < record.levels.size(); ++k) {
            index.push_back(static_cast<int>(record.PositionOn(k)));
        }
    }
    return index;
}

OmPivotTable::ConstIterator::ConstIterator() = default;

OmPivotTable::ConstIterator::ConstIterator(Iterator const& other) : _iterator(other) {}

OmPivotTable::ConstIterator::ConstIterator(Iterator&& other) noexcept : _iterator(std::move(other)) {}

OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator++() {
    ++_iterator;
    return *this;
}

std::vector<int> OmPivotTable::ConstIterator::Index() const { return _iterator.Index(); }
