#ifndef OMTREE_BACKEND_TABLES_OM_OMUTILITY_H
#define OMTREE_BACKEND_TABLES_OM_OMUTILITY_H

#include "backend/tables/Export.h"

class OmComposite;
class OmNumber;

/// Small questions that engine code asks of texts.
class OMTREE_API OmUtility {
public:
    /// The first number among a composite's components, depth first, a component before its sub-components; null when
    /// there is none. The composite's root value takes no part, and a component that is a composite itself is not
    /// entered. The number belongs to the composite. O(components up to the number).
    static OmNumber const* GetFirstNumber(OmComposite const& composite);
};

#endif
