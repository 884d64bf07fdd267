#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_TEXTPARTS_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_TEXTPARTS_H

#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"

#include <typeinfo>
#include <vector>

namespace om_detail {

/// Calls `see(OmCellText const&)` for a text and for those that it is put together from, to any depth, until it says
/// no; gives whether it never did. The fillers of a message are not listed anywhere and are passed over.
template <typename See>
bool AllOf(OmCellText const& text, See&& see) {
    std::vector<OmCellText const*> open{&text};
    while (!open.empty()) {
        OmCellText const* const next = open.back();
        open.pop_back();
        if (next == nullptr) {
            continue;
        }
        if (!see(*next)) {
            return false;
        }
        if (auto const* const composite = dynamic_cast<OmComposite const*>(next)) {
            OmComposite::Tree::WalkPreOrder(composite->Components().Root(), [&](auto const& component) {
                open.push_back(component.Depth() > 0 ? component.Value() : nullptr);
                return true;
            });
        } else if (auto const* const variable = dynamic_cast<OmVariable const*>(next)) {
            open.insert(open.end(), {&variable->Name(), variable->Label()});
        } else if (auto const* const value = dynamic_cast<OmValue const*>(next)) {
            open.insert(open.end(), {&value->Value(), value->Label()});
        }
    }
    return true;
}

/// Whether the text and all its parts are just of the library's kinds, so that nobody can tell when it is cloned.
inline bool IsOurs(OmCellText const& text) {
    return AllOf(text, [](OmCellText const& one) {
        std::type_info const* const kind = &typeid(one);
        return kind == &typeid(OmStringCell) || kind == &typeid(OmNumber) || kind == &typeid(OmBlank) ||
               kind == &typeid(OmComposite) || kind == &typeid(OmVariable) || kind == &typeid(OmValue) ||
               kind == &typeid(OmMessage);
    });
}

/// Whether the text is `whole` or one of its parts.
inline bool IsIn(OmCellText const& text, OmCellText const& whole) {
    return !AllOf(whole, [&](OmCellText const& one) { return &one != &text; });
}

} // namespace om_detail

#endif
