#include "omcell/OmPartedText.h"

#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/icuTracker.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

// What holds for all seven kinds alike, and for texts of different kinds inside each other.

namespace {

constexpr int Million = 1000000;

/// Writes down which operation was called, and attaches nothing.
class Noting : public OmCellText::Visitor {
public:
    std::string kind;
    OmCellText* text = nullptr;

    void Visit(OmComposite& visited) override { Note("OmComposite", visited); }
    void Visit(OmStringCell& visited) override { Note("OmStringCell", visited); }
    void Visit(OmNumber& visited) override { Note("OmNumber", visited); }
    void Visit(OmVariable& visited) override { Note("OmVariable", visited); }
    void Visit(OmValue& visited) override { Note("OmValue", visited); }
    void Visit(OmMessage& visited) override { Note("OmMessage", visited); }
    void Visit(OmBlank& visited) override { Note("OmBlank", visited); }

private:
    void Note(char const* name, OmCellText& visited) {
        kind = name;
        text = &visited;
    }
};

using Texts = std::vector<std::unique_ptr<OmCellText>>;

/// One text of each kind, in the visitor's order; each owns something wherever its kind can.
Texts OneOfEachKind() {
    OmStringCell cell("string");
    cell.SetAltText("alternative text, longer than a string object holds by itself");
    OmNumber::Format format;
    format.type = OmNumber::CurrencyFormat;
    format.symbol = "a symbol, longer than a string object holds by itself";
    OmNumber const number(3.5, format);
    OmVariable const variable("name", "label");
    OmValue const value(number, &cell);
    OmMessage message("{0}{1}", "{1}{0}");
    message.Fill(0, variable);
    message.Fill(1, value);
    OmComposite composite;
    composite.Append(composite.Append(message), cell);
    composite.Append(composite);
    OmBlank const blank;

    Texts texts;
    OmCellText const* const kinds[] = {&composite, &cell, &number, &variable, &value, &message, &blank};
    OmCellMetaData meta;
    meta.footnotes = {1, 2};
    meta.markers = {"a marker, longer than a string object holds by itself"};
    for (OmCellText const* const text : kinds) {
        texts.emplace_back(text->Clone(nullptr));
        texts.back()->setMeta(&meta);
    }
    return texts;
}

/// The texts that lie in their region with all they hold, metadata aside. A build that checks handles keeps a counter
/// of changes for each tree node outside, so a composite is none there.
Texts WithinTheirRegion() {
    Texts texts = OneOfEachKind();
    if (OMTREE_CHECK_HANDLES) {
        texts.erase(texts.begin());
    }
    return texts;
}

char const* const Names[] = {"OmComposite", "OmStringCell", "OmNumber", "OmVariable",
                             "OmValue",     "OmMessage",    "OmBlank"};

/// A random text of at most `levels` levels, with small strings so that equal texts occur.
std::unique_ptr<OmCellText> RandomText(std::mt19937_64& random, int levels) {
    auto const letters = [&random] { return std::string(random() % 3, static_cast<char>('a' + random() % 2)); };
    switch (levels > 0 ? random() % 7 : 4 + random() % 3) {
    case 0: {
        auto composite = std::make_unique<OmComposite>();
        for (std::uint64_t k = random() % 4; k > 0; --k) {
            OmComposite::Tree::Node const node = composite->Append(*RandomText(random, levels - 1));
            if (random() % 2 == 0) {
                composite->Append(node, *RandomText(random, levels - 1));
            }
        }
        return composite;
    }
    case 1:
        return std::make_unique<OmVariable>(*RandomText(random, levels - 1));
    case 2:
        return std::make_unique<OmValue>(*RandomText(random, levels - 1), RandomText(random, levels - 1).get());
    case 3: {
        auto message = std::make_unique<OmMessage>("{0}" + letters() + "{1}");
        message->Fill(random() % 2, *RandomText(random, levels - 1));
        return message;
    }
    case 4:
        return std::make_unique<OmStringCell>(letters());
    case 5:
        return std::make_unique<OmNumber>(static_cast<double>(random() % 2));
    default:
        return std::make_unique<OmBlank>();
    }
}

int SignOf(int number) { return (number > 0) - (number < 0); }

/// Composites inside each other, a level each, without a copy for each level.
std::unique_ptr<OmComposite> NestedComposites(OmMemoryRegion* region, int levels) {
    std::unique_ptr<OmComposite> outer(new (region) OmComposite(region));
    OmComposite* place = outer.get();
    for (int i = 0; i < levels; ++i) {
        auto* const inner = new (region) OmComposite(region);
        place->Components().AddChild(place->Components().Root(), inner);
        place = inner;
    }
    place->Append(OmStringCell("core"));
    return outer;
}

/// Each level is a message in a variable's label in a composite in a value.
std::unique_ptr<OmCellText> MixedNest(int levels) {
    std::unique_ptr<OmCellText> text = std::make_unique<OmStringCell>("core");
    for (int i = 0; i < levels; ++i) {
        OmMessage message("<{0}>");
        message.Fill(0, *text);
        OmVariable const variable(OmStringCell("v"), &message, nullptr, OmCellText::LabelMode);
        OmComposite composite;
        composite.Append(variable);
        text = std::make_unique<OmValue>(composite);
    }
    return text;
}

} // namespace

// --- the seven kinds -------------------------------------------------------------------------------------------------

TEST(CellKinds, AcceptCallsTheOperationOfTheKind) {
    Texts const texts = OneOfEachKind();
    for (std::size_t k = 0; k < texts.size(); ++k) {
        Noting visitor;
        texts[k]->Accept(visitor);
        EXPECT_EQ(visitor.kind, Names[k]);
        EXPECT_EQ(visitor.text, texts[k].get());
    }
}

TEST(CellKinds, OrderCodesFollowTheVisitor) {
    Texts const texts = OneOfEachKind();
    for (std::size_t k = 0; k < texts.size(); ++k) {
        EXPECT_EQ(texts[k]->OrderCode(), static_cast<short>(k)) << Names[k];
    }
    EXPECT_EQ(OmComposite::Order, 0);
    EXPECT_EQ(OmStringCell::Order, 1);
    EXPECT_EQ(OmNumber::Order, 2);
    EXPECT_EQ(OmVariable::Order, 3);
    EXPECT_EQ(OmValue::Order, 4);
    EXPECT_EQ(OmMessage::Order, 5);
    EXPECT_EQ(OmBlank::Order, 6);
}

TEST(CellKinds, DifferentKindsCompareByOrderCode) {
    Texts const texts = OneOfEachKind();
    for (std::size_t a = 0; a < texts.size(); ++a) {
        for (std::size_t b = 0; b < texts.size(); ++b) {
            int const expected = (a > b) - (a < b);
            EXPECT_EQ(SignOf(texts[a]->Compare(*texts[b])), expected) << Names[a] << ' ' << Names[b];
        }
    }
}

TEST(CellKinds, ForeignTextsAreNeverTakenForOneOfOurs) {
    omtest::ForeignLog log;
    omtest::ForeignText foreign(log, "x");
    for (std::unique_ptr<OmCellText> const& text : OneOfEachKind()) {
        foreign.spec().orderCode = text->OrderCode();
        EXPECT_LT(text->Compare(foreign), 0);
        foreign.spec().orderCode = -1;
        EXPECT_GT(text->Compare(foreign), 0);
        foreign.spec().orderCode = 7;
        EXPECT_LT(text->Compare(foreign), 0);
    }
}

TEST(CellKinds, CloneIsEqualAndOfTheSameKind) {
    OmMemoryRegion arena(false);
    for (std::unique_ptr<OmCellText> const& text : OneOfEachKind()) {
        std::unique_ptr<OmCellText> const clone(text->Clone(&arena));
        EXPECT_TRUE(OmCellText::Equal(*text, *clone));
        EXPECT_TRUE(OmCellText::Equal(*clone, *text));
        OmCellText const& source = *text;
        OmCellText const& copy = *clone;
        EXPECT_EQ(typeid(copy), typeid(source));
        EXPECT_EQ(clone->AsString(), text->AsString());
        EXPECT_EQ(clone->AsU8String(), text->AsU8String());
        EXPECT_EQ(clone->AsEngString(), text->AsEngString());
        EXPECT_EQ(clone->AsFormattedString(), text->AsFormattedString());
        EXPECT_EQ(omtest::PrintedBy(*clone, 2), omtest::PrintedBy(*text, 2));
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(CellKinds, OnlyTheBlankIsBlank) {
    Texts const texts = OneOfEachKind();
    for (std::size_t k = 0; k < texts.size(); ++k) {
        EXPECT_EQ(texts[k]->IsBlank(), k == 6) << Names[k];
    }
}

TEST(CellKinds, SweepLeavesNothingBehindWhetherDestructorsRunOrNot) {
    for (std::unique_ptr<OmCellText> const& text : WithinTheirRegion()) {
        OmMemoryRegion arena(false);
        std::ptrdiff_t const before = omtest::Heap().live;
        text->Clone(&arena);
        OmCellText* const destroyed = text->Clone(&arena);
        EXPECT_GT(omtest::Heap().live, before); // the metadata records
        arena.WorkingRelease(false);
        EXPECT_EQ(omtest::Heap().live, before);
        EXPECT_EQ(destroyed->AsString(), text->AsString());
        delete destroyed;
        EXPECT_EQ(omtest::Heap().live, before);
    }
}

TEST(CellKinds, ArenaWithoutASweepLeavesNothingBehindEither) {
    std::ptrdiff_t const before = omtest::Heap().live;
    {
        OmMemoryRegion arena(false);
        for (std::unique_ptr<OmCellText> const& text : WithinTheirRegion()) {
            text->Clone(&arena);
        }
    }
    EXPECT_EQ(omtest::Heap().live, before);
}

// Everything but metadata lies in the arena: a text without any leaves the other heap alone.
TEST(CellKinds, TextsWithoutMetadataHoldNothingOutsideTheirArena) {
    for (std::unique_ptr<OmCellText> const& text : WithinTheirRegion()) {
        text->setMeta(nullptr);
        OmMemoryRegion arena(false);
        std::ptrdiff_t const before = omtest::Heap().live;
        text->Clone(&arena);
        EXPECT_EQ(omtest::Heap().live, before);
    }
}

TEST(CellKinds, CloneThatRunsOutOfMemoryAnywhereLeavesNothingBehind) {
    int refused = 0;
    for (std::unique_ptr<OmCellText> const& text : OneOfEachKind()) {
        OmMemoryRegion arena(false);
        std::ptrdiff_t const before = omtest::Heap().live;
        int const runs = omtest::FailEachRequest([&] { delete text->Clone(&arena); },
                                                 [&] {
                                                     EXPECT_EQ(omtest::Heap().live, before);
                                                     EXPECT_EQ(arena.LiveBlocks(), 0U);
                                                 });
        EXPECT_GE(runs, 1);
        refused += runs;
        EXPECT_EQ(omtest::Heap().live, before);
    }
    EXPECT_GT(refused, 20);
}

TEST(CellKinds, SettingMetadataThatRunsOutOfMemoryKeepsTheOldRecord) {
    OmStringCell text("a");
    OmCellMetaData meta;
    meta.footnotes = {1};
    text.setMeta(&meta);
    meta.footnotes = {2, 3};
    meta.markers = {"a marker, longer than a string object holds by itself"};
    int const refused = omtest::FailEachRequest([&] { text.setMeta(&meta); },
                                                [&] { EXPECT_EQ(text.Footnotes(), std::vector<short>{1}); });
    EXPECT_GE(refused, 3);
    EXPECT_EQ(text.Footnotes(), (std::vector<short>{2, 3}));
}

// --- texts inside each other -----------------------------------------------------------------------------------------

TEST(OmPartedText, OrderOfRandomTextsIsTotalAndAgreesWithEquality) {
    for (std::uint64_t const seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937_64 random(seed);
        Texts texts;
        for (int i = 0; i < 60; ++i) {
            texts.push_back(RandomText(random, 3));
        }
        int equal = 0;
        for (std::unique_ptr<OmCellText> const& a : texts) {
            for (std::unique_ptr<OmCellText> const& b : texts) {
                int const order = SignOf(a->Compare(*b));
                ASSERT_EQ(order, -SignOf(b->Compare(*a)));
                if (order == 0) {
                    ASSERT_EQ(a->TextLength(), b->TextLength());
                    ASSERT_EQ(a->AsString(), b->AsString());
                    equal += a != b ? 1 : 0;
                }
                for (std::unique_ptr<OmCellText> const& c : texts) {
                    if (order <= 0 && b->Compare(*c) <= 0) {
                        ASSERT_LE(a->Compare(*c), 0);
                    }
                }
            }
        }
        EXPECT_GT(equal, 0);
    }
}

TEST(OmPartedText, RandomTextsCloneDeeply) {
    std::mt19937_64 random(99);
    OmMemoryRegion arena(false);
    for (int i = 0; i < 300; ++i) {
        std::unique_ptr<OmCellText> text = RandomText(random, 5);
        std::string const shown = text->AsString();
        std::unique_ptr<OmCellText> const clone(text->Clone(&arena));
        ASSERT_EQ(clone->Compare(*text), 0);
        text.reset();
        ASSERT_EQ(clone->AsString(), shown);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

// Recursion from text to text would end the process.
TEST(OmPartedText, MillionCompositesInsideEachOtherWork) {
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    {
        std::unique_ptr<OmComposite> const text = NestedComposites(nullptr, Million);
        EXPECT_EQ(text->AsString(), "core");
        EXPECT_EQ(text->TextLength(), 4U);
        std::unique_ptr<OmCellText> const clone(text->Clone(&arena));
        EXPECT_EQ(clone->AsFormattedString(), "core");
        EXPECT_EQ(clone->Compare(*text), 0);
        clone->SetTracker(&tracker);
        EXPECT_EQ(clone->Tracker(), &tracker);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmPartedText, SweptArenaMayHoldAMillionCompositesInsideEachOther) {
    OmMemoryRegion arena(false);
    static_cast<void>(NestedComposites(&arena, Million).release());
    arena.WorkingRelease(false);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmPartedText, DifferentKindsInsideEachOtherWork) {
    constexpr int Levels = 100;
    icuTracker tracker({true, "en_US.UTF-8"});
    OmMemoryRegion arena(false);
    {
        std::unique_ptr<OmCellText> const text = MixedNest(Levels);
        std::string const expected = std::string(Levels, '<') + "core" + std::string(Levels, '>');
        EXPECT_EQ(text->AsString(), expected);
        EXPECT_EQ(text->TextLength(), 4U + Levels * 6U); // "v" and "<{0}>" on each level
        std::unique_ptr<OmCellText> const clone(text->Clone(&arena));
        EXPECT_EQ(clone->AsString(), expected);
        EXPECT_TRUE(OmCellText::Equal(*clone, *text));
        EXPECT_LT(MixedNest(Levels - 1)->Compare(*text) * MixedNest(Levels)->Compare(*MixedNest(Levels - 1)), 0);
        clone->SetTracker(&tracker);
        OmCellText const* place = clone.get();
        OmValue const* const value = dynamic_cast<OmValue const*>(place);
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(value->Value().Tracker(), &tracker);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmPartedText, TrackerReachesEveryKindOfPart) {
    icuTracker tracker({false, "ja_JP.SJIS"});
    omtest::ForeignLog log;
    OmMessage message("{0}");
    message.Fill(0, omtest::ForeignText(log, "filler"));
    message.Fill(3, omtest::ForeignText(log, "unused"));
    omtest::ForeignText const label(log, "label");
    OmValue const value(message, &label);
    OmComposite text;
    text.Append(value);
    log.Take();
    text.SetTracker(&tracker);
    EXPECT_EQ(log.Take(), (std::vector<std::string>{"filler''': SetTracker(set)", "unused''': SetTracker(set)",
                                                    "label'': SetTracker(set)"}));
}

TEST(OmPartedText, PartsAreDestroyedOnceEach) {
    omtest::ForeignLog log;
    {
        OmMessage message("{0}{0}");
        message.Fill(0, omtest::ForeignText(log, "a"));
        OmComposite text;
        text.Append(message);
        text.Append(omtest::ForeignText(log, "b"));
        log.Take();
    }
    std::vector<std::string> destroyed = log.Take();
    std::sort(destroyed.begin(), destroyed.end());
    EXPECT_EQ(destroyed, (std::vector<std::string>{"a'': destroy", "a': destroy", "b': destroy"}));
    EXPECT_EQ(log.alive, 0);
}
