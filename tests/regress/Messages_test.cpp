#include "omcell/OmMessage.h"
#include "omcell/OmStringCell.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Read(std::string const& pattern) {
    OmMessage message(pattern);
    message.Fill(0, OmStringCell("x"));
    return message.AsString();
}

} // namespace

// The mark's own brace was taken for the first of a doubled one, and a brace of the pattern was lost.
TEST(Messages, ABraceBehindASlotThatNothingFillsIsKept) {
    EXPECT_EQ(Read("{7}}"), "{7}}");
    EXPECT_EQ(Read("{7}}}"), "{7}}");
    EXPECT_EQ(Read("{7}}}}"), "{7}}}");
    EXPECT_EQ(Read("{{{7}}}"), "{{7}}");
    EXPECT_EQ(Read("{{7}}"), "{7}");
    EXPECT_EQ(Read("{0}}"), "x}");
    EXPECT_EQ(Read("{7}{0}"), "{7}x");
}

TEST(Messages, ABraceBehindASlotWithANumberThatNoSlotHasIsKept) {
    EXPECT_EQ(Read("{18446744073709551616}}"), "{18446744073709551616}}");
    EXPECT_EQ(Read("{007}}"), "{007}}");
    EXPECT_EQ(Read("{-7}}"), "{-7}");
    EXPECT_EQ(Read("{}}"), "{}");
}
