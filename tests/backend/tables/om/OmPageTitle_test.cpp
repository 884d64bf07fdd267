#include "backend/tables/om/OmPageTitle.h"

#include "omcell/OmStringCell.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using omtest::SlotOf;
using omtest::Undestroyed;

TEST(OmPageTitle, AddsNoVirtualOperationAndNoField) {
    EXPECT_TRUE(std::has_virtual_destructor_v<OmPageTitle>);
    EXPECT_EQ(SlotOf(&OmPageTitle::Accept), 2U);
    EXPECT_TRUE((std::is_base_of_v<OmTextBlock, OmPageTitle>));
    EXPECT_EQ(sizeof(OmPageTitle), sizeof(OmTextBlock));
}

TEST(OmPageTitle, HasAnEmptyStringCellAsTitleAndIsNoLog) {
    OmPageTitle const title("1252");
    auto const* const text = dynamic_cast<OmStringCell const*>(title.Title());
    ASSERT_NE(text, nullptr);
    EXPECT_FALSE(text->Flag());
    EXPECT_EQ(title.Title()->AsString(), "");
    EXPECT_FALSE(title.IsLog());
    EXPECT_EQ(title.Size(), 0U);
    EXPECT_EQ(title.LocaleCodePage(), "1252");
}

TEST(OmPageTitle, CopySharesTheTitleAndTakesTheLinesByValue) {
    OmPageTitle title("1252");
    title.TextList() = {"one"};
    Undestroyed<OmPageTitle> copy(title);
    EXPECT_EQ(copy->Title(), title.Title());
    title.TextList() = {"two"};
    EXPECT_EQ(copy->TextList().front(), "one");
    copy->TextList().clear();
}

TEST(OmPageTitle, AssignmentSharesTheTitleAndFreesNothing) {
    OmPageTitle title("850");
    Undestroyed<OmPageTitle> target("1252");
    std::unique_ptr<OmCellText> const before(target->Title());
    *target = title;
    EXPECT_EQ(before->AsString(), "");
    EXPECT_NE(before.get(), title.Title());
    EXPECT_EQ(target->Title(), title.Title());
    EXPECT_EQ(target->LocaleCodePage(), "850");
}
