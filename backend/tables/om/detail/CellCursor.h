#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_CELLCURSOR_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_CELLCURSOR_H

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/CellStore.h"
#include "backend/tables/om/detail/PointerVector.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Where an iteration over a table's cells stands: one level for each dimension, level 0 in the leaf.
///
/// Cells side by side, in a dense leaf or in one leaf of a box, are a *run*:
///
///     run       +------+------+------+------+------+ - - - +
///               | cell | null | cell | cell | null |       |
///               +------+------+------+------+------+ - - - +
///                  begin        ^ next          end ^       ^ readable: how far slots may be looked at ahead
///
/// The cells of a hash are a *list*: its places in the order of their keys.
///
/// The cursor remembers nodes, and the order of those that have none of their own. When the store says that something
/// moved it finds its place anew by the subscripts, so that it goes on behind the cell that it stood on, whatever was
/// stored or deleted. The order of a hash is kept while its places stay, also when keys came that it does not have: a
/// program may delete, move and add cells at each step, and a hash is sorted anew only when it has doubled. What was
/// added behind the cursor may be seen or not.
struct OMTREE_LOCAL OmPivotTable::Iterator::Data : OmPivotTable::Iterator::Head {
    struct Level {
        std::uint64_t position; ///< subscript; in a run, that where it was begun
        PointerVector const* node;
        std::vector<std::uint64_t> order; ///< of a hash, its entries by key (PointerVector::Sort)
        std::size_t passed;               ///< how many of these
        std::uint64_t serial;             ///< of the hash that `order` was made from, or 0
    };

    explicit Data(CellStore const& itsStore) : store(&itsStore) {}

    /// To the first cell.
    void Start();

    /// To the next cell, if there is one.
    void Next() {
        if (changes == store->Changes() && next != end) {
            void* const entry = *next;
            if (entry != nullptr) {
                FetchAhead();
                ++next;
                cell = static_cast<OmCellText*>(entry);
                return;
            }
        }
        NextInList();
    }

    /// The current cell's subscript on a level.
    std::uint64_t PositionOn(std::size_t level) const;

    CellStore const* store;
    std::uint64_t changes = 0; ///< of the store, when the nodes were looked up

    // In a run: the slot behind the cell. Elsewhere all four are null.
    void* const* next = nullptr;
    void* const* end = nullptr;
    void* const* readable = nullptr;
    void* const* begin = nullptr;

    /// How far the last run has fetched texts ahead, which may be into the next one. With runs of two cells, fetching
    /// anew in each took half as long again.
    void* const* fetched = nullptr;

    // In a list: the places, the number of the cell among them, how many there are (0 elsewhere), the cell's key.
    PointerVector::KeyedEntry const* keyed = nullptr;
    std::uint64_t lastPlace = 0;
    std::size_t at = 0;
    std::size_t length = 0;
    std::uint64_t key = 0;

    bool inSpanning = false; ///< level 1 stands in a node that spans its leaves, level 0 has none
    std::vector<Level> levels;

private:
    PointerVector::KeyedEntry const& KeyedInList(std::size_t i) const {
        return keyed[levels[inSpanning ? 1 : 0].order[i] & lastPlace];
    }

    /// How many texts ahead of the current one are fetched into the cache. The texts lie where their stores put them:
    /// without, a walk of cells that were stored in random order takes three times as long. Each is fetched twice,
    /// because a fetch may be dropped while the core looks its page up: with one fetch a cell took 12.4 ns, be it 12
    /// or 64 texts ahead, with two 10.0, which is what a bare loop over the addresses takes.
    static constexpr std::ptrdiff_t Ahead = 32;
    static constexpr std::ptrdiff_t Again = 16;

    /// Fetches what a look at a text's kind and length touches. Where there are many texts, each begins with a line or
    /// in the middle of one (see OmMemoryRegion), so that its head lies in one.
    static void Prefetch([[maybe_unused]] void const* text) {
#if defined(__GNUC__)
        __builtin_prefetch(text);
#endif
    }

    void FetchAhead() const {
        if (readable - next > Ahead) {
            Prefetch(next[Ahead]);
            Prefetch(next[Again]);
        }
    }

    void NextInList();
    void Leave();
    void NextElsewhere();
    void Seek(std::size_t level, std::uint64_t from);
    void Enter(Level& level, void const* node);
    void* EntryAtOrAfter(std::size_t number, std::uint64_t from);
    void* KeyedAtOrAfter(std::size_t number, std::uint64_t from);
    void* BoxCellAtOrAfter(std::uint64_t from);
    void* StartRun(void* const* entries, std::size_t count, std::size_t canBeRead, std::size_t from);
    void* StartList(Level const& level);
    PointerVector const* Top() const;
    void FindAgain();

    std::vector<std::uint64_t> _scratch;
};

#endif
