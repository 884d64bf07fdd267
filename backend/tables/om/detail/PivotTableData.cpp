#include "backend/tables/om/detail/PivotTableData.h"

#include "backend/tables/Assert.h"
#include "backend/tables/om/OMSException.h"
#include "omcell/OmStringCell.h"
#include "omcell/detail/PlainText.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <utility>

using om_detail::Belonging;
using CellStore = OmPivotTable::CellStore;

namespace {

[[maybe_unused]] constexpr char Source[] = "backend/tables/om/OmPivotTable";

/// A copy of the text's metadata; null when it has none or there is no text.
std::unique_ptr<OmCellMetaData> CopyOfMeta(OmCellText const* text) {
    return text != nullptr && text->hasMeta() ? std::make_unique<OmCellMetaData>(*text->getMeta()) : nullptr;
}

void RemoveGaps(PuppetVector<short>& axis) {
    axis.erase(std::remove(axis.begin(), axis.end(), static_cast<short>(-1)), axis.end());
}

} // namespace

OmPivotTable::Data::Data(OmCellText const& itsTemplateName, bool itHasSplits)
    : OmMemoryRegion(false), templateName(itsTemplateName.Clone(this)), footnotes(this), hasSplits(itHasSplits),
      cells(*this), rows(-1), columns(-1), layers(-1) {
    std::string const name = templateName->AsString();
    isWarnings = name == "Warnings";
    isNotes = name == "Notes";
}

OmPivotTable::Data::~Data() {
    WorkingRelease(false);
    while (HoldsTexts()) {
        DestroyTexts();
    }
    for (auto const& format : areaFormats) {
        delete format.second;
    }
    if (tracker != u8Tracker) {
        delete tracker;
    }
    delete u8Tracker;
}

bool OmPivotTable::Data::HoldsTexts() const {
    return cornerText != nullptr || caption != nullptr || tableTitle != nullptr || templateName != nullptr ||
           !footnotes.empty() || !_dimensions.empty();
}

void OmPivotTable::Data::DestroyTexts() {
    delete std::exchange(cornerText, nullptr);
    delete std::exchange(caption, nullptr);
    delete std::exchange(tableTitle, nullptr);
    delete std::exchange(templateName, nullptr);
    OmVector<OmFootnote>(std::move(footnotes)).Free();
    cells.Forget();
    for (OmDimension* const dimension : std::exchange(_dimensions, {})) {
        DestroyDimension(dimension);
    }
}

void OmPivotTable::Data::ReplaceText(om_detail::HeldPlace const& held, OmCellText const* text) {
    if (!OM_HARDENED(held.Takes(text), "text != held", Source, __LINE__)) {
        return;
    }
    bool isVisited = false;
    OmCellText* const clone = held.Put(text, this, [&](OmCellText& made) { isVisited = VisitApart(made); });
    if (clone != nullptr && !isVisited) {
        clone->Accept(helper);
    }
}

bool OmPivotTable::Data::VisitApart(OmCellText& clone) {
    if (!Belonging::IsOurs(clone)) {
        return false;
    }
    clone.Accept(helper);
    return true;
}

void OmPivotTable::Data::DestroyDimension(OmDimension* dimension) {
    dimension->~OmDimension();
    Release(dimension);
}

void OmPivotTable::Data::Adopt(OmDimension* dimension) {
    try {
        if (_dimensions.size() == _dimensions.capacity()) {
            _dimensions.reserve(std::max<std::size_t>(4, 2 * _dimensions.size()));
        }
        cells.AddLevel();
    } catch (...) {
        DestroyDimension(dimension);
        throw;
    }
    _dimensions.push_back(dimension);
}

void OmPivotTable::Data::GiveUpDimensions() {
    if (cells.Root() != nullptr) {
        return;
    }
    cells.Forget();
    std::vector<OmDimension*> const gone = std::exchange(_dimensions, {});
    std::for_each(gone.begin(), gone.end(), DestroyDimension);
}

OmDimension& OmPivotTable::Data::Append(OmDimension* dimension) {
    OmCellText* const name = dimension->Root().Value().Text();
    bool isVisited = name == nullptr;
    try {
        isVisited = isVisited || VisitApart(*name);
    } catch (...) {
        DestroyDimension(dimension);
        throw;
    }
    Adopt(dimension);
    dimension->Index(static_cast<int>(_dimensions.size()) - 1);
    if (!isVisited) {
        name->Accept(helper);
    }
    return *dimension;
}

// --- cell store ------------------------------------------------------------------------------------------------------

void OmPivotTable::Data::RefuseIndex(std::vector<int> const& index) const {
    if (index.size() != _dimensions.size()) {
        throw OMSException("OmPivotTable::Cell() -- nind != _my->_dimensions.size()", static_cast<double>(index.size()),
                           static_cast<double>(_dimensions.size()));
    }
    throw OMSException("OmPivotTable::Cell() -- subscript < 0",
                       *std::find_if(index.begin(), index.end(), [](int subscript) { return subscript < 0; }));
}

void OmPivotTable::Data::Store(std::vector<int> const& index, OmCellText const* cell) {
    if (_dimensions.empty()) {
        throw OMSException("OmPivotTable::Cell() -- nind != _my->_dimensions.size()", static_cast<double>(index.size()),
                           0.0);
    }
    CheckIndex(index);
    CellStore::Place const place = cells.Grow(index.data());
    if (OmCellText* const held = CellStore::CellAt(place)) {
        Replace(place, index, cell, *held);
        return;
    }
    if (OmStringCell const* const plain = om_detail::PlainText::Of(cell)) {
        // What the visitor does with a clone of our own, without the way through three tables of functions: a twentieth
        // of a dense store.
        OmCellText* const clone = plain->OmStringCell::Clone(this);
        cells.Put(place, clone);
        clone->OmCellText::SetTracker(helper.tracker);
        return;
    }
    if (cell != nullptr) {
        Spot spot{place, cells.Changes()};
        std::unique_ptr<OmCellText> made(cell->Clone(this));
        Settle(spot, index, std::move(made), nullptr);
    }
}

CellStore::Place OmPivotTable::Data::PlaceOf(Spot& spot, std::vector<int> const& index) {
    if (spot.changes != cells.Changes()) {
        spot.place = cells.Grow(Widened(index).data());
        spot.changes = cells.Changes();
    }
    return spot.place;
}

std::vector<int> OmPivotTable::Data::Widened(std::vector<int> index) const {
    index.resize(cells.Levels(), 0);
    return index;
}

void OmPivotTable::Data::Replace(CellStore::Place place, std::vector<int> const& index, OmCellText const* cell,
                                 OmCellText& held) {
    if (Belonging::IsClonedFirst(cell, &held)) {
        ReplaceOurs(place, *cell, held);
        return;
    }
    bool const isOwnPlace = cell == &held;
    if (!OM_HARDENED(isOwnPlace || cell == nullptr || !Belonging::BelongsTo(*cell, held), "text != held", Source,
                     __LINE__)) {
        return;
    }
    Spot spot{place, cells.Changes()};
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): what `made` releases below stands in the table
    std::unique_ptr<OmCellMetaData> kept = CopyOfMeta(&held);
    std::unique_ptr<OmCellText> made(isOwnPlace ? cell->Clone(this) : nullptr);
    // The place is empty while the old text goes and the new one comes, so that a failing clone leaves no dead pointer.
    CellStore::Place const here = PlaceOf(spot, index);
    OmCellText* const old = CellStore::CellAt(here);
    // The place is asked, for a clone may have come to lie where a cell lay that has gone meanwhile.
    if (old != nullptr && made.get() == old) {
        static_cast<void>(made.release()); // its own clone, which stays
        return;
    }
    cells.Put(here, nullptr);
    delete old;
    if (cell != nullptr) {
        if (made == nullptr) {
            made.reset(cell->Clone(this));
        }
        Settle(spot, index, std::move(made), std::move(kept));
    }
}

// Nothing is changed before all is made, and no program's text sees the order.
void OmPivotTable::Data::ReplaceOurs(CellStore::Place place, OmCellText const& cell, OmCellText& held) {
    std::unique_ptr<OmCellText> made(cell.Clone(this));
    made->Accept(helper);
    if (held.hasMeta()) {
        made->setMeta(held.getMeta());
    }
    cells.Put(place, made.release());
    delete &held;
}

void OmPivotTable::Data::Settle(Spot& spot, std::vector<int> const& index, std::unique_ptr<OmCellText> made,
                                std::unique_ptr<OmCellMetaData> kept) {
    CellStore::Place const place = PlaceOf(spot, index);
    OmCellText* const before = CellStore::CellAt(place);
    if (before == made.get()) {
        static_cast<void>(made.release());
        return;
    }
    if (kept == nullptr) {
        kept = CopyOfMeta(before);
    }
    bool const isVisited = VisitApart(*made);
    OmCellText* const clone = made.release();
    cells.Put(place, clone);
    delete before;
    if (!isVisited && (before == nullptr || Find(Widened(index)) == clone)) {
        clone->Accept(helper);
    }
    if (kept == nullptr) {
        return;
    }
    OmCellText* const now = Find(Widened(index));
    if (now != nullptr && (now == clone || !now->hasMeta())) {
        now->setMeta(kept.get());
    }
}

void OmPivotTable::Data::Remove(std::vector<int> const& index) {
    if (cells.Root() == nullptr ||
        !OM_HARDENED(index.size() == _dimensions.size(), "nind == _my->_dimensions.size()", Source, __LINE__)) {
        return;
    }
    OmCellText* cell = nullptr;
    CellStore::Removal const removal = cells.Remove(index.data(), cell);
    if (!OM_HARDENED(removal != CellStore::Removal::OutsideOfNode, "subscript < node length", Source, __LINE__) ||
        removal != CellStore::Removal::Done) {
        return;
    }
    delete cell;
    if (cells.Levels() == index.size()) {
        cells.DestroyEmptyNodes(index.data());
    } else {
        cells.DestroyEmptyNodes(Widened(index).data());
    }
}

// --- axes ------------------------------------------------------------------------------------------------------------

void OmPivotTable::Data::ReindexAxis() {
    std::size_t const ndim = _dimensions.size();
    auto const count = [this] { return layers.size() + columns.size() + rows.size(); };
    if (count() != ndim) {
        RemoveGaps(layers);
        RemoveGaps(columns);
        RemoveGaps(rows);
    }
    if (count() != ndim) {
        throw OMSException("OmPivotTable::Data::ReindexAxis() -- ndim != nCount", static_cast<double>(ndim),
                           static_cast<double>(count()));
    }
}

// --- footnotes -------------------------------------------------------------------------------------------------------

// Every text that is asked here may be a program's and use the table, which moves the records; the note may be one of
// them. So a record is known by its number and a mark, and looked up anew after each such moment. Its text's address
// would not do: another record's text may come to lie there, and one text that is its own clone stands in several.

std::uint32_t OmPivotTable::Data::MarkOf(OmFootnote& record) {
    if (record._mark == 0) {
        record._mark = ++lastFootnoteMark;
    }
    return record._mark;
}

std::size_t OmPivotTable::Data::FindFootnote(OmCellText const* text) const {
    std::size_t position = 0;
    for (; position < footnotes.size(); ++position) {
        OmCellText const* const own = footnotes[position].Text();
        if (own == nullptr || text == nullptr ? own == text : OmCellText::Equal(*own, *text)) {
            break;
        }
    }
    return position;
}

OmPivotTable::Data::GivenNote OmPivotTable::Data::Given(OmFootnote const& note) {
    std::less<> const before;
    GivenNote given{note.Text(), note.Marker(), 0, 0};
    if (!before(&note, footnotes.begin()) && before(&note, footnotes.end())) {
        given.position = static_cast<std::size_t>(&note - footnotes.begin());
        given.mark = MarkOf(footnotes[given.position]);
    }
    return given;
}

OmCellText const* OmPivotTable::Data::MarkerOf(GivenNote& note) {
    if (note.mark == 0) {
        return note.marker;
    }
    OmFootnote const* const record = RecordOf(note.position, note.mark);
    return record != nullptr ? record->Marker() : nullptr;
}

OmFootnote* OmPivotTable::Data::RecordOf(std::size_t& position, std::uint32_t mark) {
    if (position < footnotes.size() && footnotes[position]._mark == mark) {
        return &footnotes[position];
    }
    OmFootnote* const record = std::find_if(footnotes.begin(), footnotes.end(),
                                            [mark](OmFootnote const& other) { return other._mark == mark; });
    if (record == footnotes.end()) {
        return nullptr;
    }
    position = static_cast<std::size_t>(record - footnotes.begin());
    return record;
}

std::size_t OmPivotTable::Data::Register(OmFootnote const& note, bool alwaysNew) {
    GivenNote given = Given(note);
    int const count = note.Count();
    std::size_t position = alwaysNew ? footnotes.size() : FindFootnote(given.text);
    if (position >= footnotes.size()) {
        return AppendFootnote(given, count);
    }
    std::uint32_t const mark = MarkOf(footnotes[position]);
    TakeMarker(position, mark, MarkerOf(given));
    CountUp(position, mark, 1);
    return position;
}

std::size_t OmPivotTable::Data::AppendFootnote(GivenNote& note, int count) {
    std::unique_ptr<OmCellText> made(note.text != nullptr ? note.text->Clone(this) : nullptr);
    OmCellText* const own = made.get();
    std::size_t position = footnotes.size();
    OmFootnote& added = footnotes.emplace_back(this);
    added.ExchangeText(made.release());
    std::uint32_t const mark = MarkOf(added);
    try {
        if (own != nullptr) {
            own->Accept(helper);
        }
        TakeMarker(position, mark, MarkerOf(note));
    } catch (...) {
        if (OmFootnote* const record = RecordOf(position, mark)) {
            made.reset(record->ExchangeText(nullptr));
            std::unique_ptr<OmCellText> const ownMarker(record->ExchangeMarker(nullptr));
            footnotes.erase(position);
        }
        throw;
    }
    CountUp(position, mark, count < 0 ? count : 1);
    return position;
}

void OmPivotTable::Data::TakeMarker(std::size_t& position, std::uint32_t mark, OmCellText const* marker) {
    if (marker == nullptr) {
        return;
    }
    OmFootnote* record = RecordOf(position, mark);
    if (record == nullptr) {
        return;
    }
    std::unique_ptr<OmCellText> made(marker->Clone(record->Region()));
    OmCellText* const clone = made.get();
    record = RecordOf(position, mark);
    if (record == nullptr) {
        return;
    }
    if (record->Marker() == clone) {
        static_cast<void>(made.release()); // its own clone, which stays
        return;
    }
    bool const isVisited = VisitApart(*clone);
    delete record->ExchangeMarker(made.release());
    record = RecordOf(position, mark);
    if (!isVisited && record != nullptr && record->Marker() == clone) {
        clone->Accept(helper);
    }
}

void OmPivotTable::Data::CountUp(std::size_t& position, std::uint32_t mark, int by) {
    if (OmFootnote* const record = RecordOf(position, mark)) {
        using Limits = std::numeric_limits<std::int32_t>;
        std::int64_t const sum = std::int64_t{record->Count()} + by;
        record->Count(static_cast<int>(std::clamp<std::int64_t>(sum, Limits::min(), Limits::max())));
    }
}

// --- trackers --------------------------------------------------------------------------------------------------------

void OmPivotTable::Data::MakeTracker() {
    tracker = new icuTracker({backendSettings.getUnicode(), backendSettings.getLocale()});
    helper.tracker = tracker;
}

void OmPivotTable::Data::MakeU8Tracker() {
    u8Tracker = backendSettings.getUnicode() ? tracker : new icuTracker({true, backendSettings.getLocale()});
}

void OmPivotTable::Data::TrackDimensions() {
    std::size_t const dimensions = _dimensions.size();
    for (std::size_t k = 0; k < dimensions; ++k) {
        TrackLabels(*_dimensions[k]);
    }
}

namespace {

/// A node on the way down from the root, and the position of the next child to go to.
struct LabelStep {
    OmDimension::Tree::TreeNode* node;
    std::size_t next;
};

/// Goes down the way again, as far as it is still there.
void FollowAgain(std::vector<LabelStep>& way) {
    for (std::size_t k = 1; k < way.size(); ++k) {
        OmVector<OmDimension::Tree::TreeNode>& children = way[k - 1].node->children;
        std::size_t const position = way[k - 1].next - 1;
        if (position >= children.size()) {
            way.resize(k);
            return;
        }
        way[k].node = &children[position];
    }
}

} // namespace

// A label that is a program's may change the tree when it gets the tracker.
void OmPivotTable::Data::TrackLabels(OmDimension& dimension) const {
    std::vector<LabelStep> way{{dimension.Root().Ptr(), 0}};
    for (bool isNew = true; !way.empty();) {
        if (OmCellText* const label = isNew ? way.back().node->value.Text() : nullptr) {
            bool const isOurs = Belonging::IsOurs(*label);
            label->SetTracker(tracker);
            if (!isOurs) {
                FollowAgain(way);
            }
        }
        LabelStep& step = way.back();
        isNew = step.next < step.node->children.size();
        if (isNew) {
            OmDimension::Tree::TreeNode& child = step.node->children[step.next++];
            way.push_back({&child, 0});
        } else {
            way.pop_back();
        }
    }
}

void OmPivotTable::Data::TrackFootnotes() {
    std::size_t const count = footnotes.size();
    for (std::size_t position = 0; position < std::min(count, footnotes.size()); ++position) {
        if (OmCellText* const text = footnotes[position].Text()) {
            text->SetTracker(tracker);
        }
        if (OmCellText* const marker = position < footnotes.size() ? footnotes[position].Marker() : nullptr) {
            marker->SetTracker(tracker);
        }
    }
}
