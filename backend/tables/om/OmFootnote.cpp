#include "backend/tables/om/OmFootnote.h"

#include "omcell/OmCellText.h"

#include <utility>

namespace {

OmCellText* CloneOf(OmCellText const* text, OmMemoryRegion* region) {
    return text != nullptr ? text->Clone(region) : nullptr;
}

void Put(OmCellText*& held, OmCellText* clone) {
    OmCellText* const old = std::exchange(held, clone);
    if (old != clone) {
        delete old;
    }
}

void Replace(OmCellText*& held, OmCellText const* text, OmMemoryRegion* region) { Put(held, CloneOf(text, region)); }

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
    OmCellText const* const itsText = other._text;
    OmCellText const* const itsMarker = other._marker;
    std::int32_t const itsCount = other._count;
    OmCellText* const text = CloneOf(itsText, _region);
    OmCellText* marker = nullptr;
    try {
        marker = CloneOf(itsMarker, _region);
    } catch (...) {
        if (text != _text && text != itsText) {
            delete text;
        }
        throw;
    }
    Put(_text, text);
    Put(_marker, marker);
    _count = itsCount;
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
