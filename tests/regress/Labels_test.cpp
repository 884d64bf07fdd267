// Defects that were found in finding children by their labels.
#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/LabelHash.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"
#include "tests/support/FailingMalloc.h"
#include "tests/support/ForeignText.h"
#include "tests/support/HeapInUse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using om_detail::LabelHash;
using om_detail::LabelKey;
using omtest::CategoryWorld;
using omtest::ChildIndexOf;
using omtest::Label;
using Node = OmDimension::Node;

std::string Name(int number) { return "label " + std::to_string(100000 + number); }

/// The labels of `Name`, made in an order that is not the sorted one, by `Child`.
struct HashedWorld : CategoryWorld {
    explicit HashedWorld(int count) {
        for (int k = 0; k < count; ++k) {
            dimension.Child(Root(), Label(Name(k * 7 % count)), static_cast<unsigned long long>(k), false);
        }
    }
};

/// What the odd number has to be multiplied by to give 1 modulo 2^64.
std::uint64_t Inverse(std::uint64_t odd) {
    std::uint64_t inverse = odd;
    for (int round = 0; round < 6; ++round) {
        inverse *= 2 - odd * inverse;
    }
    return inverse;
}

/// Labels of eight bytes that an ill-disposed program made for their hashes.
std::vector<std::string> Crafted(std::size_t count, std::uint32_t hash) {
    std::vector<std::string> labels;
    std::uint64_t const high = std::uint64_t{8} << LabelKey::TagShift;
    std::uint64_t const highMixed = high * 0xD6E8FEB86659FD93U;
    std::uint64_t const rotated = highMixed << 32 | highMixed >> 32;
    for (std::uint64_t k = 0; k < count; ++k) {
        std::uint64_t const shifted = (std::uint64_t{hash} << 32 | k) * Inverse(0xC2B2AE3D27D4EB4FU);
        std::uint64_t const mixed = shifted ^ shifted >> 29 ^ shifted >> 58;
        std::uint64_t const low = (mixed ^ rotated) * Inverse(0x9E3779B97F4A7C15U);
        std::string label;
        for (unsigned byte = 0; byte < 8; ++byte) {
            label += static_cast<char>(low >> 8 * byte);
        }
        labels.push_back(label);
    }
    return labels;
}

} // namespace

// --- labels made for their hashes ------------------------------------------------------------------------------------

TEST(CraftedLabels, HaveTheHashTheyWereMadeFor) {
    for (std::string const& label : Crafted(100, 0xABCDEF01U)) {
        ASSERT_EQ(LabelKey(label, false).Hash(), 0xABCDEF01U);
    }
}

TEST(CraftedLabels, AreRefusedByTheTableBeforeTheirRowGrowsLong) {
    OmMemoryRegion region(false);
    LabelHash hash(region);
    std::vector<std::string> const labels = Crafted(1000, 0);
    std::size_t added = 0;
    while (added < labels.size() && hash.Add(LabelKey(labels[added], false))) {
        ++added;
    }
    EXPECT_GE(added, 100U);
    EXPECT_LE(added, LabelHash::LongestWay);
}

// One label at each slot, each where its hash points: a row that nobody would have to be refused for.
TEST(CraftedLabels, RowOfNeighboursIsNotWalkedToItsEnd) {
    OmMemoryRegion region(false);
    LabelHash hash(region);
    constexpr std::uint32_t Count = 1000; // of 2048 slots
    ASSERT_TRUE(hash.Reserve(Count));
    for (std::uint32_t k = 0; k < Count; ++k) {
        ASSERT_TRUE(hash.Add(LabelKey(Crafted(1, k << 21)[0], false)));
    }
    LabelKey const absent(Crafted(2, 0)[1], false);
    EXPECT_EQ(hash.Find(absent), -1);
    EXPECT_LE(hash.WayOf(absent), std::size_t{LabelHash::LongestWay});
    EXPECT_FALSE(hash.Add(absent));
    for (std::uint32_t k = 0; k < Count; ++k) {
        ASSERT_EQ(hash.Find(LabelKey(Crafted(1, k << 21)[0], false)), static_cast<int>(k));
    }
}

// A parent does without the hash then, which takes blocks of the region.
TEST(CraftedLabels, AreFoundByBisection) {
    std::vector<std::string> labels = Crafted(3000, 0x12345678U);
    CategoryWorld world;
    CategoryWorld unhashed;
    for (std::string const& label : labels) {
        world.dimension.Child(world.Root(), Label(label), 0, false);
        unhashed.dimension.AddNewChild(unhashed.Root(), Label(label), 0, false);
    }
    EXPECT_EQ(world.dimension.Region().LiveBlocks(), unhashed.dimension.Region().LiveBlocks());
    std::size_t const bytes = omtest::Asked([&] {
                                  for (std::size_t k = 0; k < labels.size(); ++k) {
                                      Node const found =
                                          world.dimension.Child(world.Root(), Label(labels[k]), 0, false);
                                      ASSERT_TRUE(found == world.Root().Child(k));
                                  }
                              }).bytes;
    EXPECT_LT(bytes, 4 * labels.size()) << "the hash was tried again";
    for (std::size_t k = 0; k < labels.size(); ++k) {
        ASSERT_EQ(OmDimension::FindChild(world.Root(), Label(labels[k]), false), static_cast<int>(k));
    }
    EXPECT_EQ(world.Root().ChildCount(), labels.size());
    std::vector<std::string> sorted = labels;
    std::sort(sorted.begin(), sorted.end());
    std::string entries;
    for (std::string const& label : sorted) {
        entries += (entries.empty() ? "" : ", ") +
                   std::to_string(std::find(labels.begin(), labels.end(), label) - labels.begin());
    }
    EXPECT_EQ(ChildIndexOf(world.Root()), entries);
}

// Names that nobody chose for their hashes keep their table.
TEST(CraftedLabels, OrdinaryLabelsAreNeverRefused) {
    for (char const* const before : {"", "x", "label ", "Question 12, item ", "a somewhat longer label: "}) {
        for (char const* const behind : {"", " ", " (total)", ", share of all", " of one hundred and more"}) {
            for (int const first : {0, 10000000}) {
                OmMemoryRegion region(false);
                LabelHash hash(region);
                for (int k = 0; k < 150000; ++k) {
                    ASSERT_TRUE(hash.Add(LabelKey(before + std::to_string(first + k) + behind, k % 2 == 0)))
                        << before << first + k << behind;
                }
            }
        }
    }
}

// Lengths and kinds of storage are told apart where the hash does not: short labels that share their first word, long
// ones, and one of each.
TEST(LabelHashes, CollidingLabelsOfOtherLengthsAreToldApart) {
    std::unordered_map<std::uint32_t, std::string> seen;
    std::map<std::pair<bool, bool>, int> pairs;
    for (std::uint64_t k = 0; k < 400000; ++k) {
        std::string tail;
        for (std::uint64_t rest = k * 0x9E3779B97F4A7C15U >> (k % 40); rest != 0; rest >>= 8) {
            tail += static_cast<char>(rest);
        }
        std::string const label = "equal by" + (k % 3 == 0 ? "word and " + tail : tail.substr(0, 7));
        auto const [place, isNew] = seen.emplace(LabelKey(label, false).Hash(), label);
        std::string const& other = place->second;
        if (isNew || other.size() == label.size()) {
            continue;
        }
        for (bool const swapped : {false, true}) {
            LabelKey const first(swapped ? label : other, false);
            LabelKey const second(swapped ? other : label, false);
            OmMemoryRegion region(false);
            LabelHash hash(region);
            ASSERT_TRUE(hash.Add(first));
            ASSERT_EQ(hash.Find(second), -1);
            ASSERT_TRUE(hash.Add(second));
            ASSERT_EQ(hash.Find(first), 0);
            ASSERT_EQ(hash.Find(second), 1);
            ++pairs[{first.IsLong(), second.IsLong()}];
        }
    }
    for (bool const isLong : {false, true}) {
        EXPECT_GT((pairs[{isLong, false}]), 0);
        EXPECT_GT((pairs[{isLong, true}]), 0);
    }
}

TEST(CraftedLabels, MillionNumbersBeforeACommonEndAreNotRefused) {
    for (char const* const before : {"", "label "}) {
        OmMemoryRegion region(false);
        LabelHash hash(region);
        for (int k = 0; k < 1 << 20; ++k) {
            ASSERT_TRUE(hash.Add(LabelKey(before + std::to_string(10000000 + k) + " (total)", false))) << k;
        }
    }
}

// --- memory that the hash is refused ---------------------------------------------------------------------------------

// The hash is a matter of speed: whoever only looks up never hears that it could not be made.
TEST(RefusedHash, LabelsThatAreThereAreFoundAllTheSame) {
    constexpr int Count = 200;
    std::deque<OmStringCell> labels;
    for (int k = 0; k < Count; ++k) {
        labels.emplace_back(Name(k));
    }
    CategoryWorld world;
    for (OmStringCell const& label : labels) {
        world.dimension.AddNewChild(world.Root(), label, 0, false);
    }
    omtest::mallocBooks.failed = false;
    omtest::mallocBooks.untilFailure = 0;
    bool thrown = false;
    int wrong = 0;
    for (std::size_t k = 0; k < Count; ++k) {
        try {
            wrong += world.dimension.Child(world.Root(), labels[k], 0, false) == world.Root().Child(k) ? 0 : 1;
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
    }
    omtest::mallocBooks.untilFailure = -1;
    EXPECT_TRUE(omtest::mallocBooks.failed) << "no hash was tried";
    EXPECT_FALSE(thrown);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(world.Root().ChildCount(), std::size_t{Count});
}

// Each request in turn is refused while labels are added: the hash, its growth, a long label's bytes, the index, the
// children, the label. What was refused was not added, and everything is found.
TEST(RefusedHash, EveryAdditionHappensOrDoesNot) {
    std::deque<OmStringCell> labels;
    for (int k = 0; k < 400; ++k) {
        std::string const name = Name(k * 7 % 400);
        labels.emplace_back(k % 3 == 0 ? name + std::string(1100, '.') : name);
    }
    for (int allowed = 0;; ++allowed) {
        CategoryWorld world;
        std::vector<std::size_t> added;
        omtest::mallocBooks.failed = false;
        long left = allowed;
        for (std::size_t k = 0; k < labels.size(); ++k) {
            bool isAdded = true;
            omtest::mallocBooks.untilFailure = left;
            try {
                world.dimension.Child(world.Root(), labels[k], 0, false);
            } catch (std::bad_alloc const&) {
                isAdded = false;
            }
            left = omtest::mallocBooks.failed ? -1 : omtest::mallocBooks.untilFailure;
            omtest::mallocBooks.untilFailure = -1;
            if (isAdded) {
                added.push_back(k);
            }
            ASSERT_EQ(world.Root().ChildCount(), added.size());
        }
        for (std::size_t place = 0; place < added.size(); ++place) {
            ASSERT_EQ(OmDimension::FindChild(world.Root(), labels[added[place]], false), static_cast<int>(place))
                << allowed;
        }
        std::string const entries = ChildIndexOf(world.Root());
        ASSERT_EQ(static_cast<std::size_t>(std::count(entries.begin(), entries.end(), ',')) + 1, added.size());
        if (!omtest::mallocBooks.failed) {
            EXPECT_GT(allowed, 100);
            break;
        }
    }
}

// --- what a text of a program's own costs among hashed labels --------------------------------------------------------

TEST(ForeignProbe, LabelsAreSortedForItOnce) {
    constexpr int Count = 20000;
    HashedWorld world(Count);
    omtest::ForeignLog log;
    omtest::ForeignText const probe(log, Name(5));
    auto const find = [&] { return omtest::Asked([&] { OmDimension::FindChild(world.Root(), probe, false); }).bytes; };
    EXPECT_GE(find(), std::size_t{Count}); // the sorted entries
    EXPECT_LT(find(), std::size_t{Count});
    world.dimension.Child(world.Root(), Label("one more"), 0, false);
    EXPECT_GE(find(), std::size_t{Count});
    EXPECT_LT(find(), std::size_t{Count});
    // It is still the bisection that the text sees.
    log.Take();
    OmDimension::FindChild(world.Root(), probe, false);
    EXPECT_LE(log.Take({"Compare"}).size(), 2U);
}

TEST(ForeignProbe, LabelsAddedSinceAreSortedIn) {
    CategoryWorld world;
    CategoryWorld plain;
    omtest::ForeignLog log;
    omtest::ForeignText const probe(log, "nothing");
    for (int k = 0; k < 2000; ++k) {
        std::string const name = Name(k * 7 % 2000) + (k % 3 == 0 ? " and a long end" : "");
        world.dimension.Child(world.Root(), Label(name), 0, k % 5 == 0);
        plain.dimension.Child(plain.Root(), Label(name), 0, k % 5 == 0);
        if (k % 11 == 0 || k % 64 == 1) {
            EXPECT_EQ(OmDimension::FindChild(world.Root(), probe, false), -1);
        }
        if (k % 97 == 0) {
            ASSERT_EQ(ChildIndexOf(world.Root()), ChildIndexOf(plain.Root()));
        }
    }
    world.Root().Child(3).Value().IsGroup(true); // settles
    plain.Root().Child(3).Value().IsGroup(true);
    EXPECT_EQ(ChildIndexOf(world.Root()), ChildIndexOf(plain.Root()));
}

// Readers may still be at the entries that another one replaces; the next change frees them.
TEST(ForeignProbe, EntriesOfEarlierProbesDoNotPileUp) {
    HashedWorld world(2000);
    omtest::ForeignLog log;
    omtest::ForeignText const probe(log, Name(5));
    int next = 0;
    std::ptrdiff_t const growth = omtest::HeapGrowth(100, [&] {
        world.dimension.Child(world.Root(), Label("new " + std::to_string(++next)), 0, false);
        OmDimension::FindChild(world.Root(), probe, false);
        log.Take();
    });
    EXPECT_LT(growth, std::ptrdiff_t{100} * 2000 * 4 / 2);
}

TEST(HashedValue, IsCopiedWithoutSortingAgain) {
    constexpr std::size_t Count = 20000;
    HashedWorld world(Count);
    OmMemoryRegion region(false);
    auto const copy = [&] { return omtest::Asked([&] { OmDimensionNode(world.Root().Value(), &region); }).bytes; };
    EXPECT_GE(copy(), 2 * Count * sizeof(int));
    EXPECT_LT(copy(), 2 * Count * sizeof(int));
}

// --- values ----------------------------------------------------------------------------------------------------------

// Neither where the parent has few children nor where its labels are of several kinds.
TEST(ChildByValue, KeepsOrderAndFlagsWithoutAHash) {
    omtest::ForeignLog log;
    for (bool const mixed : {false, true}) {
        CategoryWorld world;
        if (mixed) {
            world.dimension.AddNewChild(world.Root(), omtest::ForeignText(log, "f"), 0, false);
        }
        OmDimensionNode value(Label("x"), 9, true, nullptr);
        value.Sort(OmSort::Down);
        value.Hide(true);
        value.HideLabels(true);
        OmDimensionNode const& made = world.dimension.Child(world.Root(), value).Value();
        EXPECT_EQ(made.Sort(), OmSort::Down) << mixed;
        EXPECT_TRUE(made.IsGroup() && made.Hide() && made.HideLabels()) << mixed;
        OmDimensionNode other(Label("y"), 9, false, nullptr);
        other.Sort(OmSort::Up);
        other.HideLabels(true);
        OmDimensionNode const& second = world.dimension.Child(world.Root(), other).Value();
        EXPECT_EQ(second.Sort(), OmSort::Up) << mixed;
        EXPECT_TRUE(!second.IsGroup() && !second.Hide() && second.HideLabels()) << mixed;
    }
}

// The thief lives elsewhere, so that its own region has nothing to tell the hash.
TEST(StolenLabel, IsNotFoundAnyMore) {
    constexpr int Count = 64;
    HashedWorld world(Count);
    std::string const stolen = world.Root().Child(40).Value().Text()->AsString();
    ASSERT_EQ(OmDimension::FindChild(world.Root(), Label(stolen), false), 40);
    OmDimensionNode thief;
    thief = world.Root().Child(40).Value();
    EXPECT_EQ(thief.Text()->AsString(), stolen);
    EXPECT_EQ(world.Root().Child(40).Value().Text(), nullptr);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), Label(stolen), false), -1);
    Node const made = world.dimension.Child(world.Root(), Label(stolen), 0, false);
    EXPECT_TRUE(made == world.Root().Child(Count));
}

TEST(SelfAssignment, ChangesNothing) {
    constexpr int Count = 64;
    HashedWorld world(Count);
    std::string const before = omtest::PrintedBy(world.Root().Value(), 0);
    OmDimensionNode& root = world.Root().Value();
    OmDimensionNode& child = world.Root().Child(7).Value();
    OmCellText* const label = child.Text();
    std::size_t const blocks = world.dimension.Region().LiveBlocks();
    OmDimensionNode const& sameRoot = root;
    OmDimensionNode const& sameChild = child;
    root = sameRoot;
    child = sameChild;
    EXPECT_EQ(child.Text(), label);
    EXPECT_EQ(world.dimension.Region().LiveBlocks(), blocks) << "the hash need not go";
    EXPECT_EQ(omtest::PrintedBy(world.Root().Value(), 0), before);
    EXPECT_EQ(OmDimension::FindChild(world.Root(), *label, false), 7);
}

// --- texts and values that are part of what they are given to --------------------------------------------------------

TEST(OwnParts, MayBeHandedIn) {
    omtest::GrownWorld world("A(p q) b");
    OmDimension& dimension = world.dimension;
    OmDimensionNode& b = world.Named("b").Value();
    b.Text(*b.Text());
    EXPECT_EQ(b.Text()->AsString(), "b");
    dimension.insertCategory(*world.Named("p").Value().Text(), world.Named("p"), world.Named("A"), true);
    EXPECT_EQ(omtest::Categories(dimension), "A(p p q) b");
    for (int k = 0; k < 20; ++k) {
        // Each finds itself, or stands in the block that its copy makes move.
        Node const first = world.Root().Child(0);
        EXPECT_TRUE(dimension.Child(world.Root(), first.Value()) == world.Root().Child(0));
        dimension.AddNewChild(world.Root(), *world.Root().Child(1).Value().Text(), 0, true);
        Node const last = world.Root().Child(world.Root().ChildCount() - 1);
        dimension.Child(last, last.Value());
        dimension.AddNewChild(last, *last.Value().Text(), 0, false);
        EXPECT_EQ(omtest::CategoriesBelow(last), "b() b");
    }
    OmDimension::Tree tree(nullptr, Label("t"), 0ULL, true, nullptr);
    tree.AddChild(tree.Root(), tree.Root().Value());
    for (int k = 0; k < 20; ++k) {
        tree.AddChild(tree.Root(), tree.Root().Child(0).Value());
    }
    EXPECT_EQ(tree.Root().Child(20).Value().Text()->AsString(), "t");
}
