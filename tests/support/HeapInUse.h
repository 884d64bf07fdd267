#ifndef OMTREE_TESTS_SUPPORT_HEAPINUSE_H
#define OMTREE_TESTS_SUPPORT_HEAPINUSE_H

#include <cstddef>
#include <malloc.h>

namespace omtest {

/// Bytes that the global allocator has handed out and not got back, by its own books. Under the address sanitizer,
/// whose allocator keeps none, always 0: its leak checker watches there.
inline std::size_t HeapInUse() {
    struct mallinfo2 const books = mallinfo2();
    return books.uordblks + books.hblkhd;
}

/// What that has grown by over `rounds` calls of `work`. A call before them does not count: the allocator keeps some of
/// what came back for the next one.
template <typename Work>
std::ptrdiff_t HeapGrowth(int rounds, Work&& work) {
    work();
    std::size_t const before = HeapInUse();
    for (int round = 0; round < rounds; ++round) {
        work();
    }
    return static_cast<std::ptrdiff_t>(HeapInUse()) - static_cast<std::ptrdiff_t>(before);
}

} // namespace omtest

#endif
