#ifndef OMTREE_OMCELL_OMMEMORYREGION_H
#define OMTREE_OMCELL_OMMEMORYREGION_H

#include "omcell/Export.h"

#include <cstddef>

/// Arena that a pivot table (or a display heading) keeps its texts, labels and nodes in.
///
/// Two kinds of region exist. An *arena* is any region that a program constructs; `DefaultHeap()` is the one region of
/// the process that hands every request through to the global allocator and holds no state of its own.
///
/// How blocks are stored. `Release` is handed an address and nothing else, and must not look at memory that is not
/// ours. So bit 4 of every payload's address says what stands where:
///
///     0: a block of a page, at a multiple of 32. The page's head is found by rounding the address down.
///
///         multiple of 64 KiB
///         +----------------------------+---------+---------+---------+-----
///         | head: arena, size class    | payload | payload | payload | ...      all of one size: 32, 64, 96 ... 1024
///         +----------------------------+---------+---------+---------+-----
///          64 bytes
///
///     1: a block with a word in front of it, 16 behind a multiple of 32. The word names the owner:
///
///         small block, cut from a chunk of the arena
///         +----------+-----------------+
///         | Owner*   | payload         |     24, 56, 88 ... 1016 bytes
///         +----------+-----------------+
///              `--> the size class: its arena and its list of released blocks
///
///         large block, one request of the global allocator each, on a doubly linked list of its arena
///         +-------------------------------+----------+------------------+
///         | Owner, prev, next, start      | Owner*   | payload          |
///         +-------------------------------+----------+------------------+
///
///         block of the default heap
///         +-----------------+----------+------------------+
///         | (16 or 0 bytes) | 1 or 0   | payload          |     1: the allocator's block starts 32 bytes before, 0: 16
///         +-----------------+----------+------------------+
///
/// A size class starts with blocks cut from chunks, which all classes share, so that an arena with a handful of texts
/// takes a few kilobytes. Once it has cut as many as a page holds it goes on with pages: no word, blocks of 64 bytes
/// that are a cache line each, and a release that need not wait until the block itself has come from memory. Ten
/// million blocks with releases at random took 174 to 205 ns each with a word before each block, 112 to 137 ns with
/// pages.
///
/// Invariants
///  1. Every block is aligned for any standard type; two live blocks never share an address, zero-byte ones included.
///  2. A released small block serves the next request of its size class, one cut from a chunk at the latest when the
///     class would need a new page; a released large block leaves the process's books at once. A program that replaces
///     its texts for hours does not grow its arena.
///  3. `Allocate` and `Release` cost O(1) beside the global allocator's own cost for a new chunk or page or a large
///     block.
///  4. Chunks start small and double up to a bound. A class takes a page only when no released block serves the
///     request.
///
/// A region is used by one thread at a time. `DefaultHeap()` may be used by any number of threads at once.
///
/// Under the address sanitizer (and under valgrind, where its header is present when the library is built) storage of
/// an arena that was released or never handed out is poisoned.
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

    /// Largest request, in bytes, that is served from a chunk or a page.
    static constexpr std::size_t SmallLimit = 1016;

    /// An empty arena; takes no memory until the first request. The flag is accepted and has no effect; the model
    /// always passes false.
    explicit OmMemoryRegion(bool shared);

    /// Gives every chunk, page and large block back to the global allocator. Destructors of objects in them do not run;
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
    /// in the order that they need. Costs O(dependents and watchers); no block is visited. The flag has no effect. Does
    /// nothing on the default heap.
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

    /// Blocks handed out and neither released nor swept. One that is handed out after the sweep stays counted. 0 for
    /// the default heap, which keeps no counts.
    std::size_t LiveBlocks() const { return _live.blocks + InPages().blocks; }
    /// Bytes of those blocks, rounded up to what was set aside for each payload. 0 for the default heap.
    std::size_t LiveBytes() const { return _live.bytes + InPages().bytes; }
    /// Bytes that the arena holds from the global allocator: chunks, pages and large blocks with their heads. 0 for the
    /// default heap.
    std::size_t ReservedBytes() const { return _reservedBytes; }

private:
    struct Owner {
        OmMemoryRegion* region;
        std::size_t payload; ///< bytes of a payload; above SmallLimit for a large block
    };
    /// Blocks with a word in front.
    struct WordClass {
        Owner owner;
        void* released; ///< first released block (its word), each linked to the next through that word
    };
    /// Blocks of pages.
    struct PageClass {
        void* released;          ///< first released block, each linked to the next through its first word
        char* next;              ///< next never-used block of the newest page
        char* end;               ///< behind that page's last block
        std::size_t beforePages; ///< how many more blocks are cut from chunks before there are pages
        std::size_t inPages;     ///< blocks that the pages are good for
        std::size_t back;        ///< how many of these are released
    };
    struct Sum {
        std::size_t blocks = 0;
        std::size_t bytes = 0;
    };
    struct Page;
    struct Chunk;
    struct LargeBlock;
    struct DefaultHeapTag {};

    static constexpr std::size_t Stride = 32;
    static constexpr std::size_t Classes = (SmallLimit + 8) / Stride;

    explicit OmMemoryRegion(DefaultHeapTag);
    friend struct DefaultHeapHolder;

    void* AllocateFromChunk(PageClass& kind, std::size_t bytes);
    void* AllocateLarge(std::size_t bytes);
    void AddChunk();
    void AddPage(PageClass& kind);
    void ReleaseInPage(Page const& page, void* block);
    void ReleaseSmall(Owner& owner, void* word);
    void ReleaseLarge(Owner& owner);
    /// Blocks of pages that are handed out. The ways in and out of a page count as little as they can: with a count of
    /// blocks and one of bytes they took a tenth longer.
    Sum InPages() const;
    void DropDependents();
    void ForgetWatchers();
    void SettleWatchers();

    PageClass _pageClasses[Classes];
    WordClass _wordClasses[Classes];
    char* _bump = nullptr;  ///< next never-used byte of the newest chunk; an owner word goes here
    char* _limit = nullptr; ///< end of the newest chunk
    Chunk* _chunks = nullptr;
    Page* _firstPage = nullptr; ///< pages in the order of their making
    Page* _lastPage = nullptr;
    LargeBlock* _large = nullptr;
    Dependent* _dependents = nullptr;
    Watcher* _watchers = nullptr;
    std::size_t _nextChunkBytes;
    Sum _live; ///< blocks with a word in front; after a sweep, less what was live in pages
    std::size_t _reservedBytes = 0;
    bool _defaultHeap = false;
    bool _swept = false;
    bool _watched; ///< poison and unpoison
};

#endif
