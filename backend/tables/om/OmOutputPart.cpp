#include "backend/tables/om/OmOutputPart.h"

#include "backend/tables/Assert.h"
#include "omcell/OmCellText.h"

OmOutputPart::OmOutputPart(OmCellText const& title) : _title(title.Clone(nullptr)) {}

OmOutputPart::~OmOutputPart() {
    delete _title;
    _title = nullptr;
}

void OmOutputPart::ReplaceTitle(OmCellText const& title) {
    if (!OM_HARDENED(&title != _title, "title != held", "backend/tables/om/OmOutputPart", __LINE__)) {
        return;
    }
    delete _title;
    _title = nullptr;
    _title = title.Clone(nullptr);
}
