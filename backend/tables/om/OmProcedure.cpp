#include "backend/tables/om/OmProcedure.h"

OmProcedure::OmProcedure(OmCellText const& title, std::string const& languageCode, std::string const& localeCodePage,
                         std::string const& localeName)
    : OmHeading(title), _command(title.AsString()), _languageCode(languageCode), _localeCodePage(localeCodePage),
      _localeName(localeName) {}

OmProcedure::~OmProcedure() = default;

void OmProcedure::Accept(Visitor& visitor) { visitor.Visit(*this); }

void OmProcedure::setOutlineText(OmCellText const& text) {
    if (!TakesTitle(text)) {
        return;
    }
    _command = text.AsString();
    ReplaceTitle(text);
}
