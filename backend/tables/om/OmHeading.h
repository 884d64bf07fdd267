#ifndef OMTREE_BACKEND_TABLES_OM_OMHEADING_H
#define OMTREE_BACKEND_TABLES_OM_OMHEADING_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmFootnote.h"
#include "backend/tables/om/OmOutputPart.h"
#include "backend/tables/om/OmVector.h"

/// A heading of the output document's outline. Copying is shallow like that of every part: a copy shares the title and
/// the footnotes with its source, and only one of the two may be destroyed.
class OMTREE_API OmHeading : public OmOutputPart {
public:
    /// Titled by a clone of `title`; no footnotes.
    explicit OmHeading(OmCellText const& title);
    OmHeading(OmHeading const&) = default;
    OmHeading& operator=(OmHeading const&) = default;
    /// Destroys the footnotes, those too that the texts of others add meanwhile. What a derived class adds has ended by
    /// then.
    ~OmHeading() override;

    void Accept(Visitor& visitor) override;

    /// The heading's own list; records added to it live in the default heap. Valid as long as the heading.
    OmVector<OmFootnote>& Footnotes() { return *_footnotes; }
    OmVector<OmFootnote> const& Footnotes() const { return *_footnotes; }

private:
    OmVector<OmFootnote>* _footnotes;
};

#endif
