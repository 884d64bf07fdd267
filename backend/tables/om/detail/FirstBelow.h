#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_FIRSTBELOW_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_FIRSTBELOW_H

#include "backend/tables/om/VectorTree.h"

#include <cstddef>
#include <vector>

namespace om_detail {

/// Calls `isIt(T const&)` for the values below `top` in pre-order, a node before its children, until it says yes; gives
/// whether it did. No node behind the one that was found is looked at. O(nodes up to there), at any depth.
template <typename Node, typename IsIt>
bool FirstBelow(Node const& top, IsIt&& isIt) {
    struct Level {
        Node parent;
        std::size_t next;
    };
    std::vector<Level> path{{top, 0}};
    while (!path.empty()) {
        Level& level = path.back();
        if (level.next == level.parent.ChildCount()) {
            path.pop_back();
            continue;
        }
        Node const child = level.parent.Child(level.next++);
        if (isIt(child.Value())) {
            return true;
        }
        path.push_back({child, 0});
    }
    return false;
}

} // namespace om_detail

#endif
