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
constexpr std::size_t FirstChunkBytes = 2048;
constexpr std::size_t LastChunkBytes = std::size_t{1} << 20;

static_assert(Word == 8, "the owner word in front of a block is eight bytes");
static_assert(alignof(std::max_align_t) <= 16, "blocks are aligned to sixteen bytes");

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

std::size_t SumOrThrow(std::size_t bytes, std::size_t extra) {
    if (bytes > std::numeric_limits<std::size_t>::max() - extra) {
        throw std::bad_alloc();
    }
    return bytes + extra;
}

} // namespace

struct OmMemoryRegion::Chunk {
    Chunk* next;
    std::size_t bytes;
};

struct OmMemoryRegion::LargeBlock {
    Owner owner;
    LargeBlock* previous;
    LargeBlock* next;
    std::size_t bytes; ///< taken from the global allocator, this head included
    void* word;        ///< owner word of the payload behind
};

/// Keeps the default heap out of static destruction: other static objects may release blocks after any point.
struct DefaultHeapHolder {
    alignas(OmMemoryRegion) unsigned char storage[sizeof(OmMemoryRegion)];
    OmMemoryRegion* region;
    DefaultHeapHolder() : region(new (storage) OmMemoryRegion(OmMemoryRegion::DefaultHeapTag{})) {}
};

OmMemoryRegion::OmMemoryRegion(bool) : _nextChunkBytes(FirstChunkBytes), _watched(IsWatched()) {
    static_assert(sizeof(Chunk) % 16 == 0 && sizeof(LargeBlock) % 16 == 0);
    for (std::size_t i = 0; i < Classes; ++i) {
        _classes[i] = SizeClass{Owner{this, (i + 1) * Stride - Word}, nullptr};
    }
}

OmMemoryRegion::OmMemoryRegion(DefaultHeapTag) : OmMemoryRegion(false) { _defaultHeap = true; }

OmMemoryRegion::~OmMemoryRegion() {
    DropDependents();
    while (_chunks != nullptr) {
        Chunk* const chunk = _chunks;
        _chunks = chunk->next;
        if (_watched) {
            Unpoison(chunk, chunk->bytes);
        }
        std::free(chunk);
    }
    while (_large != nullptr) {
        LargeBlock* const block = _large;
        _large = block->next;
        std::free(block);
    }
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() {
    static DefaultHeapHolder holder;
    return holder.region;
}

void* OmMemoryRegion::Allocate(std::size_t bytes) {
    if (_defaultHeap) {
        char* const place = static_cast<char*>(TakeFromSystem(SumOrThrow(bytes, 2 * Word)));
        WriteWord<Owner>(place + Word, nullptr);
        return place + 2 * Word;
    }
    if (bytes <= SmallLimit) {
        return AllocateSmall((bytes + Word + Stride - 1) / Stride - 1, bytes);
    }
    return AllocateLarge(bytes);
}

void* OmMemoryRegion::AllocateSmall(std::size_t sizeClass, std::size_t bytes) {
    SizeClass& kind = _classes[sizeClass];
    char* word = static_cast<char*>(kind.released);
    if (word != nullptr) {
        kind.released = ReadWord<void>(word);
    } else {
        std::size_t const stride = kind.owner.payload + Word;
        if (static_cast<std::size_t>(_limit - _bump) < stride) {
            AddChunk();
        }
        word = _bump;
        _bump += stride;
    }
    if (_watched) {
        Unpoison(word, Word + bytes);
    }
    WriteWord(word, &kind.owner);
    ++_liveBlocks;
    _liveBytes += kind.owner.payload;
    return word + Word;
}

void* OmMemoryRegion::AllocateLarge(std::size_t bytes) {
    std::size_t const total = SumOrThrow(bytes, sizeof(LargeBlock));
    LargeBlock* const block = static_cast<LargeBlock*>(TakeFromSystem(total));
    *block = LargeBlock{Owner{this, bytes}, nullptr, _large, total, &block->owner};
    if (_large != nullptr) {
        _large->previous = block;
    }
    _large = block;
    ++_liveBlocks;
    _liveBytes += bytes;
    _reservedBytes += total;
    return block + 1;
}

void OmMemoryRegion::AddChunk() {
    Chunk* const chunk = static_cast<Chunk*>(TakeFromSystem(_nextChunkBytes));
    *chunk = Chunk{_chunks, _nextChunkBytes};
    _chunks = chunk;
    // Payloads, not owner words, stand at multiples of sixteen.
    _bump = reinterpret_cast<char*>(chunk) + sizeof(Chunk) + Word;
    _limit = reinterpret_cast<char*>(chunk) + _nextChunkBytes;
    if (_watched) {
        Poison(chunk + 1, _nextChunkBytes - sizeof(Chunk));
    }
    _reservedBytes += _nextChunkBytes;
    if (_nextChunkBytes < LastChunkBytes) {
        _nextChunkBytes *= 2;
    }
}

void OmMemoryRegion::Release(void* block) {
    if (block == nullptr) {
        return;
    }
    char* const word = static_cast<char*>(block) - Word;
    Owner* const owner = ReadWord<Owner>(word);
    if (owner == nullptr) {
        std::free(word - Word);
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

void OmMemoryRegion::ReleaseSmall(Owner& owner, void* word) {
    SizeClass& kind = _classes[(owner.payload + Word) / Stride - 1];
    WriteWord(word, kind.released);
    kind.released = word;
    if (_watched) {
        Poison(static_cast<char*>(word) + Word, owner.payload);
    }
    --_liveBlocks;
    _liveBytes -= owner.payload;
}

void OmMemoryRegion::ReleaseLarge(Owner& owner) {
    LargeBlock* const block = reinterpret_cast<LargeBlock*>(&owner);
    (block->previous != nullptr ? block->previous->next : _large) = block->next;
    if (block->next != nullptr) {
        block->next->previous = block->previous;
    }
    --_liveBlocks;
    _liveBytes -= owner.payload;
    _reservedBytes -= block->bytes;
    std::free(block);
}

void OmMemoryRegion::WorkingRelease(bool) {
    if (_defaultHeap) {
        return;
    }
    DropDependents();
    while (_watchers != nullptr) {
        Unwatch(*_watchers);
    }
    _swept = true;
    _liveBlocks = 0;
    _liveBytes = 0;
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

void OmMemoryRegion::SettleWatchers() {
    while (_watchers != nullptr) {
        Watcher& watcher = *_watchers;
        Unwatch(watcher);
        watcher.settle(watcher);
    }
}
