#ifndef OMTREE_OMCELL_DETAIL_PLAINTEXT_H
#define OMTREE_OMCELL_DETAIL_PLAINTEXT_H

#include "omcell/OmStringCell.h"

#include <string_view>
#include <typeinfo>

namespace om_detail {

/// What the library's own indexes read of a string cell without a virtual call and without a copy.
struct PlainText {
    /// The text when it is a string cell and of no kind derived from it, else null. Derived kinds may compare as they
    /// like. The class has one record of its type in the process; were there a second one, that would be one kind more
    /// that is not recognised.
    static OmStringCell const* Of(OmCellText const* text) {
        return text != nullptr && &typeid(*text) == &typeid(OmStringCell) ? static_cast<OmStringCell const*>(text)
                                                                          : nullptr;
    }

    /// The bytes that `Compare` goes by. Valid until any copy or the alternative text is replaced, no longer than the
    /// text.
    static std::string_view Bytes(OmStringCell const& text) { return text.View(OmStringCell::U8); }

    static OmMemoryRegion* Home(OmStringCell const& text) { return text.Home(); }
};

} // namespace om_detail

#endif
