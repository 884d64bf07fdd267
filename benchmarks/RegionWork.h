#ifndef OMTREE_BENCHMARKS_REGIONWORK_H
#define OMTREE_BENCHMARKS_REGIONWORK_H

#include "benchmarks/Harness.h"
#include "benchmarks/Inputs.h"

#include <memory>

/// The arena workload, for any arena: blocks of 16 to 256 bytes are taken, three in ten of them make a random live one
/// go, and at the end everything goes at once.
///
/// An arena has `void* Allocate(std::size_t)`, `void Release(void*, std::size_t)` and `template <Blocks> void
/// End(Blocks const& live)`, which gives back all that is left.
namespace om_bench {

struct LiveBlock {
    std::uint64_t* place;
    std::size_t bytes;
};

template <typename Arena>
void UseArena(benchmark::State& state) {
    constexpr std::size_t UsualBlocks = 10'000'000;
    constexpr std::size_t Smallest = 16;
    constexpr std::size_t Largest = 256;
    constexpr std::size_t ReleasedOfTen = 3;

    std::size_t const count = Count(UsualBlocks);
    Random random(31);
    std::vector<std::uint16_t> sizes(count);
    for (std::uint16_t& bytes : sizes) {
        bytes = static_cast<std::uint16_t>(Smallest + random.Below(Largest - Smallest + 1));
    }
    // Filled once, so that its pages are there before the clock runs.
    std::vector<LiveBlock> live(count, LiveBlock{nullptr, 1});
    live.clear();

    // A word in each block says which it is; what is left over at the end, or was released, adds up to all of them.
    std::uint64_t sum = 0;
    Random draw(32);
    Phases phases(state);
    TrimHeap();
    auto arena = std::make_unique<Arena>();
    phases.Time("blocks", count, [&] {
        for (std::size_t i = 0; i < count; ++i) {
            auto* const place = static_cast<std::uint64_t*>(arena->Allocate(sizes[i]));
            *place = i;
            live.push_back({place, sizes[i]});
            if (draw.Below(10) < ReleasedOfTen) {
                std::size_t const victim = draw.Below(live.size());
                LiveBlock const gone = live[victim];
                live[victim] = live.back();
                live.pop_back();
                sum += *gone.place;
                arena->Release(gone.place, gone.bytes);
            }
        }
    });
    for (LiveBlock const& block : live) {
        sum += *block.place;
    }
    ExpectEqual(state, "sum of block numbers", sum, count * (count - 1) / 2);

    phases.Time("end", count, [&] {
        arena->End(live);
        arena.reset();
    });
    phases.Finish();
}

} // namespace om_bench

#endif
