#include "backend/tables/om/detail/DisplayRecord.h"

#include <algorithm>
#include <limits>

namespace om_detail {

DisplayRecord::DisplayRecord(OmDimension const& dimension) {
    std::vector<std::size_t> path; // entries from the root to the node before
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](ConstNode const& node) {
        path.resize(node.Depth());
        _entries.push_back(Below(path.empty() ? None : path.back(), node));
        path.push_back(_entries.size() - 1);
        OmDimensionNode const& value = node.Value();
        if (value.IsGroup()) {
            return true;
        }
        _leaves.push_back(path.back());
        _categories.push_back(static_cast<int>(static_cast<std::uint32_t>(value.Subscript())));
        _width = std::max(_width, static_cast<int>(_entries.back().labels));
        return false;
    });
    IndexCategories();
}

// A group with hidden labels drops itself and what lies below it, so the count stands still from there.
DisplayRecord::Entry DisplayRecord::Below(std::size_t above, ConstNode const& node) const {
    OmDimensionNode const& value = node.Value();
    bool const first = above == None;
    unsigned int const labels = first ? 0 : _entries[above].labels;
    bool const ends = (!first && _entries[above].ends) || (value.IsGroup() && value.HideLabels());
    return {node, above, labels + (ends || value.Hide() ? 0 : 1), ends};
}

void DisplayRecord::IndexCategories() {
    std::size_t const denseBound = 4 * _categories.size() + 64;
    for (std::size_t position = 0; position < _categories.size(); ++position) {
        std::uint32_t const category = static_cast<std::uint32_t>(_categories[position]);
        if (category >= denseBound) {
            _farCategories.emplace_back(category, static_cast<std::int32_t>(position));
            continue;
        }
        if (category >= _categoryToPosition.size()) {
            _categoryToPosition.resize(category + std::size_t{1}, -1);
        }
        _categoryToPosition[category] = static_cast<std::int32_t>(position);
    }
    std::sort(_farCategories.begin(), _farCategories.end(), [](FarCategory const& a, FarCategory const& b) {
        return a.first != b.first ? a.first < b.first : a.second > b.second;
    });
}

std::int64_t DisplayRecord::FarPositionOf(int category) const {
    FarCategory const probe(static_cast<std::uint32_t>(category), std::numeric_limits<std::int32_t>::min());
    auto const far = std::lower_bound(_farCategories.begin(), _farCategories.end(), probe,
                                      [](FarCategory const& a, FarCategory const& b) { return a.first < b.first; });
    return far != _farCategories.end() && far->first == probe.first ? far->second : -1;
}

} // namespace om_detail
