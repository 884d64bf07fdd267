#include "backend/tables/om/detail/LayerLayout.h"

#include "backend/tables/om/OmDimension.h"

#include <algorithm>
#include <limits>
#include <new>

using om_detail::AxisIndexer;
using om_detail::Digits;
using om_detail::DisplayRecord;
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
        sparse = IsSparse();
        if (!skipEmpty) {
            layerCount = layerIndexer.Count();
            return;
        }
        PuppetVector<short> other = table->Rows();
        other.insert(other.begin(), table->Columns().begin(), table->Columns().end());
        AxisIndexer const body(other, table->SizeVector());
        nonEmptyLayers = NonEmpty(layerIndexer, body, currentCellIndex, nullptr);
        layerCount = nonEmptyLayers.size();
    } catch (...) {
        DestroyRecords();
        throw;
    }
}

OmDisplayLayerHeading::Layout::~Layout() {
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

bool OmDisplayLayerHeading::Layout::IsSparse() const {
    constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t possible = 1;
    for (int const size : table->SizeVector()) {
        std::uint64_t const factor = static_cast<std::uint64_t>(std::max(0, size));
        possible = factor != 0 && possible > Most / factor ? Most : possible * factor;
    }
    std::uint64_t const threshold = (possible > Most - 50 ? Most : possible + 50) / 100;
    std::uint64_t present = 0;
    OmPivotTable const& readTable = *table;
    for (auto cell = readTable.FirstCell(); present < threshold && cell.Cell() != nullptr; ++cell) {
        ++present;
    }
    return present < threshold;
}

// --- positions that hold a cell -------------------------------------------------------------------------------------

std::vector<std::uint64_t> OmDisplayLayerHeading::Layout::NonEmpty(AxisIndexer const& axis, AxisIndexer const& other,
                                                                   std::vector<int> const& start,
                                                                   AxisIndexer const* layer) const {
    return sparse ? ProjectCells(axis, start, layer) : ProbePositions(axis, other, start);
}

bool OmDisplayLayerHeading::Layout::AnyCell(AxisIndexer const& other, std::vector<int>& index) const {
    OmPivotTable const& readTable = *table;
    Digits digits(other.NDimensions(), 0);
    other.Scatter(digits, index);
    // The current layer may be that of a dissolved leaf, whose subscript a look-up refuses.
    if (std::any_of(index.begin(), index.end(), [](int subscript) { return subscript < 0; })) {
        return false;
    }
    do {
        other.Scatter(digits, index);
        if (readTable.Cell(index) != nullptr) {
            return true;
        }
    } while (other.Next(digits));
    return false;
}

std::vector<std::uint64_t> OmDisplayLayerHeading::Layout::ProbePositions(AxisIndexer const& axis,
                                                                         AxisIndexer const& other,
                                                                         std::vector<int> const& start) const {
    std::vector<std::uint64_t> positions;
    if (axis.Count() == 0 || other.Count() == 0) {
        return positions;
    }
    std::vector<int> index = start;
    Digits digits(axis.NDimensions(), 0);
    std::uint64_t position = 0;
    do {
        if (axis.ApplyAll(digits, records, index) && AnyCell(other, index)) {
            positions.push_back(position);
        }
        ++position;
    } while (axis.Next(digits));
    return positions;
}

std::vector<std::uint64_t> OmDisplayLayerHeading::Layout::ProjectCells(AxisIndexer const& axis,
                                                                       std::vector<int> const& start,
                                                                       AxisIndexer const* layer) const {
    std::vector<std::uint64_t> positions;
    OmPivotTable const& readTable = *table;
    for (auto cell = readTable.FirstCell(); cell.Cell() != nullptr; ++cell) {
        std::vector<int> const index = cell.Index();
        std::uint64_t position = 0;
        if ((layer == nullptr || layer->SameSubscripts(index, start)) && axis.PositionOf(index, records, position)) {
            positions.push_back(position);
        }
    }
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    return positions;
}

// --- current layer --------------------------------------------------------------------------------------------------

void OmDisplayLayerHeading::Layout::Apply(AxisIndexer const& axis, std::uint64_t position,
                                          std::vector<int>& index) const {
    index.resize(records.size(), 0);
    Digits digits;
    if (axis.DigitsOf(position, digits)) {
        axis.Apply(digits, records, index);
    }
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
    std::uint64_t number = 0;
    if (n < 0 || static_cast<std::uint64_t>(n) >= layerCount) {
        return false;
    }
    currentLayer = n;
    if (CurrentLayer(number)) {
        Apply(layerIndexer, number, currentCellIndex);
    }
    return true;
}

DisplayRecord::Path* OmDisplayLayerHeading::Layout::CurrentPath(int i) const {
    std::uint64_t number = 0;
    Digits digits;
    if (i < 0 || static_cast<std::size_t>(i) >= layerIndexer.NDimensions() || !CurrentLayer(number) ||
        !layerIndexer.DigitsOf(number, digits)) {
        return nullptr;
    }
    DisplayRecord* const record = layerIndexer.RecordAt(static_cast<std::size_t>(i), records);
    return record != nullptr ? record->PathAt(digits[static_cast<std::size_t>(i)]) : nullptr;
}
