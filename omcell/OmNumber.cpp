#include "omcell/OmNumber.h"

#include "omcell/detail/NumberText.h"
#include "omcell/detail/Ordering.h"

#include <cmath>
#include <limits>

double OmNumber::MissingValue() { return std::numeric_limits<double>::quiet_NaN(); }

OmNumber::OmNumber(double value, OmMemoryRegion* region) : OmNumber(value, Format(), region) {}

OmNumber::OmNumber(double value, Format const& format, OmMemoryRegion* region)
    : OmCellText(region), _value(value), _symbol(format.symbol, region), _type(format.type), _decimals(format.decimals),
      _decimalMark(format.decimalMark), _grouping(format.grouping) {}

OmNumber::OmNumber(OmNumber const& source, OmMemoryRegion* region)
    : OmCellText(region), _value(source._value), _symbol(source._symbol.View(), region), _type(source._type),
      _decimals(source._decimals), _decimalMark(source._decimalMark), _grouping(source._grouping) {
    TakeOver(source);
}

OmNumber::~OmNumber() = default;

void OmNumber::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmNumber::OrderCode() const { return Order; }

std::string OmNumber::AsString() const { return om_detail::ShortestText(_value); }

std::string OmNumber::AsU8String() const { return AsString(); }

std::string OmNumber::AsEngString() const { return AsString(); }

std::string OmNumber::AsFormattedString() const {
    return om_detail::FormattedText(_value, {_type, _decimals, _decimalMark, _grouping, _symbol.View()});
}

double OmNumber::NumericValue() const { return _value; }

short OmNumber::Compare(OmCellText const& other) const {
    OmNumber const* const number = dynamic_cast<OmNumber const*>(&other);
    if (number == nullptr) {
        return om_detail::OrderKinds(*this, other);
    }
    if (IsMissing() || number->IsMissing()) {
        return om_detail::Order(!IsMissing(), !number->IsMissing());
    }
    return om_detail::Order(_value, number->_value);
}

OmCellText* OmNumber::Clone(OmMemoryRegion* region) const { return new (region) OmNumber(*this, region); }

bool OmNumber::IsMissing() const { return std::isnan(_value); }

OmNumber::Format OmNumber::getFormat() const {
    return Format{_type, _decimals, _decimalMark, _grouping, _symbol.String()};
}

void OmNumber::setFormat(Format const& format) {
    _symbol.Assign(format.symbol, Home());
    _type = format.type;
    _decimals = format.decimals;
    _decimalMark = format.decimalMark;
    _grouping = format.grouping;
}
