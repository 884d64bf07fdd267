#include "backend/tables/om/detail/ICUHelper.h"

#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"

OmPivotTable::ICUHelper::~ICUHelper() = default;

// A composite hands its tracker to every part itself, depth first; a walk here as well would tell each part twice.
void OmPivotTable::ICUHelper::Visit(OmComposite& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmStringCell& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmNumber& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmVariable& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmValue& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmMessage& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmBlank&) {}
