#ifndef OMTREE_TESTS_SUPPORT_FAILINGMALLOC_H
#define OMTREE_TESTS_SUPPORT_FAILINGMALLOC_H

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

/// Replaces the allocation functions that memory regions call by ones that count and can fail.
///
/// REQUIRES: included by one source of the program; the functions are defined here.
///
/// The operators new come here too, except under the address sanitizer, which has its own. The program's first requests
/// come before anything of it is initialised, so the books are plain data and the functions call nothing of ours.
namespace omtest {

struct MallocBooks {
    long untilFailure;    ///< requests that still succeed; negative: all do
    bool failed;          ///< whether a request was refused
    bool once;            ///< whether the requests after the refused one succeed again; otherwise none does
    bool counts;          ///< whether `requests` and `bytes` go on
    std::size_t requests; ///< that succeeded
    std::size_t bytes;    ///< asked for by these
    std::size_t spared;   ///< requests of fewer bytes take no part
    std::ptrdiff_t live;  ///< blocks handed out here and not given back, where LiveMalloc.h watches what comes back

    /// Whether a request is to be refused; goes into the books.
    __attribute__((no_sanitize("address"))) bool Refuses(std::size_t asked) {
        if (asked < spared) {
            return false;
        }
        if (untilFailure != 0) {
            untilFailure -= untilFailure > 0 ? 1 : 0;
            return false;
        }
        failed = true;
        untilFailure = once ? -1 : 0;
        return true;
    }
};

inline constinit MallocBooks mallocBooks{-1, false, false, false, 0, 0, 0, 0};

/// Runs `action` again and again, refusing the first request, then the second one, and so on, until it gets through
/// without a refusal; a refused run must end with std::bad_alloc, after which `check` is called. Gives the number of
/// refused runs, or -1 when a run went on without what it was refused.
template <typename Action, typename Check>
int FailEachMalloc(Action&& action, Check&& check) {
    for (int allowed = 0;; ++allowed) {
        bool thrown = false;
        mallocBooks.failed = false;
        mallocBooks.untilFailure = allowed;
        try {
            action();
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
        mallocBooks.untilFailure = -1;
        if (thrown != mallocBooks.failed) {
            return -1;
        }
        if (!thrown) {
            return allowed;
        }
        check();
    }
}

/// What `action` asked the allocator for.
template <typename Action>
MallocBooks Asked(Action&& action) {
    mallocBooks.requests = mallocBooks.bytes = 0;
    mallocBooks.counts = true;
    action();
    mallocBooks.counts = false;
    return mallocBooks;
}

} // namespace omtest

// One of the two stands behind each function: the sanitizer's, or the C library's.
extern "C" {
void* __interceptor_malloc(std::size_t) __attribute__((weak));
int __interceptor_posix_memalign(void**, std::size_t, std::size_t) __attribute__((weak));
void* __libc_malloc(std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

__attribute__((visibility("default"), no_sanitize("address"))) void* malloc(std::size_t bytes) noexcept {
    omtest::MallocBooks& books = omtest::mallocBooks;
    if (books.Refuses(bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    ++books.live;
    books.requests += books.counts ? 1 : 0;
    books.bytes += books.counts ? bytes : 0;
    return __interceptor_malloc != nullptr ? __interceptor_malloc(bytes) : __libc_malloc(bytes);
}

__attribute__((visibility("default"), no_sanitize("address"))) int posix_memalign(void** place, std::size_t alignment,
                                                                                  std::size_t bytes) noexcept {
    omtest::MallocBooks& books = omtest::mallocBooks;
    if (books.Refuses(bytes)) {
        return ENOMEM;
    }
    ++books.live;
    books.requests += books.counts ? 1 : 0;
    books.bytes += books.counts ? bytes : 0;
    if (__interceptor_posix_memalign != nullptr) {
        return __interceptor_posix_memalign(place, alignment, bytes);
    }
    *place = __libc_memalign(alignment, bytes);
    return *place != nullptr ? 0 : ENOMEM;
}
}

#endif
