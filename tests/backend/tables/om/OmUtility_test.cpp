#include "backend/tables/om/OmUtility.h"

#include "backend/tables/om/detail/FirstBelow.h"
#include "omcell/OmComposite.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

using omtest::ForeignLog;
using omtest::ForeignSpec;
using omtest::ForeignText;

namespace {

using Node = OmComposite::Tree::Node;

/// The value of the first number, or a NaN when there is none.
double FirstNumber(OmComposite const& composite) {
    OmNumber const* const number = OmUtility::GetFirstNumber(composite);
    return number != nullptr ? number->NumericValue() : std::nan("");
}

OmStringCell const a("a");

} // namespace

TEST(OmUtility, CompositeWithoutNumbersGivesNull) {
    OmComposite composite;
    EXPECT_EQ(OmUtility::GetFirstNumber(composite), nullptr);
    composite.Append(composite.Append(a), a);
    EXPECT_EQ(OmUtility::GetFirstNumber(composite), nullptr);
}

TEST(OmUtility, NumberNestedTwoLevelsDeepIsFound) {
    OmComposite composite;
    composite.Append(a);
    Node const second = composite.Append(a);
    Node const below = composite.Append(second, a);
    composite.Append(below, OmNumber(7));
    EXPECT_EQ(FirstNumber(composite), 7);
}

TEST(OmUtility, NumberIsTheCompositesOwn) {
    OmComposite composite;
    Node const node = composite.Append(OmNumber(7));
    EXPECT_EQ(OmUtility::GetFirstNumber(composite), node.Value());
}

TEST(OmUtility, FirstOfSeveralComponentsIsTaken) {
    OmComposite composite;
    composite.Append(OmNumber(1));
    composite.Append(OmNumber(2));
    EXPECT_EQ(FirstNumber(composite), 1);
}

// Level by level would give the number that is not nested.
TEST(OmUtility, NestedNumberComesBeforeALaterComponent) {
    OmComposite composite;
    composite.Append(composite.Append(composite.Append(a), a), OmNumber(1));
    composite.Append(OmNumber(2));
    EXPECT_EQ(FirstNumber(composite), 1);
}

TEST(OmUtility, ComponentComesBeforeItsSubcomponents) {
    OmComposite composite;
    composite.Append(composite.Append(OmNumber(1)), OmNumber(2));
    EXPECT_EQ(FirstNumber(composite), 1);
}

TEST(OmUtility, SearchGoesOnBehindSubcomponentsWithoutANumber) {
    OmComposite composite;
    Node const first = composite.Append(a);
    composite.Append(composite.Append(first, a), a);
    composite.Append(first, a);
    composite.Append(OmNumber(3));
    EXPECT_EQ(FirstNumber(composite), 3);
}

TEST(OmUtility, SubcomponentsOfANullValueAreSearched) {
    OmComposite composite;
    Node const nothing = composite.Components().AddChild(composite.Components().Root(), nullptr);
    composite.Append(nothing, OmNumber(4));
    EXPECT_EQ(FirstNumber(composite), 4);
}

TEST(OmUtility, MissingNumberIsANumber) {
    OmComposite composite;
    composite.Append(OmNumber(OmNumber::MissingValue()));
    composite.Append(OmNumber(2));
    OmNumber const* const number = OmUtility::GetFirstNumber(composite);
    ASSERT_NE(number, nullptr);
    EXPECT_TRUE(number->IsMissing());
}

// The test is for the kind, not for what a text answers.
TEST(OmUtility, TextThatPassesForANumberIsNone) {
    ForeignLog log;
    ForeignSpec spec;
    spec.name = "n";
    spec.orderCode = OmNumber::Order;
    spec.number = 5;
    OmComposite composite;
    composite.Append(ForeignText(log, spec));
    EXPECT_EQ(OmUtility::GetFirstNumber(composite), nullptr);
}

TEST(OmUtility, ComponentThatIsACompositeItselfIsNotEntered) {
    OmComposite inner;
    inner.Append(OmNumber(1));
    OmComposite composite;
    Node const node = composite.Append(inner);
    EXPECT_EQ(OmUtility::GetFirstNumber(composite), nullptr);
    composite.Append(node, OmNumber(2)); // its sub-components are searched all the same
    EXPECT_EQ(FirstNumber(composite), 2);
}

TEST(OmUtility, ValueOfTheRootTakesNoPart) {
    OmComposite composite;
    OmNumber root(1);
    composite.Append(OmNumber(2));
    composite.Components().Root().Value() = &root;
    double const found = FirstNumber(composite);
    composite.Components().Root().Value() = nullptr;
    EXPECT_EQ(found, 2);
}

// Stepping down on the native stack would end the program.
TEST(OmUtility, MillionLevelsAreSearched) {
    OmComposite composite;
    Node node = composite.Append(a);
    for (int level = 1; level < 1000000; ++level) {
        node = composite.Components().AddChild(node, nullptr);
    }
    EXPECT_EQ(OmUtility::GetFirstNumber(composite), nullptr);
    composite.Append(node, OmNumber(6));
    EXPECT_EQ(FirstNumber(composite), 6);
}

TEST(OmUtility, LongListIsSearchedToItsEnd) {
    OmComposite composite;
    for (int k = 0; k < 100000; ++k) {
        composite.Components().AddChild(composite.Components().Root(), nullptr);
    }
    composite.Append(OmNumber(8));
    EXPECT_EQ(FirstNumber(composite), 8);
}

// --- the search ------------------------------------------------------------------------------------------------------

namespace {

/// A node of a tree whose nodes all have as many children, to a depth; its steps are counted.
struct CountedNode {
    std::size_t width;
    int depth;
    int number;
    long* steps;

    std::size_t ChildCount() const { return depth > 0 ? width : 0; }
    CountedNode Child(std::size_t k) const {
        ++*steps;
        return {width, depth - 1, static_cast<int>(k), steps};
    }
    int Value() const { return number; }
};

/// Steps to the first node with that number.
long StepsTo(int number, std::size_t width, int depth) {
    long steps = 0;
    bool const isFound =
        om_detail::FirstBelow(CountedNode{width, depth, -1, &steps}, [&](int value) { return value == number; });
    EXPECT_EQ(isFound, number < static_cast<int>(width));
    return steps;
}

} // namespace

// Found in the first of a million components, it was sought in all the others.
TEST(OmUtility, SearchStopsAtWhatItFinds) {
    EXPECT_EQ(StepsTo(0, 1000000, 1), 1);
    EXPECT_EQ(StepsTo(0, 1000, 2), 1);
    EXPECT_EQ(StepsTo(1, 10, 3), 4); // down to the deepest first child, then to its sibling
    EXPECT_EQ(StepsTo(10, 10, 3), 10 + 100 + 1000);
}
