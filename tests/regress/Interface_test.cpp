// Defects of signatures: what compiles, and what it then means.
#include "backend/tables/MultiBase.h"
#include "backend/tables/PuppetVector.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// --- texts in regions ------------------------------------------------------------------------------------------------

// A null pointer constant converted to a region and to a place alike.
TEST(NullRegion, SpeltAsNullPointerConstantMeansTheDefaultHeap) {
    std::unique_ptr<OmStringCell> const text(new (nullptr) OmStringCell("a"));
    std::unique_ptr<OmCellText> const number(new (nullptr) OmNumber(1.5));
    EXPECT_EQ(text->AsString(), "a");
    EXPECT_EQ(number->AsString(), "1.5");
}

namespace {

struct Refusing final : OmRegionManaged {
    Refusing() { throw 1; }
};

} // namespace

// The storage goes back when the constructor throws; the leak checker watches.
TEST(NullRegion, ThrowingConstructorGivesTheStorageBack) { EXPECT_THROW(new (nullptr) Refusing(), int); }

// --- copies of texts -------------------------------------------------------------------------------------------------

// A copy of a value or variable shared its parts with the source, and both destroyed them.
static_assert(!std::is_copy_constructible_v<OmValue>, "texts are copied by Clone");
static_assert(!std::is_copy_constructible_v<OmVariable>);
static_assert(!std::is_copy_constructible_v<OmMessage>);
static_assert(!std::is_copy_constructible_v<OmComposite>);
static_assert(!std::is_copy_constructible_v<OmNumber>);
static_assert(!std::is_copy_constructible_v<OmStringCell>);
static_assert(!std::is_move_constructible_v<OmValue> && !std::is_copy_assignable_v<OmValue>);
static_assert(std::is_constructible_v<OmValue, OmCellText const&> && std::is_constructible_v<OmVariable, OmCellText&>);

// --- lists in braces -------------------------------------------------------------------------------------------------

namespace {

using Shorts = PuppetVector<short>;
using Strings = PuppetVector<std::string>;

template <typename Sequence, typename... Items>
concept MadeFromBraces = requires(Items... items) {
    Sequence{items...};
};

static_assert(!std::is_constructible_v<MultiBase, unsigned, unsigned>, "a count and a value are no range");
static_assert(!std::is_constructible_v<MultiBase, int, int>);
static_assert(std::is_constructible_v<MultiBase, std::uint32_t const*, std::uint32_t const*>);
static_assert(MadeFromBraces<MultiBase, std::uint32_t, std::uint32_t>);

static_assert(!MadeFromBraces<Shorts, short>, "no telling an element from a fill value");
static_assert(!MadeFromBraces<Shorts, short, short>);
static_assert(!MadeFromBraces<Shorts, short, short, short>, "no telling elements from a count, a value and a fill");
static_assert(!MadeFromBraces<PuppetVector<std::size_t>, std::size_t, std::size_t, std::size_t>);
static_assert(!MadeFromBraces<PuppetVector<short const*>, short const*, short const*, short const*>);
static_assert(MadeFromBraces<Shorts>);
static_assert(!std::is_constructible_v<Shorts, std::initializer_list<short>>);
static_assert(std::is_constructible_v<Shorts, std::initializer_list<short>, short>);
static_assert(std::is_constructible_v<Shorts, std::size_t, short, short>);
static_assert(std::is_convertible_v<std::initializer_list<short>, Shorts> == false);

} // namespace

// Was three bases of 4.
TEST(BracedList, OfNumbersIsTheBasesOfAMixedRadixIndex) {
    using Bases = std::vector<std::uint32_t>;
    EXPECT_EQ((MultiBase{3U, 4U}).Bases(), (Bases{3, 4}));
    EXPECT_EQ((MultiBase{5U}).Bases(), Bases{5});
    EXPECT_EQ((MultiBase{2U, 3U, 4U}).Count(), 24U);
    EXPECT_EQ(MultiBase{}.Count(), 1U);
    Bases const bases{6, 7};
    EXPECT_EQ((MultiBase{bases.begin(), bases.end()}).Bases(), bases);
}

TEST(BracedList, AssignedToAPuppetVectorIsItsElements) {
    Shorts axis(-1);
    axis = {4, 2, 3};
    EXPECT_EQ(axis, Shorts({4, 2, 3}, 0));
    EXPECT_EQ(axis.Fill(), -1);
    axis = {};
    EXPECT_TRUE(axis.empty());
    EXPECT_EQ(axis.Fill(), -1);
}

// --- a puppet vector and itself --------------------------------------------------------------------------------------

namespace {

std::string const Fill = "a fill value that does not fit into a small string";

} // namespace

// A gap in it was filled with empty strings.
TEST(PuppetVectorAndItself, MovedFromOneIsEmptyAndKeepsItsFillValue) {
    Strings source({"a", "b"}, Fill);
    Strings taken = std::move(source);
    EXPECT_EQ(taken, Strings({"a", "b"}, ""));
    EXPECT_EQ(taken.Fill(), Fill);
    EXPECT_TRUE(source.empty());
    EXPECT_EQ(source.Fill(), Fill);
    source[1] = "c";
    EXPECT_EQ(source[0], Fill);
    Strings assigned(std::string("other"));
    assigned = std::move(source);
    EXPECT_EQ(assigned[0], Fill);
    EXPECT_EQ(assigned.Fill(), Fill);
    EXPECT_TRUE(source.empty());
    EXPECT_EQ(source.Fill(), Fill);
}

TEST(PuppetVectorAndItself, MovedAssignedAndSwappedOntoItselfIsAsBefore) {
    Strings strings({"a", "b"}, Fill);
    Strings& same = strings;
    strings = std::move(same);
    EXPECT_EQ(strings, Strings({"a", "b"}, ""));
    strings = same;
    strings.swap(same);
    swap(strings, same);
    EXPECT_EQ(strings, Strings({"a", "b"}, ""));
    EXPECT_EQ(strings.Fill(), Fill);
}

TEST(PuppetVectorAndItself, TakesItsOwnElementsWhileItGrows) {
    Strings strings({"an element that does not fit into a small string"}, Fill);
    std::string const element = strings[0];
    for (int round = 0; round < 10; ++round) {
        strings.push_back(strings[0]);
        strings.emplace_back(strings[0]);
        strings.insert(strings.begin(), strings.back());
        strings.insert(strings.begin(), 2, strings.back());
        strings.emplace(strings.begin() + 1, strings.back());
        strings.resize(strings.size() + 3, strings[0]);
    }
    EXPECT_EQ(strings.size(), 91U);
    EXPECT_EQ(std::count(strings.begin(), strings.end(), element), 91);
    strings.assign(200, strings[5]);
    EXPECT_EQ(strings.size(), 200U);
    EXPECT_EQ(std::count(strings.begin(), strings.end(), element), 200);
    strings.assign(2, strings[1]);
    EXPECT_EQ(strings, Strings({element, element}, ""));
    strings.resize(3, strings.Fill());
    EXPECT_EQ(strings[2], Fill);
}

// Elements were overwritten before they were read.
TEST(PuppetVectorAndItself, TakesARangeOfItsOwn) {
    Shorts axis({1, 2, 3, 4, 5}, -1);
    axis.reserve(20);
    axis.insert(axis.begin() + 1, axis.begin(), axis.begin() + 4);
    EXPECT_EQ(axis, Shorts({1, 1, 2, 3, 4, 2, 3, 4, 5}, 0));
    axis.assign(axis.rbegin(), axis.rend());
    EXPECT_EQ(axis, Shorts({5, 4, 3, 2, 4, 3, 2, 1, 1}, 0));
    axis.assign(axis.begin() + 2, axis.begin() + 4);
    EXPECT_EQ(axis, Shorts({3, 2}, 0));
    std::istringstream stream("7 8");
    axis.insert(axis.begin() + 1, std::istream_iterator<short>(stream), std::istream_iterator<short>());
    EXPECT_EQ(axis, Shorts({3, 7, 8, 2}, 0));
}

TEST(PuppetVectorAndItself, FailingCopyOfTheFillValueChangesNothing) {
    struct Picky {
        explicit Picky(int number) : value(number) {}
        Picky(Picky const& other) : value(other.value) {
            if (value < 0) {
                throw value;
            }
        }
        Picky& operator=(Picky const& other) {
            if (other.value < 0) {
                throw other.value;
            }
            value = other.value;
            return *this;
        }
        int value;
    };
    PuppetVector<Picky> source(2, Picky(5), Picky(7));
    PuppetVector<Picky> target(1, Picky(6), Picky(8));
    const_cast<Picky&>(source.Fill()).value = -1;
    EXPECT_THROW(target = std::move(source), int);
    EXPECT_THROW(target = source, int);
    EXPECT_EQ(source.size(), 2U);
    EXPECT_EQ(target.size(), 1U);
    EXPECT_EQ(target.at(0).value, 6);
    EXPECT_EQ(target.Fill().value, 8);
}
