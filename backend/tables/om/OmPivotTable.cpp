#include "backend/tables/om/OmPivotTable.h"

#include "backend/tables/Assert.h"
#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/detail/CellCursor.h"
#include "backend/tables/om/detail/Dump.h"
#include "backend/tables/om/detail/PivotTableData.h"
#include "omcell/OmCellText.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>

namespace {

[[maybe_unused]] constexpr char Source[] = "backend/tables/om/OmPivotTable";

/// Refuses a dimension number outside the table; the two texts name the asking member.
void CheckWhich(int which, std::size_t dimensions, char const* negative, char const* pastEnd) {
    if (which < 0) {
        throw OMSException(negative, which);
    }
    if (static_cast<std::size_t>(which) >= dimensions) {
        throw OMSException(pastEnd, which, static_cast<double>(dimensions));
    }
}

} // namespace

OmPivotTable::OmPivotTable(OmCellText const& title, OmCellText const& templateName, bool hasSplits)
    : OmOutputPart(title), _my(new Data(templateName, hasSplits)) {}

OmPivotTable::~OmPivotTable() { delete _my; }

void OmPivotTable::Accept(OmOutputPart::Visitor& visitor) { visitor.Visit(*this); }

bool OmPivotTable::HasSplits() const { return _my->hasSplits; }

bool OmPivotTable::IsWarnings() const { return _my->isWarnings; }

bool OmPivotTable::IsNotes() const { return _my->isNotes; }

// --- dimensions ------------------------------------------------------------------------------------------------------

OmDimension& OmPivotTable::AddDimension(OmCellText const& name) {
    OmDimensionNode const root(name, OmDimensionNode::NoSubscript, true, nullptr);
    return _my->Append(_my->NewDimension(root));
}

OmDimension& OmPivotTable::AddDimension(OmDimension const& other) { return _my->Append(_my->NewDimension(other)); }

int OmPivotTable::FindDimension(OmCellText const& name) const {
    for (std::size_t k = 0; k < NDimensions(); ++k) {
        OmDimension const& dimension = *_my->_dimensions[k];
        OmCellText const* const itsName = dimension.Root().Value().Text();
        if (itsName != nullptr && OmCellText::Equal(*itsName, name)) {
            return static_cast<int>(k);
        }
    }
    return -1;
}

OmDimension& OmPivotTable::Dimension(int which) {
    CheckWhich(which, NDimensions(), "OmPivotTable::Dimension() -- which < 0",
               "OmPivotTable::Dimension() -- which < NDimensions()");
    return *_my->_dimensions[static_cast<std::size_t>(which)];
}

OmDimension const& OmPivotTable::Dimension(int which) const {
    return const_cast<OmPivotTable*>(this)->Dimension(which);
}

std::size_t OmPivotTable::NDimensions() const { return _my->_dimensions.size(); }

std::size_t OmPivotTable::Size(int which) const {
    CheckWhich(which, NDimensions(), "OmPivotTable::Size() -- which < 0",
               "OmPivotTable::Size() -- which < NDimensions()");
    return static_cast<std::size_t>(std::max(0, _my->_dimensions[static_cast<std::size_t>(which)]->NumCategories()));
}

std::vector<int> OmPivotTable::SizeVector() const {
    std::vector<int> sizes;
    sizes.reserve(NDimensions());
    for (OmDimension const* const dimension : _my->_dimensions) {
        sizes.push_back(dimension->NumCategories());
    }
    return sizes;
}

void OmPivotTable::CopyDimensions(OmPivotTable const& source) {
    if (NDimensions() != 0) {
        throw OMSException("OmPivotTable::CopyDimensions() -- _my->_dimensions.size() != 0",
                           static_cast<double>(NDimensions()));
    }
    // A label may add a dimension to either table while it is copied.
    std::size_t const dimensions = source.NDimensions();
    std::size_t copied = 0;
    try {
        for (; copied < dimensions; ++copied) {
            _my->Adopt(_my->NewDimension(*source._my->_dimensions[copied]));
        }
    } catch (...) {
        if (NDimensions() == copied) {
            _my->GiveUpDimensions();
        }
        throw;
    }
}

// --- axes ------------------------------------------------------------------------------------------------------------

PuppetVector<short>& OmPivotTable::Rows() { return _my->rows; }

PuppetVector<short> const& OmPivotTable::Rows() const { return _my->rows; }

PuppetVector<short>& OmPivotTable::Columns() { return _my->columns; }

PuppetVector<short> const& OmPivotTable::Columns() const { return _my->columns; }

PuppetVector<short>& OmPivotTable::Layers() { return _my->layers; }

PuppetVector<short> const& OmPivotTable::Layers() const { return _my->layers; }

void OmPivotTable::EndTable() { _my->ReindexAxis(); }

// --- cells -----------------------------------------------------------------------------------------------------------

OmCellText const* OmPivotTable::Cell(std::vector<int> const& index) const { return _my->Find(index); }

OmCellText* OmPivotTable::Cell(std::vector<int> const& index) { return _my->Find(index); }

bool OmPivotTable::Cell(std::vector<int> const& index, OmCellText const* cell) {
    std::int32_t const before = _my->cellCount;
    if (before < std::numeric_limits<std::int32_t>::max()) {
        ++_my->cellCount;
    }
    if (before > _my->backendSettings.getMaxCells()) {
        Scratch(true);
        return false;
    }
    _my->Store(index, cell);
    return true;
}

bool OmPivotTable::Cell(std::vector<int> const& index, OmCellText const& cell) { return Cell(index, &cell); }

void OmPivotTable::deleteCell(std::vector<int> const& index) { _my->Remove(index); }

long OmPivotTable::getNumCells() const { return _my->cellCount; }

void OmPivotTable::Scratch(bool scratched) { _my->scratched = scratched; }

bool OmPivotTable::IsScratched() const { return _my->scratched; }

OmPivotTable::Iterator OmPivotTable::FirstCell() {
    auto data = std::make_unique<Iterator::Data>(_my->cells);
    data->levels.resize(NDimensions());
    data->Start();
    return Iterator(data.release());
}

OmPivotTable::ConstIterator OmPivotTable::FirstCell() const { return const_cast<OmPivotTable*>(this)->FirstCell(); }

// --- texts -----------------------------------------------------------------------------------------------------------

OmCellText* OmPivotTable::CornerText() { return _my->cornerText; }

OmCellText const* OmPivotTable::CornerText() const { return _my->cornerText; }

void OmPivotTable::CornerText(OmCellText const* text) { _my->ReplaceText(_my->CornerPlace(), text); }

OmCellText* OmPivotTable::Caption() { return _my->caption; }

OmCellText const* OmPivotTable::Caption() const { return _my->caption; }

void OmPivotTable::Caption(OmCellText const* text) { _my->ReplaceText(_my->CaptionPlace(), text); }

OmCellText const* OmPivotTable::GetTableTitle() const { return _my->tableTitle; }

OmCellText& OmPivotTable::TableTitle() {
    if (!OM_HARDENED(_my->tableTitle != nullptr, "_my->_tableTitle != 0", Source, __LINE__)) {
        std::abort();
    }
    return *_my->tableTitle;
}

void OmPivotTable::SetTableTitle(OmCellText const& title) { _my->ReplaceText(_my->TitlePlace(), &title); }

OmCellText* OmPivotTable::TemplateName() { return _my->templateName; }

OmCellText const* OmPivotTable::TemplateName() const { return _my->templateName; }

// --- footnotes -------------------------------------------------------------------------------------------------------

int OmPivotTable::Footnote(OmFootnote const& note, bool alwaysNew) {
    return static_cast<int>(_my->Register(note, alwaysNew));
}

OmVector<OmFootnote>& OmPivotTable::Footnotes() { return _my->footnotes; }

OmVector<OmFootnote> const& OmPivotTable::Footnotes() const { return _my->footnotes; }

void OmPivotTable::RemovedFootnotes(bool removed) { _my->removedFootnotes = removed; }

bool OmPivotTable::HasRemovedFootnotes() const { return _my->removedFootnotes; }

void OmPivotTable::setHasMarkers() { _my->hasMarkers = true; }

bool OmPivotTable::hasMarkers() const { return _my->hasMarkers; }

// --- format areas ----------------------------------------------------------------------------------------------------

void OmPivotTable::setAreaFormat(FormatArea* format) {
    if (format == nullptr) {
        return;
    }
    FormatArea* const current = getAreaFormat(format->getArea());
    if (!OM_HARDENED(current != format, "format != getAreaFormat(format->getArea())", Source, __LINE__)) {
        return;
    }
    _my->areaFormats[format->getArea()] = format;
    delete current;
}

FormatArea* OmPivotTable::getAreaFormat(FormatArea::Area area) const {
    if (area > FormatArea::Table) {
        return nullptr;
    }
    auto const stored = _my->areaFormats.find(area);
    return stored != _my->areaFormats.end() ? stored->second : nullptr;
}

// --- settings and text conversion ------------------------------------------------------------------------------------

void OmPivotTable::setBackendSettings(BackendSettings const& settings) {
    BackendSettings copy(settings);
    _my->backendSettings = std::move(copy);
    _my->fastTable = _my->backendSettings.getFastTables();
    if (_my->tracker == nullptr && _my->fastTable) {
        _my->MakeTracker();
        _my->owesTracker = true;
    }
    if (_my->owesTracker && _my->fastTable) {
        TrackTexts();
    }
    if (_my->u8Tracker == nullptr && _my->fastTable) {
        _my->MakeU8Tracker();
    }
}

BackendSettings& OmPivotTable::getBackendSettings() const { return _my->backendSettings; }

// Not owed while it is under way: a program's text that gets the tracker may give settings too.
void OmPivotTable::TrackTexts() {
    _my->owesTracker = false;
    try {
        setHelper(*Title());
        if (_my->templateName != nullptr) {
            setHelper(*_my->templateName);
        }
        if (_my->tableTitle != nullptr) {
            setHelper(*_my->tableTitle);
        }
        _my->TrackDimensions();
        _my->TrackFootnotes();
    } catch (...) {
        _my->owesTracker = true;
        throw;
    }
}

icuTracker* OmPivotTable::getICUTracker() const { return _my->tracker; }

icuTracker* OmPivotTable::getU8Tracker() const { return _my->u8Tracker; }

void OmPivotTable::setHelper(OmCellText& text) { text.Accept(_my->helper); }

// --- dumps -----------------------------------------------------------------------------------------------------------

void OmPivotTable::Print() const {
    if (!OM_HARDENED(_my->tableTitle != nullptr, "_my->_tableTitle != 0", Source, __LINE__)) {
        return;
    }
    auto const writeLine = [](char const* before, OmCellText const* text) {
        om_detail::Write(before);
        om_detail::Write(text != nullptr ? text->AsString() + '\n' : "\n");
    };
    writeLine("Starting table ", _my->tableTitle);
    for (OmDimension const* const dimension : _my->_dimensions) {
        OmDimension::Tree::WalkPreOrder(dimension->Root(), [](OmDimension::ConstNode const& node) {
            node.Value().Print(node.Depth());
            return true;
        });
    }
    om_detail::Write("Cells\n");
    for (ConstIterator cell = FirstCell(); cell.Cell() != nullptr; ++cell) {
        writeLine("", cell.Cell());
    }
    if (_my->cornerText != nullptr) {
        writeLine("  Corner Text: ", _my->cornerText);
    }
    if (_my->caption != nullptr) {
        writeLine("  Caption: ", _my->caption);
    }
    if (!_my->footnotes.empty()) {
        om_detail::Write("  Footnotes\n");
        for (OmFootnote const& footnote : _my->footnotes) {
            writeLine("      ", footnote.Text());
        }
    }
    writeLine("Done with table ", _my->tableTitle);
    std::cout.flush();
}

namespace {

void WriteEntry(void const* entry, std::size_t level, std::size_t index) {
    std::string const number = "    [" + std::to_string(index) + "] ";
    for (std::size_t i = 0; i < level; ++i) {
        om_detail::Write(number);
    }
    om_detail::Write(om_detail::AddressText(entry));
}

/// An entry below the last level: the entries of the store have no type of their own.
void PrintCell(void const* entry, std::size_t level, std::size_t index) {
    WriteEntry(entry, level, index);
    if (entry != nullptr) {
        om_detail::Write(" - " + static_cast<OmCellText const*>(entry)->AsString());
    }
    om_detail::Write("\n");
}

} // namespace

// One loop with a place for each level: tables may have more dimensions than a native stack has frames to spare.
void OmPivotTable::PrintCells() const {
    struct Standing {
        PointerVector* node;
        std::uint32_t next;
    };
    std::vector<Standing> way;
    auto const enter = [&](void* entry, std::size_t index) {
        std::size_t const level = way.size();
        if (level == NDimensions()) {
            PrintCell(entry, level, index);
            return;
        }
        WriteEntry(entry, level, index);
        om_detail::Write("\n");
        PointerVector* const node = static_cast<PointerVector*>(entry);
        if (node != nullptr && node->SpansLeaves()) {
            node->IsBox() ? PrintLeavesIn(*node, level + 1) : PrintLeavesOfKeys(*node, level + 1);
        } else if (node != nullptr) {
            way.push_back({node, 0});
        }
    };
    enter(_my->cells.Root(), 0);
    while (!way.empty()) {
        Standing& last = way.back();
        if (last.next == last.node->Length()) {
            way.pop_back();
        } else {
            std::uint32_t const index = last.next++;
            enter(last.node->Entry(index), index);
        }
    }
}

// Leaves that a node stands for have no address of their own; each shows that of its first cell's place.
void OmPivotTable::PrintLeavesIn(PointerVector& node, std::size_t level) {
    for (std::uint32_t position = 0; position < node.Length(); ++position) {
        std::uint32_t const length = node.RowAt(position).length;
        WriteEntry(length != 0 ? node.RowEntries(position) : nullptr, level, position);
        om_detail::Write("\n");
        for (std::uint32_t below = 0; below < length; ++below) {
            PrintCell(node.RowEntries(position)[below], level + 1, below);
        }
    }
}

void OmPivotTable::PrintLeavesOfKeys(PointerVector const& node, std::size_t level) {
    std::vector<std::uint64_t> order;
    std::vector<std::uint64_t> scratch;
    node.Sort(order, scratch);
    auto next = order.begin();
    for (std::uint32_t position = 0; position < node.Length(); ++position) {
        auto const isHere = [&] {
            return next != order.end() && PointerVector::PositionOf(node.KeyedIn(*next).key) == position;
        };
        WriteEntry(isHere() ? &node.KeyedIn(*next) : nullptr, level, position);
        om_detail::Write("\n");
        for (std::uint32_t below = 0; isHere(); ++below) {
            PointerVector::KeyedEntry const& found = node.KeyedIn(*next);
            bool const isFound = PointerVector::BelowOf(found.key) == below;
            PrintCell(isFound ? found.entry : nullptr, level + 1, below);
            next += isFound ? 1 : 0;
        }
    }
}
