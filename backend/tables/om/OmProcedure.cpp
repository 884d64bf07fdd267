#include "backend/tables/om/OmProcedure.h"

#include <utility>

OmProcedure::OmProcedure(OmCellText const& title, std::string const& languageCode, std::string const& localeCodePage,
                         std::string const& localeName)
    : OmHeading(title), _texts{title.AsString(), languageCode, localeCodePage, localeName, {}} {}

// A base that is made before the strings would be destroyed without them, and with it what the source still has.
OmProcedure::OmProcedure(OmProcedure const& other) : OmProcedure(other, Texts(other._texts)) {}

OmProcedure::OmProcedure(OmProcedure const& other, Texts&& texts) noexcept
    : OmHeading(other), _texts(std::move(texts)), _outlineVarDisplay(other._outlineVarDisplay),
      _outlineValueDisplay(other._outlineValueDisplay), _tableVarDisplay(other._tableVarDisplay),
      _tableValueDisplay(other._tableValueDisplay) {}

OmProcedure& OmProcedure::operator=(OmProcedure const& other) {
    Texts texts(other._texts);
    OmHeading::operator=(other);
    _texts = std::move(texts);
    _outlineVarDisplay = other._outlineVarDisplay;
    _outlineValueDisplay = other._outlineValueDisplay;
    _tableVarDisplay = other._tableVarDisplay;
    _tableValueDisplay = other._tableValueDisplay;
    return *this;
}

OmProcedure::~OmProcedure() = default;

void OmProcedure::Accept(Visitor& visitor) { visitor.Visit(*this); }

void OmProcedure::setOutlineText(OmCellText const& text) {
    if (!TakesTitle(text)) {
        return;
    }
    std::string before = std::exchange(_texts.command, text.AsString());
    try {
        ReplaceTitle(text);
    } catch (...) {
        _texts.command.swap(before);
        throw;
    }
}
