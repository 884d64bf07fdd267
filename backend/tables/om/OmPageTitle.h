#ifndef OMTREE_BACKEND_TABLES_OM_OMPAGETITLE_H
#define OMTREE_BACKEND_TABLES_OM_OMPAGETITLE_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmTextBlock.h"

#include <string>

/// A page title: a text block with an empty title, never a log. Its text stands in its lines.
class OMTREE_API OmPageTitle : public OmTextBlock {
public:
    explicit OmPageTitle(std::string const& localeCodePage);
    OmPageTitle(OmPageTitle const&) = default;
    OmPageTitle& operator=(OmPageTitle const&) = default;
    ~OmPageTitle() override;

    void Accept(Visitor& visitor) override;
};

#endif
