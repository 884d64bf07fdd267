#include "backend/tables/om/OmPageTitle.h"

#include "omcell/OmStringCell.h"

OmPageTitle::OmPageTitle(std::string const& localeCodePage)
    : OmTextBlock(OmStringCell(std::string(), nullptr, false), localeCodePage) {}

OmPageTitle::~OmPageTitle() = default;

void OmPageTitle::Accept(Visitor& visitor) { visitor.Visit(*this); }
