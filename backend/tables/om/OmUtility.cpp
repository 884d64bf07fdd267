#include "backend/tables/om/OmUtility.h"

#include "backend/tables/om/VectorTree.h"
#include "omcell/OmComposite.h"
#include "omcell/OmNumber.h"

OmNumber const* OmUtility::GetFirstNumber(OmComposite const& composite) {
    using Components = OmVectorTree<OmCellText*>;
    OmNumber const* number = nullptr;
    Components::WalkPreOrder(composite.Components().Root(), [&](Components::ConstNode const& component) {
        if (number == nullptr && component.Depth() > 0) {
            number = dynamic_cast<OmNumber const*>(component.Value());
        }
        return number == nullptr;
    });
    return number;
}
