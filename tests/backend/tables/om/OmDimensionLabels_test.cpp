// Wide parents, whose labels are found by a hash: what must not show.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmCellMetaData.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using omtest::CategoryWorld;
using omtest::ChildIndexOf;
using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::Label;
using Node = OmDimension::Node;
using Calls = std::vector<std::string>;

constexpr int Many = 64;

std::string Name(int number) { return "label " + std::to_string(1000 + number * 37 % 64); }

/// Enough string cells below the root for a hash, which has been asked, too.
struct WideWorld : CategoryWorld {
    WideWorld() {
        for (int round = 0; round < 2; ++round) {
            for (int k = 0; k < Many; ++k) {
                dimension.Child(Root(), Label(Name(k)), static_cast<unsigned long long>(k), false);
            }
        }
    }
};

/// The entries of a child index that was kept sorted all along.
std::string SortedEntries() {
    std::vector<int> entries;
    for (int k = 0; k < Many; ++k) {
        entries.push_back(k);
    }
    std::sort(entries.begin(), entries.end(), [](int a, int b) { return Name(a) < Name(b); });
    std::string text;
    for (int const entry : entries) {
        text += (text.empty() ? "" : ", ") + std::to_string(entry);
    }
    return text;
}

} // namespace

TEST(OmDimensionLabels, EveryChildIsFoundWhereItWasMade) {
    WideWorld world;
    ASSERT_EQ(world.Root().ChildCount(), static_cast<std::size_t>(Many));
    EXPECT_EQ(world.dimension.NumCategories(), Many);
    for (int k = 0; k < Many; ++k) {
        Node const found = world.dimension.Child(world.Root(), Label(Name(k)), 999, false);
        EXPECT_TRUE(found == world.Root().Child(static_cast<std::size_t>(k)));
        EXPECT_EQ(found.Depth(), 1U);
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(Name(k)), false), k);
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(Name(k)), true), -1);
    }
}

TEST(OmDimensionLabels, IndexIsPrintedAndCopiedSorted) {
    WideWorld world;
    EXPECT_EQ(ChildIndexOf(world.Root()), SortedEntries());
    EXPECT_EQ(ChildIndexOf(world.table.AddDimension(world.dimension).Root()), SortedEntries());
    OmDimensionNode const copy(world.Root().Value());
    EXPECT_EQ(omtest::PrintedBy(copy, 0), omtest::PrintedBy(world.Root().Value(), 0));
}

// Readers share a dimension that nobody changes; the sanitizers' thread checker sees a reader that writes, and so does
// the region's book.
TEST(OmDimensionLabels, ReadersChangeNothing) {
    WideWorld world;
    OmDimension const& dimension = world.dimension;
    std::size_t const blocks = dimension.Region().LiveBlocks();
    std::size_t const bytes = dimension.Region().LiveBytes();
    std::vector<std::thread> readers;
    std::vector<int> wrong(4, 0);
    for (int& count : wrong) {
        readers.emplace_back([&] {
            for (int k = 0; k < Many; ++k) {
                count += OmDimension::FindChild(dimension.Root(), Label(Name(k)), false) != k ? 1 : 0;
                count += OmDimension::FindChild(dimension.Root(), Label("no " + Name(k)), false) != -1 ? 1 : 0;
                OmDimensionNode const copy(dimension.Root().Value(), nullptr);
                count += copy.Text()->AsString() != "D" ? 1 : 0;
            }
        });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
    EXPECT_EQ(dimension.Region().LiveBlocks(), blocks);
    EXPECT_EQ(dimension.Region().LiveBytes(), bytes);
}

TEST(OmDimensionLabels, NewChildIsACopyOfItsValueWithTheTrackerOfItsParent) {
    WideWorld world;
    icuTracker tracker({true, "en_US.UTF-8"});
    world.dimension.Name().SetTracker(&tracker);
    OmStringCell text("given");
    text.SetU8String("in UTF-8");
    text.SetEngString("in English");
    text.SetAltText("spoken");
    OmCellMetaData meta;
    meta.markers.push_back("*");
    text.setMeta(&meta);
    OmDimensionNode value(text, 7, true, nullptr);
    value.Sort(OmSort::Down);
    value.Hide(true);
    value.HideLabels(true);
    OmDimensionNode const& made = world.dimension.Child(world.Root(), value).Value();
    EXPECT_EQ(made.Region(), &world.dimension.Region());
    EXPECT_EQ(made.Subscript(), 7U);
    EXPECT_EQ(made.Sort(), OmSort::Down);
    EXPECT_TRUE(made.IsGroup() && made.Hide() && made.HideLabels());
    EXPECT_EQ(ChildIndexOf(world.Root().Child(Many)), "");
    OmStringCell const& label = dynamic_cast<OmStringCell const&>(*made.Text());
    EXPECT_EQ(label.Tracker(), &tracker);
    EXPECT_EQ(label.AsString(), "given");
    EXPECT_EQ(label.AsU8String(), "in UTF-8");
    EXPECT_EQ(label.AsEngString(), "in English");
    EXPECT_EQ(label.AltText(), "spoken");
    EXPECT_EQ(label.getMarkers(), std::vector<std::string>{"*"});
    EXPECT_EQ(world.dimension.NumCategories(), Many);
}

// The value stands in the block that has to grow for its copy, and has an index of its own.
TEST(OmDimensionLabels, ValueMayBeANodeOfTheTree) {
    WideWorld world;
    Node const group = world.dimension.Child(world.Root(), Label("group"), 3, true);
    group.Value().Hide(true);
    for (int k = 0; k < Many; ++k) {
        world.dimension.Child(world.Root().Child(Many), Label(Name(k)), 0, true);
        Node const made = world.dimension.Child(world.Root().Child(Many).Child(0), world.Root().Child(Many).Value());
        EXPECT_TRUE(made.Value().Hide());
        EXPECT_EQ(ChildIndexOf(made), "");
    }
    for (std::size_t k = 0; k < Many; ++k) {
        world.Root().Child(k).Value().Hide(true);
        Node const made = world.dimension.Child(world.Root().Child(Many), world.Root().Child(k).Value());
        EXPECT_TRUE(made.Value().Hide());
        EXPECT_FALSE(made.Value().IsGroup());
        EXPECT_EQ(made.Value().Subscript(), k);
    }
}

// It is the copy for UTF-8 that labels are compared by.
TEST(OmDimensionLabels, BytesThatCompareDecideNotTheGivenOnes) {
    WideWorld world;
    OmStringCell text("anything");
    text.SetU8String(Name(5));
    EXPECT_TRUE(world.dimension.Child(world.Root(), text, 0, false) == world.Root().Child(5));
    OmStringCell other(Name(5));
    other.SetU8String("other");
    EXPECT_EQ(OmDimension::FindChild(world.Root(), other, false), -1);
}

TEST(OmDimensionLabels, NumbersAndEmptyTextsAreNotStringCells) {
    WideWorld world;
    EXPECT_EQ(OmDimension::FindChild(world.Root(), OmNumber(1.0), false), -1);
    Node const made = world.dimension.Child(world.Root(), OmNumber(1.0), 0, false);
    EXPECT_TRUE(made == world.Root().Child(Many));
    EXPECT_TRUE(world.dimension.Child(world.Root(), OmNumber(1.0), 0, false) == made);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), OmNumber(1.0), false), Many);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(Name(3)), false), 3);
}

// A text of another kind is compared as if the index had been kept sorted: with the same children, in the same order.
TEST(OmDimensionLabels, ForeignTextSeesTheBisection) {
    for (bool const isHashed : {false, true}) {
        ForeignLog log;
        CategoryWorld world;
        for (int round = 0; round < (isHashed ? 3 : 1); ++round) {
            for (char const* const label : {"d", "b", "f", "a", "c", "e", "g"}) {
                world.dimension.Child(world.Root(), Label(label), 0, false);
            }
            if (isHashed) {
                world.dimension.Child(world.Root(), Label("h"), 0, false);
            }
        }
        // Sorts before every string cell, so the search comes to the first of the sorted labels.
        ForeignText const text(log, "f");
        text.spec().orderCode = 0;
        OmDimension::FindChild(world.Root(), text, false);
        Calls expected(isHashed ? 4 : 3, "f': OrderCode");
        expected.insert(expected.begin(), "f: Clone");
        expected.insert(expected.end(), {"f': Compare(a)", "f': destroy"});
        EXPECT_EQ(log.Take(), expected);
        text.spec().orderCode = 100;
        world.dimension.Child(world.Root(), text, 0, false);
        Calls calls = log.Take({"Clone", "SetTracker", "OrderCode"});
        calls.erase(std::remove(calls.begin(), calls.end(), "f'': OrderCode"), calls.end());
        EXPECT_EQ(calls, (Calls{"f: Clone", "f': Clone", "f'': SetTracker(null)", "f'': Clone"}));
    }
}

// A node from another region with a label of the table's: an edit of the node is made known there and not here.
TEST(OmDimensionLabels, NodeFromAnotherRegionKeepsTheParentFromTheHash) {
    OmMemoryRegion elsewhere(false);
    WideWorld world;
    world.dimension.AddNewChild(world.Root().Child(0), Label(Name(Many - 1)), 1, false);
    OmDimension::Tree::EraseChild(world.Root(), Many - 1);
    OmDimension::Tree::Subtree stranger(&elsewhere, nullptr, Label("x"), 0ULL, false, &elsewhere);
    OmDimension::Tree::InsertAt(world.Root(), std::move(stranger), Many - 1);
    OmDimension::Tree::Reparent(world.Root(), true);
    world.Root().Child(Many - 1).Value() = world.Root().Child(0).Child(0).Value();
    for (int k = 0; k < 2 * Many; ++k) {
        EXPECT_TRUE(world.dimension.Child(world.Root(), Label(Name(Many - 1)), 0, false) ==
                    world.Root().Child(Many - 1));
    }
    world.Root().Child(Many - 1).Value().IsGroup(true);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(Name(Many - 1)), false), -1);
    EXPECT_EQ(world.Root().ChildCount(), static_cast<std::size_t>(Many));
}

TEST(OmDimensionLabels, ParentThatIsNoGroupAnyMoreIsRefused) {
    WideWorld world;
    world.Root().Value().IsGroup(false);
    EXPECT_ANY_THROW(world.dimension.Child(world.Root(), Label(Name(3)), 0, false));
    EXPECT_ANY_THROW(world.dimension.Child(world.Root(), Label("new"), 0, false));
    EXPECT_EQ(world.Root().ChildCount(), static_cast<std::size_t>(Many));
}

TEST(OmDimensionLabels, RegionGetsEverythingBack) {
    CategoryWorld world;
    OmMemoryRegion const& region = world.dimension.Region();
    world.dimension.AddNewChild(world.Root(), Label("first"), 0, false);
    std::size_t const blocks = region.LiveBlocks();
    for (bool const isEdited : {false, true}) {
        Node const group = world.dimension.AddNewChild(world.Root(), Label("group"), 0, true);
        for (int k = 0; k < 2000; ++k) {
            world.dimension.Child(group, Label(Name(k) + std::string(static_cast<std::size_t>(k % 40), 'x')), 0, false);
        }
        if (isEdited) {
            group.Child(7).Value().Text(Label("edited"));
        }
        Node node = omtest::NodeAt(world.dimension, 1);
        world.dimension.Delete(node);
        EXPECT_EQ(region.LiveBlocks(), blocks);
    }
}

// A hundred thousand labels by insertion into a sorted list take minutes under the sanitizers.
TEST(OmDimensionLabels, HundredThousandLabelsAreNoMatter) {
    CategoryWorld world;
    constexpr int Count = 100000;
    auto const name = [](int k) { return std::to_string(static_cast<long long>(k) * 7919 % Count); };
    for (int k = 0; k < Count; ++k) {
        world.dimension.Child(world.Root(), Label(name(k)), 0, false);
    }
    OmDimension& copy = world.table.AddDimension(world.dimension);
    for (int k = 0; k < Count; k += 97) {
        EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(name(k)), false), k);
        EXPECT_EQ(OmDimension::FindChild(copy.Root(), Label(name(k)), false), k);
    }
    EXPECT_EQ(ChildIndexOf(copy.Root()), ChildIndexOf(world.Root()));
}

// So many that some pairs have one hash value of 32 bits: their bytes must tell them apart.
TEST(OmDimensionLabels, LongLabelsOfOneLengthAreToldApart) {
    CategoryWorld world;
    constexpr int Count = 200000;
    for (int k = 0; k < Count; ++k) {
        world.dimension.Child(world.Root(), Label("a long label " + std::to_string(1000000 + k)), 0, false);
    }
    EXPECT_EQ(world.Root().ChildCount(), static_cast<std::size_t>(Count));
}
