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
#include <utility>

namespace om_detail {

/// What is left of a child index, in its first places, when the child at position `removed` goes; gives their number.
/// `entries` is read and written by subscript, each place at most twice.
///
/// The walk that this stands for goes over the entries with a counter i. An entry greater than `removed` is
/// decremented. At an entry equal to `removed` the one at POSITION `removed` is erased, not the one at i, and position
/// i is looked at again; where the list has no such position any more, the one at i goes. That comes to:
///  - Before position `removed`, an entry equal to it stays where it is and is met again, until everything from
///  position
///    `removed` on is gone; then it goes itself, and so does every later one equal to it.
///  - At position `removed`, it is erased itself.
///  - Behind, the one erased is the first of those that were looked at and stand from position `removed` on. The rest
///    moves up, and the walk passes the equal entry by, which stays.
template <typename Entries>
std::size_t WithoutPosition(Entries&& entries, std::size_t size, std::size_t removed) {
    std::size_t kept = 0;
    std::size_t erasedBehind = 0;
    bool isCut = size <= removed;
    for (std::size_t i = 0; i < size; ++i) {
        int const entry = entries[i];
        std::size_t const position = static_cast<unsigned int>(entry);
        if (position == removed) {
            if (isCut || kept < removed) {
                isCut = true;
                size = std::min(size, removed);
                continue;
            }
            if (kept == removed) {
                continue;
            }
            ++erasedBehind;
        }
        entries[kept] = position > removed ? entry - 1 : entry;
        ++kept;
    }
    if (erasedBehind != 0) {
        for (std::size_t k = removed; k + erasedBehind < kept; ++k) {
            entries[k] = entries[k + erasedBehind];
        }
    }
    return kept - erasedBehind;
}

/// The child index of one node: positions of its children sorted by label, and beside them, while that pays and is
/// safe, a hash over the labels.
///
///     +------+------+------+----------+---------+---------+---------+-----
///     | hash | size | room | searches | crowded | entry 0 | entry 1 | ...
///     +------+------+------+----------+---------+---------+---------+-----
///      8      8      8      4          4         4         4
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
/// Readers that need the entries beside a hash share a sorted list of them, which the first one leaves there; children
/// that are added later are sorted in when somebody asks again. It is the one thing that operations of the constant
/// form write, and lives in the default heap, whose books it cannot upset.
///
/// Labels that crowd on one place of the hash (see LabelHash) are never hashed again.
///
/// A hash answers as a bisection of the entries does, as long as
///  1. the entries are the positions of all children, sorted strictly ascending by label (checked by whoever makes it),
///  2. no label, group flag or child changes behind its back. Labels and flags: the hash watches the region, which is
///     told before an edit. Children: the tree tells the node when they are rearranged, and whoever asks compares their
///     number.
///
/// A node refers to its index by a pointer, null while there are no entries; operations that add an entry take the
/// pointer, since the block moves when it is full. Blocks come from the node's region. An index takes 32 bytes and 4
/// for each child; a hash 112 more and what LabelHash says for each label, 4 of them for a child that a reader had
/// sorted.
class ChildIndex {
public:
    /// Fewest children for which there is a hash. With fewer, a bisection of three steps is as quick.
    static constexpr std::size_t FewestHashed = 8;

    struct Entries {
        int const* first;
        std::size_t count;
        int const* begin() const { return first; }
        int const* end() const { return first + count; }
        std::size_t size() const { return count; }
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

    /// The entries as settling would make them; they stay valid until the index changes. While there is a hash, O(log
    /// size) for each child that was added since somebody asked, and O(size) when there is one. Throws std::bad_alloc.
    static Entries EntriesOf(ChildIndex const* index) {
        if (index == nullptr) {
            return {nullptr, 0};
        }
        int const* const first = index->_hash != nullptr ? index->_hash->SortedEntries() : index->First();
        return {first, index->_size};
    }

    /// Sorts the entries and drops the hash, if there is one. Takes no memory. Null is ignored.
    static void Settle(ChildIndex* index) {
        if (index != nullptr && index->_hash != nullptr) {
            index->_hash->SortWithKnown(index->First());
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

    /// Edits the entries for a child at this position that goes; see `WithoutPosition`. REQUIRES: no hash.
    static void Drop(ChildIndex* index, std::size_t position) {
        if (index != nullptr) {
            index->_size = WithoutPosition(index->First(), index->_size, position);
        }
    }

    /// Adds a child with position SizeOf(index) to hash and entries. Where the hash cannot take it, for want of memory
    /// or room, settles the index instead and says false. Throws std::bad_alloc when there is no room for the entry;
    /// nothing has changed then.
    /// REQUIRES: there is a hash, and the label is not in it.
    static bool Add(ChildIndex*& index, LabelKey const& key, OmMemoryRegion* region) {
        MakeRoom(index, region);
        try {
            if (index->_hash->Add(key)) {
                ++index->_size;
                return true;
            }
            index->_crowded = true;
        } catch (std::bad_alloc const&) {
        }
        Settle(index);
        return false;
    }
    /// Undoes the last `Add`.
    void TakeBack(LabelKey const& key) {
        OmMemoryRegion::Release(std::exchange(_hash->sorted, nullptr)); // somebody may have asked meanwhile
        _hash->TakeBack(key);
        --_size;
    }

    /// What an operation leaves that inserted an entry and cannot go on: the entry goes, and so does an index that is
    /// empty then.
    static void TakeBack(ChildIndex*& index, std::size_t place) {
        index->Erase(place);
        if (index->_size == 0) {
            Destroy(std::exchange(index, nullptr));
        }
    }

    /// Counts a search by bisection. Says whether there have been enough for what looking for a hash costs, which takes
    /// time in the number of children.
    static bool IsTimeToHash(ChildIndex* index) {
        if (SizeOf(index) < FewestHashed || index->_hash != nullptr || index->_crowded ||
            ++index->_searches <= index->_size / 4) {
            return false;
        }
        index->_searches = 0;
        return index->_size < LabelHash::Most;
    }

    /// Puts a hash with the labels that `labelOf(position)` gives beside the entries; its storage comes from `region`,
    /// which it watches. False when there is none for want of memory or room.
    template <typename LabelOf>
    static bool MakeHash(ChildIndex& index, OmMemoryRegion& region, LabelOf&& labelOf) {
        try {
            index._hash = ::new (region.Allocate(sizeof(Watching))) Watching(index, region);
            bool fits = index._hash->Reserve(index._size);
            for (std::size_t position = 0; fits && position < index._size; ++position) {
                fits = index._hash->Add(labelOf(position));
            }
            index._crowded = !fits;
        } catch (std::bad_alloc const&) {
            index.DropHash();
            return false;
        }
        if (index._crowded) {
            index.DropHash();
            return false;
        }
        region.Watch(*index._hash);
        return true;
    }

private:
    /// Sorted entries for readers.
    struct Sorted {
        std::size_t size;

        int* First() { return reinterpret_cast<int*>(this + 1); }
    };

    struct Watching final : LabelHash, OmMemoryRegion::Watcher {
        Watching(ChildIndex& index, OmMemoryRegion& itsRegion) : LabelHash(itsRegion), owner(&index) {
            settle = [](OmMemoryRegion::Watcher& self) { Settle(static_cast<Watching&>(self).owner); };
        }
        ~Watching() { OmMemoryRegion::Release(sorted); }

        int const* SortedEntries() const {
            if (sorted == nullptr || sorted->size != Size()) {
                std::size_t const bytes = sizeof(Sorted) + Size() * sizeof(int);
                Sorted* const made = ::new (OmMemoryRegion::DefaultHeap()->Allocate(bytes)) Sorted{Size()};
                SortWithKnown(made->First());
                OmMemoryRegion::Release(std::exchange(sorted, made));
            }
            return sorted->First();
        }

        /// Writes all entries to `out`, with what readers have sorted already.
        void SortWithKnown(int* out) const {
            if (sorted != nullptr) {
                SortInto(out, sorted->First(), sorted->size);
            } else {
                SortInto(out);
            }
        }

        ChildIndex* owner; ///< follows the block when that moves
        mutable Sorted* sorted = nullptr;
    };

    explicit ChildIndex(std::size_t room) : _room(room) {}

    int* First() { return reinterpret_cast<int*>(this + 1); }
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
            larger->_crowded = index->_crowded;
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
    std::uint32_t _searches = 0;
    bool _crowded = false;
};

} // namespace om_detail

#endif
