#include "backend/tables/om/OmDisplayLayerHeading.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/LayerLayout.h"

#include <algorithm>
#include <limits>

using om_detail::DisplayRecord;

OmDisplayLayerHeading::OmDisplayLayerHeading(OmPivotTable& table, bool skipEmpty)
    : _layout(std::make_unique<Layout>(table, skipEmpty)) {}

OmDisplayLayerHeading::~OmDisplayLayerHeading() = default;

int OmDisplayLayerHeading::NDimensions() const { return static_cast<int>(_layout->layerIndexer.NDimensions()); }

int OmDisplayLayerHeading::getDimensionIndex(int i) const { return _layout->layerIndexer.DimensionAt(i); }

int OmDisplayLayerHeading::VisibleWidth(int i) const {
    if (i < 0) {
        return 0;
    }
    DisplayRecord const* const record = _layout->layerIndexer.RecordAt(static_cast<std::size_t>(i));
    return record != nullptr ? record->Width() : 0;
}

std::deque<OmDisplayLayerHeading::ConstNode*> OmDisplayLayerHeading::Nodes(int i) {
    std::deque<ConstNode*> nodes;
    DisplayRecord::Path const path = _layout->CurrentPath(i);
    if (!path) {
        return nodes;
    }
    path.AppendFromRoot(nodes);
    for (auto node = nodes.begin(); node != nodes.end(); ++node) {
        OmDimensionNode const& value = (*node)->Value();
        if (value.Hide()) {
            *node = nullptr;
        } else if (value.IsGroup() && value.HideLabels()) {
            nodes.erase(node, nodes.end());
            break;
        }
    }
    return nodes;
}

void OmDisplayLayerHeading::DimCatNodes(int i, ConstNode*& dimension, ConstNode*& category) const {
    DisplayRecord::Path const path = _layout->CurrentPath(i);
    if (path && path.Length() > 1) {
        dimension = &path.Root();
        category = &path.Node();
    }
}

void OmDisplayLayerHeading::DimAllNodes(int i, std::vector<ConstNode*>& nodes) const {
    DisplayRecord::Path const path = _layout->CurrentPath(i);
    if (path && path.Length() > 1) {
        path.AppendFromRoot(nodes);
    }
}

void OmDisplayLayerHeading::Fill(std::vector<int>& index) const {
    std::uint64_t number = 0;
    if (_layout->CurrentLayer(number)) {
        _layout->Apply(_layout->layerIndexer, number, index);
    }
}

bool OmDisplayLayerHeading::NextLayer() {
    return getLayer() < std::numeric_limits<int>::max() && SwitchLayer(getLayer() + 1);
}

bool OmDisplayLayerHeading::SwitchLayer(int n) { return _layout->SwitchLayer(n); }

void OmDisplayLayerHeading::LastLayer() {
    constexpr std::uint64_t Most = std::numeric_limits<int>::max();
    SwitchLayer(_layout->layerCount == 0 ? -1 : static_cast<int>(std::min(_layout->layerCount - 1, Most)));
}

int OmDisplayLayerHeading::getLayer() const { return _layout->currentLayer; }

std::vector<int> OmDisplayLayerHeading::getCurrentCellIndex() const { return _layout->currentCellIndex; }

int OmDisplayLayerHeading::restoreLayer() const {
    _layout->currentLayer = _layout->table->getLayerLoc();
    return _layout->currentLayer;
}

OmPivotTable& OmDisplayLayerHeading::Table() const { return *_layout->table; }

bool OmDisplayLayerHeading::SkipEmpty() const { return _layout->skipEmpty; }
