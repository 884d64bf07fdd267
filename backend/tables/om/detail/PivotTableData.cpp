#include "backend/tables/om/detail/PivotTableData.h"

#include "backend/tables/Assert.h"
#include "backend/tables/om/OMSException.h"
#include "omcell/OmStringCell.h"
#include "omcell/detail/PlainText.h"

#include <algorithm>
#include <memory>

namespace {

[[maybe_unused]] constexpr char Source[] = "backend/tables/om/OmPivotTable";

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
    delete cornerText;
    delete caption;
    delete tableTitle;
    delete templateName;
    footnotes.Free();
    for (OmDimension* const dimension : _dimensions) {
        DestroyDimension(dimension);
    }
    for (auto const& format : areaFormats) {
        delete format.second;
    }
    if (tracker != u8Tracker) {
        delete tracker;
    }
    delete u8Tracker;
}

void OmPivotTable::Data::ReplaceText(OmCellText*& held, OmCellText const* text) {
    if (!OM_HARDENED(text == nullptr || text != held, "text != held", Source, __LINE__)) {
        return;
    }
    delete held;
    held = nullptr;
    if (text != nullptr) {
        held = text->Clone(this);
        held->Accept(helper);
    }
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

OmDimension& OmPivotTable::Data::Append(OmDimension* dimension) {
    Adopt(dimension);
    dimension->Index(static_cast<int>(_dimensions.size()) - 1);
    dimension->Name().Accept(helper);
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
    if (cell == nullptr || CellStore::CellAt(place) != nullptr) {
        Replace(place, index, cell);
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
    std::uint64_t const changes = cells.Changes();
    auto clone = std::unique_ptr<OmCellText>(cell->Clone(this));
    cells.Put(changes == cells.Changes() ? place : PlaceAgain(index), clone.get());
    clone.release()->Accept(helper);
}

// A foreign text may use the table while it goes or is cloned, which moves places, and may even add a dimension.
OmPivotTable::CellStore::Place OmPivotTable::Data::PlaceAgain(std::vector<int> index) {
    index.resize(cells.Levels(), 0);
    return cells.Grow(index.data());
}

void OmPivotTable::Data::Replace(CellStore::Place place, std::vector<int> const& index, OmCellText const* cell) {
    std::uint64_t changes = cells.Changes();
    auto const put = [&](OmCellText* text) {
        if (changes != cells.Changes()) {
            place = PlaceAgain(index);
            changes = cells.Changes();
        }
        cells.Put(place, text);
    };
    OmCellText* const old = CellStore::CellAt(place);

    std::unique_ptr<OmCellMetaData> saved;
    if (old != nullptr && old->hasMeta()) {
        saved = std::make_unique<OmCellMetaData>(*old->getMeta());
    }
    // The place is empty while the old text goes and the new one comes, so that a failing clone leaves no dead pointer.
    // A cell that is stored into its own place is the one case that is cloned before.
    std::unique_ptr<OmCellText> made(cell != nullptr && cell == old ? cell->Clone(this) : nullptr);
    put(nullptr);
    delete old;
    if (cell == nullptr) {
        return;
    }
    if (made == nullptr) {
        made.reset(cell->Clone(this));
    }
    put(made.get());
    OmCellText* const clone = made.release();
    clone->Accept(helper);
    if (saved != nullptr) {
        clone->setMeta(saved.get());
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
        std::vector<int> wider = index;
        wider.resize(cells.Levels(), 0);
        cells.DestroyEmptyNodes(wider.data());
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

std::size_t OmPivotTable::Data::FindFootnote(OmFootnote const& note) const {
    std::size_t position = 0;
    while (position < footnotes.size() && !(footnotes[position] == note)) {
        ++position;
    }
    return position;
}

void OmPivotTable::Data::TakeMarker(OmFootnote& footnote, OmCellText const* marker) {
    if (marker != nullptr) {
        footnote.Marker(marker);
        footnote.Marker()->Accept(helper);
    }
}

void OmPivotTable::Data::AppendFootnote(OmFootnote const& note) {
    // The note may be one of the table's own, which the append relocates; its texts stay where they are.
    OmCellText const* const text = note.Text();
    OmCellText const* const marker = note.Marker();
    int const count = note.Count();
    OmFootnote& added = footnotes.emplace_back(this);
    try {
        if (text != nullptr) {
            added.Text(*text);
            added.Text()->Accept(helper);
        }
        TakeMarker(added, marker);
    } catch (...) {
        footnotes.erase(footnotes.size() - 1);
        throw;
    }
    added.Count(count < 0 ? count : added.Count() + 1);
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
    for (OmDimension* const dimension : _dimensions) {
        OmDimension::Tree::WalkPreOrder(dimension->Root(), [this](OmDimension::ConstNode const& node) {
            OmCellText const* const label = node.Value().Text();
            if (label != nullptr) {
                const_cast<OmCellText*>(label)->SetTracker(tracker);
            }
            return true;
        });
    }
}

void OmPivotTable::Data::TrackFootnotes() {
    for (OmFootnote& footnote : footnotes) {
        if (footnote.Text() != nullptr) {
            footnote.Text()->SetTracker(tracker);
        }
        if (footnote.Marker() != nullptr) {
            footnote.Marker()->SetTracker(tracker);
        }
    }
}
