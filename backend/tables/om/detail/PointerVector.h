#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_POINTERVECTOR_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_POINTERVECTOR_H

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmVector.h"

#include <cstddef>
#include <new>

/// One node of a table's cell store: entries that are null or point at a child (a PointerVector, or in a leaf a cell).
///
/// The face is narrow so that the storage behind it can change: a logical length, entries below it, growth, and a
/// search for entries that are not null. The node owns no entry.
class OMTREE_LOCAL OmPivotTable::PointerVector {
public:
    /// A new node without entries, in `region`.
    static PointerVector* Make(OmMemoryRegion* region) {
        void* const place = region->Allocate(sizeof(PointerVector));
        return ::new (place) PointerVector(region);
    }

    /// Destroys the node, not what its entries point at, and gives its storage back.
    static void Destroy(PointerVector* node) {
        node->~PointerVector();
        OmMemoryRegion::Release(node);
    }

    PointerVector(PointerVector const&) = delete;
    PointerVector& operator=(PointerVector const&) = delete;

    /// Logical length: one more than the largest position ever grown to.
    std::size_t Length() const { return _entries.size(); }

    /// REQUIRES: position < Length().
    void* Entry(std::size_t position) const { return _entries[position]; }
    void Entry(std::size_t position, void* entry) { _entries[position] = entry; }

    /// The entry, or null past the length.
    void* EntryOrNull(std::size_t position) const { return position < Length() ? _entries[position] : nullptr; }

    /// Lengthens the node with null entries until `position` is inside.
    void Grow(std::size_t position) {
        if (2 * _entries.capacity() < position) {
            _entries.reserve(position + 1);
        }
        while (Length() <= position) {
            _entries.push_back(nullptr);
        }
    }

    /// First position at or after `from` whose entry is not null; Length() when there is none.
    std::size_t NextNonNull(std::size_t from) const {
        std::size_t position = from;
        while (position < Length() && _entries[position] == nullptr) {
            ++position;
        }
        return position;
    }

    bool AllNull() const { return NextNonNull(0) >= Length(); }

private:
    explicit PointerVector(OmMemoryRegion* region) : _entries(region) {}

    OmVector<void*> _entries;
};

#endif
