// Defects of signatures: what compiles, and what it then means.
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"

#include <gtest/gtest.h>

#include <memory>

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
