#include "omcell/OmBlank.h"

#include "omcell/detail/Ordering.h"

OmBlank::OmBlank(OmMemoryRegion* region) : OmCellText(region) {}

OmBlank::OmBlank(OmBlank const& source, OmMemoryRegion* region) : OmBlank(region) { TakeOver(source); }

OmBlank::~OmBlank() = default;

void OmBlank::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmBlank::OrderCode() const { return Order; }

std::string OmBlank::AsString() const { return {}; }

std::string OmBlank::AsU8String() const { return {}; }

std::string OmBlank::AsEngString() const { return {}; }

short OmBlank::Compare(OmCellText const& other) const {
    return dynamic_cast<OmBlank const*>(&other) != nullptr ? short{0} : om_detail::OrderKinds(*this, other);
}

OmCellText* OmBlank::Clone(OmMemoryRegion* region) const { return new (region) OmBlank(*this, region); }

bool OmBlank::IsBlank() const { return true; }
