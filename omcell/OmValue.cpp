#include "omcell/OmValue.h"

#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"

OmValue::OmValue(double value, std::string const& label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(OmNumber(value), label, region, mode) {}

OmValue::OmValue(std::string const& value, std::string const& label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(OmStringCell(value), label, region, mode) {}

OmValue::OmValue(OmCellText const& value, OmCellText const* label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(value, label, region, mode) {}

OmValue::OmValue(OmValue const& source, OmMemoryRegion* region) : OmLabelledText(source, region) {}

OmValue::~OmValue() { DestroyParts(); }

void OmValue::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmValue::OrderCode() const { return Order; }

OmPartedText* OmValue::Shell(OmMemoryRegion* region) const { return new (region) OmValue(*this, region); }

double OmValue::NumericValue() const {
    OmCellText const* value = MeantOrNull();
    while (OmValue const* const nested = dynamic_cast<OmValue const*>(value)) {
        value = nested->MeantOrNull();
    }
    return value != nullptr ? value->NumericValue() : 0.0;
}
