#include "backend/tables/om/detail/HeadingLayout.h"

#include "backend/tables/Assert.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/LabelTrail.h"
#include "backend/tables/om/detail/LayerLayout.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace om_detail {

namespace {

constexpr char Source[] = "backend/tables/om/detail/HeadingLayout";

} // namespace

HeadingLayout::HeadingLayout(OmDisplayLayerHeading& layerHeading, PuppetVector<short> const& axis,
                             PuppetVector<short> const& other, bool skipsEmpty, bool namesInCorner)
    : _layers(layerHeading._layout.get()), _table(_layers->table), _skipEmpty(skipsEmpty),
      _namesInCorner(namesInCorner), _indexer(Reversed(axis), _layers->Sizes()) {
    _indexer.Bind(_layers->records);
    _count = _indexer.Count();
    if (_skipEmpty) {
        AxisIndexer across(Reversed(other), _layers->Sizes());
        across.Bind(_layers->records);
        _nonEmpty = _layers->NonEmpty(_indexer, across, _layers->currentCellIndex, &_layers->layerIndexer);
        _count = _nonEmpty.size();
    }
    constexpr std::uint64_t Most = std::numeric_limits<int>::max();
    _positions = static_cast<int>(std::min(_count, Most));
    ListCategories();
    MeasureHeights();
    if (_namesInCorner) {
        GiveNamesToCorner();
    }
    _depth = static_cast<int>(std::accumulate(_heights.begin(), _heights.end(), 0U));
    _next = _layers->headings;
    if (_next != nullptr) {
        _next->_previous = this;
    }
    _layers->headings = this;
}

HeadingLayout::~HeadingLayout() {
    if (_layers == nullptr) {
        return;
    }
    (_previous != nullptr ? _previous->_next : _layers->headings) = _next;
    if (_next != nullptr) {
        _next->_previous = _previous;
    }
}

// Without its list of categories, a position is filled by the layout, which checks.
HeadingLayout* HeadingLayout::Abandon() {
    _layers = nullptr;
    _listed = 0;
    return _next;
}

bool HeadingLayout::HasLayers() const { return OM_HARDENED(_layers != nullptr, "_layers != 0", Source, __LINE__); }

// --- heights --------------------------------------------------------------------------------------------------------

void HeadingLayout::MeasureHeights() {
    std::vector<Measured> measured;
    for (std::size_t i = 0; i < _indexer.NDimensions(); ++i) {
        DisplayRecord const* const record = _indexer.RecordAt(i);
        if (record != nullptr) {
            unsigned int const width = static_cast<unsigned int>(record->Width());
            _heights.push_back(_nonEmpty.empty() ? width : 0);
            measured.push_back({record, i, _heights.size() - 1, width});
        }
    }
    Digits digits(_indexer.NDimensions());
    for (std::size_t p = 0; p < _nonEmpty.size() && !measured.empty(); ++p) {
        if (_indexer.DigitsOf(_nonEmpty[p], digits)) {
            Measure(digits, measured);
        }
    }
}

// Dimensions that have their whole width are measured no further.
void HeadingLayout::Measure(Digits const& digits, std::vector<Measured>& measured) {
    measured.erase(std::remove_if(measured.begin(), measured.end(),
                                  [&](Measured const& one) {
                                      unsigned int& height = _heights[one.height];
                                      if (digits[one.entry] < one.record->Shown()) {
                                          height = std::max(height, one.record->DepthAt(digits[one.entry]));
                                      }
                                      return height == one.width;
                                  }),
                   measured.end());
}

// A height is that of a shown category, so there is a first one.
void HeadingLayout::GiveNamesToCorner() {
    std::size_t next = 0;
    for (std::size_t i = 0; i < _indexer.NDimensions(); ++i) {
        DisplayRecord* const record = _indexer.RecordAt(i);
        if (record == nullptr) {
            continue;
        }
        unsigned int& height = _heights[next++];
        if (height != 0 && !record->PathAt(0).Root().Value().Hide()) {
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

template <typename Visit>
void HeadingLayout::EachPath(std::optional<std::uint64_t> linear, Visit&& visit) const {
    Digits digits(_indexer.NDimensions());
    bool const hasDigits = HasLayers() && linear && _indexer.DigitsOf(*linear, digits);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        DisplayRecord* const record = _indexer.RecordAt(i);
        visit(i, hasDigits && record != nullptr ? record->PathAt(digits[i]) : Path());
    }
}

// --- cells ----------------------------------------------------------------------------------------------------------

bool HeadingLayout::Shows(ConstNode const& node) const {
    return !node.Value().Hide() && !(_namesInCorner && node.Depth() == 0);
}

// A group that hides its labels ends the list even when it is hidden itself.
bool HeadingLayout::Ends(ConstNode const& node) { return node.Value().IsGroup() && node.Value().HideLabels(); }

// A path is linked upwards alone, so the labels are counted first and told on a second way up.
template <typename Put>
void HeadingLayout::EachLabel(Path leaf, Put&& put) const {
    std::size_t count = 0;
    Path innermost = leaf;
    for (Path step = leaf; step; step = step.Above()) {
        if (Ends(step.Node())) {
            count = 0;
            innermost = step.Above();
        } else if (Shows(step.Node())) {
            ++count;
        }
    }
    for (Path step = innermost; count > 0; step = step.Above()) {
        if (Shows(step.Node())) {
            put(--count, &step.Node());
        }
    }
}

HeadingLayout::Nodes HeadingLayout::Cells(int position) const {
    Nodes cells(static_cast<std::size_t>(_depth), nullptr);
    std::size_t first = 0;
    std::size_t next = 0;
    EachPath(LinearOf(position), [&](std::size_t i, Path path) {
        if (_indexer.RecordAt(i) == nullptr) {
            return;
        }
        unsigned int const height = _heights[next++];
        EachLabel(path, [&](std::size_t line, ConstNode* node) {
            if (line < height) {
                cells[first + line] = node;
            }
        });
        first += height;
    });
    return cells;
}

// Neighbouring positions share the digit that the line belongs to, and with it the entry.
HeadingLayout::Nodes HeadingLayout::Line(int line) const {
    Nodes nodes;
    if (!HasLayers() || line < 0 || line >= _depth) {
        return nodes;
    }
    std::size_t wanted = static_cast<std::size_t>(line);
    std::size_t i = 0;
    for (std::size_t next = 0;; ++i) {
        if (_indexer.RecordAt(i) != nullptr) {
            if (wanted < _heights[next]) {
                break;
            }
            wanted -= _heights[next++];
        }
    }
    std::uint64_t const stride = _indexer.Stride(i);
    std::uint64_t run = 0;
    Digits digits(_indexer.NDimensions());
    auto const shows = [this](ConstNode const& node) { return Shows(node); };
    LabelTrail<Path, bool (*)(ConstNode const&), decltype(shows)> trail(Ends, shows);
    for (int position = 0; position < Positions(); ++position) {
        std::uint64_t const linear = *LinearOf(position);
        if (position == 0 || linear / stride != run) {
            run = linear / stride;
            trail.Follow(_indexer.DigitsOf(linear, digits) ? _indexer.RecordAt(i)->PathAt(digits[i]) : Path());
        }
        nodes.push_back(trail.At(wanted));
    }
    return nodes;
}

HeadingLayout::Nodes HeadingLayout::Categories(int position) const {
    Nodes categories;
    EachPath(LinearOf(position), [&](std::size_t, Path path) { categories.push_back(path ? &path.Node() : nullptr); });
    return categories;
}

void HeadingLayout::DimCatNodes(int position, std::vector<ConstNode*>& dimensions,
                                std::vector<ConstNode*>& categories) const {
    EachPath(LinearOrItself(position), [&](std::size_t, Path path) {
        if (path && path.Length() > 1) {
            dimensions.push_back(&path.Root());
            categories.push_back(&path.Node());
        }
    });
}

void HeadingLayout::DimAllNodes(int position, std::vector<ConstNode*>& nodes) const {
    EachPath(LinearOrItself(position), [&](std::size_t, Path path) {
        if (path && path.Length() > 1) {
            path.AppendFromRoot(nodes);
        }
    });
}

void HeadingLayout::ListCategories() {
    _dimensions = _layers->records.size();
    DisplayRecord const* const record = _indexer.RecordAt(0);
    if (record == nullptr || _indexer.NDimensions() != 1) {
        return;
    }
    _dimension = static_cast<std::size_t>(_indexer.DimensionAt(0));
    std::vector<int> const* list = &record->Categories();
    if (_skipEmpty) {
        _shownCategories.resize(_nonEmpty.size());
        std::transform(_nonEmpty.begin(), _nonEmpty.end(), _shownCategories.begin(),
                       [record](auto position) { return record->CategoryAt(static_cast<std::size_t>(position)); });
        list = &_shownCategories;
    }
    _categories = list->data();
    _listed = list->size();
}

void HeadingLayout::FillByDigits(std::vector<int>& index, int position) const {
    if (!HasLayers()) {
        return;
    }
    index.resize(_dimensions, 0);
    std::optional<std::uint64_t> const linear = LinearOf(position);
    if (linear) {
        _indexer.Apply(*linear, index);
    }
}

// --- corner ---------------------------------------------------------------------------------------------------------

void HeadingLayout::MakeCorner() {
    bool placed = false;
    if (_namesInCorner) {
        std::size_t next = 0;
        EachPath(0, [&](std::size_t i, Path path) {
            if (_indexer.RecordAt(i) == nullptr) {
                return;
            }
            unsigned int const height = _heights[next++];
            if (height == 0) {
                return;
            }
            OmDimensionNode const& root = path.Root().Value();
            OmCellText const* const name = root.Hide() ? nullptr : root.Text();
            _corner.push_back(name);
            _corner.resize(_corner.size() + height - 1, nullptr);
            placed = placed || name != nullptr;
        });
    }
    if (_count != 0 && !placed) {
        _corner.resize(static_cast<std::size_t>(_depth), nullptr);
        if (_depth != 0) {
            OmPivotTable const& table = *_table;
            _corner[0] = table.CornerText();
        }
    }
}

} // namespace om_detail
