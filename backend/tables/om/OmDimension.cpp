#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OMSException.h"
#include "omcell/OmCellText.h"

#include <algorithm>
#include <cstdint>

namespace {

icuTracker* TrackerOf(OmDimensionNode const& node) { return node.Text() != nullptr ? node.Text()->Tracker() : nullptr; }

void SetTracker(OmDimensionNode& node, icuTracker* tracker) {
    if (node.Text() != nullptr) {
        node.Text()->SetTracker(tracker);
    }
}

} // namespace

OmDimension::OmDimension(OmDimensionNode const& root, OmMemoryRegion* region) : _tree(region, root) {}

OmDimension::OmDimension(OmDimension const& other, OmMemoryRegion* region)
    : _tree(region, other._tree.Root().Value(), region), _categories(other._categories), _index(other._index) {
    struct Frame {
        TreeNode const* from;
        TreeNode* to; ///< stays in place: its later siblings are appended after its subtree is done
        std::size_t next;
    };
    std::vector<Frame> path{{other._tree.Root().Ptr(), _tree.Root().Ptr(), 0}};
    while (!path.empty()) {
        Frame& frame = path.back();
        if (frame.next == frame.from->children.size()) {
            path.pop_back();
            continue;
        }
        TreeNode const& child = frame.from->children[frame.next++];
        path.push_back({&child, _tree.AddChild(Node(frame.to, 0), child.value).Ptr(), 0});
    }
}

OmDimension::~OmDimension() = default;

// --- find and create -------------------------------------------------------------------------------------------------

OmDimension::Found OmDimension::Search(ConstNode const& parent, OmDimensionNode const& probe) {
    OmVector<int> const& index = parent.Value().ChildIndex();
    OmVector<TreeNode> const& children = parent.Ptr()->children;
    // An entry past the children (the index may be out of step) counts as sorting after the probe.
    auto const childAt = [&](int entry) -> OmDimensionNode const* {
        std::size_t const position = static_cast<unsigned int>(entry);
        return position < children.size() ? &children[position].value : nullptr;
    };
    int const* const lower =
        std::lower_bound(index.begin(), index.end(), probe, [&](int entry, OmDimensionNode const& wanted) {
            OmDimensionNode const* const child = childAt(entry);
            return child != nullptr && *child < wanted;
        });
    Found found{static_cast<std::size_t>(lower - index.begin()), -1};
    if (lower != index.end()) {
        OmDimensionNode const* const child = childAt(*lower);
        if (child != nullptr && !(probe < *child)) {
            found.position = *lower;
        }
    }
    return found;
}

OmDimension::Node OmDimension::Append(Node const& parent, OmDimensionNode const& value) {
    icuTracker* const tracker = TrackerOf(value);
    Node const child = _tree.AddChild(parent, value);
    // The clone in the tree has a tracker of its own to keep; our own kinds carry it over inside an arena.
    if (TrackerOf(child.Value()) != tracker) {
        SetTracker(child.Value(), tracker);
    }
    if (!value.IsGroup()) {
        CountLeaf();
    }
    return child;
}

OmDimension::Node OmDimension::Child(Node const& parent, OmDimensionNode const& value) {
    if (!parent.Value().IsGroup()) {
        throw OMSException("OmDimension::Child -- parent is not group");
    }
    OmDimensionNode copy(value, &Region());
    SetTracker(copy, TrackerOf(parent.Value()));
    copy.ChildIndex().Free();
    Found const found = Search(parent, copy);
    if (found.position >= 0) {
        return parent.Child(static_cast<std::size_t>(found.position));
    }
    OmVector<int>& index = parent.Value().ChildIndex();
    index.insert(found.place, static_cast<int>(index.size()));
    try {
        return Append(parent, copy);
    } catch (...) {
        index.erase(found.place);
        throw;
    }
}

OmDimension::Node OmDimension::Child(Node const& parent, OmCellText const& text, unsigned long long subscript,
                                     bool isGroup) {
    return Child(parent, OmDimensionNode(text, subscript, isGroup, nullptr));
}

OmDimension::Node OmDimension::AddNewChild(Node const& parent, OmCellText const& text, unsigned long long subscript,
                                           bool isGroup) {
    OmDimensionNode const value(text, subscript, isGroup, nullptr);
    OmDimensionNode copy(value, &Region());
    SetTracker(copy, TrackerOf(parent.Value()));
    copy.ChildIndex().Free();
    OmVector<int>& index = parent.Value().ChildIndex();
    index.push_back(static_cast<int>(index.size()));
    try {
        return Append(parent, copy);
    } catch (...) {
        index.erase(index.size() - 1);
        throw;
    }
}

int OmDimension::FindChild(ConstNode parent, OmCellText const& text, bool isGroup) {
    return Search(parent, OmDimensionNode(text, 0, isGroup, nullptr)).position;
}

OmDimension::Node OmDimension::Counterpart(Node& node) { return Tree::Counterpart(node, Root()); }

// --- counts ----------------------------------------------------------------------------------------------------------

unsigned long long OmDimension::LargestLeafSubscript() const {
    std::uint32_t largest = 0;
    Tree::WalkPreOrder(Root(), [&](ConstNode const& node) {
        if (node.Depth() == 0 || node.Value().IsGroup()) {
            return true;
        }
        largest = std::max(largest, static_cast<std::uint32_t>(node.Value().Subscript()));
        return false;
    });
    return largest;
}

unsigned int OmDimension::getDepth(ConstNode node) {
    unsigned int depth = node.Depth();
    Tree::WalkPreOrder(node, [&](ConstNode const& below) {
        depth = std::max(depth, below.Depth());
        return true;
    });
    return depth;
}

unsigned int OmDimension::getMaximumDepth() const { return getDepth(Root()) + 1; }

void OmDimension::getGroupCountsByLevel(ConstNode node, std::vector<unsigned long long>& counts) {
    struct Frame {
        ConstNode node;
        std::size_t next;
        bool counted; ///< a childless child of this node was counted already
    };
    std::vector<Frame> path{{node, 0, false}};
    while (!path.empty()) {
        Frame& frame = path.back();
        if (frame.next == frame.node.ChildCount()) {
            path.pop_back();
            continue;
        }
        ConstNode const child = frame.node.Child(frame.next++);
        if (child.Value().IsGroup() && !child.Value().Hide()) {
            ++counts[child.Depth()];
        } else if (!frame.counted && child.ChildCount() == 0) {
            frame.counted = true;
            ++counts[child.Depth()];
        }
        path.push_back({child, 0, false});
    }
}

unsigned long long OmDimension::getMaxVisibleGroupCount() const {
    std::vector<unsigned long long> counts(getMaximumDepth(), 0);
    getGroupCountsByLevel(Root(), counts);
    return *std::max_element(counts.begin(), counts.end());
}
