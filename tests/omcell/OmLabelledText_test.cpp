#include "omcell/OmLabelledText.h"

#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/icuTracker.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

using omtest::ForeignLog;
using omtest::ForeignText;

namespace {

constexpr OmCellText::ModeType Modes[] = {OmCellText::NameMode, OmCellText::LabelMode, OmCellText::LabelOrNameMode,
                                          OmCellText::BothMode};

OmNumber OneDecimal(double value) {
    OmNumber::Format format;
    format.type = OmNumber::FixedFormat;
    format.decimals = 1;
    return OmNumber(value, format);
}

} // namespace

TEST(OmLabelledText, StartsInTheModeThatPrefersTheLabel) {
    EXPECT_EQ(OmVariable("sex", "Sex").Mode(), OmCellText::LabelOrNameMode);
    EXPECT_EQ(OmValue(1.0, "Male").Mode(), OmCellText::LabelOrNameMode);
}

TEST(OmLabelledText, ModeIsKeptByTheConstructorAndReplaced) {
    for (OmCellText::ModeType const mode : Modes) {
        EXPECT_EQ(OmVariable("sex", "Sex", nullptr, mode).Mode(), mode);
        OmValue value(1.0, "Male");
        value.Mode(mode);
        EXPECT_EQ(value.Mode(), mode);
    }
}

TEST(OmLabelledText, ModeBeyondTheNamedOnesCountsAsTheDefault) {
    OmVariable variable("sex", "Sex of passenger");
    variable.Mode(static_cast<OmCellText::ModeType>(9));
    EXPECT_EQ(variable.AsString(), "Sex of passenger");
    EXPECT_EQ(OmVariable("sex", "", nullptr, static_cast<OmCellText::ModeType>(9)).AsString(), "sex");
}

TEST(OmLabelledText, PartsAreClonesInTheTextsRegion) {
    OmMemoryRegion arena(false);
    {
        auto name = std::make_unique<OmStringCell>("sex");
        auto label = std::make_unique<OmStringCell>("Sex");
        OmVariable const variable(*name, label.get(), &arena);
        EXPECT_NE(&variable.Name(), name.get());
        EXPECT_NE(variable.Label(), label.get());
        name.reset();
        label.reset();
        EXPECT_EQ(variable.Name().AsString(), "sex");
        EXPECT_EQ(variable.Label()->AsString(), "Sex");
        EXPECT_EQ(arena.LiveBlocks(), 2U); // the two cells
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmLabelledText, EmptyLabelStringIsNoLabel) {
    EXPECT_EQ(OmVariable("sex", "").Label(), nullptr);
    EXPECT_EQ(OmValue(1.0, "").Label(), nullptr);
    EXPECT_EQ(OmValue("m", "").Label(), nullptr);
    EXPECT_EQ(OmVariable(OmStringCell("sex")).Label(), nullptr);
}

TEST(OmLabelledText, EmptyTextGivenAsLabelIsOne) {
    OmStringCell const empty("");
    OmVariable const variable(OmStringCell("sex"), &empty);
    ASSERT_NE(variable.Label(), nullptr);
    EXPECT_EQ(variable.AsString(), "");
}

TEST(OmLabelledText, EveryFormObeysTheModeThroughTheParts) {
    OmStringCell label("Gehalt");
    label.SetU8String("Gehalt (u8)");
    label.SetEngString("Salary");
    OmValue value(OneDecimal(3.25), &label, nullptr, OmCellText::BothMode);
    EXPECT_EQ(value.AsString(), "3.25 Gehalt");
    EXPECT_EQ(value.AsU8String(), "3.25 Gehalt (u8)");
    EXPECT_EQ(value.AsEngString(), "3.25 Salary");
    EXPECT_EQ(value.AsFormattedString(), "3.3 Gehalt");
    value.Mode(OmCellText::NameMode);
    EXPECT_EQ(value.AsFormattedString(), "3.3");
    EXPECT_EQ(value.AsEngString(), "3.25");
    value.Mode(OmCellText::LabelMode);
    EXPECT_EQ(value.AsEngString(), "Salary");
    EXPECT_EQ(value.AsFormattedString(), "Gehalt");
}

TEST(OmLabelledText, ValueStandsForItsNumberInEveryMode) {
    for (OmCellText::ModeType const mode : Modes) {
        EXPECT_EQ(OmValue(2.5, "label", nullptr, mode).NumericValue(), 2.5);
    }
    EXPECT_EQ(OmValue("text", "label").NumericValue(), 0.0);
    EXPECT_TRUE(std::isnan(OmValue(OmNumber::MissingValue()).NumericValue()));
    EXPECT_EQ(OmValue(OmValue(OmValue(7.0))).NumericValue(), 7.0);
    EXPECT_EQ(OmVariable(OmNumber(3)).NumericValue(), 0.0);
}

TEST(OmLabelledText, ComparesByNameAndThenByLabel) {
    OmVariable const a("age", "z");
    EXPECT_LT(a.Compare(OmVariable("sex", "a")), 0);
    EXPECT_LT(OmVariable("age", "a").Compare(a), 0);
    EXPECT_GT(a.Compare(OmVariable("age", "a")), 0);
    EXPECT_TRUE(OmCellText::Equal(a, OmVariable("age", "z")));
}

TEST(OmLabelledText, TextWithoutALabelSortsFirst) {
    EXPECT_LT(OmVariable("age").Compare(OmVariable("age", "a")), 0);
    EXPECT_GT(OmVariable("age", "a").Compare(OmVariable("age")), 0);
    EXPECT_EQ(OmVariable("age").Compare(OmVariable("age")), 0);
}

TEST(OmLabelledText, ValuesCompareAsNumbers) {
    EXPECT_LT(OmValue(9.0, "z").Compare(OmValue(10.0, "a")), 0);
    EXPECT_LT(OmValue("z").Compare(OmValue(1.0)), 0); // a string cell before a number, by order code
}

// The same variable in an outline and in a table is one variable; its length must not depend on what is shown.
TEST(OmLabelledText, ModeTakesNoPartInEquality) {
    for (OmCellText::ModeType const mode : Modes) {
        for (OmCellText::ModeType const other : Modes) {
            EXPECT_TRUE(
                OmCellText::Equal(OmVariable("age", "Age", nullptr, mode), OmVariable("age", "Age", nullptr, other)));
        }
    }
}

TEST(OmLabelledText, EqualTextsHaveOneLengthAndDifferentNamesAreNotEqual) {
    EXPECT_EQ(OmVariable("age", "Age").TextLength(), 6U);
    EXPECT_EQ(OmVariable("age").TextLength(), 3U);
    EXPECT_FALSE(OmCellText::Equal(OmVariable("ab", "c"), OmVariable("a", "bc")));
}

TEST(OmLabelledText, VariableAndValueAreDifferentKinds) {
    EXPECT_LT(OmVariable("z").Compare(OmValue("a")), 0);
    EXPECT_GT(OmValue("a").Compare(OmVariable("z")), 0);
    EXPECT_LT(OmValue("a").Compare(OmMessage("a")), 0);
}

TEST(OmLabelledText, ForeignTextWithTheSameCodeIsNotTakenForOne) {
    ForeignLog log;
    ForeignText foreign(log, "age");
    foreign.spec().orderCode = OmVariable::Order;
    EXPECT_LT(OmVariable("age").Compare(foreign), 0);
    foreign.spec().orderCode = OmValue::Order;
    EXPECT_LT(OmValue("age").Compare(foreign), 0);
}

TEST(OmLabelledText, TrackerReachesNameAndLabel) {
    icuTracker tracker({false, "de_DE.ISO-8859-1"});
    OmVariable variable("sex", "Sex");
    EXPECT_EQ(variable.SetTracker(&tracker), &tracker);
    EXPECT_EQ(variable.Tracker(), &tracker);
    EXPECT_EQ(variable.Name().Tracker(), &tracker);
    EXPECT_EQ(variable.Label()->Tracker(), &tracker);
    variable.SetTracker(nullptr);
    EXPECT_EQ(variable.Label()->Tracker(), nullptr);
}

TEST(OmLabelledText, CloneKeepsModePartsAndMetadata) {
    OmMemoryRegion arena(false);
    auto value = std::make_unique<OmValue>(2.0, "Two", nullptr, OmCellText::BothMode);
    OmCellMetaData meta;
    meta.footnotes = {1};
    value->setMeta(&meta);
    {
        std::unique_ptr<OmCellText> const clone(value->Clone(&arena));
        value.reset();
        EXPECT_EQ(clone->AsString(), "2 Two");
        EXPECT_EQ(clone->Footnotes(), std::vector<short>{1});
        ASSERT_NE(dynamic_cast<OmValue*>(clone.get()), nullptr);
        EXPECT_EQ(static_cast<OmValue&>(*clone).Mode(), OmCellText::BothMode);
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(OmLabelledText, FailingLabelLeavesNothingOfTheName) {
    OmMemoryRegion arena(false);
    ForeignLog log;
    ForeignText const label(log, "label");
    log.clonesUntilFailure = 0;
    EXPECT_THROW(OmVariable(OmStringCell("name"), &label, &arena), std::bad_alloc);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}
