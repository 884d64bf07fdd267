#include "backend/tables/om/detail/CellCursor.h"

#include <algorithm>

using Cursor = OmPivotTable::Iterator::Data;

namespace {

/// How many texts ahead of the current one are fetched into the cache. The texts lie where their stores put them, which
/// costs a walk a miss each where that was not in order.
constexpr std::size_t Ahead = 16;

void Prefetch([[maybe_unused]] void const* text) {
#if defined(__GNUC__)
    __builtin_prefetch(text);
#endif
}

} // namespace

void Cursor::Start() {
    changes = store->Changes();
    cell = nullptr;
    inScattered = false;
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
        node = node->IsScattered() ? nullptr : static_cast<PointerVector const*>(node->Entry(0));
    }
    return node;
}

void Cursor::Enter(Level& level, void const* node) {
    level.node = static_cast<PointerVector const*>(node);
    level.at = 0;
    level.order.clear();
    if (!level.node->IsSorted()) {
        level.node->Sort(level.order, _scratch);
    }
    if (&level != levels.data() && !level.node->IsScattered()) {
        return;
    }
    void* const* const entries = level.node->DenseEntries();
    for (std::size_t i = 0; i < Ahead && entries != nullptr && i < level.node->Length(); ++i) {
        Prefetch(entries[i]);
    }
    for (std::size_t i = 0; i < Ahead && i < level.order.size(); ++i) {
        Prefetch(level.node->EntryIn(level.order[i]).entry);
    }
}

void* Cursor::DenseEntryAtOrAfter(Level& level, void* const* entries, std::uint64_t from) {
    std::size_t const length = level.node->Length();
    for (std::size_t position = static_cast<std::size_t>(from); position < length; ++position) {
        if (entries[position] != nullptr) {
            Prefetch(entries[std::min(position + Ahead, length - 1)]);
            level.position = position;
            return entries[position];
        }
    }
    return nullptr;
}

void Cursor::TakeKey(std::size_t number, std::uint64_t key) {
    inScattered = levels[number].node->IsScattered();
    levels[number].position = inScattered ? PointerVector::PositionOf(key) : key;
    if (inScattered) {
        levels[0].position = PointerVector::BelowOf(key);
    }
}

/// The first entry of a level at or after a key, null when there is none. The level stands on it afterwards.
void* Cursor::EntryAtOrAfter(std::size_t number, std::uint64_t from) {
    Level& level = levels[number];
    PointerVector const& node = *level.node;
    if (void* const* const entries = node.DenseEntries()) {
        inScattered = false;
        return DenseEntryAtOrAfter(level, entries, from);
    }
    if (node.IsSorted()) {
        for (std::uint32_t place = 0; place < node.Places(); ++place) {
            PointerVector::KeyedEntry const& found = node.KeyedEntries()[place];
            if (found.key >= from && found.entry != nullptr) {
                TakeKey(number, found.key);
                return found.entry;
            }
        }
        return nullptr;
    }
    for (; level.at < level.order.size(); ++level.at) {
        PointerVector::KeyedEntry const& found = node.EntryIn(level.order[level.at]);
        if (found.key >= from && found.entry != nullptr) {
            std::size_t const ahead = std::min(level.at + Ahead, level.order.size() - 1);
            Prefetch(node.EntryIn(level.order[ahead]).entry);
            TakeKey(number, found.key);
            return found.entry;
        }
    }
    return nullptr;
}

void Cursor::Seek(std::size_t level, std::uint64_t from) {
    cell = nullptr;
    while (level < levels.size()) {
        void* const entry = EntryAtOrAfter(level, from);
        if (entry == nullptr) {
            ++level;
            from = level < levels.size() ? levels[level].position + 1 : 0;
            continue;
        }
        if (level == 0 || inScattered) {
            cell = static_cast<OmCellText*>(entry);
            return;
        }
        --level;
        Enter(levels[level], entry);
        from = 0;
    }
}

void Cursor::Next() {
    if (changes != store->Changes()) {
        FindAgain();
    } else if (inScattered) {
        Seek(1, PointerVector::KeyOf(static_cast<std::uint32_t>(levels[1].position),
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
        inScattered = here.node->IsScattered();
        if (level == 0 || inScattered) {
            Next();
            return;
        }
        node = here.node->Entry(static_cast<std::uint32_t>(here.position));
        if (node == nullptr) {
            Seek(level, here.position + 1);
            return;
        }
    }
}

OmPivotTable::Iterator::Iterator() : _data(nullptr) {}

OmPivotTable::Iterator::Iterator(Data* data) : _data(data) {}

OmPivotTable::Iterator::Iterator(Iterator const& other)
    : _data(other._data != nullptr ? new Data(*other._data) : nullptr) {}

OmPivotTable::Iterator& OmPivotTable::Iterator::operator=(Iterator const& other) {
    if (this != &other) {
        Data* const copy = other._data != nullptr ? new Data(*other._data) : nullptr;
        delete _data;
        _data = copy;
    }
    return *this;
}

OmPivotTable::Iterator::~Iterator() { delete _data; }

OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
    if (_data != nullptr && _data->cell != nullptr) {
        _data->Next();
    }
    return *this;
}

OmCellText* OmPivotTable::Iterator::Cell() const { return _data != nullptr ? _data->cell : nullptr; }

std::vector<int> OmPivotTable::Iterator::Index() const {
    std::vector<int> index;
    if (_data != nullptr) {
        index.reserve(_data->levels.size());
        for (Data::Level const& level : _data->levels) {
            index.push_back(static_cast<int>(level.position));
        }
    }
    return index;
}

OmPivotTable::ConstIterator::ConstIterator() = default;

OmPivotTable::ConstIterator::ConstIterator(Iterator const& other) : _iterator(other) {}

OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator++() {
    ++_iterator;
    return *this;
}

OmCellText const* OmPivotTable::ConstIterator::Cell() const { return _iterator.Cell(); }

std::vector<int> OmPivotTable::ConstIterator::Index() const { return _iterator.Index(); }
