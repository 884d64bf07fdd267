#include "backend/tables/om/OmUtility.h"

#include "backend/tables/om/detail/FirstBelow.h"
#include "omcell/OmComposite.h"
#include "omcell/OmNumber.h"

OmNumber const* OmUtility::GetFirstNumber(OmComposite const& composite) {
    OmNumber const* number = nullptr;
    om_detail::FirstBelow(composite.Components().Root(), [&number](OmCellText const* component) {
        number = dynamic_cast<OmNumber const*>(component);
        return number != nullptr;
    });
    return number;
}
