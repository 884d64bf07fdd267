// A document whose memory runs out half way: nothing is lost, nothing is destroyed twice.

#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmPageTitle.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmStringCell.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/HeapInUse.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

namespace {

using omtest::FailEachRequest;
using omtest::Heap;
using omtest::HeapInUse;

using Node = OmOutputTree::Node;

constexpr char LongCodePage[] = "a name of a code page that no string keeps inside itself";

class CountedPart : public OmOutputPart {
public:
    CountedPart() : OmOutputPart(OmStringCell("part")) { ++alive; }
    ~CountedPart() override { --alive; }
    CountedPart(CountedPart const&) = delete;
    CountedPart& operator=(CountedPart const&) = delete;
    void Accept(Visitor&) override {}

    static inline int alive = 0;
};

int Parts(OmOutputTree const& tree) {
    int parts = 0;
    for (OmOutputTree::Record const& record : tree.List()) {
        parts += dynamic_cast<CountedPart const*>(record.value) != nullptr ? 1 : 0;
    }
    return parts;
}

/// Whether no record stands more than one level below the one before it.
bool IsTree(OmOutputTree const& tree) {
    int before = -1;
    for (OmOutputTree::Record const& record : tree.List()) {
        if (record.level > before + 1) {
            return false;
        }
        before = record.level;
    }
    return true;
}

} // namespace

TEST(OmOutputTreeMemory, APruneThatRunsOutOfMemoryLeavesATreeOfWhatIsNotDestroyed) {
    std::size_t failures = 0;
    for (int levels : {1, 2, 3, 5, 9, 40}) {
        for (long allowed = 0;; ++allowed) {
            OmOutputTree tree;
            Node heading = tree.AppendChild(tree.Root(), new CountedPart());
            Node deepest = heading;
            for (int level = 1; level < levels; ++level) {
                tree.AppendChild(deepest, new CountedPart());
                deepest = tree.AppendChild(deepest, new CountedPart());
            }
            Heap().untilFailure = allowed;
            bool thrown = false;
            try {
                tree.Prune(heading);
            } catch (std::bad_alloc const&) {
                thrown = true;
            }
            Heap().untilFailure = -1;
            ASSERT_EQ(Parts(tree), CountedPart::alive);
            ASSERT_TRUE(IsTree(tree));
            if (!thrown) {
                ASSERT_EQ(tree.Size(), 1);
                break;
            }
            ++failures;
            tree.Prune(heading);
            ASSERT_EQ(tree.Size(), 1);
            ASSERT_EQ(CountedPart::alive, 0);
        }
    }
    EXPECT_GT(failures, 6U);
}

TEST(OmOutputTreeMemory, APartThatFindsNoPlaceStaysWithTheCaller) {
    OmOutputTree tree;
    auto part = std::make_unique<CountedPart>();
    Heap().untilFailure = 0;
    EXPECT_THROW(tree.AppendChild(tree.Root(), part.get()), std::bad_alloc);
    Heap().untilFailure = -1;
    EXPECT_EQ(tree.Size(), 1);
    EXPECT_EQ(CountedPart::alive, 1);
    tree.AppendChild(tree.Root(), part.get());
    part.release();
    EXPECT_EQ(Parts(tree), 1);
}

namespace {

/// Makes a part with each request refused in turn, and looks at both the operators' and the allocator's books.
template <typename Make>
void MakesNothingHalf(Make&& make) {
    std::ptrdiff_t const live = Heap().live;
    auto const refuseEach = [&] {
        return FailEachRequest([&] { std::unique_ptr<OmOutputPart> const part(make()); },
                               [&] { EXPECT_EQ(Heap().live, live); });
    };
    refuseEach(); // the allocator fills what it keeps for itself
    std::size_t const inUse = HeapInUse();
    EXPECT_GT(refuseEach(), 1);
    EXPECT_EQ(HeapInUse(), inUse);
    EXPECT_EQ(Heap().live, live);
}

} // namespace

// The title comes first and from elsewhere; it goes again when the rest cannot be made.
TEST(OmOutputTreeMemory, PartsThatCannotBeFinishedLeaveNoTitleBehind) {
    OmStringCell const title("a title that is not kept inside a string object");
    std::string const codePage = LongCodePage;
    MakesNothingHalf([&] { return new OmTextBlock(title, codePage); });
    MakesNothingHalf([&] { return new OmPageTitle(codePage); });
    MakesNothingHalf([&] { return new OmProcedure(title, codePage, codePage, codePage); });
}
