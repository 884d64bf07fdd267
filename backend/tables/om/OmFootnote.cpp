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

OmFootnote::OmFootnote(OmFootnote const& other, OmMemoryRegion* region) : OmFootnote(region) { Copy(other); }

OmFootnote& OmFootnote::operator=(OmFootnote const& other) {
    if (this != &other) {
        Copy(other);
    }
    return *this;
}

// The other one is read first: what its text does while it is cloned may move the record.
void OmFootnote::Copy(OmFootnote const& other) {
    OmCellText const* const text = other._text;
    OmCellText const* const marker = other._marker;
    std::int32_t const count = other._count;
    Replace(_text, text, _region);
    Replace(_marker, marker, _region);
    _count = count;
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
