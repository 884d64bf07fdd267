#include "omcell/OmVariable.h"

#include "omcell/OmStringCell.h"

OmVariable::OmVariable(std::string const& name, std::string const& label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(OmStringCell(name), label, region, mode) {}

OmVariable::OmVariable(OmCellText const& name, OmCellText const* label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(name, label, region, mode) {}

OmVariable::OmVariable(OmVariable const& source, OmMemoryRegion* region) : OmLabelledText(source, region) {}

OmVariable::~OmVariable() { DestroyParts(); }

void OmVariable::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmVariable::OrderCode() const { return Order; }

OmPartedText* OmVariable::Shell(OmMemoryRegion* region) const { return new (region) OmVariable(*this, region); }
