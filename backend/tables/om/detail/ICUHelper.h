#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_ICUHELPER_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_ICUHELPER_H

#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmCellText.h"

/// Attaches a tracker (or null) to every text that it visits, and in a composite to every part as well. Owns nothing.
class OmPivotTable::ICUHelper : public OmCellText::Visitor {
public:
    ~ICUHelper() override;
    void Visit(OmComposite& text) override;
    void Visit(OmStringCell& text) override;
    void Visit(OmNumber& text) override;
    void Visit(OmVariable& text) override;
    void Visit(OmValue& text) override;
    void Visit(OmMessage& text) override;
    void Visit(OmBlank& text) override;

    icuTracker* tracker = nullptr;
};

#endif
