#include "backend/tables/om/detail/HeadingLayout.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/LayerLayout.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace om_detail {

HeadingLayout::HeadingLayout(OmDisplayLayerHeading& layerHeading, PuppetVector<short> const& axis,
                             PuppetVector<short> const& other, bool skipsEmpty, bool namesInCorner)
    : _layers(layerHeading._layout.get()), _skipEmpty(skipsEmpty), _namesInCorner(namesInCorner),
      _indexer(Reversed(axis), _layers->table->SizeVector()) {
    _count = _indexer.Count();
    if (_skipEmpty) {
        AxisIndexer const across(Reversed(other), _layers->table->SizeVector());
        std::vector<std::uint64_t> const positions =
            _layers->NonEmpty(_indexer, across, _layers->currentCellIndex, &_layers->layerIndexer);
        _nonEmpty.assign(positions.begin(), positions.end());
        _count = _nonEmpty.size();
    }
    MeasureHeights();
    if (_namesInCorner) {
        GiveNamesToCorner();
    }
    _depth = static_cast<int>(std::accumulate(_heights.begin(), _heights.end(), 0U));
}

// --- heights --------------------------------------------------------------------------------------------------------

void HeadingLayout::MeasureHeights() {
    for (std::size_t i = 0; i < _indexer.NDimensions(); ++i) {
        DisplayRecord const* const record = _indexer.RecordAt(i, _layers->records);
        if (record == nullptr) {
            continue;
        }
        unsigned int const width = static_cast<unsigned int>(record->Width());
        unsigned int height = _nonEmpty.empty() ? width : 0;
        Digits digits;
        for (std::size_t p = 0; p < _nonEmpty.size() && height < width; ++p) {
            if (_indexer.DigitsOf(_nonEmpty[p], digits) && digits[i] < record->Shown()) {
                height = std::max(height, record->DepthAt(digits[i]));
            }
        }
        _heights.push_back(height);
    }
}

void HeadingLayout::GiveNamesToCorner() {
    std::size_t next = 0;
    for (std::size_t i = 0; i < _indexer.NDimensions(); ++i) {
        DisplayRecord* const record = _indexer.RecordAt(i, _layers->records);
        if (record == nullptr) {
            continue;
        }
        unsigned int& height = _heights[next++];
        if (record->Shown() > 0 && height != 0 && !record->PathAt(0)->back().Value().Hide()) {
            --height;
        }
    }
}

int HeadingLayout::HeightAt(int i) const {
    return i >= 0 && static_cast<std::size_t>(i) < _heights.size()
               ? static_cast<int>(_heights[static_cast<std::size_t>(i)])
               : 0;
}

// --- positions ------------------------------------------------------------------------------------------------------

int HeadingLayout::Positions() const {
    constexpr std::uint64_t Most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(_count, Most));
}

std::optional<std::uint64_t> HeadingLayout::LinearOf(int position) const {
    if (!_skipEmpty) {
        return static_cast<std::uint64_t>(position);
    }
    if (position < 0 || static_cast<std::size_t>(position) >= _nonEmpty.size()) {
        return std::nullopt;
    }
    return _nonEmpty[static_cast<std::size_t>(position)];
}

std::uint64_t HeadingLayout::LinearOrItself(int position) const {
    bool const listed = position >= 0 && static_cast<std::size_t>(position) < _nonEmpty.size();
    return listed ? _nonEmpty[static_cast<std::size_t>(position)] : static_cast<std::uint64_t>(position);
}

std::vector<unsigned long long> const& HeadingLayout::NonEmpty() const {
    if (!_skipEmpty && _nonEmpty.empty()) {
        _nonEmpty.resize(static_cast<std::size_t>(_count));
        std::iota(_nonEmpty.begin(), _nonEmpty.end(), 0ULL);
    }
    return _nonEmpty;
}

std::vector<HeadingLayout::Path*> HeadingLayout::PathsAt(std::optional<std::uint64_t> linear) const {
    std::vector<Path*> paths(_indexer.NDimensions(), nullptr);
    Digits digits;
    if (!linear || !_indexer.DigitsOf(*linear, digits)) {
        return paths;
    }
    for (std::size_t i = 0; i < paths.size(); ++i) {
        DisplayRecord* const record = _indexer.RecordAt(i, _layers->records);
        if (record != nullptr) {
            paths[i] = record->PathAt(digits[i]);
        }
    }
    return paths;
}

// --- cells ----------------------------------------------------------------------------------------------------------

HeadingLayout::Nodes HeadingLayout::Labels(Path& path) const {
    Nodes labels;
    for (auto node = path.rbegin(); node != path.rend(); ++node) {
        OmDimensionNode const& value = node->Value();
        // A group that hides its labels ends the list even when it is hidden itself.
        if (value.IsGroup() && value.HideLabels()) {
            break;
        }
        if (!value.Hide() && !(_namesInCorner && node->Depth() == 0)) {
            labels.push_back(&*node);
        }
    }
    return labels;
}

HeadingLayout::Nodes HeadingLayout::Cells(int position) const {
    Nodes cells;
    std::vector<Path*> const paths = PathsAt(LinearOf(position));
    std::size_t next = 0;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (_indexer.RecordAt(i, _layers->records) == nullptr) {
            continue;
        }
        Nodes labels = paths[i] != nullptr ? Labels(*paths[i]) : Nodes();
        labels.resize(_heights[next++], nullptr);
        cells.insert(cells.end(), labels.begin(), labels.end());
    }
    return cells;
}

HeadingLayout::Nodes HeadingLayout::Line(int line) const {
    Nodes nodes;
    if (line < 0 || line >= _depth) {
        return nodes;
    }
    for (int position = 0; position < Positions(); ++position) {
        nodes.push_back(Cells(position)[static_cast<std::size_t>(line)]);
    }
    return nodes;
}

HeadingLayout::Nodes HeadingLayout::Categories(int position) const {
    Nodes categories;
    for (Path* const path : PathsAt(LinearOf(position))) {
        categories.push_back(path != nullptr ? &path->front() : nullptr);
    }
    return categories;
}

void HeadingLayout::DimCatNodes(int position, std::vector<ConstNode*>& dimensions,
                                std::vector<ConstNode*>& categories) const {
    for (Path* const path : PathsAt(LinearOrItself(position))) {
        if (path != nullptr && path->size() > 1) {
            dimensions.push_back(&path->back());
            categories.push_back(&path->front());
        }
    }
}

void HeadingLayout::DimAllNodes(int position, std::vector<ConstNode*>& nodes) const {
    for (Path* const path : PathsAt(LinearOrItself(position))) {
        if (path != nullptr && path->size() > 1) {
            std::for_each(path->rbegin(), path->rend(), [&](ConstNode& node) { nodes.push_back(&node); });
        }
    }
}

void HeadingLayout::Fill(std::vector<int>& index, int position) const {
    std::optional<std::uint64_t> const linear = LinearOf(position);
    if (linear) {
        _layers->Apply(_indexer, *linear, index);
    } else {
        index.resize(_layers->records.size(), 0);
    }
}

OmPivotTable& HeadingLayout::Table() const { return *_layers->table; }

// --- corner ---------------------------------------------------------------------------------------------------------

void HeadingLayout::MakeCorner() {
    bool placed = false;
    if (_namesInCorner && _indexer.NDimensions() > 0) {
        std::vector<Path*> const paths = PathsAt(0);
        std::size_t next = 0;
        for (std::size_t i = 0; i < paths.size(); ++i) {
            if (_indexer.RecordAt(i, _layers->records) == nullptr) {
                continue;
            }
            unsigned int const height = _heights[next++];
            if (paths[i] == nullptr) {
                continue;
            }
            OmDimensionNode const& root = paths[i]->back().Value();
            OmCellText const* const name = root.Hide() ? nullptr : root.Text();
            for (unsigned int line = 0; line < height; ++line) {
                _corner.push_back(line == 0 ? name : nullptr);
            }
            placed = placed || (height > 0 && name != nullptr);
        }
    }
    if (_count != 0 && !placed) {
        _corner.resize(static_cast<std::size_t>(_depth), nullptr);
        if (_depth != 0) {
            OmPivotTable const& table = *_layers->table;
            _corner[0] = table.CornerText();
        }
    }
}

} // namespace om_detail
