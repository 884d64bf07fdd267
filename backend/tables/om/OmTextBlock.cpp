#include "backend/tables/om/OmTextBlock.h"

#include "backend/tables/om/OmPageTitle.h"
#include "omcell/OmCellText.h"

#include <utility>

OmTextBlock::OmTextBlock(OmCellText const& title, std::string const& localeCodePage)
    : OmOutputPart(title), _isLog(title.AsString() == "Log"), _localeCodePage(localeCodePage) {}

// A base that is made before the lines would be destroyed without them, and the title with it that the source still
// has.
OmTextBlock::OmTextBlock(OmTextBlock const& other)
    : OmTextBlock(other, std::list<std::string>(other._textList), std::string(other._localeCodePage)) {}

OmTextBlock::OmTextBlock(OmTextBlock const& other, std::list<std::string>&& lines, std::string&& codePage) noexcept
    : OmOutputPart(other), _textList(std::move(lines)), _isLog(other._isLog), _localeCodePage(std::move(codePage)) {}

OmTextBlock& OmTextBlock::operator=(OmTextBlock const& other) {
    std::list<std::string> lines(other._textList);
    std::string codePage(other._localeCodePage);
    OmOutputPart::operator=(other);
    _textList.swap(lines);
    _isLog = other._isLog;
    _localeCodePage.swap(codePage);
    return *this;
}

OmTextBlock::~OmTextBlock() = default;

void OmTextBlock::Accept(Visitor& visitor) { visitor.Visit(*this); }

// The visitor's default for page titles stands here because it needs the class to be complete.
void OmOutputPart::Visitor::Visit(OmPageTitle& part) { Visit(static_cast<OmTextBlock&>(part)); }
