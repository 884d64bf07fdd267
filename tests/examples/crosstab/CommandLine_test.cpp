#include "examples/crosstab/CommandLine.h"

#include "examples/crosstab/Failure.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

struct Ended {
    int status;
    std::string said;
};

template <typename Run>
Ended ended(Run run) {
    testing::internal::CaptureStderr();
    int const status = crosstab::runProgram("tool", run);
    return {status, testing::internal::GetCapturedStderr()};
}

TEST(RunProgram, WhatEndsWellSaysNothing) {
    Ended const run = ended([] {});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.said, "");
}

TEST(RunProgram, AFailureIsOneLine) {
    Ended const run = ended([] { throw crosstab::Failure("data.csv: No such file"); });
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.said, "tool: data.csv: No such file\n");
}

TEST(RunProgram, MemoryThatIsRefusedIsSaidInPlainWords) {
    Ended const run = ended([] { throw std::bad_alloc(); });
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.said, "tool: out of memory\n");
}

} // namespace
