#ifndef OMTREE_TESTS_SUPPORT_TEXTKINDS_H
#define OMTREE_TESTS_SUPPORT_TEXTKINDS_H

#include "omcell/OmBlank.h"
#include "omcell/OmCellMetaData.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Texts that take as much memory, in as many ways, as their kinds can.
namespace omtest {

inline constexpr char Long[] = "a text that is too long to lie inside of its own cell, whichever kind it is of";

inline OmCellMetaData Meta(std::string const& marker) {
    OmCellMetaData meta;
    meta.footnotes = {1, 2, 3};
    meta.markers = {marker, std::string(marker).append(Long)};
    meta.style = 4;
    return meta;
}

/// A text of each kind, and of strings a short one and a long one with metadata. They live as long as the program.
inline std::vector<std::unique_ptr<OmCellText>> const& Kinds() {
    static std::vector<std::unique_ptr<OmCellText>> const kinds = [] {
        std::vector<std::unique_ptr<OmCellText>> made;
        OmCellMetaData const meta = Meta("k");
        made.emplace_back(new OmStringCell("short"));
        made.emplace_back(new OmStringCell(Long));
        made.back()->setMeta(&meta);
        made.emplace_back(new OmNumber(12.5, {OmNumber::CurrencyFormat, 2, U',', U'.', Long}));
        made.emplace_back(new OmVariable(Long, Long));
        made.emplace_back(new OmValue(3.0, Long));
        auto message = std::make_unique<OmMessage>(std::string("{1} of {2}: ") + Long, Long);
        message->Fill(1, *made[2]);
        message->Fill(2, *made[3]);
        auto composite = std::make_unique<OmComposite>();
        composite->Append(composite->Append(*message), *made[1]);
        composite->Append(*made[4]);
        made.emplace_back(std::move(message));
        made.emplace_back(std::move(composite));
        made.emplace_back(new OmBlank());
        return made;
    }();
    return kinds;
}

} // namespace omtest

#endif
