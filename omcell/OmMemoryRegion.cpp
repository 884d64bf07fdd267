#include "omcell/OmMemoryRegion.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define OM_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OM_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(OM_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#elif defined(__has_include)
#if __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#define OM_VALGRIND 1
#endif
#endif

namespace {

constexpr std::size_t Word = sizeof(void*);
constexpr std::size_t PageBytes = std::size_t{1} << 16;
constexpr std::size_t FirstChunkBytes = 2048;
constexpr std::size_t LastChunkBytes = PageBytes;

static_assert(Word == 8, "the owner word in front of a block is eight bytes");
static_assert(alignof(std::max_align_t) <= 16, "blocks are aligned to sixteen bytes");

// The head takes a cache line, so that blocks of one lie in one. A page is taken a little short, for two reasons: the
// allocator's own words fit before the next page, so that pages follow each other without a gap; and glibc, which looks
// for a page in twice as much and 32 bytes, stays below what it makes a mapping of its own for, where all of it is
// kept.
constexpr std::size_t PageHead = 64;
constexpr std::size_t TakenForPage = PageBytes - 80;

// Of a payload; set for all but blocks of pages.
constexpr std::uintptr_t WordBit = 16;

std::uintptr_t AddressOf(void const* place) { return reinterpret_cast<std::uintptr_t>(place); }
bool HasWord(void const* block) { return (AddressOf(block) & WordBit) != 0; }
// From a place that the allocator gives, a multiple of sixteen, to the next multiple of thirty-two.
std::size_t ToEvenPlace(void const* place) { return AddressOf(place) & WordBit; }

// Whether somebody watches the process. Asked once for each arena: a request to valgrind costs some cycles even where
// nobody listens.
bool IsWatched() {
#if defined(OM_ADDRESS_SANITIZER)
    return true;
#elif defined(OM_VALGRIND)
    return RUNNING_ON_VALGRIND != 0;
#else
    return false;
#endif
}

void Poison([[maybe_unused]] void* place, [[maybe_unused]] std::size_t bytes) {
#if defined(OM_ADDRESS_SANITIZER)
    ASAN_POISON_MEMORY_REGION(place, bytes);
#elif defined(OM_VALGRIND)
    static_cast<void>(VALGRIND_MAKE_MEM_NOACCESS(place, bytes));
#endif
}

void Unpoison([[maybe_unused]] void* place, [[maybe_unused]] std::size_t bytes) {
#if defined(OM_ADDRESS_SANITIZER)
    ASAN_UNPOISON_MEMORY_REGION(place, bytes);
#elif defined(OM_VALGRIND)
    static_cast<void>(VALGRIND_MAKE_MEM_UNDEFINED(place, bytes));
#endif
}

void* TakeFromSystem(std::size_t bytes) {
    // No object is larger than a pointer difference can tell; checking allocators stop a program that asks for one.
    void* const place = bytes <= static_cast<std::size_t>(PTRDIFF_MAX) ? std::malloc(bytes) : nullptr;
    if (place == nullptr) {
        throw std::bad_alloc();
    }
    return place;
}

// The words in released blocks are ours to read, whoever watches.
void Reveal([[maybe_unused]] void* word) {
#if defined(OM_ADDRESS_SANITIZER)
    ASAN_UNPOISON_MEMORY_REGION(word, Word);
#elif defined(OM_VALGRIND)
    static_cast<void>(VALGRIND_MAKE_MEM_DEFINED(word, Word));
#endif
}

template <typename T>
void WriteWord(void* word, T* value) {
    std::memcpy(word, &value, Word);
}

template <typename T>
T* ReadWord(void const* word) {
    T* value = nullptr;
    std::memcpy(&value, word, Word);
    return value;
}

#if defined(OM_ADDRESS_SANITIZER)

// Owner words are poisoned while nobody looks at them, so that a program that writes in front of its block is told.
using AnyWord [[gnu::may_alias]] = std::uintptr_t;

[[gnu::no_sanitize_address, gnu::noinline]] std::uintptr_t Peek(void const* word) {
    return *static_cast<AnyWord const*>(word);
}
[[gnu::no_sanitize_address, gnu::noinline]] void Put(void* word, std::uintptr_t value) {
    *static_cast<AnyWord*>(word) = value;
}

template <typename T>
T* ReadOwner(void const* word) {
    return reinterpret_cast<T*>(Peek(word));
}

// A released block is marked in a word that its link leaves alone, and closed; one that is handed out may have either
// there, never both.
constexpr std::uintptr_t ReleasedMark = 0x6465'7361'656c'6572;

void* MarkOf(void* block) { return static_cast<char*>(block) + Word; }
void MarkReleased(void* block) { Put(MarkOf(block), ReleasedMark); }
void MarkTaken(void* block) { Put(MarkOf(block), 0); }
bool IsReleased(void* block) {
    return __asan_address_is_poisoned(MarkOf(block)) != 0 && Peek(MarkOf(block)) == ReleasedMark;
}

void CloseWord(void* word) { ASAN_POISON_MEMORY_REGION(word, Word); }

// Whoever releases a block twice reads from it first, so that the sanitizer tells of the second time.
void RequireTaken(void* block) {
    if (IsReleased(block)) {
        static_cast<void>(*static_cast<char volatile*>(block));
    }
}

#else

template <typename T>
T* ReadOwner(void const* word) {
    return ReadWord<T>(word);
}
void CloseWord(void*) {}
void MarkReleased(void*) {}
void MarkTaken(void*) {}
void RequireTaken(void*) {}

#endif

std::size_t SumOrThrow(std::size_t bytes, std::size_t extra) {
    if (bytes > std::numeric_limits<std::size_t>::max() - extra) {
        throw std::bad_alloc();
    }
    return bytes + extra;
}

} // namespace

struct alignas(16) OmMemoryRegion::Chunk {
    Chunk* next;
};

struct OmMemoryRegion::Page {
    OmMemoryRegion* region;
    std::size_t sizeClass;
    Page* next;

    static Page* Of(void* block) { return reinterpret_cast<Page*>(AddressOf(block) & ~(PageBytes - 1)); }
};

struct OmMemoryRegion::LargeBlock {
    Owner owner;
    LargeBlock* previous;
    LargeBlock* next;
    void* start; ///< what the global allocator gave
    void* word;  ///< owner word of the payload behind
};

/// Keeps the default heap out of static destruction: other static objects may release blocks after any point.
struct DefaultHeapHolder {
    alignas(OmMemoryRegion) unsigned char storage[sizeof(OmMemoryRegion)];
    OmMemoryRegion* region;
    DefaultHeapHolder() : region(new (storage) OmMemoryRegion(OmMemoryRegion::DefaultHeapTag{})) {}
};

OmMemoryRegion::OmMemoryRegion(bool) : _nextChunkBytes(FirstChunkBytes), _watched(IsWatched()) {
    for (std::size_t i = 0; i < Classes; ++i) {
        std::size_t const stride = (i + 1) * Stride;
        _pageClasses[i] = PageClass{nullptr, nullptr, nullptr, PageBytes / stride, 0, 0};
        _wordClasses[i] = WordClass{Owner{this, stride - Word}, nullptr};
    }
}

OmMemoryRegion::OmMemoryRegion(DefaultHeapTag) : OmMemoryRegion(false) { _defaultHeap = true; }

OmMemoryRegion::~OmMemoryRegion() {
    DropDependents();
    ForgetWatchers();
    while (_chunks != nullptr) {
        Chunk* const chunk = _chunks;
        _chunks = chunk->next;
        std::free(chunk);
    }
    while (_firstPage != nullptr) {
        Page* const page = _firstPage;
        _firstPage = page->next;
        std::free(page);
    }
    while (_large != nullptr) {
        LargeBlock* const block = _large;
        _large = block->next;
        std::free(block->start);
    }
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() {
    static DefaultHeapHolder holder;
    return holder.region;
}

void* OmMemoryRegion::Allocate(std::size_t bytes) {
    if (_defaultHeap) {
        // An address at the very end of the allocator's block would not be taken for a reference to it.
        std::size_t const wanted = bytes + (bytes == 0 ? 1 : 0);
        char* const place = static_cast<char*>(TakeFromSystem(SumOrThrow(wanted, Stride)));
        std::size_t const shift = ToEvenPlace(place);
        char* const block = place + shift + WordBit;
        WriteWord(block - Word, reinterpret_cast<void*>(shift / WordBit));
        if (_watched) {
            Poison(block + wanted, WordBit - shift);
            CloseWord(block - Word);
        }
        return block;
    }
    if (bytes > SmallLimit) {
        return AllocateLarge(bytes);
    }
    std::size_t const sizeClass = (bytes - (bytes != 0 ? 1 : 0)) / Stride;
    std::size_t const stride = (sizeClass + 1) * Stride;
    PageClass& kind = _pageClasses[sizeClass];
    void* block = kind.released;
    if (block != nullptr) {
        if (_watched) {
            Reveal(block);
        }
        kind.released = ReadWord<void>(block);
        --kind.back;
    } else if (kind.next != kind.end) {
        block = kind.next;
        kind.next += stride;
    } else {
        return AllocateFromChunk(kind, bytes);
    }
    if (_watched) {
        Poison(block, Word);
        MarkTaken(block);
        Unpoison(block, bytes);
    }
    return block;
}

// What a class in pages once cut from chunks comes round again here, whenever its newest page is full.
void* OmMemoryRegion::AllocateFromChunk(PageClass& kind, std::size_t bytes) {
    WordClass& words = _wordClasses[(bytes + Word - 1) / Stride];
    char* word = static_cast<char*>(words.released);
    if (word != nullptr) {
        words.released = ReadOwner<void>(word);
    } else if (kind.beforePages == 0) {
        AddPage(kind);
        return Allocate(bytes);
    } else {
        std::size_t const stride = words.owner.payload + Word;
        if (static_cast<std::size_t>(_limit - _bump) < stride) {
            AddChunk();
        }
        --kind.beforePages;
        word = _bump;
        _bump += stride;
    }
    if (_watched) {
        Unpoison(word, Word + bytes);
    }
    WriteWord(word, &words.owner);
    if (_watched) {
        CloseWord(word);
        MarkTaken(word + Word);
    }
    ++_live.blocks;
    _live.bytes += words.owner.payload;
    return word + Word;
}

void* OmMemoryRegion::AllocateLarge(std::size_t bytes) {
    static_assert((sizeof(LargeBlock) & WordBit) != 0);
    std::size_t const total = SumOrThrow(bytes, sizeof(LargeBlock) + WordBit);
    char* const start = static_cast<char*>(TakeFromSystem(total));
    LargeBlock* const block = reinterpret_cast<LargeBlock*>(start + ToEvenPlace(start));
    *block = LargeBlock{Owner{this, bytes}, nullptr, _large, start, &block->owner};
    if (_large != nullptr) {
        _large->previous = block;
    }
    _large = block;
    if (_watched) {
        Poison(reinterpret_cast<char*>(block + 1) + bytes, WordBit - ToEvenPlace(start));
        CloseWord(&block->word);
    }
    ++_live.blocks;
    _live.bytes += bytes;
    _reservedBytes += total;
    return block + 1;
}

void OmMemoryRegion::AddChunk() {
    Chunk* const chunk = static_cast<Chunk*>(TakeFromSystem(_nextChunkBytes));
    *chunk = Chunk{_chunks};
    _chunks = chunk;
    // A word goes 8 behind a multiple of thirty-two, its payload 16.
    char* const behind = reinterpret_cast<char*>(chunk + 1);
    _bump = behind + ToEvenPlace(behind) + Word;
    _limit = reinterpret_cast<char*>(chunk) + _nextChunkBytes;
    if (_watched) {
        Poison(chunk + 1, _nextChunkBytes - sizeof(Chunk));
    }
    _reservedBytes += _nextChunkBytes;
    if (_nextChunkBytes < LastChunkBytes) {
        _nextChunkBytes *= 2;
    }
}

void OmMemoryRegion::AddPage(PageClass& kind) {
    void* place = nullptr;
    if (::posix_memalign(&place, PageBytes, TakenForPage) != 0) {
        throw std::bad_alloc();
    }
    std::size_t const sizeClass = static_cast<std::size_t>(&kind - _pageClasses);
    std::size_t const stride = (sizeClass + 1) * Stride;
    Page* const page = ::new (place) Page{this, sizeClass, nullptr};
    (_lastPage != nullptr ? _lastPage->next : _firstPage) = page;
    _lastPage = page;
    kind.next = static_cast<char*>(place) + PageHead;
    kind.end = kind.next + (TakenForPage - PageHead) / stride * stride;
    kind.inPages += (TakenForPage - PageHead) / stride;
    if (_watched) {
        Poison(kind.next, TakenForPage - PageHead);
    }
    _reservedBytes += TakenForPage;
}

void OmMemoryRegion::Release(void* block) {
    if (block == nullptr) {
        return;
    }
    RequireTaken(block);
    if (!HasWord(block)) {
        Page const& page = *Page::Of(block);
        page.region->ReleaseInPage(page, block);
        return;
    }
    char* const word = static_cast<char*>(block) - Word;
    Owner* const owner = ReadOwner<Owner>(word);
    if (AddressOf(owner) <= 1) {
        std::free(static_cast<char*>(block) - WordBit - AddressOf(owner) * WordBit);
        return;
    }
    if (owner->region->_swept) {
        return;
    }
    if (owner->payload <= SmallLimit) {
        owner->region->ReleaseSmall(*owner, word);
    } else {
        owner->region->ReleaseLarge(*owner);
    }
}

void OmMemoryRegion::ReleaseInPage(Page const& page, void* block) {
    if (_swept) {
        return;
    }
    PageClass& kind = _pageClasses[page.sizeClass];
    if (_watched) {
        Reveal(block);
    }
    WriteWord(block, kind.released);
    kind.released = block;
    ++kind.back;
    if (_watched) {
        MarkReleased(block);
        Poison(block, (page.sizeClass + 1) * Stride);
    }
}

void OmMemoryRegion::ReleaseSmall(Owner& owner, void* word) {
    WordClass& kind = _wordClasses[owner.payload / Stride];
    if (_watched) {
        Reveal(word);
    }
    WriteWord(word, kind.released);
    kind.released = word;
    if (_watched) {
        MarkReleased(static_cast<char*>(word) + Word);
        CloseWord(word);
        Poison(static_cast<char*>(word) + Word, owner.payload);
    }
    --_live.blocks;
    _live.bytes -= owner.payload;
}

void OmMemoryRegion::ReleaseLarge(Owner& owner) {
    LargeBlock* const block = reinterpret_cast<LargeBlock*>(&owner);
    (block->previous != nullptr ? block->previous->next : _large) = block->next;
    if (block->next != nullptr) {
        block->next->previous = block->previous;
    }
    --_live.blocks;
    _live.bytes -= owner.payload;
    _reservedBytes -= owner.payload + sizeof(LargeBlock) + WordBit;
    std::free(block->start);
}

void OmMemoryRegion::WorkingRelease(bool) {
    if (_defaultHeap) {
        return;
    }
    DropDependents();
    ForgetWatchers();
    _swept = true;
    Sum const inPages = InPages();
    _live = Sum{0 - inPages.blocks, 0 - inPages.bytes};
}

OmMemoryRegion::Sum OmMemoryRegion::InPages() const {
    Sum sum;
    for (std::size_t i = 0; i < Classes; ++i) {
        PageClass const& kind = _pageClasses[i];
        std::size_t const stride = (i + 1) * Stride;
        std::size_t const blocks = kind.inPages - static_cast<std::size_t>(kind.end - kind.next) / stride - kind.back;
        sum.blocks += blocks;
        sum.bytes += blocks * stride;
    }
    return sum;
}

void OmMemoryRegion::DropDependents() {
    while (_dependents != nullptr) {
        Dependent& dependent = *_dependents;
        Detach(dependent);
        dependent.drop(dependent);
    }
}

// --- lists
// ------------------------------------------------------------------------------------------------------------

namespace {

template <typename Record>
void PutOnList(Record*& first, Record& record, OmMemoryRegion& region) {
    record.region = &region;
    record.previous = nullptr;
    record.next = first;
    if (first != nullptr) {
        first->previous = &record;
    }
    first = &record;
}

template <typename Record>
void TakeOffList(Record*& first, Record& record) {
    (record.previous != nullptr ? record.previous->next : first) = record.next;
    if (record.next != nullptr) {
        record.next->previous = record.previous;
    }
    record.region = nullptr;
    record.previous = nullptr;
    record.next = nullptr;
}

} // namespace

void OmMemoryRegion::Attach(Dependent& dependent) {
    if (!_defaultHeap) {
        PutOnList(_dependents, dependent, *this);
    }
}

void OmMemoryRegion::Detach(Dependent& dependent) {
    if (dependent.region != nullptr) {
        TakeOffList(dependent.region->_dependents, dependent);
    }
}

void OmMemoryRegion::Watch(Watcher& watcher) {
    if (!_defaultHeap) {
        PutOnList(_watchers, watcher, *this);
    }
}

void OmMemoryRegion::Unwatch(Watcher& watcher) {
    if (watcher.region != nullptr) {
        TakeOffList(watcher.region->_watchers, watcher);
    }
}

void OmMemoryRegion::ForgetWatchers() {
    while (_watchers != nullptr) {
        Unwatch(*_watchers);
    }
}

void OmMemoryRegion::SettleWatchers() {
    while (_watchers != nullptr) {
        Watcher& watcher = *_watchers;
        Unwatch(watcher);
        watcher.settle(watcher);
    }
}
