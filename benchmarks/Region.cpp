// The memory region beside what the standard library and the C library offer. mimalloc has a program of its own
// (RegionMimalloc.cpp).

#include "benchmarks/RegionWork.h"
#include "omcell/OmMemoryRegion.h"

#include <cstdlib>
#include <memory_resource>
#include <new>

namespace om_bench {

namespace {

class OurArena {
public:
    void* Allocate(std::size_t bytes) { return _region.Allocate(bytes); }
    void Release(void* place, std::size_t) { OmMemoryRegion::Release(place); }
    void End(Blocks const&) { _region.WorkingRelease(false); }

private:
    OmMemoryRegion _region{false};
};

class PoolArena {
public:
    void* Allocate(std::size_t bytes) { return _pool.allocate(bytes); }
    void Release(void* place, std::size_t bytes) { _pool.deallocate(place, bytes); }
    void End(Blocks const&) { _pool.release(); }

private:
    std::pmr::unsynchronized_pool_resource _pool;
};

class MallocArena {
public:
    void* Allocate(std::size_t bytes) {
        void* const place = std::malloc(bytes);
        return place != nullptr ? place : throw std::bad_alloc();
    }
    void Release(void* place, std::size_t) { std::free(place); }
    void End(Blocks const& blocks) {
        for (std::uint64_t* const block : blocks) {
            std::free(block);
        }
    }
};

[[maybe_unused]] bool const registered = [] {
    Register("region", "ours", UseArena<OurArena>);
    Register("region", "pmr", UseArena<PoolArena>);
    Register("region", "malloc", UseArena<MallocArena>);
    return true;
}();

} // namespace

} // namespace om_bench
