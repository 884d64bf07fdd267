// mimalloc's heaps under the arena workload. A program of its own, because that library takes malloc over in every
// program that it is linked to, and the other rivals are to run on the C library's.

#include "benchmarks/RegionWork.h"

#include <mimalloc.h>

#include <new>

namespace om_bench {

namespace {

class HeapArena {
public:
    void* Allocate(std::size_t bytes) {
        void* const place = mi_heap_malloc(_heap, bytes);
        return place != nullptr ? place : throw std::bad_alloc();
    }
    void Release(void* place, std::size_t) { mi_free(place); }
    void End(Blocks const&) { mi_heap_destroy(_heap); }

private:
    mi_heap_t* _heap = mi_heap_new();
};

[[maybe_unused]] bool const registered = [] {
    Register("region", "mimalloc", UseArena<HeapArena>);
    return true;
}();

} // namespace

} // namespace om_bench
