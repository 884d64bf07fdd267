// Defects of cell texts: cost, native stack, and parts that call back.
#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/icuTracker.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <pthread.h>
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

// --- depth -----------------------------------------------------------------------------------------------------------

namespace {

/// Runs the action on a thread with a stack of 128 KiB, a few thousand times less than what recursion over the levels
/// below would take of a stack of the usual size.
void RunOnSmallStack(std::function<void()> action) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{128} << 10), 0);
    pthread_t thread{};
    auto const run = [](void* task) -> void* {
        (*static_cast<std::function<void()>*>(task))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &action), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// Gives a composite its tracker as a table's visitor does, and leaves the other kinds alone.
class TrackerVisitor final : public OmCellText::Visitor {
public:
    explicit TrackerVisitor(icuTracker& tracker) : _tracker(tracker) {}
    void Visit(OmComposite& text) override { text.SetTracker(&_tracker); }
    void Visit(OmStringCell& text) override { text.SetTracker(&_tracker); }
    void Visit(OmNumber& text) override { text.SetTracker(&_tracker); }
    void Visit(OmVariable& text) override { text.SetTracker(&_tracker); }
    void Visit(OmValue& text) override { text.SetTracker(&_tracker); }
    void Visit(OmMessage& text) override { text.SetTracker(&_tracker); }
    void Visit(OmBlank&) override {}

private:
    icuTracker& _tracker;
};

/// Every operation that goes through the parts.
void UseWhole(OmCellText& text, std::string const& shown, double number) {
    icuTracker tracker({false, "en_US.ISO-8859-1"});
    TrackerVisitor visitor(tracker);
    std::unique_ptr<OmCellText> const clone(text.Clone(nullptr));
    EXPECT_EQ(text.Compare(*clone), 0);
    EXPECT_TRUE(OmCellText::Equal(text, *clone));
    clone->Accept(visitor);
    EXPECT_EQ(clone->Tracker(), &tracker);
    EXPECT_EQ(clone->AsString(), shown);
    EXPECT_EQ(clone->AsU8String(), shown);
    EXPECT_EQ(clone->AsEngString(), shown);
    EXPECT_EQ(clone->AsFormattedString(), shown);
    EXPECT_EQ(clone->NumericValue(), number);
    EXPECT_EQ(omtest::PrintedBy(*clone, 0), '"' + shown + '"');
}

} // namespace

TEST(DeepTexts, OfCompositesUseNoNativeStackByDepth) {
    RunOnSmallStack([] {
        OmComposite text;
        OmComposite* place = &text;
        for (int level = 0; level < 100000; ++level) {
            OmComposite* const inner = new OmComposite();
            place->Components().AddChild(place->Components().Root(), inner);
            place = inner;
        }
        place->Append(OmStringCell("core"));
        UseWhole(text, "core", 0.0);
    });
}

TEST(DeepTexts, OfComponentsBelowComponentsUseNoNativeStackByDepth) {
    RunOnSmallStack([] {
        OmComposite text;
        Tree::Node place = text.Components().Root();
        for (int level = 0; level < 100000; ++level) {
            place = text.Append(place, OmStringCell("x"));
        }
        UseWhole(text, std::string(100000, 'x'), 0.0);
    });
}

// A value clones what it is made of, so each level costs what all levels within it do.
TEST(DeepTexts, OfValuesAndVariablesUseNoNativeStackByDepth) {
    RunOnSmallStack([] {
        std::unique_ptr<OmCellText> value = std::make_unique<OmNumber>(2.5);
        std::unique_ptr<OmCellText> variable = std::make_unique<OmStringCell>("name");
        for (int level = 0; level < 2000; ++level) {
            value = std::make_unique<OmValue>(*value);
            variable = std::make_unique<OmVariable>(*variable);
        }
        UseWhole(*value, "2.5", 2.5);
        UseWhole(*variable, "name", 0.0);
    });
}

TEST(ValueInValue, StandsForTheNumberOfTheInnermost) {
    OmStringCell const label("some");
    OmValue const inner(3.5, "three and a half");
    OmValue const middle(inner, &label);
    OmCellText const& anyText = middle;
    OmValue const outer(anyText);
    EXPECT_EQ(middle.NumericValue(), 3.5);
    EXPECT_EQ(outer.NumericValue(), 3.5);
    EXPECT_EQ(outer.AsString(), "some");
    EXPECT_EQ(OmValue(OmValue("text"), &label).NumericValue(), 0.0);
}
