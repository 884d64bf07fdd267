#include "omcell/OmLabelledText.h"

#include "omcell/OmStringCell.h"

// Once the delegated constructor is through, the destructor takes care of what a failing clone leaves behind.
OmLabelledText::OmLabelledText(OmCellText const& meant, OmCellText const* label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(region, mode) {
    TakeClones(meant, label);
}

OmLabelledText::OmLabelledText(OmCellText const& meant, std::string const& label, OmMemoryRegion* region, ModeType mode)
    : OmLabelledText(meant, nullptr, region, mode) {
    _label = label.empty() ? nullptr : new (region) OmStringCell(label, region);
}

OmLabelledText::OmLabelledText(OmLabelledText const& source, OmMemoryRegion* region)
    : OmLabelledText(region, source._mode) {
    TakeOver(source);
}

OmLabelledText::OmLabelledText(OmMemoryRegion* region, ModeType mode) : OmPartedText(region), _mode(mode) {}

// Where a constructor failed; the destructors of the kinds have done it otherwise.
OmLabelledText::~OmLabelledText() { DestroyParts(); }

void OmLabelledText::TakeClones(OmCellText const& meant, OmCellText const* label) {
    _meant = meant.Clone(Home());
    _label = label != nullptr ? label->Clone(Home()) : nullptr;
}

void OmLabelledText::GiveUpParts(Bin& bin) {
    bin.Take(_meant);
    bin.Take(_label);
}

void OmLabelledText::ListParts(std::vector<Part>& parts) const {
    parts.push_back({&_meant, 0});
    parts.push_back({&_label, 1});
}

void OmLabelledText::Expand(Form, Pieces& pieces) const {
    bool const labelled = _label != nullptr;
    bool const meant = _mode == NameMode || _mode == BothMode || (_mode != LabelMode && !labelled);
    bool const showsMeant = meant && _meant != nullptr; // a part that is destroyed may ask
    bool const showsLabel = labelled && _mode != NameMode;
    if (showsMeant) {
        pieces.Add(*_meant);
    }
    if (showsMeant && showsLabel) {
        pieces.Add(" ");
    }
    if (showsLabel) {
        pieces.Add(*_label);
    }
}
