#ifndef OMTREE_BACKEND_TABLES_OM_OMFOOTNOTE_H
#define OMTREE_BACKEND_TABLES_OM_OMFOOTNOTE_H

#include "backend/tables/Export.h"

#include <cstdint>
#include <utility>

class OmCellText;
class OmMemoryRegion;

/// One footnote of a table or heading.
///
///     +--------+------+--------+-------+
///     | region | text | marker | count |
///     +--------+------+--------+-------+
///
/// Text and marker are clones in the record's region, which the record does not own and which outlives it; the record
/// owns them. The count says how many references were made; a caller may hand in a negative one.
///
/// A text that is set may be the one that the record holds, or a part of it. A text of a program's kind may use the
/// record while it is cloned (the old text is still there) or destroyed (the new one is there already). REQUIRES: the
/// record stays in its place until the call returns, so a text that is set in a record of a list adds none to the list
/// while it is cloned. A record that is copied may be moved meanwhile, but keeps its texts until the copy is made.
class OMTREE_API OmFootnote {
public:
    /// For lists of records: a text that is cloned into a new one may change the list.
    static constexpr bool MadeAside = true;

    /// No text, no marker, count 0. A null region means the default heap.
    explicit OmFootnote(OmMemoryRegion* region = nullptr);

    /// A clone of `text`, no marker.
    explicit OmFootnote(OmCellText const& text, OmMemoryRegion* region = nullptr);

    /// A clone of `text` and, unless it is null, of `marker`.
    OmFootnote(OmCellText const& text, OmCellText const* marker, int count, OmMemoryRegion* region = nullptr);

    /// A deep copy in the source's own region.
    OmFootnote(OmFootnote const& other);
    /// A deep copy in `region` (the default heap when null).
    OmFootnote(OmFootnote const& other, OmMemoryRegion* region);
    /// Deep; the own region stays. The new texts are cloned before the old ones are destroyed; when a clone throws, the
    /// record is as it was.
    OmFootnote& operator=(OmFootnote const& other);
    ~OmFootnote();

    /// Null until set.
    OmCellText* Text() { return _text; }
    OmCellText const* Text() const { return _text; }
    /// Clones `text` into the record's region, then destroys the old one.
    void Text(OmCellText const& text);

    /// Null when there is none.
    OmCellText* Marker() { return _marker; }
    OmCellText const* Marker() const { return _marker; }
    /// Clones `marker` into the record's region, then destroys the old one; null takes the marker away.
    void Marker(OmCellText const* marker);

    int Count() const { return _count; }
    void Count(int count) { _count = count; }

    OmMemoryRegion* Region() const { return _region; }

    /// The same footnote: equal texts, `a`'s being the one asked. Markers and counts play no part.
    friend OMTREE_API bool operator==(OmFootnote const& a, OmFootnote const& b);
    friend bool operator!=(OmFootnote const& a, OmFootnote const& b) { return !(a == b); }

private:
    friend class OmPivotTable;

    void Copy(OmFootnote const& other);

    /// Takes the text over and gives the old one to the caller.
    OmCellText* ExchangeText(OmCellText* text) { return std::exchange(_text, text); }
    OmCellText* ExchangeMarker(OmCellText* marker) { return std::exchange(_marker, marker); }

    OmMemoryRegion* _region;
    OmCellText* _text = nullptr;
    OmCellText* _marker = nullptr;
    std::int32_t _count = 0;
    std::uint32_t _mark = 0; ///< given by a table that the record stands in; no copy has it
};

#endif
