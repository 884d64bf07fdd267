#include "backend/tables/om/detail/ChildIndex.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <numeric>
#include <vector>

namespace {

/// The walk over the entries step by step, as `WithoutPosition` describes it.
std::vector<int> ByTheSteps(std::vector<int> entries, std::size_t removed) {
    std::size_t i = 0;
    while (i < entries.size()) {
        std::size_t const entry = static_cast<std::size_t>(entries[i]);
        if (entry == removed) {
            std::size_t const place = removed < entries.size() ? removed : i;
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(place));
            continue;
        }
        entries[i] -= entry > removed ? 1 : 0;
        ++i;
    }
    return entries;
}

std::vector<int> Edited(std::vector<int> entries, std::size_t removed) {
    entries.resize(om_detail::WithoutPosition(entries, entries.size(), removed));
    return entries;
}

/// Entries that count how often they are reached for.
struct CountedEntries {
    std::vector<int> entries;
    std::size_t steps = 0;

    int& operator[](std::size_t place) {
        ++steps;
        return entries[place];
    }
};

} // namespace

// All lists of up to six entries, sorted or not, with doubles and with entries past the children.
TEST(ChildIndex, EveryShortListIsEditedAsByTheSteps) {
    constexpr int Values = 7;
    std::vector<int> list;
    for (std::size_t length = 0; length <= 6; ++length) {
        list.assign(length, 0);
        bool done = false;
        while (!done) {
            for (std::size_t removed = 0; removed < Values; ++removed) {
                ASSERT_EQ(Edited(list, removed), ByTheSteps(list, removed))
                    << ::testing::PrintToString(list) << " without " << removed;
            }
            done = true;
            for (int& entry : list) {
                done = ++entry == Values;
                if (!done) {
                    break;
                }
                entry = 0;
            }
            done = done || list.empty();
        }
    }
}

// Erasing entry by entry would take a million times a million steps: where the entry stands before its position, and
// where every entry behind it is the position.
TEST(ChildIndex, EditTakesAFewStepsForEachEntry) {
    constexpr std::size_t Count = 1000000;
    std::vector<std::vector<int>> lists(4, std::vector<int>(Count));
    std::iota(lists[0].rbegin(), lists[0].rend(), 0);
    std::iota(lists[1].begin(), lists[1].end(), 0);
    lists[2].assign(Count, static_cast<int>(Count / 2));
    lists[3].assign(Count, 3);
    lists[3][0] = lists[3][1] = lists[3][2] = 9;
    for (std::vector<int> const& list : lists) {
        for (std::size_t const removed : {std::size_t{0}, std::size_t{3}, Count / 2, Count - 2}) {
            CountedEntries counted{list};
            om_detail::WithoutPosition(counted, list.size(), removed);
            EXPECT_LE(counted.steps, 4 * Count) << removed;
        }
    }
}
