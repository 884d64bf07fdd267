#include "backend/tables/om/OmHeading.h"

#include "backend/tables/om/OmProcedure.h"

OmHeading::OmHeading(OmCellText const& title) : OmOutputPart(title), _footnotes(new OmVector<OmFootnote>()) {}

OmHeading::~OmHeading() { delete _footnotes; }

void OmHeading::Accept(Visitor& visitor) { visitor.Visit(*this); }

// The visitor's default for procedures stands here because it needs the class to be complete.
void OmOutputPart::Visitor::Visit(OmProcedure& part) { Visit(static_cast<OmHeading&>(part)); }
