// The build without hardened checks, whatever this build is.
#ifdef OMTREE_HARDENED
#undef OMTREE_HARDENED
#endif
#define OMTREE_HARDENED 0

#include "backend/tables/Assert.h"
#include "tests/support/AssertionCatcher.h"

#include <gtest/gtest.h>

using omtest::AfterReport;
using omtest::AssertionCatcher;

TEST(AssertUnhardened, HardenedCheckIsTrueAndSilent) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_TRUE(OM_HARDENED(2 < 1, "2 < 1", "backend/tables/Probe", 1));
    EXPECT_TRUE(caught.Failures().empty());
}

TEST(AssertUnhardened, HardenedConditionIsNotEvaluated) {
    int evaluations = 0;
    auto const evaluate = [&evaluations] { return ++evaluations > 5; };
    EXPECT_TRUE(OM_HARDENED(evaluate(), "evaluate()", "backend/tables/Probe", 2));
    EXPECT_FALSE(evaluate());
    EXPECT_EQ(evaluations, 1);
}

TEST(AssertUnhardened, StructuralAssertionStaysOn) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_FALSE(OM_ASSERT(2 < 1, "2 < 1", "backend/tables/Probe", 3));
    EXPECT_EQ(caught.Failures().size(), 1U);
}
