#include "omcell/OmMessage.h"

#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"
#include "tests/support/MuteText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

icuTracker const& Latin1() {
    static icuTracker const tracker({false, "de_DE.ISO-8859-1"});
    return tracker;
}

icuTracker* AsTracker(icuTracker const& tracker) { return const_cast<icuTracker*>(&tracker); }

} // namespace

TEST(OmMessageTracker, PatternAndFillersAreConvertedFromTheTrackersCodePage) {
    OmMessage message("F\xE4lle {0}");
    message.Fill(0, OmStringCell("gr\xF6\xDF"
                                 "er"));
    message.SetTracker(AsTracker(Latin1()));
    EXPECT_EQ(message.AsU8String(), "Fälle größer");
    EXPECT_EQ(message.AsString(), "F\xE4lle gr\xF6\xDF"
                                  "er");
}

// The second byte of this character is that of '{'.
TEST(OmMessageTracker, BraceInsideAnotherCharacterIsNoSlot) {
    icuTracker const shiftJis({false, "ja_JP.SJIS"});
    OmMessage message("\x83\x7B{0}");
    message.Fill(0, OmStringCell("x"));
    message.SetTracker(AsTracker(shiftJis));
    EXPECT_EQ(message.AsU8String(), "ボx");
}

TEST(OmMessageTracker, PatternStaysAsItIsWhenItCannotBeConverted) {
    icuTracker const unknown({false, "no-such-page"});
    icuTracker const unicode({true, "de_DE.ISO-8859-1"});
    OmMessage message("Fälle {0}");
    message.Fill(0, OmStringCell("x"));
    EXPECT_EQ(message.AsU8String(), "Fälle x");
    for (icuTracker const* const tracker : {&unknown, &unicode}) {
        message.SetTracker(AsTracker(*tracker));
        EXPECT_EQ(message.AsU8String(), "Fälle x");
    }
}

TEST(OmMessage, RefillingWithTheVeryTextThatIsHeldDestroysNothing) {
    int destroyed = 0;
    {
        OmMessage message("{0}");
        omtest::SelfCloning* const text = new omtest::SelfCloning(destroyed);
        message.Fill(0, *text);
        message.Fill(0, *text);
        EXPECT_EQ(message.Filler(0), text);
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(message.AsString(), "mute");
    }
    EXPECT_EQ(destroyed, 1);
}
