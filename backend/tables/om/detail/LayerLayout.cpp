#include "backend/tables/om/detail/LayerLayout.h"

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/detail/CellPositions.h"
#include "backend/tables/om/detail/CellProjection.h"
#include "backend/tables/om/detail/HeadingLayout.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

using om_detail::AxisIndexer;
using om_detail::CellPositions;
using om_detail::Digits;
using om_detail::DisplayRecord;
using om_detail::PositionSet;
using om_detail::Reversed;

PuppetVector<short> om_detail::Reversed(PuppetVector<short> const& axis) {
    PuppetVector<short> reversed = axis;
    std::reverse(reversed.begin(), reversed.end());
    return reversed;
}

OmDisplayLayerHeading::Layout::Layout(OmPivotTable& itsTable, bool itSkipsEmpty)
    : OmMemoryRegion(false), table(&itsTable), skipEmpty(itSkipsEmpty), currentCellIndex(itsTable.NDimensions(), 0),
      layerIndexer(Reversed(itsTable.Layers()), itsTable.SizeVector()) {
    try {
        MakeRecords();
        layerIndexer.Bind(records);
        sparse = IsSparse();
        if (!skipEmpty) {
            layerCount = layerIndexer.Count();
            return;
        }
        PuppetVector<short> other = table->Rows();
        other.insert(other.begin(), table->Columns().begin(), table->Columns().end());
        AxisIndexer body(other, Sizes());
        body.Bind(records);
        nonEmptyLayers = NonEmpty(layerIndexer, body, currentCellIndex, nullptr);
        layerCount = nonEmptyLayers.size();
    } catch (...) {
        DestroyRecords();
        throw;
    }
}

OmDisplayLayerHeading::Layout::~Layout() {
    while (headings != nullptr) {
        headings = headings->Abandon();
    }
    DestroyRecords();
    WorkingRelease(false);
}

void OmDisplayLayerHeading::Layout::MakeRecords() {
    records.reserve(table->NDimensions());
    for (std::size_t k = 0; k < table->NDimensions(); ++k) {
        OmPivotTable const& readTable = *table;
        void* const place = Allocate(sizeof(DisplayRecord));
        try {
            records.push_back(::new (place) DisplayRecord(readTable.Dimension(static_cast<int>(k))));
        } catch (...) {
            Release(place);
            throw;
        }
    }
}

void OmDisplayLayerHeading::Layout::DestroyRecords() {
    for (DisplayRecord* const record : records) {
        record->~DisplayRecord();
        Release(record);
    }
    records.clear();
}

std::vector<int> OmDisplayLayerHeading::Layout::Sizes() const {
    std::vector<int> sizes = table->SizeVector();
    sizes.resize(records.size());
    return sizes;
}

bool OmDisplayLayerHeading::Layout::IsSparse() const {
    constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t possible = 1;
    for (int const size : table->SizeVector()) {
        possible = om_detail::Product(possible, static_cast<std::uint64_t>(std::max(0, size)));
    }
    std::uint64_t const threshold = (possible > Most - 50 ? Most : possible + 50) / 100;
    return table->PresentCells() < threshold;
}

// --- positions that hold a cell -------------------------------------------------------------------------------------

OmDisplayLayerHeading::Layout::Positions OmDisplayLayerHeading::Layout::NonEmpty(AxisIndexer const& axis,
                                                                                 AxisIndexer const& other,
                                                                                 std::vector<int> const& start,
                                                                                 AxisIndexer const* layer) const {
    std::vector<int> whole = start; // with the dimensions that the table got since, on which no category is shown
    whole.resize(table->NDimensions(), 0);
    return sparse ? ProjectCells(axis, whole, layer) : ProbePositions(axis, other, std::move(whole));
}

bool OmDisplayLayerHeading::Layout::AnyCell(AxisIndexer const& other, std::vector<int>& index,
                                            std::uint64_t& stepsLeft) const {
    OmPivotTable const& readTable = *table;
    Digits digits(other.NDimensions());
    bool more = true;
    while (more && stepsLeft > 0) {
        other.Scatter(digits, index);
        if (readTable.Cell(index) != nullptr) {
            return true;
        }
        --stepsLeft;
        more = other.Next(digits);
    }
    return false;
}

OmDisplayLayerHeading::Layout::Positions OmDisplayLayerHeading::Layout::FromCells(AxisIndexer const& axis,
                                                                                  AxisIndexer const& other,
                                                                                  std::vector<int> const& start) const {
    std::vector<int> wanted = start;
    axis.Set(-1, wanted);
    other.Set(-1, wanted);
    CellPositions found(axis, other);
    OmPivotTable const& readTable = *table;
    readTable.VisitPrefixes(std::min(axis.Lowest(wanted.size()), other.Lowest(wanted.size())), wanted,
                            [&](int const* cell) {
                                if (other.Holds(cell)) {
                                    found.Add(cell);
                                }
                                return true;
                            });
    return found.Take();
}

// A full position costs one look-up, an empty one all of the other axis, and one without a shown category a step. Once
// there were as many steps as there are cells, one walk over the cells answers for all positions. (Where twenty columns
// of a thousand are full and a thousand rows are probed, this takes 0.34 ms and probing to the end 7.6 ms.) It is the
// only bound there is where a dimension without categories makes a table with few cells a dense one.
OmDisplayLayerHeading::Layout::Positions OmDisplayLayerHeading::Layout::ProbePositions(AxisIndexer const& axis,
                                                                                       AxisIndexer const& other,
                                                                                       std::vector<int> index) const {
    axis.Set(0, index);
    other.Set(0, index);
    // The current layer may be that of a dissolved leaf, whose subscript a look-up refuses.
    bool const canHoldCells = std::all_of(index.begin(), index.end(), [](int subscript) { return subscript >= 0; });
    if (axis.CountOrMost() == 0 || other.CountOrMost() == 0 || !canHoldCells) {
        return {};
    }
    std::vector<int> const start = index;
    std::uint64_t stepsLeft = table->PresentCells();
    Positions positions;
    Digits digits(axis.NDimensions());
    std::uint64_t position = 0;
    do {
        if (stepsLeft == 0) {
            return FromCells(axis, other, start);
        }
        if (!axis.ApplyAll(digits, index)) {
            --stepsLeft;
        } else if (AnyCell(other, index, stepsLeft)) {
            positions.push_back(position);
        }
        ++position;
    } while (stepsLeft == 0 || axis.Next(digits));
    return positions;
}

// A prefix of the store that reaches down to the axis's lowest dimension tells the position; what lies below it counts
// only as present or not.
OmDisplayLayerHeading::Layout::Positions OmDisplayLayerHeading::Layout::ProjectCells(AxisIndexer const& axis,
                                                                                     std::vector<int> const& start,
                                                                                     AxisIndexer const* layer) const {
    std::vector<int> wanted(start.size(), -1);
    if (layer != nullptr && !layer->Restrict(start, wanted)) {
        return {};
    }
    PositionSet found(axis.CountOrMost());
    OmPivotTable const& readTable = *table;
    readTable.VisitPrefixes(axis.Lowest(wanted.size()), wanted, [&](int const* cell) {
        std::uint64_t position = 0;
        if (axis.PositionOf(cell, position)) {
            found.Add(position);
        }
        return true;
    });
    return found.Take();
}

// --- current layer --------------------------------------------------------------------------------------------------

void OmDisplayLayerHeading::Layout::Apply(AxisIndexer const& axis, std::uint64_t position,
                                          std::vector<int>& index) const {
    index.resize(records.size(), 0);
    axis.Apply(position, index);
}

bool OmDisplayLayerHeading::Layout::CurrentLayer(std::uint64_t& number) const {
    if (currentLayer < 0) {
        return false;
    }
    number = static_cast<std::uint64_t>(currentLayer);
    if (!skipEmpty) {
        return true;
    }
    if (number >= nonEmptyLayers.size()) {
        return false;
    }
    number = nonEmptyLayers[static_cast<std::size_t>(number)];
    return true;
}

bool OmDisplayLayerHeading::Layout::SwitchLayer(int n) {
    if (n == -1) {
        currentLayer = -1;
        return false;
    }
    if (n < 0 || static_cast<std::uint64_t>(n) >= layerCount) {
        return false;
    }
    currentLayer = n;
    std::size_t const place = static_cast<std::size_t>(n);
    Apply(layerIndexer, skipEmpty ? nonEmptyLayers[place] : place, currentCellIndex);
    return true;
}

DisplayRecord::Path OmDisplayLayerHeading::Layout::CurrentPath(int i) const {
    std::uint64_t number = 0;
    Digits digits(layerIndexer.NDimensions());
    if (i < 0 || !CurrentLayer(number) || !layerIndexer.DigitsOf(number, digits)) {
        return {};
    }
    std::size_t const entry = static_cast<std::size_t>(i);
    DisplayRecord* const record = layerIndexer.RecordAt(entry);
    return record != nullptr ? record->PathAt(digits[entry]) : DisplayRecord::Path();
}
