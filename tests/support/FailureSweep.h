#ifndef OMTREE_TESTS_SUPPORT_FAILURESWEEP_H
#define OMTREE_TESTS_SUPPORT_FAILURESWEEP_H

#include "omcell/OmMemoryRegion.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/FailingMalloc.h"
#include "tests/support/LiveMalloc.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

/// Does an operation again and again with each of its allocations refused in turn.
///
/// REQUIRES: included by one source of the program, as the headers of the allocation functions say.
namespace omtest {

/// What holds after an operation that ended with std::bad_alloc.
enum class Promise {
    AsBefore, ///< the holder shows what it showed before the call
    Resumed,  ///< the holder may be half way; the same call, made again, leads to what the first one would have led to
    Usable    ///< the holder can be read, used and destroyed
};

/// An operation on a holder, which is made anew for every failure.
template <typename Held>
struct Operation {
    std::string area;
    std::string name;
    std::function<std::unique_ptr<Held>()> make;
    std::function<std::string(Held&)> show;
    /// The region in which the operation works; none when the function is empty.
    std::function<OmMemoryRegion&(Held&)> region = nullptr;
};

/// Number of failures so far, by area.
inline std::map<std::string, long>& FailurePoints() {
    static std::map<std::string, long> points;
    return points;
}

/// What is being done, for the message when the program ends there.
inline std::string& FailureAtHand() {
    static std::string text;
    return text;
}

[[noreturn]] inline void TellOfTermination() {
    mallocBooks.untilFailure = Heap().untilFailure = -1;
    std::fprintf(stderr, "std::terminate during: %s\n", FailureAtHand().c_str());
    std::abort();
}

/// Blocks of a region, one stock for each size: so many are left to the operation, and not one more.
class RegionStock {
public:
    static constexpr std::size_t Sizes = (OmMemoryRegion::SmallLimit + 8) / 32;
    static constexpr std::size_t Most = 12; ///< of one size

    explicit RegionStock(OmMemoryRegion& region) {
        for (std::size_t size = 0; size < Sizes; ++size) {
            for (void*& block : _stock[size]) {
                block = region.Allocate(BytesOf(size));
            }
        }
        mallocBooks.once = false;
        mallocBooks.untilFailure = 0;
        for (std::size_t size = Sizes; size-- > 0;) {
            TakeAll(region, BytesOf(size));
        }
        mallocBooks.untilFailure = -1;
        mallocBooks.failed = false;
    }

    /// Leaves `left` blocks of one size, and the whole stock of the others.
    void Leave(std::size_t left, std::size_t ofSize) {
        for (std::size_t size = 0; size < Sizes; ++size) {
            for (std::size_t k = 0; k < (size == ofSize ? left : Most); ++k) {
                OmMemoryRegion::Release(std::exchange(_stock[size][k], nullptr));
            }
        }
    }

private:
    static std::size_t BytesOf(std::size_t size) { return 32 * (size + 1) - 8; }

    static void TakeAll(OmMemoryRegion& region, std::size_t bytes) {
        try {
            for (;;) {
                region.Allocate(bytes);
            }
        } catch (std::bad_alloc const&) {
        }
    }

    std::array<std::array<void*, Most>, Sizes> _stock{};
};

/// Does one operation with every failure.
template <typename Held>
class Sweep {
public:
    using Act = std::function<void(Held&)>;

    Sweep(Operation<Held> operation, Promise promise, Act act)
        : _operation(std::move(operation)), _promise(promise), _act(std::move(act)) {
        std::unique_ptr<Held> const held = _operation.make();
        _before = _operation.show(*held);
        _act(*held);
        _after = _operation.show(*held);
        _blocksAfter = BlocksOf(*held);
    }

    /// The operators new, everything that comes from malloc (the operators and the regions too), and the blocks of the
    /// holder's region; the k-th request alone, and all from the k-th on.
    void Run() {
        for (bool const once : {true, false}) {
            FailEach(once ? "new, once" : "new, from here on", [&](long k) {
                Heap().once = once;
                Heap().untilFailure = k;
            });
            FailEach(once ? "malloc, once" : "malloc, from here on", [&](long k) {
                mallocBooks.once = once;
                mallocBooks.untilFailure = k;
            });
        }
        if (_operation.region != nullptr) {
            FailEachBlock();
        }
    }

private:
    /// What is lost in a region comes back with it, so it is looked for while the holder stands.
    std::size_t BlocksOf(Held& held) const {
        return _operation.region != nullptr ? _operation.region(held).LiveBlocks() : 0;
    }

    template <typename Arm>
    void FailEach(char const* kind, Arm&& arm) {
        for (long k = 0; _findings < Enough; ++k) {
            Name(kind, k);
            if (!FailOnce([](Held&) {}, [&] { arm(k); })) {
                return;
            }
        }
    }

    void FailEachBlock() {
        for (std::size_t size = 0; size < RegionStock::Sizes; ++size) {
            for (std::size_t left = 0; left <= RegionStock::Most; ++left) {
                Name("region, size " + std::to_string(size), static_cast<long>(left));
                auto const stock = [&](Held& held) { RegionStock(_operation.region(held)).Leave(left, size); };
                bool const failed = FailOnce(stock, [] {
                    mallocBooks.once = false;
                    mallocBooks.spared = 2048; // a chunk of a region is no smaller
                    mallocBooks.untilFailure = 0;
                });
                if (!failed || _findings >= Enough) {
                    break;
                }
            }
        }
    }

    void Name(std::string const& kind, long k) {
        FailureAtHand() = _operation.area + ": " + _operation.name + " (" + kind + ", " + std::to_string(k) + ")";
    }

    /// Whether anything was refused.
    template <typename Prepare, typename Arm>
    bool FailOnce(Prepare&& prepare, Arm&& arm) {
        std::ptrdiff_t const live = Heap().live;
        std::ptrdiff_t const blocks = mallocBooks.live;
        std::size_t const texts = OmMemoryRegion::DefaultHeap()->LiveBlocks();
        std::size_t const findings = _findings;
        bool const failed = FailIn(prepare, arm);
        if (findings == _findings) { // a finding's own text lies in the heap
            Expect(Heap().live == live, "a block of operator new is lost");
            Expect(OmMemoryRegion::DefaultHeap()->LiveBlocks() == texts, "a block of the default heap is lost");
            Expect(!MallocIsWatched || findings != _findings || mallocBooks.live == blocks,
                   "a block of malloc is lost");
        }
        FailurePoints()[_operation.area] += failed ? 1 : 0;
        return failed;
    }

    template <typename Prepare, typename Arm>
    bool FailIn(Prepare& prepare, Arm& arm) {
        std::unique_ptr<Held> const held = _operation.make();
        std::size_t const unstocked = BlocksOf(*held);
        prepare(*held);
        std::size_t const stocked = BlocksOf(*held) - unstocked;
        Heap().failed = mallocBooks.failed = false;
        bool thrown = false;
        arm();
        try {
            _act(*held);
        } catch (std::bad_alloc const&) {
            thrown = true;
        } catch (...) {
            Disarm();
            Expect(false, "another exception");
            return true;
        }
        Disarm();
        bool const failed = Heap().failed || mallocBooks.failed;
        Expect(failed || !thrown, "std::bad_alloc although nothing was refused");
        thrown ? CheckThrown(*held, stocked) : CheckDone(*held);
        return failed;
    }

    static void Disarm() {
        Heap().untilFailure = mallocBooks.untilFailure = -1;
        mallocBooks.spared = 0;
    }

    /// A refusal that the operation did without.
    void CheckDone(Held& held) {
        std::string const now = _operation.show(held);
        Expect(_promise == Promise::Usable || now == _after, "done, but not what was asked for", now, _after);
    }

    void CheckThrown(Held& held, std::size_t stocked) {
        std::string const now = _operation.show(held);
        Expect(_promise != Promise::AsBefore || now == _before, "not as before", now, _before);
        try {
            _act(held);
        } catch (std::exception const& exception) {
            Expect(false, "cannot be done again", exception.what());
            return;
        }
        std::string const again = _operation.show(held);
        if (_promise != Promise::Usable) {
            Expect(again == _after, "something else when done again", again, _after);
            Expect(BlocksOf(held) - stocked == _blocksAfter, "other blocks in the region");
        }
    }

    void Expect(bool holds, char const* complaint, std::string const& found = "", std::string const& expected = "") {
        if (holds) {
            return;
        }
        ++_findings;
        EXPECT_EQ(found, expected) << complaint << ": " << FailureAtHand();
        if (found == expected) {
            ADD_FAILURE() << complaint << ": " << FailureAtHand();
        }
    }

    static constexpr std::size_t Enough = 6;

    Operation<Held> _operation;
    Promise _promise;
    Act _act;
    std::string _before;
    std::string _after;
    std::size_t _blocksAfter = 0;
    std::size_t _findings = 0;
};

} // namespace omtest

#endif
