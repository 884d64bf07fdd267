#include "backend/tables/om/OmFootnote.h"

#include "omcell/OmCellText.h"

#include <utility>

namespace {

void Replace(OmCellText*& held, OmCellText const* text, OmMemoryRegion* region) {
    OmCellText* const clone = text != nullptr ? text->Clone(region) : nullptr;
    OmCellText* const old = std::exchange(held, clone);
    if (old != clone) {
        delete old;
    }
}

} // namespace

OmFootnote::OmFootnote(OmMemoryRegion* region) : _region(OmMemoryRegion::OrDefault(region)) {}

OmFootnote::OmFootnote(OmCellText const& text, OmMemoryRegion* region) : OmFootnote(region) { Text(text); }

OmFootnote::OmFootnote(OmCellText const& text, OmCellText const* marker, int count, OmMemoryRegion* region)
    : OmFootnote(text, region) {
    Marker(marker);
    Count(count);
}

OmFootnote::OmFootnote(OmFootnote const& other) : OmFootnote(other, other._region) {}

OmFootnote::OmFootnote(OmFootnote const& other, OmMemoryRegion* region) : OmFootnote(region) {
    Replace(_text, other._text, _region);
    Replace(_marker, other._marker, _region);
    Count(other._count);
}

OmFootnote& OmFootnote::operator=(OmFootnote const& other) {
    if (this != &other) {
        Replace(_text, other._text, _region);
        Replace(_marker, other._marker, _region);
        _count = other._count;
    }
    return *this;
}

OmFootnote::~OmFootnote() {
    delete std::exchange(_text, nullptr);
    delete std::exchange(_marker, nullptr);
}

void OmFootnote::Text(OmCellText const& text) { Replace(_text, &text, _region); }

void OmFootnote::Marker(OmCellText const* marker) { Replace(_marker, marker, _region); }

bool operator==(OmFootnote const& a, OmFootnote const& b) {
    if (a._text == nullptr || b._text == nullptr) {
        return a._text == b._text;
    }
    return OmCellText::Equal(*a._text, *b._text);
}
