#ifndef OMTREE_FUZZ_REQUIRE_H
#define OMTREE_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace omfuzz {

/// Ends the process, with the promise on standard error, unless it holds.
inline void Require(bool holds, char const* promise) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

/// The same for two texts, which are shown when they differ.
inline void RequireSame(std::string const& is, std::string const& mustBe, char const* promise) {
    if (is != mustBe) {
        std::fprintf(stderr, "is      \"%s\"\nmust be \"%s\"\n", is.c_str(), mustBe.c_str());
        Require(false, promise);
    }
}

} // namespace omfuzz

#endif
