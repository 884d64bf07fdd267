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
///     new Kind(...)              in the default heap
///
/// and destroyed through its virtual destructor, whose deleting form hands the storage back with
/// `OmMemoryRegion::Release`; the global delete never sees it. Objects on the stack or inside other objects are fine
/// too; they are not deleted.
///
/// A kind whose constructor takes a region is given the same one in both places: what it holds lies in the region named
/// to the constructor, and a sweep of another knows nothing of it.
class OMCELL_API OmRegionManaged {
public:
    virtual ~OmRegionManaged();

    static void* operator new(std::size_t bytes) { return OmMemoryRegion::DefaultHeap()->Allocate(bytes); }
    static void* operator new(std::size_t bytes, OmMemoryRegion* region) {
        return OmMemoryRegion::OrDefault(region)->Allocate(bytes);
    }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) { OmMemoryRegion::Release(block); }
    static void operator delete(void* block, OmMemoryRegion*) { OmMemoryRegion::Release(block); }
    static void operator delete(void*, void*) noexcept {}

protected:
    /// `home` is the region that the object is built for; null means the default heap. An object that names its arena
    /// here can keep things outside of it (`Home()->Attach`) and still leave nothing behind when the arena is swept.
    explicit OmRegionManaged(OmMemoryRegion* home = nullptr) : _home(OmMemoryRegion::OrDefault(home)) {}

    /// A copy has a home of its own: the default heap, until a constructor says otherwise.
    OmRegionManaged(OmRegionManaged const&) : OmRegionManaged() {}
    OmRegionManaged& operator=(OmRegionManaged const&) { return *this; }

    /// The region given to the constructor; never null. Not owned.
    OmMemoryRegion* Home() const { return _home; }

private:
    OmMemoryRegion* _home;
};

#endif
