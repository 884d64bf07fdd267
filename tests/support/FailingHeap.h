#ifndef OMTREE_TESTS_SUPPORT_FAILINGHEAP_H
#define OMTREE_TESTS_SUPPORT_FAILINGHEAP_H

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

/// Replaces the global operators new and delete of a test program by ones that count and can fail.
///
/// REQUIRES: included by one source of the program; the operators are defined here.
///
/// Memory regions take theirs from malloc, so these see what lies outside of every region: metadata records, strings,
/// work lists.
namespace omtest {

struct HeapBooks {
    std::ptrdiff_t live = 0; ///< blocks handed out and not given back
    long untilFailure = -1;  ///< requests that still succeed; negative: all do
    bool failed = false;     ///< whether a request was refused
    bool once = false;       ///< whether the requests after the refused one succeed again; otherwise none does

    /// Blocks whose end is written down, each with a letter; the letters of those that went, in that order.
    struct Watched {
        void const* block;
        char letter;
    };
    static constexpr std::size_t Most = 8;
    Watched watched[Most] = {};
    char gone[Most + 1] = {};

    void Watch(void const* block, char letter) { *PlaceOf(nullptr) = {block, letter}; }
    void NoteEnd(void const* block) {
        Watched* const place = PlaceOf(block);
        if (block != nullptr && place != nullptr) {
            std::size_t length = 0;
            while (gone[length] != 0) {
                ++length;
            }
            gone[length] = std::exchange(*place, Watched{}).letter;
        }
    }

private:
    Watched* PlaceOf(void const* block) {
        for (Watched& place : watched) {
            if (place.block == block) {
                return &place;
            }
        }
        return nullptr;
    }
};

inline HeapBooks& Heap() {
    static HeapBooks books;
    return books;
}

/// Runs `action` again and again, refusing the first request, then the second one, and so on, until it gets through
/// without a refusal; a refused run must end with std::bad_alloc, after which `check` is called. Gives the number of
/// refused runs, or -1 when a run went on without what it was refused.
template <typename Action, typename Check>
int FailEachRequest(Action&& action, Check&& check) {
    for (int allowed = 0;; ++allowed) {
        Heap().failed = false;
        Heap().untilFailure = allowed;
        bool thrown = false;
        try {
            action();
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
        Heap().untilFailure = -1;
        if (thrown != Heap().failed) {
            return -1;
        }
        if (!thrown) {
            return allowed;
        }
        check();
    }
}

} // namespace omtest

// Inlined into each other's callers they would show the compiler a free for a new.
__attribute__((noinline)) void* operator new(std::size_t bytes) {
    omtest::HeapBooks& heap = omtest::Heap();
    void* const block = heap.untilFailure == 0 ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
    if (block == nullptr) {
        heap.failed = true;
        heap.untilFailure = heap.once ? -1 : heap.untilFailure;
        throw std::bad_alloc();
    }
    heap.untilFailure -= heap.untilFailure > 0 ? 1 : 0;
    ++heap.live;
    return block;
}

void* operator new[](std::size_t bytes) { return operator new(bytes); }

__attribute__((noinline)) void operator delete(void* block) noexcept {
    omtest::Heap().live -= block != nullptr ? 1 : 0;
    omtest::Heap().NoteEnd(block);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

#endif
