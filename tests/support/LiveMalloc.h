#ifndef OMTREE_TESTS_SUPPORT_LIVEMALLOC_H
#define OMTREE_TESTS_SUPPORT_LIVEMALLOC_H

#include "tests/support/FailingMalloc.h"

#include <cstddef>
#include <cstdlib>

/// Replaces the rest of the C library's allocation functions, so that `mallocBooks.live` tells of every block that was
/// lost. Not under the address sanitizer, whose leak checker watches there.
///
/// REQUIRES: included by one source of the program; the functions are defined here.
namespace omtest {

#ifdef __SANITIZE_ADDRESS__
inline constexpr bool MallocIsWatched = false;
#else
inline constexpr bool MallocIsWatched = true;
#endif

} // namespace omtest

#ifndef __SANITIZE_ADDRESS__
extern "C" {
void __libc_free(void*);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

__attribute__((visibility("default"))) void free(void* block) noexcept {
    omtest::mallocBooks.live -= block != nullptr ? 1 : 0;
    __libc_free(block);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t bytes) noexcept {
    if (omtest::mallocBooks.Refuses(count * bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    ++omtest::mallocBooks.live;
    return __libc_calloc(count, bytes);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t bytes) noexcept {
    if (bytes != 0 && omtest::mallocBooks.Refuses(bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    omtest::mallocBooks.live += block == nullptr ? 1 : 0;
    omtest::mallocBooks.live -= bytes == 0 ? 1 : 0;
    return __libc_realloc(block, bytes);
}
}
#endif

#endif
