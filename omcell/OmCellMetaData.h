#ifndef OMTREE_OMCELL_OMCELLMETADATA_H
#define OMTREE_OMCELL_OMCELLMETADATA_H

#include <string>
#include <vector>

/// What a writer needs to know of one cell beside its text. A plain value; texts keep a copy of their own
/// (`OmCellText::setMeta`).
struct OmCellMetaData {
    /// Numbers of the table's footnotes that the text refers to, as `OmPivotTable::Footnote` returned them, in the
    /// order in which their markers are shown.
    std::vector<short> footnotes;
    /// Marker strings shown with the text, for instance "a".
    std::vector<std::string> markers;
    /// Position in the table's cell styles (`OmPivotTable::getCellStyles`); -1 for none.
    int style = -1;

    friend bool operator==(OmCellMetaData const& a, OmCellMetaData const& b) {
        return a.footnotes == b.footnotes && a.markers == b.markers && a.style == b.style;
    }
    friend bool operator!=(OmCellMetaData const& a, OmCellMetaData const& b) { return !(a == b); }
};

#endif
