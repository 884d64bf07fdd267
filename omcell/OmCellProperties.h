#ifndef OMTREE_OMCELL_OMCELLPROPERTIES_H
#define OMTREE_OMCELL_OMCELLPROPERTIES_H

#include <string>

/// One style of a table's cells. A plain value, kept by the table for its clients and never interpreted by it.
struct OmCellProperties {
    /// Colours as the writer spells them, for instance "#102030"; empty for the area's own.
    std::string foreground;
    std::string background;
    /// Font name; empty for the area's own.
    std::string font;
    /// Horizontal alignment as the writer numbers it; -1 for none.
    int alignment = -1;

    friend bool operator==(OmCellProperties const& a, OmCellProperties const& b) {
        return a.foreground == b.foreground && a.background == b.background && a.font == b.font &&
               a.alignment == b.alignment;
    }
    friend bool operator!=(OmCellProperties const& a, OmCellProperties const& b) { return !(a == b); }
};

#endif
