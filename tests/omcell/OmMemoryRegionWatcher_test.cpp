#include "omcell/OmMemoryRegion.h"

#include <gtest/gtest.h>

namespace {

struct CountingWatcher : OmMemoryRegion::Watcher {
    int settled = 0;
    OmMemoryRegion* regionWhenSettled = nullptr;

    CountingWatcher() {
        settle = [](OmMemoryRegion::Watcher& self) {
            auto& counting = static_cast<CountingWatcher&>(self);
            counting.settled += 1;
            counting.regionWhenSettled = self.region;
        };
    }
};

} // namespace

TEST(OmMemoryRegionWatcher, IsSettledOnceBeforeTheFirstEdit) {
    OmMemoryRegion region(false);
    CountingWatcher first;
    CountingWatcher second;
    region.Watch(first);
    region.Watch(second);
    EXPECT_EQ(first.region, &region);
    region.BeforeEdit();
    region.BeforeEdit();
    EXPECT_EQ(first.settled, 1);
    EXPECT_EQ(second.settled, 1);
    EXPECT_EQ(first.regionWhenSettled, nullptr);
}

TEST(OmMemoryRegionWatcher, CanBePutOnTheListAgainByItsOwnSettling) {
    struct Again : OmMemoryRegion::Watcher {
        OmMemoryRegion* home = nullptr;
        int settled = 0;
    };
    OmMemoryRegion region(false);
    OmMemoryRegion other(false);
    Again watcher;
    watcher.home = &other;
    watcher.settle = [](OmMemoryRegion::Watcher& self) {
        auto& again = static_cast<Again&>(self);
        ++again.settled;
        again.home->Watch(self);
    };
    region.Watch(watcher);
    region.BeforeEdit();
    EXPECT_EQ(watcher.settled, 1);
    EXPECT_EQ(watcher.region, &other);
    OmMemoryRegion::Unwatch(watcher);
}

TEST(OmMemoryRegionWatcher, OneTakenOffIsNotSettled) {
    OmMemoryRegion region(false);
    CountingWatcher first;
    CountingWatcher second;
    CountingWatcher third;
    region.Watch(first);
    region.Watch(second);
    region.Watch(third);
    OmMemoryRegion::Unwatch(second);
    OmMemoryRegion::Unwatch(second);
    region.BeforeEdit();
    EXPECT_EQ(first.settled, 1);
    EXPECT_EQ(second.settled, 0);
    EXPECT_EQ(third.settled, 1);
}

TEST(OmMemoryRegionWatcher, SweepForgetsTheListWithoutACall) {
    CountingWatcher watcher;
    {
        OmMemoryRegion region(false);
        region.Watch(watcher);
        region.WorkingRelease(false);
        EXPECT_EQ(watcher.region, nullptr);
        region.BeforeEdit();
    }
    OmMemoryRegion::Unwatch(watcher);
    EXPECT_EQ(watcher.settled, 0);
}

TEST(OmMemoryRegionWatcher, EndWithoutASweepForgetsTheListWithoutACall) {
    CountingWatcher watcher;
    {
        OmMemoryRegion region(false);
        region.Watch(watcher);
    }
    EXPECT_EQ(watcher.region, nullptr);
    EXPECT_EQ(watcher.settled, 0);
}

TEST(OmMemoryRegionWatcher, DefaultHeapKeepsNone) {
    CountingWatcher watcher;
    OmMemoryRegion::DefaultHeap()->Watch(watcher);
    EXPECT_EQ(watcher.region, nullptr);
    OmMemoryRegion::DefaultHeap()->BeforeEdit();
    EXPECT_EQ(watcher.settled, 0);
}
