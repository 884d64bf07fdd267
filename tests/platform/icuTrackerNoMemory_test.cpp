#include "platform/icuTracker.h"
#include "tests/support/FailingHeap.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A tracker that keeps half of its converters would refuse every text from then on.
TEST(icuTrackerNoMemory, FailedConversionCanBeMadeAgain) {
    icuTracker const latin9({false, "de_DE.ISO-8859-15"});
    std::string out;
    EXPECT_GT(omtest::FailEachRequest([&] { EXPECT_TRUE(latin9.ToU8("caf\xE9", out)); }, [&] { EXPECT_EQ(out, ""); }),
              0);
    EXPECT_EQ(out, "caf\xC3\xA9");
    EXPECT_TRUE(latin9.FromU8("caf\xC3\xA9", out));
    EXPECT_EQ(out, "caf\xE9");
}

} // namespace
