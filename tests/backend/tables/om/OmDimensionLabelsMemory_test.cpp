// What is left of a child that could not be made, below a parent whose labels are found by a hash.
#include "backend/tables/om/OmDimension.h"

#include "omcell/OmCellMetaData.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"
#include "tests/support/FailingHeap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using omtest::CategoryWorld;
using omtest::ChildIndexOf;
using omtest::Label;

constexpr int Many = 48;

std::string Name(int number) { return "label " + std::to_string(1000 + number * 37 % Many); }

struct WideWorld : CategoryWorld {
    WideWorld() {
        for (int round = 0; round < 2; ++round) {
            for (int k = 0; k < Many; ++k) {
                dimension.Child(Root(), Label(Name(k)), static_cast<unsigned long long>(k), false);
            }
        }
    }
};

} // namespace

// Metadata is what a string cell takes from outside the region.
TEST(OmDimensionLabelsMemory, ChildThatCannotBeMadeChangesNothing) {
    for (std::string const& name : {std::string("new"), std::string("new, and longer than fifteen bytes")}) {
        WideWorld world;
        OmStringCell text(name);
        OmCellMetaData meta;
        meta.markers.push_back("a marker that is too long for its string object");
        text.setMeta(&meta);
        std::size_t const blocks = world.dimension.Region().LiveBlocks();
        int const refused =
            omtest::FailEachRequest([&] { world.dimension.Child(world.Root(), text, 0, false); },
                                    [&] {
                                        EXPECT_EQ(world.Root().ChildCount(), static_cast<std::size_t>(Many));
                                        EXPECT_EQ(world.dimension.NumCategories(), Many);
                                        EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks);
                                        EXPECT_EQ(OmDimension::FindChild(world.Root(), text, false), -1);
                                        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(Name(9)), false), 9);
                                    });
        EXPECT_GE(refused, 2);
        std::string const entries = ChildIndexOf(world.Root());
        EXPECT_EQ(std::count(entries.begin(), entries.end(), ','), Many);
        EXPECT_EQ(OmDimension::FindChild(world.Root(), text, false), Many);
        EXPECT_EQ(world.Root().ChildCount(), static_cast<std::size_t>(Many) + 1);
    }
}
