#include "backend/tables/om/detail/ICUHelper.h"

#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"

OmPivotTable::ICUHelper::~ICUHelper() = default;

void OmPivotTable::ICUHelper::Visit(OmComposite& text) {
    text.SetTracker(tracker);
    using Components = OmVectorTree<OmCellText*>;
    Components::WalkPreOrder(text.Components().Root(), [&](Components::ConstNode const& component) {
        if (component.Value() != nullptr) {
            component.Value()->SetTracker(text.Tracker());
        }
        return true;
    });
}

void OmPivotTable::ICUHelper::Visit(OmStringCell& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmNumber& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmVariable& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmValue& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmMessage& text) { text.SetTracker(tracker); }

void OmPivotTable::ICUHelper::Visit(OmBlank&) {}
