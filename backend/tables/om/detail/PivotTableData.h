#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_PIVOTTABLEDATA_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_PIVOTTABLEDATA_H

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/CellStore.h"
#include "backend/tables/om/detail/ICUHelper.h"
#include "omcell/OmMemoryRegion.h"
#include "omcell/detail/Belonging.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

/// A table's private record, which is also the region that everything inside the table lives in.
///
/// At the end the region is swept first, so that cells and nodes cost nothing one by one; then the texts, footnotes and
/// dimensions are destroyed, whose storage stays readable until the region itself goes.
class OMTREE_LOCAL OmPivotTable::Data : public OmMemoryRegion {
public:
    Data(OmCellText const& itsTemplateName, bool itHasSplits);
    ~Data();

    /// For the end. A program's text that goes may still use the table: it finds what has gone no more, and what it
    /// adds goes in another round.
    bool HoldsTexts() const;
    void DestroyTexts();

    /// Puts a clone of `text` (nothing when null) there and visits it.
    /// REQUIRES: the place takes it (hardened check "text != held").
    void ReplaceText(om_detail::HeldPlace const& held, OmCellText const* text);
    /// Visits a clone that stands nowhere yet when it is of our own kinds, to the last part: a visit takes memory for
    /// the parts, and nothing has changed then. Says no of one that has a program's text in it, which is visited in its
    /// place.
    bool VisitApart(OmCellText& clone);
    om_detail::HeldPlace CornerPlace() { return {cornerText, cornerIsItsOwnClone}; }
    om_detail::HeldPlace CaptionPlace() { return {caption, captionIsItsOwnClone}; }
    om_detail::HeldPlace TitlePlace() { return {tableTitle, titleIsItsOwnClone}; }

    /// A dimension in this region, made from a root value or as a copy of another dimension; not in the table yet.
    template <typename Source>
    OmDimension* NewDimension(Source const& source) {
        void* const place = Allocate(sizeof(OmDimension));
        try {
            return ::new (place) OmDimension(source, this);
        } catch (...) {
            Release(place);
            throw;
        }
    }
    static void DestroyDimension(OmDimension* dimension);

    /// Adds a level to the store and makes the dimension the table's last one. Owns it from here, also when this
    /// throws.
    void Adopt(OmDimension* dimension);
    /// Destroys all dimensions of a table without cells; does nothing to one with a store.
    void GiveUpDimensions();
    /// Adopts it, records its number in it and visits its name.
    OmDimension& Append(OmDimension* dimension);

    void CheckIndex(std::vector<int> const& index) const {
        int signs = 0;
        for (int const subscript : index) {
            signs |= subscript;
        }
        if (index.size() != _dimensions.size() || signs < 0) {
            RefuseIndex(index);
        }
    }
    [[noreturn]] void RefuseIndex(std::vector<int> const& index) const;
    OmCellText* Find(std::vector<int> const& index) const {
        if (index.size() != cells.Levels()) {
            RefuseIndex(index);
        }
        switch (index.size()) {
        case 2:
            return FindOn(std::integral_constant<std::size_t, 2>{}, index);
        case 3:
            return FindOn(std::integral_constant<std::size_t, 3>{}, index);
        case 4:
            return FindOn(std::integral_constant<std::size_t, 4>{}, index);
        default:
            return FindOn(index.size(), index);
        }
    }
    /// `levels` is the index's size; a constant for those that nearly all tables have, so that the loops are unrolled:
    /// 64 instructions instead of 77 for three dimensions, and a tenth to a fifth less time as more calls overlap.
    template <typename Number>
    OmCellText* FindOn(Number levels, std::vector<int> const& index) const {
        CellStore::Reach const reach = cells.ReachOf(index.data(), levels);
        if (reach.IsInside()) {
            return cells.Find(index.data(), levels);
        }
        if (reach.negative < 0) {
            RefuseIndex(index);
        }
        return nullptr;
    }
    /// A text of a program's kind may use the table while it is cloned, visited or destroyed: store, delete, add a
    /// dimension. So after each such moment a place is asked for again, and what stands in it then is what counts: a
    /// cell that was stored there meanwhile is replaced by a clone that comes after it, and a cell that was stored
    /// there after the clone stays.
    void Store(std::vector<int> const& index, OmCellText const* cell);
    void Remove(std::vector<int> const& index);

    /// A place, with what tells whether it moved.
    struct Spot {
        CellStore::Place place;
        std::uint64_t changes;
    };
    CellStore::Place PlaceOf(Spot& spot, std::vector<int> const& index);
    /// The index that the position has now: dimensions that were added since give it 0 each.
    std::vector<int> Widened(std::vector<int> index) const;

    /// Replaces `held`, which stands in the place. A text that belongs to it is cloned first where all are of our own
    /// kinds, and where it is `held` itself; otherwise it is reported (hardened check "text != held").
    void Replace(CellStore::Place place, std::vector<int> const& index, OmCellText const* cell, OmCellText& held);
    void ReplaceOurs(CellStore::Place place, OmCellText const& cell, OmCellText& held);
    /// Puts the text in its place, destroys what stands there, visits the text and gives it the metadata `kept`, or
    /// else that of what it replaced.
    void Settle(Spot& spot, std::vector<int> const& index, std::unique_ptr<OmCellText> made,
                std::unique_ptr<OmCellMetaData> kept);

    void ReindexAxis();

    /// What `OmPivotTable::Footnote` does.
    std::size_t Register(OmFootnote const& note, bool alwaysNew);
    /// Position of the first footnote with an equal text, or the number of footnotes.
    std::size_t FindFootnote(OmCellText const* text) const;
    /// What tells the record from every other one of the table, for as long as it stands in the list.
    std::uint32_t MarkOf(OmFootnote& record);
    /// The record with this mark, which was at `position` once; `position` is set to where it is now. Null when it is
    /// gone.
    OmFootnote* RecordOf(std::size_t& position, std::uint32_t mark);
    /// A note that is being registered. One of the table's own may be moved, taken out or given another marker by a
    /// text that uses the table meanwhile.
    struct GivenNote {
        OmCellText const* text;
        OmCellText const* marker;
        std::size_t position; ///< of the table's own one, once
        std::uint32_t mark;   ///< of that; 0 for another note
    };
    GivenNote Given(OmFootnote const& note);
    /// The marker that the note has now; null when it was the table's own and is gone.
    OmCellText const* MarkerOf(GivenNote& note);
    std::size_t AppendFootnote(GivenNote& note, int count);
    void TakeMarker(std::size_t& position, std::uint32_t mark, OmCellText const* marker);
    void CountUp(std::size_t& position, std::uint32_t mark, int by);

    void MakeTracker();
    void MakeU8Tracker();
    void TrackDimensions();
    void TrackLabels(OmDimension& dimension) const;
    void TrackFootnotes();

    OmCellText* templateName = nullptr;
    OmCellText* cornerText = nullptr;
    OmCellText* caption = nullptr;
    OmCellText* tableTitle = nullptr;
    OmVector<OmFootnote> footnotes;
    std::uint32_t lastFootnoteMark = 0;
    bool removedFootnotes = false;
    bool hasSplits;
    CellStore cells;
    std::vector<OmDimension*> _dimensions;
    PuppetVector<short> rows;
    PuppetVector<short> columns;
    PuppetVector<short> layers;
    std::int32_t optionNumber = -1;
    std::int32_t minColumnWidth = -1;
    std::int32_t maxColumnWidth = -1;
    std::int32_t minRowWidth = -1;
    std::int32_t maxRowWidth = -1;
    std::int32_t layerLocation = -1;
    std::int64_t tableId = -1;
    std::string tableLocale;
    bool show = true;
    bool rotateRowLabels = false;
    bool rotateColumnLabels = false;
    bool scratched = false;
    bool isWarnings = false;
    bool isNotes = false;
    bool hasMarkers = false;
    bool backendOwns = true;
    bool fastTable = true;
    bool showCaption = true;
    bool labelsOnly = false;
    bool imputed = false;
    BackendSettings backendSettings;
    icuTracker* tracker = nullptr;
    icuTracker* u8Tracker = nullptr;
    bool owesTracker = false; ///< a round over the texts ended early
    ICUHelper helper;
    std::int32_t lang = 0;
    std::int32_t variableMode = 0;
    std::int32_t valueMode = 0;
    std::int32_t cellCount = 0;
    std::int32_t startColor = -1;
    std::int32_t endColor = -1;
    std::map<FormatArea::Area, FormatArea*> areaFormats;
    std::string borderInfo;
    std::string tableLookInfo;
    std::string tablePropertiesInfo;
    std::vector<unsigned int> customWidths;
    std::vector<unsigned int> customHeights;
    std::map<std::uint64_t, std::uint16_t> emptyCellStyles;
    std::vector<OmCellProperties> cellStyles;
    std::string miscProperties;
    bool cornerIsItsOwnClone = false;
    bool captionIsItsOwnClone = false;
    bool titleIsItsOwnClone = false;
};

#endif
