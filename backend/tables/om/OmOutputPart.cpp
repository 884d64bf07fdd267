#include "backend/tables/om/OmOutputPart.h"

#include "backend/tables/Assert.h"
#include "omcell/OmCellText.h"
#include "omcell/detail/Belonging.h"

#include <utility>

OmOutputPart::OmOutputPart(OmCellText const& title)
    : _title(title.Clone(nullptr)), _titleIsItsOwnClone(_title == &title) {}

// Set to null before the title goes: an optimiser drops what a destructor writes last, and a title of a program's kind
// that asks for the part's title finds none.
OmOutputPart::~OmOutputPart() { delete std::exchange(_title, nullptr); }

bool OmOutputPart::TakesTitle([[maybe_unused]] OmCellText const& title) {
    return OM_HARDENED((om_detail::HeldPlace{_title, _titleIsItsOwnClone}.Takes(&title)), "title != held",
                       "backend/tables/om/OmOutputPart", __LINE__);
}

void OmOutputPart::ReplaceTitle(OmCellText const& title) {
    if (TakesTitle(title)) {
        om_detail::HeldPlace{_title, _titleIsItsOwnClone}.Put(&title, nullptr, [](OmCellText&) {});
    }
}
