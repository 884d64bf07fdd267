#include "omcell/OmStringCell.h"

#include "omcell/detail/Ordering.h"
#include "platform/icuTracker.h"

OmStringCell::OmStringCell(std::string text, OmMemoryRegion* region, bool flag)
    : OmCellText(region), _given(text, region), _u8(text, region), _english(text, region), _flag(flag) {}

OmStringCell::OmStringCell(OmStringCell const& source, OmMemoryRegion* region)
    : OmCellText(region), _given(source._given.View(), region), _u8(source._u8.View(), region),
      _english(source._english.View(), region), _altText(source._altText.View(), region), _flag(source._flag) {
    TakeOver(source);
}

OmStringCell::~OmStringCell() = default;

void OmStringCell::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmStringCell::OrderCode() const { return Order; }

std::string OmStringCell::AsString() const { return _given.String(); }

std::string OmStringCell::AsU8String() const {
    std::string converted;
    if (_tracker != nullptr && !_tracker->Unicode() && !_flag && _tracker->ToU8(_given.String(), converted)) {
        return converted;
    }
    return _u8.String();
}

std::string OmStringCell::AsEngString() const { return _english.String(); }

std::size_t OmStringCell::TextLength() const { return _u8.size(); }

short OmStringCell::Compare(OmCellText const& other) const {
    OmStringCell const* const cell = dynamic_cast<OmStringCell const*>(&other);
    return cell != nullptr ? om_detail::OrderBytes(_u8.View(), cell->_u8.View()) : om_detail::OrderKinds(*this, other);
}

OmCellText* OmStringCell::Clone(OmMemoryRegion* region) const { return new (region) OmStringCell(*this, region); }

void OmStringCell::SetAltText(std::string text) { _altText.Assign(text, Home()); }

std::string OmStringCell::AltText() const { return _altText.String(); }

void OmStringCell::SetU8String(std::string_view text) {
    if (!_flag) {
        _u8.Assign(text, Home());
    }
}

void OmStringCell::SetEngString(std::string_view text) {
    if (!_flag) {
        _english.Assign(text, Home());
    }
}
