#ifndef OMTREE_TESTS_SUPPORT_PARTTITLEINCODEPAGE_H
#define OMTREE_TESTS_SUPPORT_PARTTITLEINCODEPAGE_H

#include "backend/tables/om/OmOutputPart.h"
#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

namespace omtest {

/// A string cell that a part made for its title; null when the title is of another kind.
inline OmStringCell const* StringTitle(OmOutputPart const& part) {
    return dynamic_cast<OmStringCell const*>(part.Title());
}

/// What a part made from (title, code page) shows as its title; the part is destroyed again. `Part` is constructed
/// from (title, code page, id).
template <typename Part>
std::string TitleShown(OmCellText const& title, std::string const& codePage) {
    return Part(title, codePage, 1).Title()->AsString();
}

} // namespace omtest

/// The conversion of the title, the same in charts and interactive items. Instantiated by their tests.
template <typename Part>
class PartTitleInCodePage : public ::testing::Test {
protected:
    using Calls = std::vector<std::string>;
    omtest::ForeignLog log;
};

TYPED_TEST_SUITE_P(PartTitleInCodePage);

// A title that was replaced although there is nothing to convert would be a string cell.
TYPED_TEST_P(PartTitleInCodePage, EmptyCodePageKeepsTheTitle) {
    omtest::ForeignText const title(this->log, "t");
    TypeParam const part(title, "", 1);
    EXPECT_EQ(this->log.Take(), typename TestFixture::Calls{"t: Clone"});
    auto const* const kept = dynamic_cast<omtest::ForeignText const*>(part.Title());
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->name(), "t'");
}

// The clone that the base made goes; the text is asked for once, of the title that was handed in.
TYPED_TEST_P(PartTitleInCodePage, CodePageReplacesTheTitleByAStringCell) {
    omtest::ForeignText const title(this->log, "t", "caf\xC3\xA9");
    TypeParam const part(title, "windows-1252", 1);
    EXPECT_EQ(this->log.Take(), (typename TestFixture::Calls{"t: Clone", "t: AsString", "t': destroy"}));
    ASSERT_NE(omtest::StringTitle(part), nullptr);
    EXPECT_EQ(omtest::StringTitle(part)->AsString(), "caf\xE9");
    EXPECT_FALSE(omtest::StringTitle(part)->Flag());
}

TYPED_TEST_P(PartTitleInCodePage, StringCellIsReplacedToo) {
    OmStringCell const title("plain", nullptr, true);
    TypeParam const part(title, "windows-1252", 1);
    ASSERT_NE(omtest::StringTitle(part), nullptr);
    EXPECT_EQ(omtest::StringTitle(part)->AsString(), "plain");
    EXPECT_FALSE(omtest::StringTitle(part)->Flag());
}

TYPED_TEST_P(PartTitleInCodePage, TextIsConvertedIntoManyCodePages) {
    EXPECT_EQ(omtest::TitleShown<TypeParam>(OmStringCell("\xE2\x82\xAC"), "windows-1252"), "\x80");
    EXPECT_EQ(omtest::TitleShown<TypeParam>(OmStringCell("\xE2\x82\xAC"), "en_US.ISO-8859-15"), "\xA4");
    EXPECT_EQ(omtest::TitleShown<TypeParam>(OmStringCell("\xE8\xA1\xA8"), "Shift_JIS"), "\x95\x5C");
    EXPECT_EQ(omtest::TitleShown<TypeParam>(OmStringCell("\xD0\xAF"), "1251"), "\xDF");
    EXPECT_EQ(omtest::TitleShown<TypeParam>(OmStringCell("\xEA\xB0\x80"), "EUC_KR"), "\xB0\xA1");
    EXPECT_EQ(omtest::TitleShown<TypeParam>(OmStringCell("\xC3\xA9"), "UTF-8"), "\xC3\xA9");
}

TYPED_TEST_P(PartTitleInCodePage, EmptyTitleStaysEmpty) {
    TypeParam const part(OmStringCell(""), "windows-1252", 1);
    ASSERT_NE(omtest::StringTitle(part), nullptr);
    EXPECT_EQ(omtest::StringTitle(part)->AsString(), "");
}

// The title is a new cell even then; a part that left it alone would keep the clone.
TYPED_TEST_P(PartTitleInCodePage, UnknownCodePageKeepsTheTextInANewCell) {
    omtest::ForeignText const title(this->log, "t", "caf\xC3\xA9");
    TypeParam const part(title, "no such page", 1);
    EXPECT_EQ(this->log.Take(), (typename TestFixture::Calls{"t: Clone", "t: AsString", "t': destroy"}));
    ASSERT_NE(omtest::StringTitle(part), nullptr);
    EXPECT_EQ(omtest::StringTitle(part)->AsString(), "caf\xC3\xA9");
    EXPECT_FALSE(omtest::StringTitle(part)->Flag());
    EXPECT_EQ(part.LocaleCodePage(), "no such page");
}

TYPED_TEST_P(PartTitleInCodePage, IllFormedTextIsKeptInANewCell) {
    omtest::ForeignText const title(this->log, "t", "a\xFFz");
    TypeParam const part(title, "windows-1252", 1);
    ASSERT_NE(omtest::StringTitle(part), nullptr);
    EXPECT_EQ(omtest::StringTitle(part)->AsString(), "a\xFFz");
}

// What comes before the character that has no place is not converted either.
TYPED_TEST_P(PartTitleInCodePage, CharacterWithoutAPlaceKeepsTheWholeTextInANewCell) {
    std::string const text = "caf\xC3\xA9 \xE8\xA1\xA8";
    omtest::ForeignText const title(this->log, "t", text);
    TypeParam const part(title, "windows-1252", 1);
    ASSERT_NE(omtest::StringTitle(part), nullptr);
    EXPECT_EQ(omtest::StringTitle(part)->AsString(), text);
}

TYPED_TEST_P(PartTitleInCodePage, CodePageNameEndsAtItsFirstZeroByte) {
    TypeParam const part(OmStringCell("\xC3\xA9"), std::string("windows-1252\0//", 15), 1);
    EXPECT_EQ(part.Title()->AsString(), "\xE9");
    EXPECT_EQ(part.LocaleCodePage(), std::string("windows-1252\0//", 15));
}

TYPED_TEST_P(PartTitleInCodePage, EveryTextIsDestroyedWithThePart) {
    {
        omtest::ForeignText const title(this->log, "t");
        TypeParam const converted(title, "windows-1252", 1);
        TypeParam const kept(title, "", 1);
        EXPECT_EQ(this->log.alive, 2);
    }
    EXPECT_EQ(this->log.alive, 0);
}

// When the title cannot be cloned there is no part, and nothing is left of it.
TYPED_TEST_P(PartTitleInCodePage, FailingCloneLeavesNothingBehind) {
    omtest::ForeignText const title(this->log, "t");
    this->log.clonesUntilFailure = 0;
    EXPECT_THROW(TypeParam(title, "windows-1252", 1), std::bad_alloc);
    EXPECT_EQ(this->log.alive, 1);
}

REGISTER_TYPED_TEST_SUITE_P(PartTitleInCodePage, EmptyCodePageKeepsTheTitle, CodePageReplacesTheTitleByAStringCell,
                            StringCellIsReplacedToo, TextIsConvertedIntoManyCodePages, EmptyTitleStaysEmpty,
                            UnknownCodePageKeepsTheTextInANewCell, IllFormedTextIsKeptInANewCell,
                            CharacterWithoutAPlaceKeepsTheWholeTextInANewCell, CodePageNameEndsAtItsFirstZeroByte,
                            EveryTextIsDestroyedWithThePart, FailingCloneLeavesNothingBehind);

#endif
