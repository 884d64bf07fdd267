#include "backend/tables/om/OmTextBlock.h"

#include "backend/tables/om/OmPageTitle.h"
#include "omcell/OmCellText.h"

OmTextBlock::OmTextBlock(OmCellText const& title, std::string const& localeCodePage)
    : OmOutputPart(title), _isLog(title.AsString() == "Log"), _localeCodePage(localeCodePage) {}

OmTextBlock::~OmTextBlock() = default;

void OmTextBlock::Accept(Visitor& visitor) { visitor.Visit(*this); }

// The visitor's default for page titles stands here because it needs the class to be complete.
void OmOutputPart::Visitor::Visit(OmPageTitle& part) { Visit(static_cast<OmTextBlock&>(part)); }
