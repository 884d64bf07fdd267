#include "omcell/OmRegionManaged.h"

#include <gtest/gtest.h>

#include <new>

namespace {

class Managed : public OmRegionManaged {
public:
    explicit Managed(int& destroyed) : _destroyed(destroyed) {}
    ~Managed() override { ++_destroyed; }

private:
    int& _destroyed;
};

class Throwing : public OmRegionManaged {
public:
    Throwing() { throw std::bad_alloc(); }
};

} // namespace

TEST(OmRegionManaged, ObjectLiesWhereItWasMadeAndGoesBackThere) {
    int destroyed = 0;
    OmMemoryRegion region(false);
    Managed* const object = new (&region) Managed(destroyed);
    EXPECT_EQ(region.LiveBlocks(), 1U);
    delete object;
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(destroyed, 1);
}

TEST(OmRegionManaged, ObjectMadeWithoutRegionGoesBackToTheDefaultHeap) {
    int destroyed = 0;
    Managed* const plain = new Managed(destroyed);
    OmRegionManaged* const byNull = new (static_cast<OmMemoryRegion*>(nullptr)) Managed(destroyed);
    delete plain;
    delete byNull;
    EXPECT_EQ(destroyed, 2);
}

TEST(OmRegionManaged, DeleteThroughTheBaseReleasesTheBlock) {
    int destroyed = 0;
    OmMemoryRegion region(false);
    OmRegionManaged* const object = new (&region) Managed(destroyed);
    delete object;
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_EQ(destroyed, 1);
}

TEST(OmRegionManaged, FailingConstructorGivesTheBlockBack) {
    OmMemoryRegion region(false);
    EXPECT_THROW(new (&region) Throwing, std::bad_alloc);
    EXPECT_EQ(region.LiveBlocks(), 0U);
    EXPECT_THROW(new Throwing, std::bad_alloc);
}

TEST(OmRegionManaged, DestructorAfterTheSweepIsHarmless) {
    int destroyed = 0;
    OmMemoryRegion region(false);
    Managed* const object = new (&region) Managed(destroyed);
    region.WorkingRelease(false);
    delete object;
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(region.LiveBlocks(), 0U);
}
