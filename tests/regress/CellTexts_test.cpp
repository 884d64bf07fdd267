// Defects of cell texts: cost, native stack, and parts that call back.
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/icuTracker.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Tree = OmComposite::Tree;

/// Counts how often it is asked for its text.
class CountingText final : public OmCellText {
public:
    CountingText(std::string text, int& asked) : _text(std::move(text)), _asked(asked) {}

    void Accept(Visitor&) override {}
    short OrderCode() const override { return 100; }
    std::string AsString() const override { return ++_asked, _text; }
    std::string AsU8String() const override { return AsString(); }
    std::string AsEngString() const override { return AsString(); }
    std::size_t TextLength() const override { return ++_asked, _text.size(); }
    short Compare(OmCellText const&) const override { return ++_asked, short{0}; }
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) CountingText(_text, _asked); }

private:
    std::string _text;
    int& _asked;
};

/// Messages inside each other that each show the one within as the pattern says.
std::unique_ptr<OmCellText> Nested(OmCellText const& core, std::string const& pattern, int levels) {
    std::unique_ptr<OmCellText> text(core.Clone(nullptr));
    for (int level = 0; level < levels; ++level) {
        auto message = std::make_unique<OmMessage>(pattern, pattern);
        message->Fill(0, *text);
        text = std::move(message);
    }
    return text;
}

} // namespace

// --- cost of messages ------------------------------------------------------------------------------------------------

// Nested 60 deep, the core was to be asked 2 to the power of 60 times, for nothing.
TEST(MessageInMessage, PutsWhatFillsASlotTogetherOnceHoweverOftenItIsShown) {
    int asked = 0;
    std::unique_ptr<OmCellText> const text = Nested(CountingText("", asked), "{0}{0}", 60);
    EXPECT_EQ(text->AsString(), "");
    EXPECT_EQ(text->AsU8String(), "");
    EXPECT_EQ(text->AsEngString(), "");
    EXPECT_EQ(text->AsFormattedString(), "");
    EXPECT_EQ(asked, 4);
    asked = 0;
    EXPECT_EQ(text->TextLength(), 60U * 6U);
    EXPECT_EQ(text->Compare(*Nested(CountingText("", asked), "{0}{0}", 60)), 0);
    EXPECT_EQ(asked, 2);
}

TEST(MessageInMessage, ShowsTheSameTextEachTime) {
    int asked = 0;
    EXPECT_EQ(Nested(CountingText("ab", asked), "{0}{0}", 10)->AsString().size(), 2048U);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(Nested(CountingText("x", asked), "<{0}|{0}>", 2)->AsString(), "<<x|x>|<x|x>>");
    OmMessage message("{1}{0}{1}{2}{0}");
    message.Fill(0, *Nested(OmStringCell("a"), "({0},{0})", 1));
    message.Fill(1, OmNumber(5));
    EXPECT_EQ(message.AsString(), "5(a,a)5{2}(a,a)");
    OmMessage outer("{0}-{1}-{0}");
    outer.Fill(0, message);
    outer.Fill(1, message);
    EXPECT_EQ(outer.AsString(), "5(a,a)5{2}(a,a)-5(a,a)5{2}(a,a)-5(a,a)5{2}(a,a)");
}

// Each slot of many, shown again and again.
TEST(MessageInMessage, AsksForEachOfManyFillersOnce) {
    int asked = 0;
    std::string pattern;
    for (int round = 0; round < 3; ++round) {
        for (int slot = 0; slot < 1000; ++slot) {
            pattern += "{" + std::to_string(slot) + "}";
        }
    }
    OmMessage message(pattern);
    for (std::size_t slot = 0; slot < 1000; ++slot) {
        message.Fill(slot, CountingText("x", asked));
    }
    EXPECT_EQ(message.AsString(), std::string(3000, 'x'));
    EXPECT_EQ(asked, 1000);
}
