#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CHILDINDEX_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CHILDINDEX_H

#include "backend/tables/om/OmVector.h"
#include "backend/tables/om/detail/LabelHash.h"
#include "omcell/OmMemoryRegion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace om_detail {

/// The child index of one node: positions of its children sorted by label, and beside them, while that pays and is
/// safe, a hash over the labels.
///
///     +------+------+------+----------+---------+---------+-----
///     | hash | size | room | searches | entry 0 | entry 1 | ...
///     +------+------+------+----------+---------+---------+-----
///      8      8      8      8          4         4
///
///     without a hash      entries                  2 0 3 1          whatever the operations made of them
///     with a hash         entries                  (anything)       only their number counts
///                         hash                     label -> position
///
/// While there is a hash, the entries are what sorting the labels in it gives, and nobody has asked for them yet.
/// `Settle` makes them and drops the hash. It is what every change that does not come through `Add` starts with: what
/// the entries would be, had they been kept sorted all along, depends on the labels as they are before the change. The
/// hash knows these by itself, so settling looks at no node.
///
/// A hash answers as a bisection of the entries does, as long as
///  1. the entries are the positions of all children, sorted strictly ascending by label (checked by whoever makes it),
///  2. no label, group flag or child changes behind its back. Labels and flags: the hash watches the region, which is
///     told before an edit. Children: the tree tells the node when they are rearranged, and whoever asks compares their
///     number.
///
/// A node refers to its index by a pointer, null while there are no entries; operations that add an entry take the
/// pointer, since the block moves when it is full. Blocks come from the node's region. An index takes 32 bytes and 4
/// for each child; a hash 104 more and what LabelHash says for each label.
class ChildIndex {
public:
    /// Fewest children for which there is a hash. With fewer, a bisection of three steps is as quick.
    static constexpr std::size_t FewestHashed = 8;

    struct Entries {
        int const* first;
        int const* last;
        int const* begin() const { return first; }
        int const* end() const { return last; }
        std::size_t size() const { return static_cast<std::size_t>(last - first); }
    };

    /// Destroys the index. Null is ignored.
    static void Destroy(ChildIndex* index) {
        if (index != nullptr) {
            index->DropHash();
            OmMemoryRegion::Release(index);
        }
    }

    /// Null without a hash.
    static LabelHash const* HashOf(ChildIndex const* index) { return index != nullptr ? index->_hash : nullptr; }

    static std::size_t SizeOf(ChildIndex const* index) { return index != nullptr ? index->_size : 0; }

    /// The entries as settling would make them. The index itself stays as it is, so any number of readers may ask at
    /// once; while there is a hash the sorted entries go to `scratch`, O(size log size). Throws std::bad_alloc.
    static Entries EntriesOf(ChildIndex const* index, OmVector<int>& scratch) {
        if (index == nullptr) {
            return {nullptr, nullptr};
        }
        if (index->_hash == nullptr) {
            return {index->First(), index->First() + index->_size};
        }
        while (scratch.size() < index->_size) {
            scratch.push_back(0);
        }
        index->_hash->SortInto(scratch.begin());
        return {scratch.begin(), scratch.end()};
    }

    /// Sorts the entries and drops the hash, if there is one. Takes no memory. Null is ignored.
    static void Settle(ChildIndex* index) {
        if (index != nullptr && index->_hash != nullptr) {
            index->_hash->SortInto(index->First());
            index->DropHash();
        }
    }

    /// A new index with these entries; null when there are none. Throws std::bad_alloc.
    static ChildIndex* Make(Entries const& entries, OmMemoryRegion* region) {
        if (entries.size() == 0) {
            return nullptr;
        }
        ChildIndex* const index = MakeEmpty(entries.size(), region);
        std::copy(entries.begin(), entries.end(), index->First());
        index->_size = entries.size();
        return index;
    }

    /// Inserts an entry at `place`, 0 to the size. Throws std::bad_alloc; nothing has changed then.
    /// REQUIRES of this and `Erase`: no hash.
    static void Insert(ChildIndex*& index, std::size_t place, int entry, OmMemoryRegion* region) {
        MakeRoom(index, region);
        int* const at = index->First() + place;
        std::memmove(at + 1, at, (index->_size - place) * sizeof(int));
        *at = entry;
        ++index->_size;
    }

    /// REQUIRES: place < size.
    void Erase(std::size_t place) {
        int* const at = First() + place;
        --_size;
        std::memmove(at, at + 1, (_size - place) * sizeof(int));
    }

    /// The entries, to be changed in place. REQUIRES: no hash.
    int* First() { return reinterpret_cast<int*>(this + 1); }

    /// Adds a child with position SizeOf(index) to hash and entries. Throws std::bad_alloc; nothing has changed then.
    /// REQUIRES: there is a hash, and the label is not in it.
    static void Add(ChildIndex*& index, LabelKey const& key, OmMemoryRegion* region) {
        MakeRoom(index, region);
        index->_hash->Add(key);
        ++index->_size;
    }
    /// Undoes the last `Add`.
    void TakeBack(LabelKey const& key) {
        _hash->TakeBack(key);
        --_size;
    }

    /// Counts a search by bisection. Says whether there have been enough for what looking for a hash costs, which takes
    /// time in the number of children.
    static bool IsTimeToHash(ChildIndex* index) {
        if (SizeOf(index) < FewestHashed || index->_hash != nullptr || ++index->_searches <= index->_size / 4) {
            return false;
        }
        index->_searches = 0;
        return index->_size < LabelHash::Most;
    }

    /// Puts a hash with the labels that `labelOf(position)` gives beside the entries; its storage comes from `region`,
    /// which it watches. Throws std::bad_alloc; there is no hash then.
    template <typename LabelOf>
    static void MakeHash(ChildIndex& index, OmMemoryRegion& region, LabelOf&& labelOf) {
        index._hash = ::new (region.Allocate(sizeof(Watching))) Watching(index, region);
        try {
            index._hash->Reserve(index._size);
            for (std::size_t position = 0; position < index._size; ++position) {
                index._hash->Add(labelOf(position));
            }
        } catch (...) {
            index.DropHash();
            throw;
        }
        region.Watch(*index._hash);
    }

private:
    struct Watching final : LabelHash, OmMemoryRegion::Watcher {
        Watching(ChildIndex& index, OmMemoryRegion& itsRegion) : LabelHash(itsRegion), owner(&index) {
            settle = [](OmMemoryRegion::Watcher& self) { Settle(static_cast<Watching&>(self).owner); };
        }
        ChildIndex* owner; ///< follows the block when that moves
    };

    explicit ChildIndex(std::size_t room) : _room(room) {}

    int const* First() const { return reinterpret_cast<int const*>(this + 1); }

    static ChildIndex* MakeEmpty(std::size_t room, OmMemoryRegion* region) {
        return ::new (region->Allocate(sizeof(ChildIndex) + room * sizeof(int))) ChildIndex(room);
    }

    static void MakeRoom(ChildIndex*& index, OmMemoryRegion* region) {
        if (index == nullptr) {
            index = MakeEmpty(4, region);
        } else if (index->_size == index->_room) {
            ChildIndex* const larger = MakeEmpty(2 * index->_room, region);
            std::memcpy(larger->First(), index->First(), index->_size * sizeof(int));
            larger->_size = index->_size;
            larger->_searches = index->_searches;
            larger->_hash = index->_hash;
            if (larger->_hash != nullptr) {
                larger->_hash->owner = larger;
            }
            OmMemoryRegion::Release(index);
            index = larger;
        }
    }

    void DropHash() {
        if (_hash != nullptr) {
            OmMemoryRegion::Unwatch(*_hash);
            _hash->~Watching();
            OmMemoryRegion::Release(_hash);
            _hash = nullptr;
        }
    }

    Watching* _hash = nullptr;
    std::size_t _size = 0;
    std::size_t _room;
    std::size_t _searches = 0;
};

} // namespace om_detail

#endif
