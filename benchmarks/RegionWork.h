#ifndef OMTREE_BENCHMARKS_REGIONWORK_H
#define OMTREE_BENCHMARKS_REGIONWORK_H

#include "benchmarks/Harness.h"
#include "benchmarks/Inputs.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

/// The arena workload, for any arena: blocks of 16 to 256 bytes are taken, three in ten of them make a random live one
/// go, and at the end everything goes at once.
///
/// An arena has `void* Allocate(std::size_t)`, `void Release(void*, std::size_t)` and `void End(Blocks const&)`, which
/// gives back all that is left.
namespace om_bench {

/// Blocks by number, null once released.
using Blocks = std::vector<std::uint64_t*>;

/// What happens to the blocks, drawn beforehand, so that the clock sees little else than the arena.
struct BlockScript {
    static constexpr std::uint32_t None = UINT32_MAX;

    std::vector<std::uint16_t> bytes;    ///< of each block
    std::vector<std::uint32_t> released; ///< the block that goes after each one came, or None
};

inline BlockScript MakeBlockScript(std::size_t count) {
    constexpr std::size_t Smallest = 16;
    constexpr std::size_t Largest = 256;
    constexpr std::size_t ReleasedOfTen = 3;

    Random random(31);
    BlockScript script;
    std::vector<std::uint32_t> live;
    for (std::size_t i = 0; i < count; ++i) {
        script.bytes.push_back(static_cast<std::uint16_t>(Smallest + random.Below(Largest - Smallest + 1)));
        script.released.push_back(BlockScript::None);
        live.push_back(static_cast<std::uint32_t>(i));
        if (random.Below(10) < ReleasedOfTen) {
            std::swap(live[random.Below(live.size())], live.back());
            script.released.back() = live.back();
            live.pop_back();
        }
    }
    return script;
}

template <typename Arena>
void UseArena(benchmark::State& state) {
    constexpr std::size_t UsualBlocks = 10'000'000;

    std::size_t const count = Count(UsualBlocks);
    BlockScript const script = MakeBlockScript(count);
    // Written once, so that its pages are there before the clock runs.
    std::uint64_t nowhere = 0;
    Blocks blocks(count, &nowhere);

    Phases phases(state);
    TrimHeap();
    auto arena = std::make_unique<Arena>();
    phases.Time("blocks", count, [&] {
        for (std::size_t i = 0; i < count; ++i) {
            blocks[i] = static_cast<std::uint64_t*>(arena->Allocate(script.bytes[i]));
            *blocks[i] = i;
            std::uint32_t const gone = script.released[i];
            if (gone != BlockScript::None) {
                arena->Release(blocks[gone], script.bytes[gone]);
                blocks[gone] = nullptr;
            }
        }
    });
    // A block that was cut from another, or handed out twice, has lost its number.
    std::size_t lost = 0;
    for (std::size_t i = 0; i < count; ++i) {
        lost += blocks[i] != nullptr && *blocks[i] != i ? 1U : 0U;
    }
    ExpectEqual(state, "blocks that lost their number", lost, 0);

    phases.Time("end", count, [&] {
        arena->End(blocks);
        arena.reset();
    });
    phases.Finish();
}

} // namespace om_bench

#endif
