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

} // namespace omtest

#endif
