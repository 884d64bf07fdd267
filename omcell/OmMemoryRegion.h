#ifndef OMTREE_OMCELL_OMMEMORYREGION_H
#define OMTREE_OMCELL_OMMEMORYREGION_H

#include "omcell/Export.h"

#include <cstddef>

/// Arena that a pivot table (or a display heading) keeps its texts, labels and nodes in.
///
/// Two kinds of region exist. An *arena* is any region that a program constructs; `DefaultHeap()` is the one region of
/// the process that hands every request through to the global allocator and holds no state of its own.
///
/// How an arena stores its blocks. A block carries one word in front that names its owner, so that the static `Release`
/// needs no region and never looks at memory that is not ours:
///
///     small block (up to SmallLimit bytes), cut from a chunk of the arena
///     +----------+---------------------------+
///     | Owner*   | payload, 16-byte aligned  |   stride 16, 32, 48 ... : payloads of 8, 24, 40, ... bytes
///     +----------+---------------------------+
///          `--> the size class: its arena and its list of released blocks (linked through the owner words)
///
///     large block, one request of the global allocator each, on a doubly linked list of its arena
///     +--------------------------+----------+------------------+
///     | Owner, prev, next, size  | Owner*   | payload          |
///     +--------------------------+----------+------------------+
///
///     block of the default heap
///     +----------+----------+------------------+
///     | (unused) | null     | payload          |
///     +----------+----------+------------------+
///
/// Invariants
///  1. Every block is aligned for any standard type; two live blocks never share an address, zero-byte ones included.
///  2. A released small block serves the next request of its size class; a released large block leaves the process's
///     books at once. A program that replaces its texts for hours does not grow its arena.
///  3. `Allocate` and `Release` cost O(1) beside the global allocator's own cost for a new chunk or a large block.
///  4. Chunks start small and double up to a bound, so an arena with a handful of texts takes a few kilobytes.
///
/// A region is used by one thread at a time. `DefaultHeap()` may be used by any number of threads at once.
///
/// Under the address sanitizer (and under valgrind, where its header is present when the library is built) storage of
/// an arena that was released or never handed out is poisoned.
///
/// Why a word before each block and not size-class pages whose head is found by masking the address: `Release` takes
/// blocks of the default heap as well, and the page that such an address masks to is not ours to read. The word costs
/// 8 bytes a block and saves a `Release` the cache miss on the page's head.
class OMCELL_API OmMemoryRegion {
public:
    /// Something outside the arena that belongs to an object inside it and must be freed when the arena is swept
    /// without running the object's destructor. `drop` is called once, by `WorkingRelease` or the arena's destructor,
    /// after the record was taken off the arena's list.
    struct Dependent {
        Dependent* previous = nullptr;
        Dependent* next = nullptr;
        OmMemoryRegion* region = nullptr;
        void (*drop)(Dependent& self) = nullptr;
    };

    /// Something that was derived from texts of the arena (an index over labels) and holds only as long as none of them
    /// changes. `settle` is called once, after the record was taken off the arena's list, before the first change.
    struct Watcher {
        Watcher* previous = nullptr;
        Watcher* next = nullptr;
        OmMemoryRegion* region = nullptr;
        void (*settle)(Watcher& self) = nullptr;
    };

    /// Largest request, in bytes, that is served from a chunk.
    static constexpr std::size_t SmallLimit = 1016;

    /// An empty arena; takes no memory until the first request. The flag is accepted and has no effect; the model
    /// always passes false.
    explicit OmMemoryRegion(bool shared);

    /// Gives every chunk and large block back to the global allocator. Destructors of objects in them do not run;
    /// dependents that `WorkingRelease` has not dropped yet are dropped first.
    ~OmMemoryRegion();

    OmMemoryRegion(OmMemoryRegion const&) = delete;
    OmMemoryRegion& operator=(OmMemoryRegion const&) = delete;

    /// A block of at least `bytes` bytes, aligned for any standard type; the caller gives it back with `Release`, or
    /// lets the arena's end do so. Zero bytes give a distinct block.
    /// Throws std::bad_alloc when there is no memory; nothing has changed then.
    void* Allocate(std::size_t bytes);

    /// Gives a block of any region back. Null is ignored. After its arena's `WorkingRelease` a block stays readable and
    /// this does nothing.
    /// REQUIRES: the block came from `Allocate`, was not released before, and its arena still exists.
    static void Release(void* block);

    /// The region of the process that hands through to the global allocator. Never null, never destroyed.
    static OmMemoryRegion* DefaultHeap();

    /// `region`, or the default heap when it is null.
    static OmMemoryRegion* OrDefault(OmMemoryRegion* region) { return region != nullptr ? region : DefaultHeap(); }

    /// Ends the arena's service in one sweep: drops every dependent and makes all later `Release` calls on its blocks
    /// do nothing. Blocks stay readable until the destructor, so owners may still run the destructors that they need,
    /// in the order that they need. Costs O(dependents); no block is visited. The flag has no effect. Does nothing on
    /// the default heap.
    void WorkingRelease(bool keep);

    /// Whether this is the default heap.
    bool IsDefaultHeap() const { return _defaultHeap; }

    /// Puts a record on the arena's list of dependents. Ignored by the default heap, whose objects are always destroyed
    /// one by one. O(1).
    /// REQUIRES: the record is on no list.
    void Attach(Dependent& dependent);

    /// Takes a record off its arena's list; does nothing when it is on none. O(1).
    static void Detach(Dependent& dependent);

    /// Puts a record on the arena's list of watchers. Ignored by the default heap. O(1). A sweep and the arena's end
    /// forget the watchers without a call.
    /// REQUIRES: the record is on no list, and stays where it is while it is on this one.
    void Watch(Watcher& watcher);

    /// Takes a record off its arena's list; does nothing when it is on none. O(1). REQUIRES: the arena exists.
    static void Unwatch(Watcher& watcher);

    /// For whoever is about to change a text, or a label's place among others, in this region: settles every watcher
    /// and forgets it. Costs a comparison when there is none.
    void BeforeEdit() {
        if (_watchers != nullptr) {
            SettleWatchers();
        }
    }

    /// Blocks handed out and neither released nor swept. 0 for the default heap, which keeps no counts.
    std::size_t LiveBlocks() const { return _liveBlocks; }
    /// Bytes of those blocks, rounded up to what was set aside for each payload. 0 for the default heap.
    std::size_t LiveBytes() const { return _liveBytes; }
    /// Bytes that the arena holds from the global allocator, chunks and large blocks with their heads. 0 for the
    /// default heap.
    std::size_t ReservedBytes() const { return _reservedBytes; }

private:
    struct Owner {
        OmMemoryRegion* region;
        std::size_t payload; ///< bytes of a payload; above SmallLimit for a large block
    };
    struct SizeClass {
        Owner owner;
        void* released; ///< first released block (its owner word), each linked to the next through that word
    };
    struct Chunk;
    struct LargeBlock;
    struct DefaultHeapTag {};

    static constexpr std::size_t Stride = 16;
    static constexpr std::size_t Classes = (SmallLimit + 8) / Stride;

    explicit OmMemoryRegion(DefaultHeapTag);
    friend struct DefaultHeapHolder;

    void* AllocateSmall(std::size_t sizeClass, std::size_t bytes);
    void* AllocateLarge(std::size_t bytes);
    void AddChunk();
    void ReleaseSmall(Owner& owner, void* word);
    void ReleaseLarge(Owner& owner);
    void DropDependents();
    void SettleWatchers();

    SizeClass _classes[Classes];
    char* _bump = nullptr;  ///< next never-used byte of the newest chunk; an owner word goes here
    char* _limit = nullptr; ///< end of the newest chunk
    Chunk* _chunks = nullptr;
    LargeBlock* _large = nullptr;
    Dependent* _dependents = nullptr;
    Watcher* _watchers = nullptr;
    std::size_t _nextChunkBytes;
    std::size_t _liveBlocks = 0;
    std::size_t _liveBytes = 0;
    std::size_t _reservedBytes = 0;
    bool _defaultHeap = false;
    bool _swept = false;
    bool _watched; ///< poison and unpoison
};

#endif
