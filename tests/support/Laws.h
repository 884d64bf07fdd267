#ifndef OMTREE_TESTS_SUPPORT_LAWS_H
#define OMTREE_TESTS_SUPPORT_LAWS_H

#include <gtest/gtest.h>
#include <rapidcheck.h>
// Behind the two that it needs.
#include <rapidcheck/gtest.h>

#include <cstdlib>

/// Laws that hold for all values of some kind, tried with many and shown with a small one when they fail.
///
///     RC_PARAMS="seed=7 max_success=100000" ./laws_Headings_test     runs other cases, and more of them
namespace omtest {

/// Without a wish from outside, the same cases in every run. Read when the first law is tried.
inline int const LawParameters = ::setenv("RC_PARAMS", "seed=20261122 max_success=500", 0);

} // namespace omtest

#endif
