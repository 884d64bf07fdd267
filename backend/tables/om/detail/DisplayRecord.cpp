#include "backend/tables/om/detail/DisplayRecord.h"

#include <algorithm>
#include <utility>

namespace om_detail {

namespace {

/// Heading cells that a path fills: one for each node that is not hidden, where a group with hidden labels drops what
/// lies below it and itself.
unsigned int LabelDepth(DisplayRecord::Path const& path) {
    unsigned int depth = 0;
    for (DisplayRecord::ConstNode const& node : path) {
        OmDimensionNode const& value = node.Value();
        if (!value.Hide()) {
            ++depth;
        }
        if (value.IsGroup() && value.HideLabels()) {
            depth = 0;
        }
    }
    return depth;
}

} // namespace

DisplayRecord::DisplayRecord(OmDimension const& dimension) {
    Path fromRoot;
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](ConstNode const& node) {
        fromRoot.resize(node.Depth());
        fromRoot.push_back(node);
        if (node.Value().IsGroup()) {
            return true;
        }
        Append(Path(fromRoot.rbegin(), fromRoot.rend()));
        return false;
    });
    IndexCategories();
}

void DisplayRecord::Append(Path path) {
    unsigned int const depth = LabelDepth(path);
    _positionToCategory.push_back(static_cast<std::uint32_t>(path.front().Value().Subscript()));
    _leafDepths.push_back(depth);
    _width = std::max(_width, static_cast<int>(depth));
    _shownPaths.push_back(std::move(path));
}

void DisplayRecord::IndexCategories() {
    std::size_t const denseBound = 4 * _positionToCategory.size() + 64;
    for (std::size_t position = 0; position < _positionToCategory.size(); ++position) {
        std::uint32_t const category = _positionToCategory[position];
        if (category >= denseBound) {
            _farCategories[category] = static_cast<std::int32_t>(position);
            continue;
        }
        if (category >= _categoryToPosition.size()) {
            _categoryToPosition.resize(category + std::size_t{1}, -1);
        }
        _categoryToPosition[category] = static_cast<std::int32_t>(position);
    }
}

std::int64_t DisplayRecord::PositionOf(std::uint32_t category) const {
    if (category < _categoryToPosition.size()) {
        return _categoryToPosition[category];
    }
    auto const far = _farCategories.find(category);
    return far != _farCategories.end() ? far->second : -1;
}

} // namespace om_detail
