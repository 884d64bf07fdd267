#include "backend/tables/Assert.h"
#include "tests/support/AssertionCatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::FailedAssertion;
using ::testing::StrEq;

void IgnoringHandler(char const*, int, char const*) {}

bool Fails() { return OM_ASSERT(2 < 1, "2 < 1", "backend/tables/Probe", 41); }

} // namespace

TEST(Assert, HoldingConditionIsTrueAndReportsNothing) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_TRUE(OM_ASSERT(1 < 2, "1 < 2", "backend/tables/Probe", 40));
    EXPECT_TRUE(OM_HARDENED(1 < 2, "1 < 2", "backend/tables/Probe", 40));
    EXPECT_TRUE(caught.Failures().empty());
}

TEST(Assert, BrokenConditionHandsSourceLineAndTextToTheHandler) {
    AssertionCatcher caught(AfterReport::Return);
    Fails();
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/Probe");
    EXPECT_EQ(caught.Failures()[0].line, 41);
    EXPECT_EQ(caught.Failures()[0].condition, "2 < 1");
}

TEST(Assert, IsFalseWhenTheHandlerReturns) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_FALSE(Fails());
}

TEST(Assert, HandlerMayThrowOutOfTheFailedCall) {
    AssertionCatcher caught(AfterReport::Throw);
    EXPECT_THROW(Fails(), FailedAssertion);
    EXPECT_EQ(caught.Failures().size(), 1U);
}

TEST(Assert, ConditionIsEvaluatedOnce) {
    AssertionCatcher caught(AfterReport::Return);
    int evaluations = 0;
    EXPECT_FALSE(OM_ASSERT(++evaluations > 5, "evaluations > 5", "backend/tables/Probe", 42));
    EXPECT_EQ(evaluations, 1);
}

TEST(Assert, SettingAHandlerReturnsTheOneBefore) {
    OmAssertionHandler const first = SetAssertionHandler(IgnoringHandler);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(SetAssertionHandler(first), &IgnoringHandler);
    EXPECT_EQ(SetAssertionHandler(first), first);
}

TEST(Assert, NullHandlerRestoresTheDefault) {
    OmAssertionHandler const standard = SetAssertionHandler(IgnoringHandler);
    SetAssertionHandler(nullptr);
    EXPECT_EQ(SetAssertionHandler(standard), standard);
}

TEST(AssertDeathTest, DefaultHandlerWritesSourceLineAndConditionAndAborts) {
    EXPECT_EXIT(Fails(), ::testing::KilledBySignal(SIGABRT), StrEq("backend/tables/Probe:41: 2 < 1\n"));
}

#if OMTREE_HARDENED
TEST(Assert, HardenedCheckReportsLikeAnAssertion) {
    AssertionCatcher caught(AfterReport::Return);
    EXPECT_FALSE(OM_HARDENED(2 < 1, "2 < 1", "backend/tables/Probe", 43));
    EXPECT_EQ(caught.Reports(), std::vector<std::string>{"backend/tables/Probe:43: 2 < 1"});
}
#endif
