#include "backend/tables/om/OmOutputPart.h"

#include "omcell/OmCellText.h"

OmOutputPart::OmOutputPart(OmCellText const& title) : _title(title.Clone(nullptr)) {}

OmOutputPart::~OmOutputPart() {
    delete _title;
    _title = nullptr;
}

void OmOutputPart::ReplaceTitle(OmCellText const& title) {
    delete _title;
    _title = nullptr;
    _title = title.Clone(nullptr);
}
