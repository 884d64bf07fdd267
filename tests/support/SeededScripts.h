#ifndef OMTREE_TESTS_SUPPORT_SEEDEDSCRIPTS_H
#define OMTREE_TESTS_SUPPORT_SEEDEDSCRIPTS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <vector>

/// Random test scripts that can be replayed: script number s is a function of s alone.
///
///     OMTREE_TEST_SEED=417 ./model_Headings_test     runs script 417 and no other
///     OMTREE_TEST_TRACE=1 ./model_Headings_test      writes seeds and operations to standard error as they start, for
///                                                    a script that crashes
namespace omtest {

inline void Trace(std::string const& event) {
    static bool const wanted = std::getenv("OMTREE_TEST_TRACE") != nullptr;
    if (wanted) {
        std::cerr << event << std::endl;
    }
}

/// The random choices of one script.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : _generator(seed) {}
    Dice(Dice const&) = delete;
    Dice& operator=(Dice const&) = delete;
    virtual ~Dice() = default;

    /// 0 .. count - 1. Not std::uniform_int_distribution, whose sequence differs between libraries.
    virtual std::size_t Below(std::size_t count) { return static_cast<std::size_t>(_generator() % count); }
    /// Whether there is nothing left to choose from, so that a script should end. Dice made of a seed go on for ever.
    virtual bool Spent() const { return false; }
    int Int(int first, int last) { return first + static_cast<int>(Below(static_cast<std::size_t>(last - first + 1))); }
    bool Percent(std::size_t chance) { return Below(100) < chance; }
    template <typename T>
    T const& Pick(std::vector<T> const& choices) {
        return choices[Below(choices.size())];
    }

private:
    std::mt19937_64 _generator;
};

/// Runs `script(Dice&)` for the seeds 1 .. count, or for the one that OMTREE_TEST_SEED names. Stops at the first script
/// that fails; its seed is in the failure's trace.
template <typename Script>
void RunScripts(std::uint64_t count, Script&& script) {
    char const* const chosen = std::getenv("OMTREE_TEST_SEED");
    std::uint64_t const first = chosen != nullptr ? std::strtoull(chosen, nullptr, 10) : 1;
    std::uint64_t const last = chosen != nullptr ? first : count;
    for (std::uint64_t seed = first; seed <= last && !::testing::Test::HasFailure(); ++seed) {
        std::string const name = "OMTREE_TEST_SEED=" + std::to_string(seed);
        SCOPED_TRACE(name);
        Trace(name);
        Dice dice(seed);
        script(dice);
    }
}

} // namespace omtest

#endif
