// Run under valgrind by region_under_valgrind.py: touches storage of regions that must not be touched, and asks
// valgrind whether it saw that; then uses regions as it should, and asks whether valgrind saw anything. Prints what is
// wrong and ends with status 1 when something is, 77 when nothing could be asked.
#include "omcell/OmMemoryRegion.h"

#include <cstdio>

#if defined(NVALGRIND) || !__has_include(<valgrind/memcheck.h>)

int main() {
    std::puts("left out: built without valgrind's header (Debian package valgrind)");
    return 77;
}

#else

#include <cstddef>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <valgrind/memcheck.h>
#include <vector>

char volatile lastRead = 0;

namespace {

/// What was said to be wrong, once each.
std::set<std::string> wrong;

void Expect(bool holds, char const* what) {
    if (!holds && wrong.insert(what).second) {
        std::printf("wrong: %s\n", what);
    }
}

unsigned Errors() { return static_cast<unsigned>(VALGRIND_COUNT_ERRORS); }

/// Stores the byte: valgrind drops a read whose result nobody uses.
void Read(void const* place, std::size_t offset) { lastRead = static_cast<char const volatile*>(place)[offset]; }

/// Every read of a byte must be reported.
void ExpectClosed(void const* block, std::size_t bytes, char const* what) {
    unsigned const before = Errors();
    for (std::size_t i = 0; i < bytes; ++i) {
        Read(block, i);
    }
    Expect(Errors() - before == bytes, what);
}

/// No read of a byte may be reported.
void ExpectOpen(void const* block, std::size_t bytes, char const* what) {
    unsigned const before = Errors();
    for (std::size_t i = 0; i < bytes; ++i) {
        Read(block, i);
    }
    Expect(Errors() == before, what);
}

/// Requests of one size until they are served from pages.
std::vector<void*> FillChunks(OmMemoryRegion& region, std::size_t bytes) {
    std::vector<void*> blocks;
    for (std::size_t taken = 0; taken < (std::size_t{1} << 16) + 2048; taken += bytes) {
        blocks.push_back(region.Allocate(bytes));
    }
    return blocks;
}

void BadReads() {
    OmMemoryRegion region(false);
    void* const small = region.Allocate(100);
    ExpectOpen(small, 100, "a block cut from a chunk can be read");
    ExpectClosed(static_cast<char*>(small) + 100, 20, "what lies behind a block in a chunk");
    OmMemoryRegion::Release(small);
    ExpectClosed(small, 100, "a released block in a chunk");
    ExpectOpen(region.Allocate(100), 100, "it can be read once it serves again");

    std::vector<void*> const blocks = FillChunks(region, 64);
    char* const paged = static_cast<char*>(blocks.back());
    ExpectOpen(paged, 64, "a block of a page can be read");
    ExpectClosed(paged + 64, 64, "the block of a page that was never handed out");
    OmMemoryRegion::Release(paged);
    ExpectClosed(paged, 64, "a released block of a page");
    char* const again = static_cast<char*>(region.Allocate(60));
    Expect(again == paged, "a released block of a page serves again");
    ExpectOpen(again, 60, "it can be read");
    ExpectClosed(again + 60, 4, "the rest of it");

    // The allocator's places alternate, so both ways in which the head fits are met.
    for (std::size_t bytes = 1017; bytes < 1100; ++bytes) {
        char* const large = static_cast<char*>(region.Allocate(bytes));
        ExpectOpen(large, bytes, "a large block can be read");
        ExpectClosed(large + bytes, 1, "the byte behind a large block");
        OmMemoryRegion::Release(large);
        ExpectClosed(large, bytes, "a released large block");
        char* const plain = static_cast<char*>(OmMemoryRegion::DefaultHeap()->Allocate(bytes));
        ExpectOpen(plain, bytes, "a block of the default heap can be read");
        ExpectClosed(plain + bytes, 1, "the byte behind a block of the default heap");
        OmMemoryRegion::Release(plain);
        ExpectClosed(plain, bytes, "a released block of the default heap");
    }
}

void UninitialisedReads() {
    OmMemoryRegion region(false);
    for (int round = 0; round < 2; ++round) {
        char* const block = static_cast<char*>(region.Allocate(48));
        unsigned char bits = 0;
        Expect(VALGRIND_GET_VBITS(block, &bits, 1) == 1 && bits == 0xFF, "what a fresh block holds is not known");
        std::memset(block, 'x', 48);
        Expect(VALGRIND_GET_VBITS(block, &bits, 1) == 1 && bits == 0, "what was written is known");
        OmMemoryRegion::Release(block);
    }
}

/// Requests and releases of all sizes in an order by chance.
void GoodUse(bool sweeps) {
    std::mt19937 random(5);
    OmMemoryRegion region(false);
    std::vector<std::pair<char*, std::size_t>> held;
    for (int step = 0; step < 40000; ++step) {
        if (random() % 3 != 0 || held.empty()) {
            std::size_t const bytes = random() % 50 == 0 ? random() % 5000 : random() % 100;
            held.emplace_back(static_cast<char*>(region.Allocate(bytes)), bytes);
            std::memset(held.back().first, static_cast<int>(bytes % 100), bytes);
        } else {
            std::swap(held[random() % held.size()], held.back());
            ExpectOpen(held.back().first, held.back().second, "a block in use");
            OmMemoryRegion::Release(held.back().first);
            held.pop_back();
        }
    }
    if (sweeps) {
        region.WorkingRelease(false);
        for (auto const& [block, bytes] : held) {
            OmMemoryRegion::Release(block);
            ExpectOpen(block, bytes, "a block after the sweep");
        }
    }
}

void ExpectNoLeaks() {
    unsigned long leaked = 0;
    unsigned long dubious = 0;
    unsigned long reachable = 0;
    unsigned long suppressed = 0;
    VALGRIND_DO_LEAK_CHECK;
    VALGRIND_COUNT_LEAKS(leaked, dubious, reachable, suppressed);
    static_cast<void>(reachable + suppressed);
    Expect(leaked == 0 && dubious == 0, "no region leaves anything behind");
}

} // namespace

int main() {
    if (RUNNING_ON_VALGRIND == 0) {
        std::puts("not running under valgrind");
        return 1;
    }
    BadReads();
    unsigned const before = Errors();
    UninitialisedReads();
    GoodUse(false);
    GoodUse(true);
    Expect(Errors() == before, "good use is not reported");
    ExpectNoLeaks();
    return wrong.empty() ? 0 : 1;
}

#endif
