#ifndef OMTREE_OMCELL_OMREGIONMANAGED_H
#define OMTREE_OMCELL_OMREGIONMANAGED_H

#include "omcell/Export.h"
#include "omcell/OmMemoryRegion.h"

#include <cstddef>

/// Base of every object that may live in a memory region.
///
/// Such an object is made with one of
///
///     new (region) Kind(...)     in a region; a null region means the default heap
///     new Kind(...)              in the default heap; `new (nullptr) Kind(...)` is the same
///     new (place) Kind(...)      at a place of the caller's (a `void*`), which is not deleted
///
/// and destroyed through its virtual destructor, whose deleting form hands the storage back with
/// `OmMemoryRegion::Release`; the global delete never sees it. Objects on the stack or inside other objects are fine
/// too; they are not deleted.
class OMCELL_API OmRegionManaged {
public:
    virtual ~OmRegionManaged();

    static void* operator new(std::size_t bytes) { return OmMemoryRegion::DefaultHeap()->Allocate(bytes); }
    static void* operator new(std::size_t bytes, OmMemoryRegion* region) {
        return OmMemoryRegion::OrDefault(region)->Allocate(bytes);
    }
    /// For a null region spelt `nullptr`, which would name a place just as well.
    static void* operator new(std::size_t bytes, std::nullptr_t) { return operator new(bytes); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) { OmMemoryRegion::Release(block); }
    static void operator delete(void* block, OmMemoryRegion*) { OmMemoryRegion::Release(block); }
    static void operator delete(void* block, std::nullptr_t) { OmMemoryRegion::Release(block); }
    static void operator delete(void*, void*) noexcept {}

protected:
    OmRegionManaged() = default;
    OmRegionManaged(OmRegionManaged const&) = default;
    OmRegionManaged& operator=(OmRegionManaged const&) = default;
};

#endif
