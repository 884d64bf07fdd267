#include "omcell/OmMessage.h"

#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"

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

namespace {

/// A kind whose clone is the text itself.
class SelfCloning final : public OmCellText {
public:
    explicit SelfCloning(int& destroyed) : _destroyed(destroyed) {}
    ~SelfCloning() override { ++_destroyed; }

    void Accept(Visitor&) override {}
    short OrderCode() const override { return 100; }
    std::string AsString() const override { return "t"; }
    std::string AsU8String() const override { return "t"; }
    std::string AsEngString() const override { return "t"; }
    short Compare(OmCellText const&) const override { return 0; }
    OmCellText* Clone(OmMemoryRegion*) const override { return const_cast<SelfCloning*>(this); }

private:
    int& _destroyed;
};

} // namespace

TEST(OmMessage, RefillingWithTheVeryTextThatIsHeldDestroysNothing) {
    int destroyed = 0;
    {
        OmMessage message("{0}");
        SelfCloning* const text = new SelfCloning(destroyed);
        message.Fill(0, *text);
        message.Fill(0, *text);
        EXPECT_EQ(message.Filler(0), text);
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(message.AsString(), "t");
    }
    EXPECT_EQ(destroyed, 1);
}
