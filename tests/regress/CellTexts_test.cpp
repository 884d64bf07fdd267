// Defects of cell texts: cost, native stack, and parts that call back.
#include "omcell/OmBlank.h"
#include "omcell/OmCellProperties.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/icuTracker.h"
#include "tests/support/AllocatorMayReturnNull.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <new>
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

// --- parts that call back --------------------------------------------------------------------------------------------

namespace {

/// What a part does, once, while it is cloned, handed a tracker, or destroyed.
struct Hooks {
    std::function<void()> cloned;
    std::function<void()> tracked;
    std::function<void()> destroyed;
    int alive = 0;
};

void RunOnce(std::function<void()>& hook) {
    if (std::function<void()> const action = std::exchange(hook, nullptr)) {
        action();
    }
}

class CallingText final : public OmCellText {
public:
    CallingText(std::string text, Hooks& hooks) : _text(std::move(text)), _hooks(hooks) { ++_hooks.alive; }
    ~CallingText() override {
        --_hooks.alive;
        RunOnce(_hooks.destroyed);
    }

    void Accept(Visitor&) override {}
    short OrderCode() const override { return 100; }
    std::string AsString() const override { return _text; }
    std::string AsU8String() const override { return _text; }
    std::string AsEngString() const override { return _text; }
    short Compare(OmCellText const&) const override { return 0; }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        // What is asked of the text after it was taken away is not looked at.
        Hooks& hooks = _hooks;
        std::string const text = _text;
        RunOnce(hooks.cloned);
        return new (region) CallingText(text, hooks);
    }
    icuTracker* SetTracker(icuTracker* tracker) override {
        OmCellText::SetTracker(tracker);
        RunOnce(_hooks.tracked);
        return tracker;
    }

private:
    std::string _text;
    Hooks& _hooks;
};

OmStringCell const LongText("a text that does not lie within the object, being far too long for it");

/// A composite "b" [ "c" [ calling ] ] "d", with messages and values between.
void FillWithCalling(OmComposite& text, Hooks& hooks) {
    Tree::Node const b = text.Append(OmStringCell("b"));
    Tree::Node const c = text.Append(b, OmStringCell("c"));
    text.Append(c, CallingText("!", hooks));
    text.Append(OmStringCell("d"));
}

void AppendMany(OmComposite& text, char const* part) {
    for (int i = 0; i < 50; ++i) {
        text.Append(OmStringCell(part));
    }
}

} // namespace

// The handle of the parent led into freed memory.
TEST(PartCallsBack, WhileItIsAppended) {
    for (int depth = 0; depth < 3; ++depth) {
        Hooks hooks;
        OmComposite text;
        Tree::Node parent = text.Components().Root();
        for (int level = 0; level < depth; ++level) {
            parent = text.Append(parent, OmStringCell("<"));
        }
        hooks.cloned = [&] {
            AppendMany(text, "x");
            hooks.cloned = [&] { AppendMany(text, "y"); };
            text.Append(text.Components().Root().Child(0), CallingText("1", hooks));
        };
        Tree::Node const place = text.Append(parent, CallingText("2", hooks));
        EXPECT_EQ(place.Value()->AsString(), "2");
        EXPECT_EQ(place.Depth(), static_cast<unsigned int>(depth) + 1);
        std::string const many = std::string(50, 'x') + std::string(50, 'y');
        std::string const shown = text.AsString();
        EXPECT_EQ(shown.size(), 102U + static_cast<std::size_t>(depth));
        // Below the root it stands behind everything that the inner calls put there.
        if (depth == 0) {
            EXPECT_EQ(shown, "x1" + many.substr(1) + "2");
        } else if (depth == 1) {
            EXPECT_EQ(shown, "<12" + many);
        } else {
            EXPECT_EQ(shown, "<<21" + many);
        }
    }
}

// Places of parts were remembered while the tree moved them.
TEST(PartCallsBack, WhileACompositeIsClonedOrVisited) {
    Hooks hooks;
    icuTracker tracker({true, "en_US.UTF-8"});
    OmComposite text;
    FillWithCalling(text, hooks);
    hooks.cloned = [&] { AppendMany(text, "x"); };
    std::unique_ptr<OmCellText> const clone(text.Clone(nullptr));
    EXPECT_EQ(clone->AsString(), "bc!d");
    EXPECT_EQ(text.AsString(), "bc!d" + std::string(50, 'x'));
    hooks.tracked = [&] { AppendMany(text, "y"); };
    text.SetTracker(&tracker);
    EXPECT_EQ(text.Components().Root().Child(1).Value()->Tracker(), &tracker);
    EXPECT_EQ(text.AsString(), "bc!d" + std::string(50, 'x') + std::string(50, 'y'));
}

// A part still to come was destroyed by the call.
TEST(PartCallsBack, AndTakesAwayAPartThatWasToBeClonedOrVisited) {
    for (bool const nested : {false, true}) {
        Hooks hooks;
        icuTracker tracker({true, "en_US.UTF-8"});
        OmMessage message("{0}{1}{2}{3}");
        OmMessage within("[{0}]");
        within.Fill(0, LongText);
        message.Fill(1, CallingText("!", hooks));
        message.Fill(2, nested ? static_cast<OmCellText const&>(within) : LongText);
        message.Fill(3, OmStringCell("d"));
        hooks.cloned = [&] {
            message.Fill(2, OmStringCell("new"));
            message.Fill(0, OmStringCell("first"));
        };
        std::unique_ptr<OmCellText> const clone(message.Clone(nullptr));
        EXPECT_EQ(message.AsString(), "first!newd");
        EXPECT_EQ(clone->AsString(), "{0}!{2}d");
        message.Fill(2, nested ? static_cast<OmCellText const&>(within) : LongText);
        hooks.tracked = [&] { message.Fill(2, OmStringCell("newer")); };
        message.SetTracker(&tracker);
        EXPECT_EQ(message.AsString(), "first!newerd");
        EXPECT_EQ(message.Filler(3)->Tracker(), &tracker);
    }
}

TEST(PartCallsBack, AndTakesAwayAComponentThatWasToBeClonedOrVisited) {
    Hooks hooks;
    icuTracker tracker({true, "en_US.UTF-8"});
    OmComposite text;
    OmComposite within;
    within.Append(LongText);
    text.Append(CallingText("!", hooks));
    text.Append(within);
    text.Append(OmStringCell("d"));
    auto const takeAway = [&] {
        Tree::Node const root = text.Components().Root();
        delete root.Child(1).Value();
        Tree::EraseChild(root, 1);
        Tree::Reparent(root, true);
    };
    hooks.cloned = takeAway;
    std::unique_ptr<OmCellText> const clone(text.Clone(nullptr));
    EXPECT_EQ(text.AsString(), "!d");
    EXPECT_EQ(clone->AsString(), "!d");
    hooks.tracked = takeAway;
    text.SetTracker(&tracker);
    EXPECT_EQ(text.AsString(), "!");
}

// Parts put in by the destructor of another were never destroyed, or the walk over the others broke off.
TEST(PartCallsBack, WhileItsHolderIsDestroyed) {
    Hooks hooks;
    OmMemoryRegion arena(false);
    {
        OmComposite text(&arena);
        hooks.destroyed = [&] {
            AppendMany(text, "x");
            text.Append(LongText);
            hooks.destroyed = [&] { AppendMany(text, "y"); };
            text.Append(CallingText("?", hooks));
        };
        std::function<void()> const held = std::exchange(hooks.destroyed, nullptr);
        FillWithCalling(text, hooks);
        hooks.destroyed = held;
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    {
        OmMessage message("{0}", &arena);
        message.Fill(5, CallingText("!", hooks));
        message.Fill(6, LongText);
        hooks.destroyed = [&] {
            for (std::size_t slot = 0; slot < 50; ++slot) {
                message.Fill(slot, LongText);
            }
        };
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    EXPECT_EQ(hooks.alive, 0);
}

TEST(PartCallsBack, WhileItIsReplaced) {
    Hooks hooks;
    OmMessage message("{0}{1}");
    message.Fill(1, CallingText("!", hooks));
    hooks.destroyed = [&] {
        EXPECT_EQ(message.AsString(), "{0}new");
        message.Fill(0, LongText);
        message.Fill(1, OmStringCell("newer"));
    };
    message.Fill(1, OmStringCell("new"));
    EXPECT_EQ(message.AsString(), LongText.AsString() + "newer");
    hooks.cloned = [&] { message.Fill(1, OmStringCell("inner")); };
    message.Fill(1, CallingText("outer", hooks));
    EXPECT_EQ(message.AsString(), LongText.AsString() + "outer");
}

TEST(OwnText, MayBeGivenToItsHolder) {
    OmMessage message("{0}|{1}");
    message.Fill(0, message);
    message.Fill(1, *message.Filler(0));
    message.Fill(0, *message.Filler(0));
    EXPECT_EQ(message.AsString(), "{0}|{1}|{0}|{1}");
    OmComposite text;
    Tree::Node const node = text.Append(OmStringCell("a"));
    text.Append(node, text);
    text.Append(text.Components().Root().Child(0), *text.Components().Root().Child(0).Value());
    EXPECT_EQ(text.AsString(), "aaa");
    OmStringCell cell("given");
    cell.SetAltText(LongText.AsString());
    cell.SetAltText(cell.AltText());
    EXPECT_EQ(cell.AltText(), LongText.AsString());
    OmCellMetaData meta;
    meta.footnotes = {1, 2};
    cell.setMeta(&meta);
    cell.setMeta(cell.getMeta());
    EXPECT_EQ(cell.Footnotes(), (std::vector<short>{1, 2}));
    OmNumber number(7.0, {OmNumber::CurrencyFormat, 0, U'.', 0, "a symbol that is longer than a small string"});
    number.setFormat(number.getFormat());
    EXPECT_EQ(number.AsFormattedString(), "a symbol that is longer than a small string7");
    EXPECT_EQ(message.Compare(message), 0);
    EXPECT_EQ(text.Compare(text), 0);
}

// --- copies and places -----------------------------------------------------------------------------------------------

namespace {

/// A program's kind that can be copied.
class CopyableText final : public OmCellText {
public:
    explicit CopyableText(OmMemoryRegion* region) : OmCellText(region) {}
    CopyableText(CopyableText const&) = default;

    OmMemoryRegion* TheHome() const { return Home(); }

    void Accept(Visitor&) override {}
    short OrderCode() const override { return 100; }
    std::string AsString() const override { return "text"; }
    std::string AsU8String() const override { return "text"; }
    std::string AsEngString() const override { return "text"; }
    short Compare(OmCellText const&) const override { return 0; }
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) CopyableText(region); }
};

struct Throwing final : OmRegionManaged {
    Throwing() { throw 1; }
};

} // namespace

TEST(CopiedText, HasItsOwnMetadataNoTrackerAndTheDefaultHeap) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    OmCellMetaData meta;
    meta.footnotes = {3};
    for (bool const withMeta : {false, true}) {
        CopyableText source(&arena);
        source.setMeta(withMeta ? &meta : nullptr);
        source.SetTracker(&tracker);
        CopyableText const copy(source);
        EXPECT_EQ(source.Tracker(), &tracker);
        EXPECT_EQ(copy.Tracker(), nullptr);
        EXPECT_EQ(copy.TheHome(), OmMemoryRegion::DefaultHeap());
        EXPECT_EQ(copy.hasMeta(), withMeta);
        source.setMeta(nullptr);
        EXPECT_EQ(copy.Footnotes(), withMeta ? std::vector<short>{3} : std::vector<short>());
        EXPECT_EQ(copy.TheHome(), OmMemoryRegion::DefaultHeap());
    }
    arena.WorkingRelease(false); // nothing of the copies is known to it
}

TEST(PlacedText, StandsWhereItWasPutAndIsNotGivenBack) {
    alignas(OmNumber) unsigned char storage[sizeof(OmNumber)];
    void* const place = storage;
    OmNumber* const number = new (place) OmNumber(2.5);
    EXPECT_EQ(static_cast<void*>(number), place);
    EXPECT_EQ(number->AsString(), "2.5");
    number->~OmNumber();
    EXPECT_THROW(new (place) Throwing(), int); // nothing is released either
}

// --- records of a cell -----------------------------------------------------------------------------------------------

TEST(CellRecords, CompareEveryField) {
    using Change = std::function<void(OmCellMetaData&)>;
    for (Change const& change : {Change([](OmCellMetaData& meta) { meta.footnotes = {1}; }),
                                 Change([](OmCellMetaData& meta) { meta.markers = {"a"}; }),
                                 Change([](OmCellMetaData& meta) { meta.style = 0; })}) {
        OmCellMetaData const plain;
        OmCellMetaData changed;
        EXPECT_TRUE(plain == changed);
        EXPECT_FALSE(plain != changed);
        change(changed);
        EXPECT_FALSE(plain == changed);
        EXPECT_TRUE(plain != changed);
        EXPECT_TRUE(changed == OmCellMetaData(changed));
    }
    using Restyle = std::function<void(OmCellProperties&)>;
    for (Restyle const& change : {Restyle([](OmCellProperties& style) { style.foreground = "#102030"; }),
                                  Restyle([](OmCellProperties& style) { style.background = "#102030"; }),
                                  Restyle([](OmCellProperties& style) { style.font = "Serif"; }),
                                  Restyle([](OmCellProperties& style) { style.alignment = 0; })}) {
        OmCellProperties const plain;
        OmCellProperties changed;
        EXPECT_TRUE(plain == changed);
        EXPECT_FALSE(plain != changed);
        change(changed);
        EXPECT_FALSE(plain == changed);
        EXPECT_TRUE(plain != changed);
        EXPECT_TRUE(changed == OmCellProperties(changed));
    }
}

// --- ends of patterns ------------------------------------------------------------------------------------------------

// A slot that the pattern's end cuts off must not be closed by what lies behind the pattern.
TEST(MessagePattern, IsNotReadBeyondItsEnd) {
    std::string const whole = "a pattern of a size that nothing else here has, and so served from one block: {12}";
    OmMemoryRegion arena(false);
    for (std::size_t missing = 0; missing <= 4; ++missing) {
        { OmMessage const before(whole, &arena); }
        OmMessage message(whole.substr(0, whole.size() - missing), &arena);
        message.Fill(1, OmStringCell("one"));
        message.Fill(12, OmStringCell("twelve"));
        std::string const start = whole.substr(0, whole.size() - 4);
        EXPECT_EQ(message.AsString(), missing == 0 ? start + "twelve" : whole.substr(0, whole.size() - missing));
    }
}

// --- largest numbers -------------------------------------------------------------------------------------------------

TEST(LargestNumbers, AreTakenByFormatsSlotsAndRegions) {
    constexpr int Most = std::numeric_limits<int>::max();
    constexpr int Least = std::numeric_limits<int>::min();
    for (int type = -1; type <= 5; ++type) {
        for (double const value : {0.0, -2.5, 1e308, 5e-324, 0.1}) {
            OmNumber number(value, {static_cast<OmNumber::FormatType>(type), Most, U'.', 0, ""});
            EXPECT_LT(number.AsFormattedString().size(), 1500U);
            number.setFormat({static_cast<OmNumber::FormatType>(type), Least, U'.', 0, ""});
            EXPECT_LT(number.AsFormattedString().size(), 400U);
        }
    }
    OmMessage message("{18446744073709551615}{18446744073709551616}");
    message.Fill(std::numeric_limits<std::size_t>::max(), OmStringCell("last"));
    EXPECT_EQ(message.AsString(), "last{18446744073709551616}");
    OmMemoryRegion arena(false);
    constexpr std::size_t MostBytes = std::numeric_limits<std::size_t>::max();
    for (std::size_t less = 0; less < 200; ++less) {
        EXPECT_THROW(arena.Allocate(MostBytes - less), std::bad_alloc);
        EXPECT_THROW(arena.Allocate(MostBytes / 2 - less), std::bad_alloc);
        EXPECT_THROW(OmMemoryRegion::DefaultHeap()->Allocate(MostBytes - less), std::bad_alloc);
        EXPECT_THROW(OmMemoryRegion::DefaultHeap()->Allocate(MostBytes / 2 - less), std::bad_alloc);
    }
    EXPECT_EQ(arena.ReservedBytes(), 0U);
}

TEST(SweptRegion, MayBeSweptAgain) {
    OmMemoryRegion arena(false);
    OmCellMetaData meta;
    meta.markers = {"a marker that does not lie within the string object, being too long"};
    OmStringCell* const first = new (&arena) OmStringCell("first", &arena);
    first->setMeta(&meta);
    arena.WorkingRelease(false);
    EXPECT_FALSE(first->hasMeta());
    first->setMeta(&meta); // known to the region again
    OmStringCell* const second = new (&arena) OmStringCell("second", &arena);
    arena.WorkingRelease(true);
    arena.WorkingRelease(false);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    EXPECT_FALSE(first->hasMeta());
    EXPECT_EQ(first->AsString() + second->AsString(), "firstsecond");
    delete first;
    OmMemoryRegion::Release(nullptr);
}
