#include "omcell/OmStringCell.h"

#include "omcell/OmCellMetaData.h"
#include "omcell/OmNumber.h"
#include "omcell/detail/PlainText.h"
#include "platform/icuTracker.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

namespace {

std::unique_ptr<OmStringCell> CloneOf(OmStringCell const& cell, OmMemoryRegion* region) {
    return std::unique_ptr<OmStringCell>(static_cast<OmStringCell*>(cell.Clone(region)));
}

/// A kind derived from string cells, as a program may have one.
class Heading : public OmStringCell {
public:
    using OmStringCell::OmStringCell;
};

} // namespace

TEST(OmStringCell, AllThreeCopiesStartAsTheGivenBytes) {
    OmStringCell const cell("caf\xC3\xA9", nullptr, false);
    EXPECT_EQ(cell.AsString(), "caf\xC3\xA9");
    EXPECT_EQ(cell.AsU8String(), "caf\xC3\xA9");
    EXPECT_EQ(cell.AsEngString(), "caf\xC3\xA9");
    EXPECT_EQ(cell.AsFormattedString(), "caf\xC3\xA9");
}

TEST(OmStringCell, KeepsTheFlagAndStartsWithoutAlternativeText) {
    EXPECT_FALSE(OmStringCell("a", nullptr, false).Flag());
    EXPECT_TRUE(OmStringCell("a", nullptr, true).Flag());
    EXPECT_EQ(OmStringCell("a", nullptr, true).AltText(), "");
}

// No terminating zero: 3 * 40 bytes fit a block of 120, with one more they would take the next size.
TEST(OmStringCell, KeepsThreeCopiesOfExactSizeInItsRegion) {
    OmMemoryRegion arena(false);
    {
        OmStringCell const cell(std::string(40, 'x'), &arena, false);
        EXPECT_EQ(arena.LiveBlocks(), 1U);
        EXPECT_EQ(arena.LiveBytes(), 3U * 40U);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmStringCell, CopiesOfUpToTwelveBytesEachTakeNoBlock) {
    OmMemoryRegion arena(false);
    OmStringCell cell("twelve bytes", &arena);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    cell.SetU8String("thirteen byte");
    EXPECT_EQ(arena.LiveBlocks(), 1U);
    cell.SetU8String("eleven byte");
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    EXPECT_EQ(cell.AsString() + cell.AsU8String() + cell.AsEngString(), "twelve byteseleven bytetwelve bytes");
    OmStringCell const longer("thirteen byte", &arena);
    EXPECT_EQ(arena.LiveBlocks(), 1U);
}

TEST(OmStringCell, CloneIsOneBlockOfAHeadAndThreeCopies) {
    OmMemoryRegion arena(false);
    OmStringCell const cell(std::string(30, 'x'));
    std::unique_ptr<OmStringCell> const clone = CloneOf(cell, &arena);
    EXPECT_EQ(arena.LiveBlocks(), 1U);
    EXPECT_EQ(arena.LiveBytes(), 120U); // 28 and three times thirty, in the size above
    std::unique_ptr<OmStringCell> const again = CloneOf(*clone, &arena);
    EXPECT_EQ(arena.LiveBytes(), 240U);
    EXPECT_EQ(again->AsString(), std::string(30, 'x'));
}

TEST(OmStringCell, TakesACacheLineAndIsNotCopied) {
    EXPECT_EQ(sizeof(OmStringCell), 64U);
    EXPECT_FALSE(std::is_copy_constructible_v<OmStringCell>);
    EXPECT_FALSE(std::is_copy_assignable_v<OmStringCell>);
}

// A million clones of up to twelve bytes: a line each, and each begins with one.
TEST(OmStringCell, ClonesOfShortTextsTakeALineEachOnceThereAreMany) {
    OmMemoryRegion arena(false);
    OmStringCell const cell("twelve bytes");
    for (int i = 0; i < 2000; ++i) {
        cell.Clone(&arena);
    }
    std::size_t const bytes = arena.LiveBytes();
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(cell.Clone(&arena)) % 64, 0U);
    }
    EXPECT_EQ(arena.LiveBytes() - bytes, 64000U);
    arena.WorkingRelease(false);
}

TEST(OmStringCell, ShortClonesInTheDefaultHeapHaveRoomForTheirHead) {
    for (std::size_t length = 0; length < 20; ++length) {
        std::string const text(length, 'x');
        std::unique_ptr<OmStringCell> const clone = CloneOf(OmStringCell(text), nullptr);
        clone->SetU8String("y");
        clone->SetU8String(text);
        EXPECT_EQ(clone->AsString() + clone->AsU8String() + clone->AsEngString(), text + text + text);
    }
}

// Lengths up to 255 stand in the head, longer ones in the block apart.
TEST(OmStringCell, LengthsOnBothSidesOfEightAndSixteenBitsAreKept) {
    OmMemoryRegion arena(false);
    for (std::size_t const length : {11U, 12U, 13U, 253U, 254U, 255U, 256U, 257U, 65535U, 65536U, 200000U}) {
        OmStringCell cell(std::string(length, 'g'), &arena);
        cell.SetEngString(std::string(length + 1, 'e'));
        std::unique_ptr<OmStringCell> const clone = CloneOf(cell, &arena);
        cell.SetU8String("u");
        for (OmStringCell const* const text :
             {static_cast<OmStringCell const*>(&cell), static_cast<OmStringCell const*>(clone.get())}) {
            EXPECT_EQ(text->AsString(), std::string(length, 'g'));
            EXPECT_EQ(text->AsEngString(), std::string(length + 1, 'e'));
        }
        EXPECT_EQ(clone->TextLength(), length);
        EXPECT_EQ(cell.AsU8String(), "u");
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

// Clones of clones, with copies and alternative texts replaced on the way: every form turns into every other one.
TEST(OmStringCell, RandomEditsOfClonesAgreeWithPlainStrings) {
    struct Model {
        std::string given, u8, english, alt;
    };
    std::mt19937_64 random(20261120);
    auto const text = [&random] {
        std::size_t const lengths[] = {0, 1, 2, 11, 12, 13, 34, 35, 100, 255, 256, 65536};
        return std::string(lengths[random() % std::size(lengths)], static_cast<char>('a' + random() % 26));
    };
    OmMemoryRegion arena(false);
    OmMemoryRegion* const homes[] = {&arena, nullptr};
    for (int script = 0; script < 200; ++script) {
        Model model;
        model.given = model.u8 = model.english = text();
        auto cell = std::unique_ptr<OmStringCell>(new (&arena) OmStringCell(model.given, &arena));
        for (int step = 0; step < 12; ++step) {
            switch (random() % 4) {
            case 0:
                cell->SetU8String(model.u8 = text());
                break;
            case 1:
                cell->SetEngString(model.english = text());
                break;
            case 2:
                cell->SetAltText(model.alt = text());
                break;
            default:
                cell = CloneOf(*cell, homes[random() % 2]);
            }
            ASSERT_EQ(cell->AsString(), model.given) << "script " << script << ", step " << step;
            ASSERT_EQ(cell->AsU8String(), model.u8);
            ASSERT_EQ(cell->AsEngString(), model.english);
            ASSERT_EQ(cell->AltText(), model.alt);
            ASSERT_EQ(cell->TextLength(), model.u8.size());
        }
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmStringCell, SettingTheSecondCopyIsAnEditOfItsArena) {
    struct Counting : OmMemoryRegion::Watcher {
        int settled = 0;
        std::string seen;
        OmStringCell const* cell = nullptr;
    };
    OmMemoryRegion arena(false);
    OmStringCell cell("before", &arena);
    OmStringCell flagged("flagged", &arena, true);
    Counting watcher;
    watcher.cell = &cell;
    watcher.settle = [](OmMemoryRegion::Watcher& self) {
        auto& counting = static_cast<Counting&>(self);
        ++counting.settled;
        counting.seen = counting.cell->AsU8String();
    };
    arena.Watch(watcher);
    cell.SetEngString("english");
    cell.SetAltText("spoken");
    flagged.SetU8String("ignored");
    EXPECT_EQ(watcher.settled, 0);
    cell.SetU8String("after");
    EXPECT_EQ(watcher.settled, 1);
    EXPECT_EQ(watcher.seen, "before");
}

TEST(OmStringCell, ZeroBytesAreBytesLikeOthers) {
    std::string const text("a\0b", 3);
    OmStringCell const cell(text);
    EXPECT_EQ(cell.AsString(), text);
    EXPECT_EQ(cell.TextLength(), 3U);
}

TEST(OmStringCell, LengthIsThatOfTheSecondCopy) {
    OmStringCell cell("abc");
    EXPECT_EQ(cell.TextLength(), 3U);
    cell.SetEngString("a longer text");
    EXPECT_EQ(cell.TextLength(), 3U);
    cell.SetU8String("ab");
    EXPECT_EQ(cell.TextLength(), 2U);
    EXPECT_EQ(cell.AsString(), "abc");
    EXPECT_EQ(cell.AsU8String(), "ab");
    EXPECT_EQ(cell.AsEngString(), "a longer text");
}

TEST(OmStringCell, FlaggedTextIsTheSameInEveryForm) {
    OmStringCell cell("Output", nullptr, true);
    cell.SetU8String("x");
    cell.SetEngString("y");
    EXPECT_EQ(cell.AsU8String(), "Output");
    EXPECT_EQ(cell.AsEngString(), "Output");
}

TEST(OmStringCell, ComparesByTheSecondCopy) {
    OmStringCell a("b");
    OmStringCell const b("b");
    EXPECT_EQ(a.Compare(b), 0);
    a.SetU8String("a");
    EXPECT_LT(a.Compare(b), 0);
    EXPECT_GT(b.Compare(a), 0);
}

TEST(OmStringCell, PrefixSortsBeforeTheLongerText) {
    EXPECT_LT(OmStringCell("ab").Compare(OmStringCell("abc")), 0);
    EXPECT_GT(OmStringCell("abc").Compare(OmStringCell("ab")), 0);
    EXPECT_LT(OmStringCell("").Compare(OmStringCell("a")), 0);
    EXPECT_EQ(OmStringCell("").Compare(OmStringCell("")), 0);
}

// Plain char is signed here: compared as such, every letter outside ASCII would come first.
TEST(OmStringCell, BytesCompareAsUnsigned) {
    EXPECT_GT(OmStringCell("\xC3\xA9").Compare(OmStringCell("z")), 0);
    EXPECT_LT(OmStringCell("z").Compare(OmStringCell("\xFF")), 0);
}

TEST(OmStringCell, ZeroBytesTakePartInTheOrder) {
    OmStringCell const a(std::string("a\0a", 3));
    OmStringCell const b(std::string("a\0b", 3));
    EXPECT_LT(a.Compare(b), 0);
    EXPECT_GT(a.Compare(OmStringCell("a")), 0);
}

TEST(OmStringCell, EmptyTextsAreEqual) { EXPECT_TRUE(OmCellText::Equal(OmStringCell(""), OmStringCell(""))); }

TEST(OmStringCell, AlternativeTextTakesNoPartInTheOrder) {
    OmStringCell a("a");
    a.SetAltText("z");
    EXPECT_TRUE(OmCellText::Equal(a, OmStringCell("a")));
}

TEST(OmStringCell, OtherKindsCompareByOrderCode) {
    EXPECT_LT(OmStringCell("z").Compare(OmNumber(1.0)), 0);
    EXPECT_GT(OmNumber(1.0).Compare(OmStringCell("z")), 0);
}

// A cast on the code would read past the foreign object.
TEST(OmStringCell, ForeignTextWithTheSameCodeIsNotTakenForAStringCell) {
    omtest::ForeignLog log;
    omtest::ForeignText foreign(log, "a");
    foreign.spec().orderCode = OmStringCell::Order;
    EXPECT_LT(OmStringCell("a").Compare(foreign), 0);
    EXPECT_LT(OmStringCell("z").Compare(foreign), 0);
}

TEST(OmStringCell, KindDerivedFromAStringCellComparesAsOne) {
    EXPECT_EQ(OmStringCell("a").Compare(Heading("a")), 0);
    EXPECT_EQ(Heading("a").Compare(OmStringCell("a")), 0);
    EXPECT_LT(Heading("a").Compare(OmStringCell("b")), 0);
}

TEST(OmStringCell, CloneCopiesEverything) {
    OmMemoryRegion arena(false);
    OmStringCell cell("given", nullptr, false);
    cell.SetU8String("utf-8");
    cell.SetEngString("english");
    cell.SetAltText("spoken");
    {
        std::unique_ptr<OmStringCell> const clone = CloneOf(cell, &arena);
        EXPECT_EQ(clone->AsString(), "given");
        EXPECT_EQ(clone->AsU8String(), "utf-8");
        EXPECT_EQ(clone->AsEngString(), "english");
        EXPECT_EQ(clone->AltText(), "spoken");
        EXPECT_FALSE(clone->Flag());
        EXPECT_EQ(arena.LiveBlocks(), 2U); // the text, and a block for copies and alternative text
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    OmStringCell const flagged("x", nullptr, true);
    EXPECT_TRUE(CloneOf(flagged, nullptr)->Flag());
}

// A clone with an alternative text is made in another way than the others are.
TEST(OmStringCell, CloneWithAnAlternativeTextKeepsFlagMetadataAndTracker) {
    OmMemoryRegion arena(false);
    icuTracker tracker({false, ""});
    OmStringCell cell("Output", &arena, true);
    OmCellMetaData meta;
    meta.footnotes = {3, 1};
    cell.setMeta(&meta);
    cell.SetTracker(&tracker);
    cell.SetAltText("spoken");
    std::unique_ptr<OmStringCell> const clone = CloneOf(cell, &arena);
    EXPECT_EQ(clone->AltText(), "spoken");
    EXPECT_TRUE(clone->Flag());
    EXPECT_EQ(clone->Footnotes(), meta.footnotes);
    EXPECT_EQ(clone->Tracker(), &tracker);
    EXPECT_EQ(CloneOf(cell, nullptr)->Tracker(), nullptr);
}

// In the object, in a block apart, behind a clone's head, and with the lengths in the block.
TEST(OmStringCell, CopiesAreReplacedByPiecesOfThemselves) {
    for (std::size_t const length : {9U, 60U, 300U}) {
        for (bool const isClone : {false, true}) {
            std::string text;
            while (text.size() < length) {
                text += static_cast<char>('a' + text.size() % 26);
            }
            auto cell = std::make_unique<OmStringCell>(text);
            if (isClone) {
                cell = CloneOf(*cell, nullptr);
            }
            cell->SetU8String(om_detail::PlainText::Bytes(*cell).substr(2));
            EXPECT_EQ(cell->AsU8String(), text.substr(2));
            cell->SetEngString(om_detail::PlainText::Bytes(*cell).substr(1, 5));
            EXPECT_EQ(cell->AsEngString(), text.substr(3, 5));
            EXPECT_EQ(cell->AsU8String(), text.substr(2));
            EXPECT_EQ(cell->AsString(), text);
            cell->SetU8String(om_detail::PlainText::Bytes(*cell));
            EXPECT_EQ(cell->AsU8String(), text.substr(2));
        }
    }
}

TEST(OmStringCell, CloneIsIndependentOfItsSource) {
    OmStringCell cell("a");
    std::unique_ptr<OmStringCell> const clone = CloneOf(cell, nullptr);
    cell.SetU8String("b");
    cell.SetAltText("c");
    EXPECT_EQ(clone->AsU8String(), "a");
    EXPECT_EQ(clone->AltText(), "");
}

TEST(OmStringCell, AlternativeTextLiesInTheRegionAndIsReplaced) {
    OmMemoryRegion arena(false);
    OmStringCell cell("", &arena, false);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    cell.SetAltText(std::string(56, 'a'));
    EXPECT_EQ(arena.LiveBlocks(), 1U);
    EXPECT_EQ(arena.LiveBytes(), 88U); // and its length
    cell.SetAltText("b");
    EXPECT_EQ(cell.AltText(), "b");
    EXPECT_EQ(arena.LiveBlocks(), 1U);
    cell.SetAltText("");
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

// A title that is replaced for hours must not make its table grow.
TEST(OmStringCell, ReplacingTextsDoesNotGrowTheArena) {
    OmMemoryRegion arena(false);
    OmStringCell cell("start", &arena, false);
    cell.SetAltText(std::string(100, 'a'));
    std::size_t const reserved = arena.ReservedBytes();
    for (int i = 0; i < 10000; ++i) {
        cell.SetU8String(std::string(5, 'b'));
        cell.SetAltText(std::string(100, 'c'));
        delete cell.Clone(&arena);
    }
    EXPECT_EQ(arena.LiveBlocks(), 1U);
    EXPECT_LE(arena.ReservedBytes(), reserved + 4096);
}

TEST(OmStringCell, SweepLeavesNothingOfLongTexts) {
    OmMemoryRegion arena(false);
    OmStringCell cell(std::string(5000, 'a'));
    cell.SetAltText(std::string(5000, 'b'));
    cell.Clone(&arena);
    OmCellText* const destroyed = cell.Clone(&arena);
    arena.WorkingRelease(false);
    EXPECT_EQ(destroyed->AsString(), std::string(5000, 'a'));
    delete destroyed;
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}
